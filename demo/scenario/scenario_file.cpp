#include "demo/scenario/scenario_file.h"

#include <filesystem>
#include <iterator>
#include <limits>

#include "simulation/drive_record.h"
#include "simulation/robot.h"

namespace controller_base_demo {
namespace {

constexpr Range kTime{0.0, 86400.0};
constexpr Range kAngle{-360.0, 360.0};
constexpr Range kLength{0.001, 1000.0};
constexpr double kForever = std::numeric_limits<double>::infinity();

double ToRadians(double degrees) { return degrees * kPi / 180; }

nav_core::math::Vec2d ReadPlace(YamlSection* section) {
  return {section->Number("x_m", {}), section->Number("y_m", {})};
}

nav_core::math::Vec2d ReadWay(YamlSection* section) {
  return {section->Number("x_m", {}, 0.0), section->Number("y_m", {}, 0.0)};
}

TimeSpan ReadTimeSpan(YamlSection* section) {
  const TimeSpan span{section->Number("from_s", kTime, 0.0), section->Number("until_s", kTime, kForever)};
  if (span.until <= span.from) {
    section->Fail("until_s", "must be later than from_s");
  }
  return span;
}

void ReadShape(YamlSection* section, Obstacle* obstacle) {
  if (section->Has("disc")) {
    YamlSection disc = section->Section("disc");
    obstacle->center = ReadPlace(&disc);
    obstacle->radius = disc.Number("radius_m", kLength);
    disc.CheckAllKnown();
    if (section->Has("box")) {
      section->Fail("box", "stands beside 'disc'; an obstacle is one of them");
    }
    return;
  }
  YamlSection box = section->Section("box");
  obstacle->center = ReadPlace(&box);
  obstacle->yaw = ToRadians(box.Number("yaw_deg", kAngle, 0.0));
  obstacle->length = box.Number("length_m", kLength);
  obstacle->width = box.Number("width_m", kLength);
  box.CheckAllKnown();
}

Obstacle ReadObstacle(YamlSection* section) {
  Obstacle obstacle;
  obstacle.name = section->Text("name");
  ReadShape(section, &obstacle);
  obstacle.low = !section->Flag("seen", true);
  obstacle.appears_at = section->Number("appears_at_s", kTime, 0.0);
  obstacle.vanishes_at = section->Number("vanishes_at_s", kTime, kForever);
  if (obstacle.vanishes_at <= obstacle.appears_at) {
    section->Fail("vanishes_at_s", "must be later than appears_at_s");
  }
  if (section->Has("moves")) {
    YamlSection moves = section->Section("moves");
    obstacle.destination = moves.Point("to_m");
    obstacle.speed = moves.Number("speed_mps", {0.001, 10.0});
    obstacle.moves_at = moves.Number("at_s", kTime, 0.0);
    moves.CheckAllKnown();
  }
  section->CheckAllKnown();
  return obstacle;
}

std::uint8_t ReadBumperSide(YamlSection* section) {
  constexpr std::uint8_t kSides[] = {kBumperLeft, kBumperRight, kBumperFront};
  return kSides[section->Word("side", {"left", "right", "front"})];
}

void ReadBumpers(YamlSection* robot, const std::string& key, bool bounces, Faults* faults) {
  for (YamlSection& section : robot->Sections(key)) {
    FalseBumper bumper;
    bumper.bits = ReadBumperSide(&section);
    bumper.bounces = bounces;
    bumper.when = ReadTimeSpan(&section);
    section.CheckAllKnown();
    faults->false_bumpers.push_back(bumper);
  }
}

void ReadPoseFaults(YamlSection* robot, Faults* faults) {
  if (robot->Has("pose_noise")) {
    YamlSection noise = robot->Section("pose_noise");
    faults->pose_noise.position = noise.Number("position_m", {0.0, 1.0}, 0.0);
    faults->pose_noise.heading = ToRadians(noise.Number("heading_deg", {0.0, 90.0}, 0.0));
    noise.CheckAllKnown();
  }
  for (YamlSection& section : robot->Sections("pose_jumps")) {
    const double at = section.Number("at_s", kTime);
    const nav_core::math::Vec2d by = ReadWay(&section);
    faults->pose_jumps.push_back({at, by, ToRadians(section.Number("yaw_deg", kAngle, 0.0))});
    section.CheckAllKnown();
  }
  for (YamlSection& section : robot->Sections("pushes")) {
    const double at = section.Number("at_s", kTime);
    faults->pushes.push_back({at, ReadWay(&section)});
    section.CheckAllKnown();
  }
}

void ReadClockFaults(YamlSection* robot, Faults* faults) {
  double shift = 0.0;
  for (YamlSection& section : robot->Sections("clock_jumps")) {
    const ClockJump jump{section.Number("at_s", kTime), section.Number("by_s", {-1e6, 1e6})};
    shift += jump.by;
    if (jump.at + shift < 1.0 - kStartTime) {
      section.Fail("by_s", "would bring the clock, which begins at 100 s, down to 0");
    }
    section.CheckAllKnown();
    faults->clock_jumps.push_back(jump);
  }
  for (YamlSection& section : robot->Sections("clock_stops")) {
    faults->clock_stops.push_back({section.Number("at_s", kTime), section.Number("for_s", kTime)});
    section.CheckAllKnown();
  }
}

Faults ReadFaults(YamlSection* robot) {
  Faults faults;
  if (robot->Has("speed_limit_mps")) {
    faults.speed_limit = robot->Number("speed_limit_mps", {0.0, kMaxSpeed});
  }
  if (robot->Has("stuck_wheel")) {
    YamlSection stuck = robot->Section("stuck_wheel");
    const std::size_t side = stuck.Word("side", {"left", "right", "both"});
    faults.stuck_wheels = StuckWheelsFault{{side != 1, side != 0}, ReadTimeSpan(&stuck)};
    stuck.CheckAllKnown();
  }
  ReadBumpers(robot, "held_bumper", false, &faults);
  ReadBumpers(robot, "bouncing_bumper", true, &faults);
  if (robot->Has("contacts")) {
    YamlSection contacts = robot->Section("contacts");
    faults.contact_delivery.delay = contacts.Number("late_by_s", kTime, 0.0);
    faults.contact_delivery.is_swapped = contacts.Flag("out_of_order", false);
    contacts.CheckAllKnown();
  }
  ReadPoseFaults(robot, &faults);
  ReadClockFaults(robot, &faults);
  robot->CheckAllKnown();
  return faults;
}

// A kind alone, or "kind: part of the text".
ExpectedEvent ToExpectedEvent(const std::string& text) {
  const std::size_t colon = text.find(": ");
  return colon == std::string::npos ? ExpectedEvent{text, ""}
                                    : ExpectedEvent{text.substr(0, colon), text.substr(colon + 2)};
}

Expectation ReadExpectation(YamlSection* section) {
  constexpr DriveOutcome kOutcomes[] = {DriveOutcome::kReached, DriveOutcome::kNotReached, DriveOutcome::kAborted,
                                        DriveOutcome::kTouched};
  Expectation expectation;
  expectation.outcome = kOutcomes[section->Word("outcome", {"reached", "no progress", "aborted", "touched"})];
  expectation.reasons = section->Texts("reason_has");
  expectation.latest_end = section->Number("ends_within_s", kTime, kForever);
  const Range counts{0.0, 1e6};
  expectation.fewest_contacts = section->Integer("contacts_at_least", counts, expectation.fewest_contacts);
  expectation.most_contacts = section->Integer("contacts_at_most", counts, expectation.most_contacts);
  for (const std::string& event : section->Texts("events")) {
    expectation.events.push_back(ToExpectedEvent(event));
  }
  for (const std::string& event : section->Texts("never")) {
    expectation.never.push_back(ToExpectedEvent(event));
  }
  section->CheckAllKnown();
  return expectation;
}

void ReadPath(YamlSection* root, DriveSetup* setup) {
  if (!root->Has("path") || root->IsText("path")) {
    if (root->Has("path")) {
      root->Word("path", {"plan it"});
    }
    YamlSection goal = root->Section("goal");
    setup->goal = ReadPlace(&goal);
    goal.CheckAllKnown();
    return;
  }
  YamlSection path = root->Section("path");
  const bool is_drawn = path.Has("drawn_m");
  setup->path_kind = is_drawn ? PathKind::kDrawn : PathKind::kPlanned;
  setup->points = path.Points(is_drawn ? "drawn_m" : "way_points_m");
  path.CheckAllKnown();
  if (root->Has("goal")) {
    root->Fail("goal", "is the last point of 'path'; only a path that is planned alone has a 'goal'");
  }
  if (is_drawn && setup->points.size() < 2) {
    root->Fail("path", "needs two points or more in 'drawn_m'");
  }
  setup->goal = setup->points.back();
  setup->points.pop_back();
}

}  // namespace

Scenario LoadScenario(const std::string& file) {
  YamlSection root = YamlSection::Load(file);
  Scenario scenario;
  scenario.setup.map_file = (std::filesystem::path(file).parent_path() / root.Text("map")).lexically_normal().string();
  YamlSection start = root.Section("start");
  const nav_core::math::Vec2d place = ReadPlace(&start);
  scenario.setup.start = {place.x, place.y, ToRadians(start.Number("yaw_deg", kAngle, 0.0))};
  start.CheckAllKnown();
  ReadPath(&root, &scenario.setup);
  for (YamlSection& obstacle : root.Sections("obstacles")) {
    scenario.setup.obstacles.push_back(ReadObstacle(&obstacle));
  }
  if (root.Has("robot")) {
    YamlSection robot = root.Section("robot");
    scenario.setup.faults = ReadFaults(&robot);
  }
  scenario.setup.seed = static_cast<std::uint32_t>(root.Integer("seed", {0.0, 2147483647.0}, 1));
  YamlSection expect = root.Section("expect");
  scenario.expectation = ReadExpectation(&expect);
  root.CheckAllKnown();
  return scenario;
}

}  // namespace controller_base_demo
