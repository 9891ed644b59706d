#include "demo/scenario/scenario_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "demo/judge/expectation.h"
#include "simulation/robot.h"
#include "test/support/temporary_folder.h"

namespace controller_base_demo {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

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

class ScenarioFile : public testing::Test {
 protected:
  // What is said about the text with `from` replaced.
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

  controller_base_test::TemporaryFolder folder_;
};

TEST_F(ScenarioFile, EverythingIsRead) {
  const Scenario scenario = Load(kGood);
  EXPECT_THAT(scenario.setup.map_file, EndsWith("maps/hall.yaml"));
  EXPECT_NEAR(scenario.setup.start.yaw, 0.5 * kPi, 1e-12);
  EXPECT_EQ(scenario.setup.path_kind, PathKind::kDrawn);
  EXPECT_EQ(scenario.setup.goal.x, 11.0);
  ASSERT_EQ(scenario.setup.obstacles.size(), 1u);
  const Obstacle& cart = scenario.setup.obstacles.front();
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
  EXPECT_EQ(scenario.setup.faults.false_bumpers.front().bits, kBumperRight);
  EXPECT_EQ(scenario.setup.faults.contact_delivery.delay, 0.1);
  EXPECT_EQ(scenario.setup.seed, 12u);
  EXPECT_EQ(scenario.expectation.outcome, DriveOutcome::kNotReached);
  ASSERT_EQ(scenario.expectation.events.size(), 2u);
  EXPECT_EQ(scenario.expectation.events[1].kind, "stop");
  EXPECT_EQ(scenario.expectation.events[1].text, "stalled");
}

TEST_F(ScenarioFile, WhatIsWrongIsOneLineWithItsPlaceAndKey) {
  const struct {
    const char* from;
    const char* to;
    const char* complaint;
  } kCases[] = {
      {"seed: 12", "sed: 12", "test.yaml:17: unknown key 'sed'; did you mean 'seed'?"},
      {"radius_m: 0.2", "radius_cm: 20", "test.yaml:7: unknown key 'obstacles[0].disc.radius_cm'; it is 'radius_m'"},
      {"speed_mps: 0.5", "speed_kmh: 2", "test.yaml:11: unknown key 'obstacles[0].moves.speed_kmh'; it is 'speed_mps'"},
      {"late_by_s: 0.1", "late_by_ms: 100", "test.yaml:15: unknown key 'robot.contacts.late_by_ms'; it is 'late_by_s'"},
      {"x_m: 1.0", "x_m: 1 m", "test.yaml:2: 'start.x_m' must be a number of metres, not '1 m'"},
      {"radius_m: 0.2", "radius_m: -0.2",
       "test.yaml:7: 'obstacles[0].disc.radius_m' must be a number from 0.001 to 1000"},
      {"radius_m: 0.2", "radius_m: .nan", "test.yaml:7: 'obstacles[0].disc.radius_m' must be a number from"},
      {"seen: false", "seen: perhaps", "test.yaml:8: 'obstacles[0].seen' must be true or false, not 'perhaps'"},
      {"side: left", "side: top", "test.yaml:13: 'robot.stuck_wheel.side' must be one of left, right, both, not 'top'"},
      {"vanishes_at_s: 9", "vanishes_at_s: 1",
       "test.yaml:10: 'obstacles[0].vanishes_at_s' must be later than appears_at_s"},
      {"seed: 12", "seed: 1.5", "test.yaml:17: 'seed' must be a whole number"},
      {"seed: 12", "seed: 12\nseed: 13", "test.yaml:18: the key 'seed' stands here a second time"},
      {"by_s: -50", "by_s: -500", "test.yaml:16: 'robot.clock_jumps.by_s' would bring the clock"},
      {"[11.0, 3.0]", "[11.0]", "test.yaml:4: 'path.drawn_m' must be [x, y] in metres"},
      {"outcome: no progress", "outcome: fine", "test.yaml:19: 'expect.outcome' must be one of reached, no progress"},
      {"from_s: 1}", "from_s: 3, until_s: 3}", "test.yaml:13: 'robot.stuck_wheel.until_s' must be later than from_s"},
      {"    seen: false", "    box: {}\n    seen: false", "test.yaml:8: 'obstacles[0].box' stands beside 'disc'"},
      {"map: ../maps/hall.yaml\n", "", "the key 'map' is missing"},
      {"seed: 12", "goal: {x_m: 1, y_m: 1}", "test.yaml:17: 'goal' is the last point of 'path'"},
      {"seed: 12", "seed: [", "not YAML"},
  };
  for (const auto& wrong : kCases) {
    const std::string complaint = ComplaintAbout(wrong.from, wrong.to);
    EXPECT_THAT(complaint, HasSubstr(wrong.complaint));
    EXPECT_THAT(complaint, Not(HasSubstr("\n")));
  }
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

TEST_F(ScenarioFile, TheOtherKeysAreReadAsWell) {
  const Scenario scenario = Load(R"(map: hall.yaml
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
)");
  EXPECT_EQ(scenario.setup.path_kind, PathKind::kPlanned);
  EXPECT_EQ(scenario.setup.goal.y, 4.0);
  const Obstacle& box = scenario.setup.obstacles.at(0);
  EXPECT_FALSE(box.low);
  EXPECT_EQ(box.radius, 0.0);
  EXPECT_EQ(box.length, 0.3);
  EXPECT_EQ(box.width, 0.4);
  EXPECT_NEAR(box.yaw, 0.5 * kPi, 1e-12);
  EXPECT_TRUE(box.IsThere(86400.0));
  const Faults& faults = scenario.setup.faults;
  EXPECT_EQ(faults.speed_limit, 0.2);
  ASSERT_TRUE(faults.stuck_wheels);
  EXPECT_TRUE(faults.stuck_wheels->wheels.left && faults.stuck_wheels->wheels.right);
  EXPECT_FALSE(faults.stuck_wheels->when.Contains(2.0));
  EXPECT_TRUE(faults.false_bumpers.at(0).bounces);
  EXPECT_EQ(faults.false_bumpers.at(0).bits, kBumperFront);
  EXPECT_TRUE(faults.contact_delivery.is_swapped);
  EXPECT_EQ(faults.pose_noise.position, 0.01);
  EXPECT_NEAR(faults.pose_noise.heading, 0.5 * kPi, 1e-12);
  ASSERT_EQ(faults.pose_jumps.size(), 2u);
  EXPECT_EQ(faults.pose_jumps[0].by.x, 0.5);
  EXPECT_NEAR(faults.pose_jumps[0].turn, kPi, 1e-12);
  EXPECT_EQ(faults.pose_jumps[1].at, 2.0);
  EXPECT_EQ(faults.pose_jumps[1].by.y, 0.25);
  EXPECT_EQ(faults.pushes.at(0).by.y, 0.2);
  EXPECT_EQ(faults.clock_stops.at(0).duration, 6.0);
  EXPECT_EQ(scenario.expectation.outcome, DriveOutcome::kAborted);
  EXPECT_EQ(scenario.expectation.reasons.at(0), "why");
  EXPECT_EQ(scenario.expectation.latest_end, 30.0);
  EXPECT_EQ(scenario.expectation.fewest_contacts, 2);
  EXPECT_EQ(scenario.expectation.most_contacts, 3);
  EXPECT_EQ(scenario.expectation.never.at(0).text, "x");
}

TEST_F(ScenarioFile, AMissingFileIsNamed) { EXPECT_THROW(LoadScenario("/nowhere/at/all.yaml"), ScenarioError); }

}  // namespace
}  // namespace controller_base_demo
