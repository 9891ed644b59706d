#include "robot/follower_drive.h"

#include <gtest/gtest.h>
#include <ros/node_handle.h>
#include <ros/time.h>

namespace controller_base_test {
namespace {

namespace robot = controller_base::robot;
using controller_base::robot::DriveState;
using controller_base::robot::FollowerDrive;
using controller_base::robot::GridBytes;

geometry_msgs::PoseStamped PoseAt(double x) {
  geometry_msgs::PoseStamped pose;
  pose.header.frame_id = "map";
  pose.header.stamp = ros::Time::now();
  pose.pose.position.x = x;
  pose.pose.orientation.w = 1.0;
  return pose;
}

nav_msgs::Path PathAhead() {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.poses = {PoseAt(0.0), PoseAt(2.0)};
  return path;
}

// 6 m x 6 m around the robot, with a wall across its path.
GridBytes Walled() {
  GridBytes map{{120, 120, 0.05, -3.0, -3.0}, {}};
  map.bytes.assign(map.grid.cells(), 0);
  for (int my = 0; my < 120; ++my) {
    map.bytes[map.grid.Index(80, my)] = 254;
  }
  return map;
}

TEST(FollowerDrive, APlanEverySecondDoesNotHideThatThePathStaysBlocked) {
  ros::Time::setNow(ros::Time(100.0));
  FollowerDrive drive(ros::NodeHandle("drive"));
  const GridBytes costs = Walled();
  drive.Follow(PathAhead());
  drive.Cycle(PoseAt(0.0), costs, costs);
  ASSERT_EQ(drive.state(), DriveState::kBlocked);
  const ros::Time since = drive.blocked_since();
  for (int second = 1; second <= 3; ++second) {
    ros::Time::setNow(ros::Time(100.0 + second));
    drive.Follow(PathAhead());
    drive.Cycle(PoseAt(0.0), costs, costs);
    EXPECT_EQ(drive.state(), DriveState::kBlocked);
    EXPECT_EQ(drive.blocked_since(), since);
  }
}

// The speed in the second cycle after a contact in mid-drive; in the first the robot is stopped.
double SpeedAfterTouch(robot::Sectors sectors) {
  ros::Time::setNow(ros::Time(100.0));
  FollowerDrive drive(ros::NodeHandle("drive"));
  GridBytes costs = Walled();
  costs.bytes.assign(costs.grid.cells(), 0);
  drive.Follow(PathAhead());
  drive.Cycle(PoseAt(0.0), costs, costs);
  ros::Time::setNow(ros::Time(100.1));
  drive.Touch(sectors, ros::Time::now());
  drive.Cycle(PoseAt(0.0), costs, costs);
  ros::Time::setNow(ros::Time(100.2));
  return drive.Cycle(PoseAt(0.0), costs, costs).linear.x;
}

TEST(FollowerDrive, AContactInFrontOrAtASideMakesItBackOff) {
  EXPECT_LT(SpeedAfterTouch(robot::kFront), 0.0);
  EXPECT_LT(SpeedAfterTouch(robot::kLeft), 0.0);
}

TEST(FollowerDrive, AContactAtTheBackDoesNotMakeItBackOff) {
  EXPECT_GT(SpeedAfterTouch(robot::kBack), 0.0);
  EXPECT_GE(SpeedAfterTouch(robot::kRight | robot::kBack), 0.0);
}

TEST(FollowerDrive, AFreePathIsNotBlockedAnyMore) {
  ros::Time::setNow(ros::Time(100.0));
  FollowerDrive drive(ros::NodeHandle("drive"));
  GridBytes costs = Walled();
  drive.Follow(PathAhead());
  drive.Cycle(PoseAt(0.0), costs, costs);
  ASSERT_EQ(drive.state(), DriveState::kBlocked);
  costs.bytes.assign(costs.grid.cells(), 0);
  ros::Time::setNow(ros::Time(100.5));
  drive.Follow(PathAhead());
  drive.Cycle(PoseAt(0.0), costs, costs);
  EXPECT_EQ(drive.state(), DriveState::kDriving);
}

}  // namespace
}  // namespace controller_base_test
