#include "demo/scenario/scenario_file.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <limits>

#include "controller_base/follower/event.h"
#include "follower/printable.h"
#include "simulation/drive_record.h"
#include "simulation/faulty_robot.h"
#include "simulation/harsh_world.h"
#include "simulation/robot.h"

namespace controller_base::demo {
namespace {

constexpr Range kTime{0.0, 86400.0};
constexpr Range kAngle{-360.0, 360.0};
constexpr Range kLength{0.001, 1000.0};
constexpr Range kShift{-100.0, 100.0};                          // m; of a push, or of an error of the localisation
constexpr double kHighestClock = 2147483647.0 - kTime.highest;  // s; ROS tells times apart up to 2^31 s
constexpr std::size_t kLongestKind = 60;                        // bytes in a complaint
constexpr double kForever = std::numeric_limits<double>::infinity();

double ToRadians(double degrees) { return degrees * follower::kPi / 180; }

nav_core::math::Vec2d ReadPlace(const YamlSection& section) {
  return {section.Number("x_m", kCoordinate), section.Number("y_m", kCoordinate)};
}

nav_core::math::Vec2d ReadShift(const YamlSection& section) {
  return {section.Number("x_m", kShift, 0.0), section.Number("y_m", kShift, 0.0)};
}

simulation::TimeSpan ReadTimeSpan(const YamlSection& section) {
  const simulation::TimeSpan span{section.Number("from_s", kTime, 0.0), section.Number("until_s", kTime, kForever)};
  if (span.until <= span.from) {
    section.Fail("until_s", "must be later than from_s");
  }
  return span;
}

void ReadShape(const YamlSection& section, simulation::Obstacle* obstacle) {
  if (section.Has("disc")) {
    const YamlSection disc = section.Section("disc", {"x_m", "y_m", "radius_m"});
    obstacle->center = ReadPlace(disc);
    obstacle->radius = disc.Number("radius_m", kLength);
    if (section.Has("box")) {
      section.Fail("box", "stands beside 'disc'; an obstacle is one of them");
    }
    return;
  }
  if (!section.Has("box")) {
    section.Fail("box", "is missing, and so is 'disc'; an obstacle is one of them");
  }
  const YamlSection box = section.Section("box", {"x_m", "y_m", "length_m", "width_m", "yaw_deg"});
  obstacle->center = ReadPlace(box);
  obstacle->yaw = ToRadians(box.Number("yaw_deg", kAngle, 0.0));
  obstacle->length = box.Number("length_m", kLength);
  obstacle->width = box.Number("width_m", kLength);
}

simulation::Obstacle ReadObstacle(const YamlSection& section) {
  simulation::Obstacle obstacle;
  obstacle.name = section.Text("name");
  ReadShape(section, &obstacle);
  obstacle.low = !section.Flag("seen", true);
  obstacle.appears_at = section.Number("appears_at_s", kTime, 0.0);
  obstacle.vanishes_at = section.Number("vanishes_at_s", kTime, kForever);
  if (obstacle.vanishes_at <= obstacle.appears_at) {
    section.Fail("vanishes_at_s", "must be later than appears_at_s");
  }
  if (section.Has("moves")) {
    const YamlSection moves = section.Section("moves", {"to_m", "speed_mps", "at_s"});
    obstacle.destination = moves.Point("to_m");
    obstacle.speed = moves.Number("speed_mps", {0.001, 10.0});
    obstacle.moves_at = moves.Number("at_s", kTime, 0.0);
  }
  return obstacle;
}

std::uint8_t ReadBumperSide(const YamlSection& section) {
  constexpr std::uint8_t kSides[] = {simulation::kBumperLeft, simulation::kBumperRight, simulation::kBumperFront};
  return kSides[section.Word("side", {"left", "right", "front"})];
}

void ReadBumpers(const YamlSection& robot, const std::string& key, bool bounces, simulation::Faults* faults) {
  for (const YamlSection& section : robot.Sections(key, {"side", "from_s", "until_s"})) {
    simulation::FalseBumper bumper;
    bumper.bits = ReadBumperSide(section);
    bumper.bounces = bounces;
    bumper.when = ReadTimeSpan(section);
    faults->false_bumpers.push_back(bumper);
  }
}

void ReadPoseFaults(const YamlSection& robot, simulation::Faults* faults) {
  if (robot.Has("pose_noise")) {
    const YamlSection noise = robot.Section("pose_noise", {"position_m", "heading_deg"});
    faults->pose_noise.position = noise.Number("position_m", {0.0, 1.0}, 0.0);
    faults->pose_noise.heading = ToRadians(noise.Number("heading_deg", {0.0, 90.0}, 0.0));
  }
  for (const YamlSection& section : robot.Sections("pose_jumps", {"at_s", "x_m", "y_m", "yaw_deg"})) {
    const double at = section.Number("at_s", kTime);
    const nav_core::math::Vec2d by = ReadShift(section);
    faults->pose_jumps.push_back({at, by, ToRadians(section.Number("yaw_deg", kAngle, 0.0))});
  }
  for (const YamlSection& section : robot.Sections("pushes", {"at_s", "x_m", "y_m"})) {
    const double at = section.Number("at_s", kTime);
    faults->pushes.push_back({at, ReadShift(section)});
  }
}

void ReadClockStops(const YamlSection& robot, simulation::Faults* faults) {
  double end = 0.0;
  for (const YamlSection& section : robot.Sections("clock_stops", {"at_s", "for_s"})) {
    const simulation::ClockStop stop{section.Number("at_s", kTime), section.Number("for_s", kTime)};
    if (stop.at < end) {
      section.Fail("at_s", "must not be before the end of the stop above it");
    }
    end = stop.at + stop.duration;
    faults->clock_stops.push_back(stop);
  }
}

// After the stops, which hold the clock back.
void ReadClockJumps(const YamlSection& robot, simulation::Faults* faults) {
  const std::vector<YamlSection> sections = robot.Sections("clock_jumps", {"at_s", "by_s"});
  for (const YamlSection& section : sections) {
    faults->clock_jumps.push_back({section.Number("at_s", kTime), section.Number("by_s", {-1e6, 1e6})});
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const double at = faults->clock_jumps[i].at;
    const double clock = simulation::kStartTime + at + ClockShift(*faults, at);
    if (clock < 1.0) {
      sections[i].Fail("by_s", "would bring the clock, which begins at 100 s, down to 0");
    }
    if (clock > kHighestClock) {
      sections[i].Fail("by_s", "would bring the clock beyond 2^31 s");
    }
  }
}

void ReadDrift(const YamlSection& robot, simulation::Drift* drift) {
  if (!robot.Has("odometry")) {
    return;
  }
  const YamlSection odometry = robot.Section("odometry", {"scale_error", "turn_drift_deg_per_m", "corrected_every_s"});
  const bool has_drift = !drift->IsNone();
  drift->scale = odometry.Number("scale_error", {-0.5, 0.5}, drift->scale);
  if (odometry.Has("turn_drift_deg_per_m")) {
    drift->turn = ToRadians(odometry.Number("turn_drift_deg_per_m", {-90.0, 90.0}));
  }
  drift->correction = odometry.Number("corrected_every_s", kTime, has_drift ? drift->correction : kForever);
}

simulation::Faults ReadFaults(const YamlSection& robot, simulation::Faults faults) {
  faults.laser_noise = robot.Number("laser_noise_m", {0.0, 1.0}, faults.laser_noise);
  faults.lasting_press = robot.Flag("lasting_press", faults.lasting_press);
  faults.command_delay = robot.Number("command_delay_s", {0.0, 10.0}, faults.command_delay);
  ReadDrift(robot, &faults.drift);
  if (robot.Has("speed_limit_mps")) {
    faults.speed_limit = robot.Number("speed_limit_mps", {0.0, simulation::kMaxSpeed});
  }
  if (robot.Has("stuck_wheel")) {
    const YamlSection stuck = robot.Section("stuck_wheel", {"side", "from_s", "until_s"});
    const std::size_t side = stuck.Word("side", {"left", "right", "both"});
    faults.stuck_wheels = simulation::StuckWheelsFault{{side != 1, side != 0}, ReadTimeSpan(stuck)};
  }
  ReadBumpers(robot, "held_bumper", false, &faults);
  ReadBumpers(robot, "bouncing_bumper", true, &faults);
  if (robot.Has("contacts")) {
    const YamlSection contacts = robot.Section("contacts", {"late_by_s", "out_of_order"});
    faults.contact_delivery.delay = contacts.Number("late_by_s", kTime, 0.0);
    faults.contact_delivery.is_swapped = contacts.Flag("out_of_order", false);
  }
  ReadPoseFaults(robot, &faults);
  ReadClockStops(robot, &faults);
  ReadClockJumps(robot, &faults);
  return faults;
}

// A kind alone, or "kind: part of the text".
ExpectedEvent ToExpectedEvent(const std::string& text) {
  const std::size_t colon = text.find(": ");
  return colon == std::string::npos ? ExpectedEvent{text, ""}
                                    : ExpectedEvent{text.substr(0, colon), text.substr(colon + 2)};
}

std::vector<ExpectedEvent> ReadEvents(const YamlSection& section, const std::string& key) {
  std::vector<ExpectedEvent> events;
  const std::vector<std::string> kinds = controller_base::follower::EventKindNames();
  for (const PlacedText& text : section.Texts(key)) {
    const ExpectedEvent event = ToExpectedEvent(text.text);
    if (std::find(kinds.begin(), kinds.end(), event.kind) == kinds.end()) {
      throw ScenarioError(text.place + ": unknown kind of event '" + follower::Printable(event.kind, kLongestKind) +
                          "' in 'expect." + key + "'" + Advice(event.kind, kinds));
    }
    events.push_back(event);
  }
  return events;
}

Expectation ReadExpectation(const YamlSection& section) {
  constexpr DriveOutcome kOutcomes[] = {DriveOutcome::kReached, DriveOutcome::kNotReached, DriveOutcome::kAborted,
                                        DriveOutcome::kTouched};
  Expectation expectation;
  expectation.outcome = kOutcomes[section.Word("outcome", {"reached", "no progress", "aborted", "touched"})];
  for (const PlacedText& reason : section.Texts("reason_has")) {
    expectation.reasons.push_back(reason.text);
  }
  expectation.latest_end = section.Number("ends_within_s", kTime, kForever);
  const Range counts{0.0, 1e6};
  expectation.fewest_contacts = section.Integer("contacts_at_least", counts, expectation.fewest_contacts);
  expectation.most_contacts = section.Integer("contacts_at_most", counts, expectation.most_contacts);
  if (expectation.most_contacts < expectation.fewest_contacts) {
    section.Fail("contacts_at_most", "must not be below contacts_at_least");
  }
  expectation.events = ReadEvents(section, "events");
  expectation.never = ReadEvents(section, "never");
  return expectation;
}

YamlSection OpenPath(const YamlSection& root) { return root.Section("path", {"drawn_m", "way_points_m"}); }

void ReadPath(const YamlSection& root, simulation::DriveSetup* setup) {
  if (!root.Has("path") || !root.IsSection("path")) {
    if (root.Has("path") && (!root.IsText("path") || root.Text("path") != "plan it")) {
      root.Fail("path", "must be 'plan it', or have 'drawn_m' or 'way_points_m'");
    }
    setup->goal = ReadPlace(root.Section("goal", {"x_m", "y_m"}));
    return;
  }
  const YamlSection path = OpenPath(root);
  const bool is_drawn = path.Has("drawn_m");
  if (is_drawn == path.Has("way_points_m")) {
    root.Fail("path", "must have either 'drawn_m' or 'way_points_m'");
  }
  setup->path_kind = is_drawn ? simulation::PathKind::kDrawn : simulation::PathKind::kPlanned;
  setup->points = path.Points(is_drawn ? "drawn_m" : "way_points_m");
  if (root.Has("goal")) {
    root.Fail("goal", "is the last point of 'path'; only a path that is planned alone has a 'goal'");
  }
  if (is_drawn && setup->points.size() < 2) {
    root.Fail("path", "needs two points or more in 'drawn_m'");
  }
  setup->goal = setup->points.back();
  setup->points.pop_back();
}

void NamePlaces(const YamlSection& root, ScenarioPlaces* places) {
  places->map = root.Place("map");
  places->start = root.Place("start");
  if (root.Has("goal")) {
    places->goal = root.Place("goal");
    return;
  }
  const YamlSection path = OpenPath(root);
  places->way_points = path.ItemPlaces(path.Has("drawn_m") ? "drawn_m" : "way_points_m");
  places->goal = places->way_points.back();
  places->way_points.pop_back();
}

}  // namespace

Scenario LoadScenario(const std::string& file) {
  const YamlSection root = YamlSection::Load(file, {"map", "start", "path", "goal", "obstacles", "robot", "seed",
                                                    "replanning", "expect", "world", "off_grid"});
  Scenario scenario;
  if (root.Has("world") && root.Word("world", {"kind", "harsh"}) == 1) {
    simulation::MakeHarsh(&scenario.setup);
  }
  scenario.setup.map_file = (std::filesystem::path(file).parent_path() / root.Text("map")).lexically_normal().string();
  const YamlSection start = root.Section("start", {"x_m", "y_m", "yaw_deg"});
  const nav_core::math::Vec2d place = ReadPlace(start);
  scenario.setup.start = {place.x, place.y, ToRadians(start.Number("yaw_deg", kAngle, 0.0))};
  const bool is_off_grid = root.Flag("off_grid", scenario.setup.shapes == simulation::Shapes::kTrue);
  scenario.setup.shapes = is_off_grid ? simulation::Shapes::kTrue : simulation::Shapes::kCells;
  ReadPath(root, &scenario.setup);
  NamePlaces(root, &scenario.places);
  for (const YamlSection& obstacle :
       root.Sections("obstacles", {"name", "box", "disc", "seen", "appears_at_s", "vanishes_at_s", "moves"})) {
    scenario.setup.obstacles.push_back(ReadObstacle(obstacle));
  }
  if (root.Has("robot")) {
    scenario.setup.faults = ReadFaults(
        root.Section("robot", {"speed_limit_mps", "stuck_wheel", "held_bumper", "bouncing_bumper", "contacts",
                               "pose_noise", "pose_jumps", "pushes", "clock_jumps", "clock_stops", "laser_noise_m",
                               "lasting_press", "command_delay_s", "odometry"}),
        scenario.setup.faults);
  }
  scenario.setup.seed = static_cast<std::uint32_t>(root.Integer("seed", {0.0, 2147483647.0}, 1));
  scenario.setup.replanning = root.Flag("replanning", false);
  scenario.expectation =
      ReadExpectation(root.Section("expect", {"outcome", "reason_has", "ends_within_s", "contacts_at_least",
                                              "contacts_at_most", "events", "never"}));
  return scenario;
}

}  // namespace controller_base::demo
