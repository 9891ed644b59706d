#include <tf2_msgs/TFMessage.h>

#include <algorithm>
#include <limits>

#include "test/robot/node_fixture.h"

namespace controller_base_test {
namespace {

using testing::HasSubstr;

constexpr double kLongestReaction = 0.25;  // s, until the wheels are told to stand
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// An input that is cut: the switch of the simulated robot, and what the diagnostic is about.
struct Cut {
  std::string output;
  std::string input;
};

class CutInput : public NodeFixture, public testing::WithParamInterface<Cut> {
 protected:
  // Drives, and cuts the input in mid-drive.
  void CutOnTheWay() {
    node_.setParam("bumper_timeout", 0.2);
    if (GetParam().output == "clock") {
      robot_.setParam("publish_clock", true);
      ros::param::set("use_sim_time", true);
    }
    Start();
    ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
    GoTo(2.8, 0.9);
    ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
    Switch(GetParam().output, false);
    cut_ = ros::WallTime::now();
  }
  void ExpectStoppedInTime() {
    ASSERT_TRUE(Eventually([this] { return commands_.back().IsToStand(); }, 2.0));
    EXPECT_LE((commands_.back().when - cut_).toSec(), kLongestReaction);
    ASSERT_TRUE(Eventually([this] { return !ErrorOf(GetParam().input).empty(); }, 3.0));
    const std::string error = ErrorOf(GetParam().input);
    EXPECT_THAT(error, HasSubstr(GetParam().input + ": "));
    EXPECT_THAT(error, testing::AnyOf(HasSubstr("since "), HasSubstr("stands still for")));
    EXPECT_EQ(state_, "waiting");
    EXPECT_THAT(reason_, HasSubstr(GetParam().input));
  }

  ros::WallTime cut_;
};

TEST_P(CutInput, ForGoodTheRobotStands) {
  CutOnTheWay();
  ExpectStoppedInTime();
  const std::size_t first = commands_.size();
  Listen(1.5);
  EXPECT_GT(commands_.size(), first + 10);  // the wheels are told again and again
  EXPECT_TRUE(std::all_of(commands_.begin() + static_cast<std::ptrdiff_t>(first), commands_.end(),
                          [](const Told& command) { return command.IsToStand(); }));
}

TEST_P(CutInput, ForASecondTheRobotStandsAndThenDrivesOnToItsGoal) {
  CutOnTheWay();
  ExpectStoppedInTime();
  Eventually([this] { return (ros::WallTime::now() - cut_).toSec() > 1.0; });
  Switch(GetParam().output, true);
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 40.0)) << state_ << ": " << reason_;
  EXPECT_TRUE(IsAt(2.8, 0.9));
  EXPECT_EQ(ErrorOf(GetParam().input), "");
}

INSTANTIATE_TEST_SUITE_P(Each, CutInput,
                         testing::Values(Cut{"scan", "scan"}, Cut{"tf", "pose"}, Cut{"clock", "clock"},
                                         Cut{"bumper", "bumper"}),
                         [](const auto& cut) { return cut.param.output; });

TEST_F(NodeFixture, StandsWhenTheScanHoldsNoNumbers) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  GoTo(5.0, 0.9);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
  ros::Publisher scans = handle_.advertise<sensor_msgs::LaserScan>("scan", 1);
  ASSERT_TRUE(Eventually([&] { return scans.getNumSubscribers() > 1; }));
  Switch("scan", false);
  const ros::WallTime cut = ros::WallTime::now();
  const auto send = [&] {
    sensor_msgs::LaserScan scan;
    scan.header.frame_id = "laser";
    scan.header.stamp = ros::Time::now();
    scan.angle_increment = 0.1F;
    scan.range_max = 6.0F;
    scan.ranges.assign(60, std::numeric_limits<float>::quiet_NaN());
    scans.publish(scan);
    Listen(0.02);
  };
  while (!commands_.back().IsToStand() && (ros::WallTime::now() - cut).toSec() < 2.0) {
    send();
  }
  EXPECT_LE((commands_.back().when - cut).toSec(), kLongestReaction);
  for (int i = 0; i < 100 && ErrorOf("scan").find("none of its ranges is a number") == std::string::npos; ++i) {
    send();
  }
  EXPECT_THAT(ErrorOf("scan"), HasSubstr("none of its ranges is a number"));
}

TEST_F(NodeFixture, DrivesByOdometryAloneAndStandsWhenItHoldsNoNumber) {
  node_.setParam("pose_source", "odometry");
  node_.setParam("use_map", false);
  node_.setParam("global_frame", "wheels");
  ros::Publisher odometry = handle_.advertise<nav_msgs::Odometry>("odom", 10);
  StartRobot();
  Switch("odom", false);
  Switch("tf", false);
  StartNode();
  ros::Publisher frames = handle_.advertise<tf2_msgs::TFMessage>("/tf_static", 1, /*latch=*/true);
  tf2_msgs::TFMessage mount;
  mount.transforms.emplace_back();
  mount.transforms[0].header.frame_id = "base_link";
  mount.transforms[0].child_frame_id = "laser";
  mount.transforms[0].transform.rotation.w = 1.0;
  frames.publish(mount);
  // The robot's own odometry, and then one without numbers.
  bool is_sick = false;
  Hear<nav_msgs::Odometry>("ground_truth", [&](const nav_msgs::Odometry& truth) {
    nav_msgs::Odometry message = truth;
    message.pose.pose.position.x = is_sick ? kNan : truth.pose.pose.position.x;
    odometry.publish(message);
  });
  nav_msgs::Path path;
  path.header.frame_id = "wheels";
  path.poses = {PoseAt(1.0, 0.9), PoseAt(2.0, 0.9)};  // of these, the path's own frame counts
  Listen(1.0);
  plans_.publish(path);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); })) << state_ << ": " << reason_;
  is_sick = true;
  const ros::WallTime cut = ros::WallTime::now();
  ASSERT_TRUE(Eventually([this] { return commands_.back().IsToStand(); }, 2.0));
  EXPECT_LE((commands_.back().when - cut).toSec(), kLongestReaction);
  ASSERT_TRUE(Eventually([this] { return !ErrorOf("pose").empty(); }, 3.0));
  EXPECT_THAT(ErrorOf("pose"), HasSubstr("not finite"));
}

}  // namespace
}  // namespace controller_base_test
