#include "demo/scenario/scenario_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "demo/judge/expectation.h"
#include "simulation/robot.h"
#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kGood = R"(map: ../maps/hall.yaml
start: {x_m: 1.0, y_m: 3.0, yaw_deg: 90}
path:
  drawn_m: [[1.0, 3.0], [11.0, 3.0]]
obstacles:
  - name: cart
    disc: {x_m: 5.0, y_m: 2.0, radius_m: 0.2}
    seen: false
    appears_at_s: 2
    vanishes_at_s: 9
    moves: {to_m: [5.0, 4.0], speed_mps: 0.5, at_s: 3}
robot:
  stuck_wheel: {side: left, from_s: 1}
  held_bumper: {side: right}
  contacts: {late_by_s: 0.1}
  clock_jumps: {at_s: 5, by_s: -50}
seed: 12
expect:
  outcome: no progress
  events: [path, "stop: stalled"]
)";

// kGood, in the harsh world.
const std::string kHarsh = kGood + "world: harsh\n";

class ScenarioFile : public testing::Test {
 protected:
  // The error for kGood with `from` replaced.
  std::string ComplaintAbout(const std::string& from, const std::string& to) {
    std::string text = kGood;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
    try {
      Load(text);
    } catch (const ScenarioError& error) {
      return error.what();
    }
    return "";
  }

  Scenario Load(const std::string& text) { return LoadScenario(folder_.Write("test.yaml", text)); }

  // A line of kGood, what replaces it, and a part of the complaint.
  struct Mistake {
    const char* from;
    const char* to;
    const char* complaint;
  };
  void ExpectComplaints(const std::vector<Mistake>& mistakes) {
    for (const Mistake& mistake : mistakes) {
      const std::string complaint = ComplaintAbout(mistake.from, mistake.to);
      EXPECT_THAT(complaint, HasSubstr(mistake.complaint));
      EXPECT_THAT(complaint, Not(HasSubstr("\n")));
    }
  }

  controller_base_test::TemporaryFolder folder_;
};

TEST_F(ScenarioFile, EverythingIsRead) {
  const Scenario scenario = Load(kGood);
  EXPECT_THAT(scenario.setup.map_file, EndsWith("maps/hall.yaml"));
  EXPECT_NEAR(scenario.setup.start.yaw, 0.5 * follower::kPi, 1e-12);
  EXPECT_EQ(scenario.setup.path_kind, simulation::PathKind::kDrawn);
  EXPECT_EQ(scenario.setup.goal.x, 11.0);
  ASSERT_EQ(scenario.setup.obstacles.size(), 1u);
  const simulation::Obstacle& cart = scenario.setup.obstacles.front();
  EXPECT_TRUE(cart.low);
  EXPECT_FALSE(cart.IsThere(1.9));
  EXPECT_TRUE(cart.IsThere(2.0));
  EXPECT_FALSE(cart.IsThere(9.0));
  EXPECT_NEAR(cart.CenterAt(5.0).y, 3.0, 1e-12);
  EXPECT_NEAR(cart.CenterAt(60.0).y, 4.0, 1e-12);
  ASSERT_TRUE(scenario.setup.faults.stuck_wheels);
  EXPECT_TRUE(scenario.setup.faults.stuck_wheels->wheels.left);
  EXPECT_FALSE(scenario.setup.faults.stuck_wheels->wheels.right);
  ASSERT_EQ(scenario.setup.faults.false_bumpers.size(), 1u);
  EXPECT_EQ(scenario.setup.faults.false_bumpers.front().bits, simulation::kBumperRight);
  EXPECT_EQ(scenario.setup.faults.contact_delivery.delay, 0.1);
  EXPECT_EQ(scenario.setup.seed, 12u);
  EXPECT_EQ(scenario.expectation.outcome, DriveOutcome::kNotReached);
  ASSERT_EQ(scenario.expectation.events.size(), 2u);
  EXPECT_EQ(scenario.expectation.events[1].kind, "stop");
  EXPECT_EQ(scenario.expectation.events[1].text, "stalled");
}

TEST_F(ScenarioFile, TheWorldIsKindUnlessTheFileSaysOtherwise) {
  const simulation::DriveSetup kind = Load(kGood).setup;
  EXPECT_EQ(kind.shapes, simulation::Shapes::kCells);
  EXPECT_EQ(kind.faults.laser_noise, 0.0);
  EXPECT_FALSE(kind.faults.lasting_press);
  EXPECT_EQ(kind.faults.command_delay, 0.0);
  EXPECT_TRUE(kind.faults.drift.IsNone());
  const simulation::DriveSetup harsh = Load(kHarsh).setup;
  EXPECT_EQ(harsh.shapes, simulation::Shapes::kTrue);
  EXPECT_EQ(harsh.faults.laser_noise, 0.01);
  EXPECT_TRUE(harsh.faults.lasting_press);
  EXPECT_TRUE(harsh.faults.stuck_wheels);  // and what the file says beside it
}

TEST_F(ScenarioFile, EachPartOfTheHarshWorldHasAKeyOfItsOwn) {
  const std::string keys =
      "robot:\n  laser_noise_m: 0.03\n  lasting_press: false\n  command_delay_s: 0.2\n"
      "  odometry: {scale_error: 0.05, turn_drift_deg_per_m: 90, corrected_every_s: 3}\n";
  std::string text = kHarsh + "off_grid: false\n";
  text.replace(text.find("robot:\n"), 7, keys);
  const simulation::DriveSetup setup = Load(text).setup;
  EXPECT_EQ(setup.shapes, simulation::Shapes::kCells);
  EXPECT_EQ(setup.faults.laser_noise, 0.03);
  EXPECT_FALSE(setup.faults.lasting_press);
  EXPECT_EQ(setup.faults.command_delay, 0.2);
  EXPECT_EQ(setup.faults.drift.scale, 0.05);
  EXPECT_NEAR(setup.faults.drift.turn, 0.5 * follower::kPi, 1e-12);
  EXPECT_EQ(setup.faults.drift.correction, 3.0);
}

TEST_F(ScenarioFile, AWrongKeyIsOneLineWithItsPlace) {
  ExpectComplaints({
      {"seed: 12", "sed: 12", "test.yaml:17: unknown key 'sed'; did you mean 'seed'?"},
      {"radius_m: 0.2", "radius_cm: 20", "test.yaml:7: unknown key 'obstacles[0].disc.radius_cm'; it is 'radius_m'"},
      {"speed_mps: 0.5", "speed_kmh: 2", "test.yaml:11: unknown key 'obstacles[0].moves.speed_kmh'; it is 'speed_mps'"},
      {"late_by_s: 0.1", "late_by_ms: 100", "test.yaml:15: unknown key 'robot.contacts.late_by_ms'; it is 'late_by_s'"},
      {"seed: 12", "seed: 12\nseed: 13", "test.yaml:18: the key 'seed' stands here a second time"},
      {"map: ../maps/hall.yaml\n", "", "the key 'map' is missing"},
      {"contacts: {late_by_s: 0.1}", "odometry: {scale: 1}", "test.yaml:15: unknown key 'robot.odometry.scale'"},
      {"seed: 12", "seed: [", "not YAML"},
      {"seed: 12", "[seed]: 12", "test.yaml:17: a key must be a word, not a list"},
      {"{x_m: 1.0,", "{[x_m]: 1.0,", "test.yaml:2: a key must be a word, not a list"},
      {"{x_m: 1.0, y_m: 3.0,", "{y_m: 3.0,", "test.yaml:2: the key 'start.x_m' is missing"},
      {"seed: 12", "seed: 12\nsee: 1", "test.yaml:18: unknown key 'see'; did you mean 'seed'?"},
      {"seed: 12", "a: 1", "test.yaml:17: unknown key 'a'; known here: map, start, path, goal, obstacles"},
      {"seed: 12", R"("s\e[31m\nd": 12)", R"(test.yaml:17: unknown key 's\x1b[31m\x0ad'; known here)"},
      {"    disc: {x_m: 5.0, y_m: 2.0, radius_m: 0.2}\n", "",
       "test.yaml:6: 'obstacles[0].box' is missing, and so is 'disc'"},
  });
}

TEST_F(ScenarioFile, AWrongNumberIsOneLineWithItsPlaceAndKey) {
  ExpectComplaints({
      {"x_m: 1.0", "x_m: 1 m",
       "test.yaml:2: 'start.x_m' must be a number of metres from -1000000 to 1000000, not '1 m'"},
      {"radius_m: 0.2", "radius_m: -0.2",
       "test.yaml:7: 'obstacles[0].disc.radius_m' must be a number of metres from 0.001 to 1000, not '-0.2'"},
      {"radius_m: 0.2", "radius_m: .nan", "test.yaml:7: 'obstacles[0].disc.radius_m' must be a number of metres from"},
      {"seed: 12", "seed: 1.5", "test.yaml:17: 'seed' must be a whole number from 0 to 2147483647, not '1.5'"},
      {"contacts: {late_by_s: 0.1}", "laser_noise_m: 2",
       "test.yaml:15: 'robot.laser_noise_m' must be a number of metres from 0 to 1, not '2'"},
      {"seed: 12", "seed: 3000000000",
       "test.yaml:17: 'seed' must be a whole number from 0 to 2147483647, not '3000000000'"},
      {"seed: 12", "seed:", "test.yaml:17: 'seed' must be a whole number from 0 to 2147483647, not nothing"},
      {"seed: 12", "seed: {}", "test.yaml:17: 'seed' must be a whole number from 0 to 2147483647, not a map"},
      {"x_m: 1.0", "x_m: .inf",
       "test.yaml:2: 'start.x_m' must be a number of metres from -1000000 to 1000000, not '.inf'"},
      {"x_m: 1.0", "x_m: 1e999",
       "test.yaml:2: 'start.x_m' must be a number of metres from -1000000 to 1000000, not '1e999'"},
      {"speed_mps: 0.5", "speed_mps: 11",
       "'obstacles[0].moves.speed_mps' must be a number of metres per second from 0.001"},
  });
}

TEST_F(ScenarioFile, AWrongTextOrListIsOneLineWithItsPlaceAndKey) {
  ExpectComplaints({
      {"seen: false", "seen: perhaps", "test.yaml:8: 'obstacles[0].seen' must be true or false, not 'perhaps'"},
      {"side: left", "side: top", "test.yaml:13: 'robot.stuck_wheel.side' must be one of left, right, both, not 'top'"},
      {"[11.0, 3.0]", "[11.0]", "test.yaml:4: 'path.drawn_m' must be [x, y] in metres"},
      {"outcome: no progress", "outcome: fine", "test.yaml:19: 'expect.outcome' must be one of reached, no progress"},
      {"seed: 12", "world: hard", "test.yaml:17: 'world' must be one of kind, harsh, not 'hard'"},
      {"seed: 12", "off_grid: 1", "test.yaml:17: 'off_grid' must be true or false, not '1'"},
      {"map: ../maps/hall.yaml", "map:", "test.yaml:1: 'map' must be a text, not nothing"},
      {"map: ../maps/hall.yaml", "map: ''", "test.yaml:1: 'map' must be a text, not ''"},
      {"map: ../maps/hall.yaml", R"(map: "a\0b")", R"(test.yaml:1: 'map' must be a text, not 'a\x00b')"},
      {"drawn_m: [[1.0, 3.0], [11.0, 3.0]]", "drawn_m: []", "test.yaml:4: 'path.drawn_m' must be a list of points"},
      {"[path, \"stop: stalled\"]", "{path: stop}", "test.yaml:20: 'expect.events' must be a list of texts, not a map"},
      {"\"stop: stalled\"", "stop: stalled", "test.yaml:20: 'expect.events' must be a list of texts, and holds a map"},
      {"events:", "reason_has: ['']\n  events:",
       "test.yaml:20: 'expect.reason_has' must be a list of texts, and holds ''"},
      {"events:", "never: [contakt]\n  events:",
       "test.yaml:20: unknown kind of event 'contakt' in 'expect.never'; did you mean 'contact'?"},
      {"[path, \"stop", "[path,\n    Path, \"stop",
       "test.yaml:21: unknown kind of event 'Path' in 'expect.events'; did you mean"},
      {"stop: stalled", "stop:stalled",
       "test.yaml:20: unknown kind of event 'stop:stalled' in 'expect.events'; known here: path, no path,"},
  });
}

TEST_F(ScenarioFile, WhatDoesNotGoTogetherIsOneLineWithItsPlaceAndKey) {
  ExpectComplaints({
      {"vanishes_at_s: 9", "vanishes_at_s: 1",
       "test.yaml:10: 'obstacles[0].vanishes_at_s' must be later than appears_at_s"},
      {"by_s: -50", "by_s: -500", "test.yaml:16: 'robot.clock_jumps.by_s' would bring the clock"},
      {"from_s: 1}", "from_s: 3, until_s: 3}", "test.yaml:13: 'robot.stuck_wheel.until_s' must be later than from_s"},
      {"    seen: false", "    box: {}\n    seen: false", "test.yaml:8: 'obstacles[0].box' stands beside 'disc'"},
      {"seed: 12", "goal: {x_m: 1, y_m: 1}", "test.yaml:17: 'goal' is the last point of 'path'"},
      {"  drawn_m:", "  way_points_m: [[1, 3]]\n  drawn_m:",
       "test.yaml:4: 'path' must have either 'drawn_m' or 'way_points_m'"},
      {"path:\n  drawn_m: [[1.0, 3.0], [11.0, 3.0]]", "path: plan",
       "test.yaml:3: 'path' must be 'plan it', or have 'drawn_m' or 'way_points_m'"},
      {"events:", "contacts_at_least: 3\n  contacts_at_most: 2\n  events:",
       "test.yaml:21: 'expect.contacts_at_most' must not be below contacts_at_least"},
  });
}

TEST_F(ScenarioFile, NoSectionTakesAKeyThatItDoesNotKnow) {
  const struct {
    const char* end_of_section;
    const char* key;
  } kCases[] = {
      {"yaw_deg: 90}", "start.odd"},
      {"radius_m: 0.2}", "obstacles[0].disc.odd"},
      {"at_s: 3}", "obstacles[0].moves.odd"},
      {"from_s: 1}", "robot.stuck_wheel.odd"},
      {"side: right}", "robot.held_bumper.odd"},
      {"late_by_s: 0.1}", "robot.contacts.odd"},
      {"by_s: -50}", "robot.clock_jumps.odd"},
  };
  for (const auto& section : kCases) {
    std::string with_odd_key = section.end_of_section;
    with_odd_key.insert(with_odd_key.size() - 1, ", odd: 1");
    EXPECT_THAT(ComplaintAbout(section.end_of_section, with_odd_key),
                HasSubstr("unknown key '" + std::string(section.key) + "'"));
  }
  EXPECT_THAT(ComplaintAbout("    seen: false", "    odd: 1"), HasSubstr("unknown key 'obstacles[0].odd'"));
  EXPECT_THAT(ComplaintAbout("  contacts:", "  odd: 1\n  contacts:"), HasSubstr("unknown key 'robot.odd'"));
  EXPECT_THAT(ComplaintAbout("  outcome:", "  odd: 1\n  outcome:"), HasSubstr("unknown key 'expect.odd'"));
  EXPECT_THAT(ComplaintAbout("path:\n  drawn_m:", "path:\n  odd: 1\n  drawn_m:"), HasSubstr("unknown key 'path.odd'"));
}

// The keys that kGood does not have.
const std::string kOther = R"(map: hall.yaml
start: {x_m: 1.0, y_m: 3.0}
goal: {x_m: 2.0, y_m: 4.0}
obstacles:
  - name: box
    box: {x_m: 5.0, y_m: 2.0, length_m: 0.3, width_m: 0.4, yaw_deg: 90}
robot:
  speed_limit_mps: 0.2
  stuck_wheel: {side: both, from_s: 1, until_s: 2}
  bouncing_bumper: {side: front}
  contacts: {out_of_order: true}
  pose_noise: {position_m: 0.01, heading_deg: 90}
  pose_jumps:
    - {at_s: 1, x_m: 0.5, yaw_deg: 180}
    - {at_s: 2, y_m: 0.25}
  pushes: {at_s: 3, x_m: 0.1, y_m: 0.2}
  clock_stops: {at_s: 4, for_s: 6}
expect:
  outcome: aborted
  reason_has: [why]
  ends_within_s: 30
  contacts_at_least: 2
  contacts_at_most: 3
  never: ["stop: x"]
)";

TEST_F(ScenarioFile, PlaceAndShapeOfABoxAndASearchedPathAreRead) {
  const Scenario scenario = Load(kOther);
  EXPECT_EQ(scenario.setup.path_kind, simulation::PathKind::kPlanned);
  EXPECT_EQ(scenario.setup.goal.y, 4.0);
  const simulation::Obstacle& box = scenario.setup.obstacles.at(0);
  EXPECT_FALSE(box.low);
  EXPECT_EQ(box.radius, 0.0);
  EXPECT_EQ(box.length, 0.3);
  EXPECT_EQ(box.width, 0.4);
  EXPECT_NEAR(box.yaw, 0.5 * follower::kPi, 1e-12);
  EXPECT_TRUE(box.IsThere(86400.0));
}

TEST_F(ScenarioFile, TheOtherFaultsAreRead) {
  const Scenario scenario = Load(kOther);
  const simulation::Faults& faults = scenario.setup.faults;
  EXPECT_EQ(faults.speed_limit, 0.2);
  ASSERT_TRUE(faults.stuck_wheels);
  EXPECT_TRUE(faults.stuck_wheels->wheels.left && faults.stuck_wheels->wheels.right);
  EXPECT_FALSE(faults.stuck_wheels->when.Contains(2.0));
  EXPECT_TRUE(faults.false_bumpers.at(0).bounces);
  EXPECT_EQ(faults.false_bumpers.at(0).bits, simulation::kBumperFront);
  EXPECT_TRUE(faults.contact_delivery.is_swapped);
  EXPECT_EQ(faults.pose_noise.position, 0.01);
  EXPECT_NEAR(faults.pose_noise.heading, 0.5 * follower::kPi, 1e-12);
  ASSERT_EQ(faults.pose_jumps.size(), 2u);
  EXPECT_EQ(faults.pose_jumps[0].by.x, 0.5);
  EXPECT_NEAR(faults.pose_jumps[0].turn, follower::kPi, 1e-12);
  EXPECT_EQ(faults.pose_jumps[1].at, 2.0);
  EXPECT_EQ(faults.pose_jumps[1].by.y, 0.25);
  EXPECT_EQ(faults.pushes.at(0).by.y, 0.2);
  EXPECT_EQ(faults.clock_stops.at(0).duration, 6.0);
}

TEST_F(ScenarioFile, TheOtherExpectationsAreRead) {
  const Scenario scenario = Load(kOther);
  EXPECT_EQ(scenario.expectation.outcome, DriveOutcome::kAborted);
  EXPECT_EQ(scenario.expectation.reasons.at(0), "why");
  EXPECT_EQ(scenario.expectation.latest_end, 30.0);
  EXPECT_EQ(scenario.expectation.fewest_contacts, 2);
  EXPECT_EQ(scenario.expectation.most_contacts, 3);
  EXPECT_EQ(scenario.expectation.never.at(0).text, "x");
}

// The error for the file `text`: one line with the file's name, which is left out here.
TEST_F(ScenarioFile, FilesThatAreNoScenarioAreOneLine) {
  const std::string good = kGood;
  const struct {
    std::string text;
    const char* complaint;
  } kCases[] = {
      {"", ":1: a scenario is made of keys and values; this file is empty"},
      {"# nothing\n", ":1: a scenario is made of keys and values; this file is empty"},
      {"hello", ":1: a scenario is made of keys and values, not 'hello'"},
      {"- a\n- b\n", ":1: a scenario is made of keys and values, not a list"},
      {std::string(1000, '\0'), ":1: not YAML: unknown escape character: \\x00"},
      {"\x7f"
       "ELF\x02\x01\x01",
       ":1: a scenario is made of keys and values, not '\\x7fELF"},
      {good + "---\n" + good, ":22: a second document begins; a scenario is one"},
      {good + "\tseed: 1\n", "not YAML"},
      {"start: *nowhere\n", ":1: not YAML: the referenced anchor is not defined"},
      {std::string(100'000, '['), ":1: nested too deeply for a scenario"},
      {std::string(20'000, '[') + std::string(20'000, ']'), ":1: nested too deeply for a scenario"},
      {good + std::string((1U << 20U), '#'), ": no scenario: it has more than 1048576 bytes"},
      {"obstacles: &o\n  - *o\n", "the key 'map' is missing"},
      {"start: &s {x_m: *s, y_m: 1}\nmap: hall.yaml\n",
       ":1: 'start.x_m' must be a number of metres from -1000000 to 1000000, not a map"},
  };
  for (const auto& wrong : kCases) {
    const std::string file = folder_.Write("wrong.yaml", wrong.text);
    try {
      LoadScenario(file);
      ADD_FAILURE() << "no complaint, expected: " << wrong.complaint;
    } catch (const ScenarioError& error) {
      EXPECT_THAT(error.what(), StartsWith(file));
      EXPECT_THAT(error.what(), HasSubstr(wrong.complaint));
      EXPECT_THAT(error.what(), Not(HasSubstr("\n")));
    }
  }
}

TEST_F(ScenarioFile, ByteOrderMarksLineEndsAndAnchorsChangeNothing) {
  std::string carriage_returns;
  for (const char c : kGood) {
    carriage_returns += c == '\n' ? std::string("\r\n") : std::string(1, c);
  }
  std::string anchored = kGood;
  anchored.replace(anchored.find("{x_m: 1.0"), 1, "&start {");
  for (const std::string& text : {"\xef\xbb\xbf" + kGood, carriage_returns, anchored}) {
    EXPECT_EQ(Load(text).setup.seed, 12u);
    EXPECT_EQ(Load(text).expectation.events.at(1).text, "stalled");
  }
}

TEST_F(ScenarioFile, ListsHaveAnEnd) {
  std::string points;
  for (int i = 0; i < 10'001; ++i) {
    points += "[1.0, 3.0], ";
  }
  EXPECT_THAT(
      ComplaintAbout("[1.0, 3.0], ", points),
      HasSubstr("test.yaml:4: 'path.drawn_m' must be a list of points [x, y] in metres, 10000 at most, not of 10002"));
}

TEST_F(ScenarioFile, TheRobotsClockStaysOneThatRosCanTell) {
  const auto complaint = [&](const std::string& faults) {
    return ComplaintAbout("clock_jumps: {at_s: 5, by_s: -50}", faults);
  };
  EXPECT_EQ(complaint("clock_jumps: [{at_s: 5, by_s: -103}, {at_s: 0, by_s: 50}]"), "");
  EXPECT_THAT(
      complaint("clock_jumps: [{at_s: 9, by_s: 500}, {at_s: 5, by_s: -105}]"),
      HasSubstr("test.yaml:16: 'robot.clock_jumps[1].by_s' would bring the clock, which begins at 100 s, down"));
  EXPECT_THAT(complaint("clock_jumps: {at_s: 60, by_s: -150}\n  clock_stops: {at_s: 0, for_s: 60}"),
              HasSubstr("test.yaml:16: 'robot.clock_jumps.by_s' would bring the clock, which begins at 100 s, down"));
  EXPECT_THAT(complaint("clock_stops: [{at_s: 1, for_s: 5}, {at_s: 5, for_s: 5}]"),
              HasSubstr("test.yaml:16: 'robot.clock_stops[1].at_s' must not be before the end of the stop above it"));
  std::string jumps;
  for (int i = 0; i < 2200; ++i) {
    jumps += "{at_s: 5, by_s: 1000000}, ";
  }
  EXPECT_THAT(complaint("clock_jumps: [" + jumps + "]"), HasSubstr("by_s' would bring the clock beyond 2^31 s"));
}

TEST_F(ScenarioFile, ThePlacesOfWhatOnlyTheMapCanRefuseAreKept) {
  const ScenarioPlaces drawn = Load(kGood).places;
  EXPECT_THAT(drawn.map, EndsWith("test.yaml:1: 'map'"));
  EXPECT_THAT(drawn.start, EndsWith("test.yaml:2: 'start'"));
  EXPECT_THAT(drawn.goal, EndsWith("test.yaml:4: 'path.drawn_m[1]'"));
  const std::string begin = "map: hall.yaml\nstart: {x_m: 1.0, y_m: 3.0}\n";
  const std::string end = "expect: {outcome: reached}\n";
  EXPECT_THAT(Load(begin + "goal:\n  x_m: 2\n  y_m: 3\n" + end).places.goal, EndsWith("test.yaml:4: 'goal'"));
  const ScenarioPlaces points = Load(begin + "path:\n  way_points_m:\n    - [1, 2]\n    - [3, 4]\n" + end).places;
  EXPECT_THAT(points.way_points, ElementsAre(EndsWith("test.yaml:5: 'path.way_points_m[0]'")));
  EXPECT_THAT(points.goal, EndsWith("test.yaml:6: 'path.way_points_m[1]'"));
}

TEST_F(ScenarioFile, EachComplaintSaysWhatIsWanted) {
  EXPECT_THAT(ComplaintAbout("seed: 12", "seed: \"12\""),
              HasSubstr("'seed' must be a whole number from 0 to 2147483647, not the text '12'"));
  EXPECT_THAT(ComplaintAbout("x_m: 5.0", "x_m: !!str 5.0"), HasSubstr("from -1000000 to 1000000, not the text '5.0'"));
  EXPECT_THAT(ComplaintAbout("seen: false", "seen: 'false'"), HasSubstr("must be true or false, not the text 'false'"));
  EXPECT_THAT(ComplaintAbout("path:\n  drawn_m: [[1.0, 3.0], [11.0, 3.0]]", "path:"),
              HasSubstr("'path' must be 'plan it', or have 'drawn_m' or 'way_points_m'"));
  EXPECT_THAT(ComplaintAbout("path:\n  drawn_m: [[1.0, 3.0], [11.0, 3.0]]", "path: [1, 2]"),
              HasSubstr("'path' must be 'plan it', or have 'drawn_m' or 'way_points_m'"));
  EXPECT_THAT(ComplaintAbout("held_bumper: {side: right}", "held_bumper: right"),
              HasSubstr("'robot.held_bumper' must be a list of keys and values each, not 'right'"));
  EXPECT_THAT(ComplaintAbout("\"stop: stalled\"", "stop: stalled"),
              HasSubstr("and holds a map; a text with a colon stands in quotes"));
}

TEST_F(ScenarioFile, WhatNoMapReachesIsOneLineWithItsPlaceAndKey) {
  EXPECT_THAT(ComplaintAbout("[11.0, 3.0]", "[1.0e+7, 3.0]"), HasSubstr("test.yaml:4: 'path.drawn_m' must be"));
  EXPECT_THAT(ComplaintAbout("x_m: 5.0", "x_m: -1e300"), HasSubstr("test.yaml:7: 'obstacles[0].disc.x_m' must be"));
  EXPECT_THAT(ComplaintAbout("[5.0, 4.0]", "[5.0, 1e7]"), HasSubstr("test.yaml:11: 'obstacles[0].moves.to_m' must be"));
  EXPECT_THAT(ComplaintAbout("held_bumper: {side: right}", "pushes: {at_s: 3, x_m: 1e300}"),
              HasSubstr("test.yaml:14: 'robot.pushes.x_m' must be a number of metres from -100 to 100"));
  EXPECT_THAT(ComplaintAbout("held_bumper: {side: right}", "pose_jumps: {at_s: 3, y_m: 1e5}"),
              HasSubstr("test.yaml:14: 'robot.pose_jumps.y_m' must be a number of metres from -100 to 100"));
}

TEST_F(ScenarioFile, AMissingFileOrAFolderIsNamed) {
  EXPECT_THROW(LoadScenario("/nowhere/at/all.yaml"), ScenarioError);
  EXPECT_THROW(LoadScenario(folder_.path().string()), ScenarioError);
}

}  // namespace
}  // namespace controller_base::demo
