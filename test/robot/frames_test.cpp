#include "robot/frames.h"

#include <geometry_msgs/TransformStamped.h>
#include <gmock/gmock.h>

#include <cmath>
#include <string>

#include "test/support/paths.h"

namespace controller_base_test {
namespace {

using controller_base::robot::IsFinite;
using controller_base::robot::OriginIn;
using controller_base::robot::PathIn;
using controller_base::robot::PoseIn;
using controller_base::robot::Transformed;
using testing::HasSubstr;

constexpr double kPi = 3.14159265358979323846;

geometry_msgs::TransformStamped Transform(const std::string& parent, const std::string& child, double x, double y,
                                          double yaw, double stamp) {
  geometry_msgs::TransformStamped transform;
  transform.header.frame_id = parent;
  transform.header.stamp = ros::Time(stamp);
  transform.child_frame_id = child;
  transform.transform.translation.x = x;
  transform.transform.translation.y = y;
  transform.transform.rotation = Heading(yaw);
  return transform;
}

// odom lies at (1, 2) of the map and is turned by a quarter to the left; the robot drives along x of odom, 1 m/s.
class FramesTest : public testing::Test {
 protected:
  FramesTest() {
    buffer_.setTransform(Transform("map", "odom", 1.0, 2.0, 0.5 * kPi, 0.0), "test", /*is_static=*/true);
    for (const double time : {10.0, 11.0}) {
      buffer_.setTransform(Transform("odom", "base_link", time - 10.0, 0.0, 0.0, time), "test");
    }
  }

  tf2::BufferCore buffer_;
  std::string error_;
};

void ExpectPose(const geometry_msgs::Pose& pose, double x, double y, double yaw) {
  EXPECT_NEAR(pose.position.x, x, 1e-9);
  EXPECT_NEAR(pose.position.y, y, 1e-9);
  EXPECT_NEAR(2.0 * std::atan2(pose.orientation.z, pose.orientation.w), yaw, 1e-9);
}

TEST_F(FramesTest, WhereTheRobotWasAtAStampIsBetweenTheTransforms) {
  const auto pose = OriginIn(buffer_, "map", "base_link", ros::Time(10.25), &error_);
  ASSERT_TRUE(pose) << error_;
  ExpectPose(*pose, 1.0, 2.25, 0.5 * kPi);
}

TEST_F(FramesTest, StampZeroIsTheLatest) {
  const auto pose = OriginIn(buffer_, "map", "base_link", ros::Time(), &error_);
  ASSERT_TRUE(pose) << error_;
  ExpectPose(*pose, 1.0, 3.0, 0.5 * kPi);
}

TEST_F(FramesTest, ALeadingSlashIsPassedOver) {
  EXPECT_TRUE(OriginIn(buffer_, "/map", "/base_link", ros::Time(), &error_)) << error_;
}

TEST_F(FramesTest, NothingIsSaidOfATimeOrAFrameThatTfDoesNotKnow) {
  EXPECT_FALSE(OriginIn(buffer_, "map", "base_link", ros::Time(11.1), &error_));
  EXPECT_THAT(error_, HasSubstr("extrapolation"));
  EXPECT_FALSE(OriginIn(buffer_, "map", "laser", ros::Time(), &error_));
  EXPECT_THAT(error_, HasSubstr("laser"));
  EXPECT_FALSE(OriginIn(buffer_, "map", "", ros::Time(), &error_));
  EXPECT_EQ(error_, "it names no frame");
}

TEST_F(FramesTest, AGoalIsTransformedHoweverOldItIs) {
  geometry_msgs::PoseStamped goal = PoseAt(3.0, 0.0, 0.25 * kPi, "odom");
  goal.header.stamp = ros::Time(1.0);
  const auto pose = PoseIn(buffer_, "map", goal, &error_);
  ASSERT_TRUE(pose) << error_;
  EXPECT_EQ(pose->header.frame_id, "map");
  EXPECT_EQ(pose->header.stamp, ros::Time(1.0));
  ExpectPose(pose->pose, 1.0, 5.0, 0.75 * kPi);
}

TEST_F(FramesTest, AGoalMustBeAPose) {
  EXPECT_FALSE(PoseIn(buffer_, "map", PoseAt(std::nan(""), 0.0), &error_));
  EXPECT_EQ(error_, "it holds a number that is not finite");
  geometry_msgs::PoseStamped goal = PoseAt(1.0, 2.0);
  goal.pose.orientation.w = 0.0;
  EXPECT_FALSE(PoseIn(buffer_, "map", goal, &error_));
  EXPECT_EQ(error_, "its orientation is all zeros");
}

TEST_F(FramesTest, APathIsTransformedPoseByPose) {
  nav_msgs::Path path = PathOf({{0.0, 0.0}, {2.0, 1.0}}, "odom");
  path.poses[1].header.stamp = ros::Time(7.0);
  const auto result = PathIn(buffer_, "map", path, &error_);
  ASSERT_TRUE(result) << error_;
  EXPECT_EQ(result->header.frame_id, "map");
  ASSERT_EQ(result->poses.size(), 2u);
  ExpectPose(result->poses[0].pose, 1.0, 2.0, 0.5 * kPi);
  ExpectPose(result->poses[1].pose, 0.0, 4.0, 0.5 * kPi);
  EXPECT_EQ(result->poses[1].header.frame_id, "map");
  EXPECT_EQ(result->poses[1].header.stamp, ros::Time(7.0));
}

TEST_F(FramesTest, APathWithoutAFrameHasItsFirstPoses) {
  nav_msgs::Path path = PathOf({{0.0, 0.0}}, "odom");
  path.header.frame_id.clear();
  const auto result = PathIn(buffer_, "map", path, &error_);
  ASSERT_TRUE(result) << error_;
  ExpectPose(result->poses[0].pose, 1.0, 2.0, 0.5 * kPi);
}

TEST_F(FramesTest, APathMustHavePosesNumbersAndAFrame) {
  EXPECT_FALSE(PathIn(buffer_, "map", nav_msgs::Path(), &error_));
  EXPECT_EQ(error_, "it has no poses");
  EXPECT_FALSE(PathIn(buffer_, "map", PathOf({{0.0, 0.0}, {0.0, HUGE_VAL}}), &error_));
  EXPECT_EQ(error_, "it holds a number that is not finite");
  EXPECT_FALSE(PathIn(buffer_, "map", PathOf({{0.0, 0.0}}, ""), &error_));
  EXPECT_EQ(error_, "it names no frame");
}

TEST(Transformed, AnOrientationOfZerosStaysSo) {
  geometry_msgs::Pose pose = PoseAt(1.0, 0.0).pose;
  pose.orientation.w = 0.0;
  const geometry_msgs::Pose result = Transformed(pose, Transform("map", "odom", 0.0, 0.0, kPi, 0.0).transform);
  EXPECT_NEAR(result.position.x, -1.0, 1e-9);
  EXPECT_EQ(result.orientation.x, 0.0);
  EXPECT_EQ(result.orientation.y, 0.0);
  EXPECT_EQ(result.orientation.z, 0.0);
  EXPECT_EQ(result.orientation.w, 0.0);
}

TEST(IsFinite, LooksAtEveryNumber) {
  geometry_msgs::Pose pose = PoseAt(1.0, 2.0).pose;
  EXPECT_TRUE(IsFinite(pose));
  for (double* number : {&pose.position.x, &pose.position.y, &pose.position.z, &pose.orientation.x, &pose.orientation.y,
                         &pose.orientation.z, &pose.orientation.w}) {
    const double before = *number;
    for (const double wrong : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
      *number = wrong;
      EXPECT_FALSE(IsFinite(pose));
    }
    *number = before;
  }
}

}  // namespace
}  // namespace controller_base_test
