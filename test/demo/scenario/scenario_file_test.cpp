#include "scenario/scenario_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "drive.h"
#include "robot.h"
#include "scenario/expectation.h"
#include "test/demo/temporary_folder.h"

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
  EXPECT_THAT(scenario.map_file, EndsWith("maps/hall.yaml"));
  EXPECT_NEAR(scenario.start.yaw, 0.5 * kPi, 1e-12);
  EXPECT_EQ(scenario.path_kind, PathKind::kDrawn);
  EXPECT_EQ(scenario.goal.x, 11.0);
  ASSERT_EQ(scenario.obstacles.size(), 1u);
  const Obstacle& cart = scenario.obstacles.front();
  EXPECT_TRUE(cart.low);
  EXPECT_FALSE(cart.IsThere(1.9));
  EXPECT_TRUE(cart.IsThere(2.0));
  EXPECT_FALSE(cart.IsThere(9.0));
  EXPECT_NEAR(cart.CenterAt(5.0).y, 3.0, 1e-12);
  EXPECT_NEAR(cart.CenterAt(60.0).y, 4.0, 1e-12);
  ASSERT_TRUE(scenario.faults.stuck_wheels);
  EXPECT_TRUE(scenario.faults.stuck_wheels->wheels.left);
  EXPECT_FALSE(scenario.faults.stuck_wheels->wheels.right);
  ASSERT_EQ(scenario.faults.false_bumpers.size(), 1u);
  EXPECT_EQ(scenario.faults.false_bumpers.front().bits, kBumperRight);
  EXPECT_EQ(scenario.faults.contact_delivery.delay, 0.1);
  EXPECT_EQ(scenario.seed, 12u);
  EXPECT_EQ(scenario.expectation.outcome, ExitStatus::kNotReached);
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

TEST_F(ScenarioFile, AMissingFileIsNamed) { EXPECT_THROW(LoadScenario("/nowhere/at/all.yaml"), ScenarioError); }

TEST(ExpectationTest, WhatDidNotComeTrueIsTold) {
  DriveRecord drive;
  drive.status = ExitStatus::kReached;
  drive.verdict = "goal reached";
  drive.contacts = 2;
  drive.events = {{ros::Time(1.0), "path", {}, "new path"}, {ros::Time(2.0), "arrival", {}, "0.04 m"}};
  Expectation expectation;
  expectation.outcome = ExitStatus::kReached;
  expectation.reasons = {"reached"};
  expectation.events = {{"path", "new"}, {"arrival", ""}};
  EXPECT_TRUE(Unmet(expectation, drive).empty());
  expectation.events = {{"arrival", ""}, {"path", ""}};  // the wrong way round
  EXPECT_EQ(Unmet(expectation, drive).size(), 1u);
  expectation.never = {{"path", "new"}};
  EXPECT_EQ(Unmet(expectation, drive).size(), 2u);
  expectation.most_contacts = 1;
  EXPECT_EQ(Unmet(expectation, drive).size(), 3u);
  expectation.reasons = {"aborted"};
  EXPECT_EQ(Unmet(expectation, drive).size(), 4u);
  expectation.outcome = ExitStatus::kAborted;
  EXPECT_EQ(Unmet(expectation, drive).size(), 5u);
}

}  // namespace
}  // namespace controller_base_demo
