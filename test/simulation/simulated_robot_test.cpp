#include "simulation/node/simulated_robot.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <tf2/buffer_core.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "follower/inflation.h"

namespace controller_base::simulation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kStep = 0.02;  // s

geometry_msgs::Twist Twist(double speed, double turn_rate) {
  geometry_msgs::Twist twist;
  twist.linear.x = speed;
  twist.angular.z = turn_rate;
  return twist;
}

// A hall of 10 x 10 m with a wall at x = 6 m.
class SimulatedRobotTest : public testing::Test {
 protected:
  SimulatedRobotTest() : map_(200, 200, 0.05, 0.0, 0.0) {
    for (unsigned int my = 0; my < 200; ++my) {
      map_.setCost(120, my, costmap_2d::LETHAL_OBSTACLE);
    }
    options_.start = {4.0, 5.0, 0.0};
    options_.range_noise = 0.0;
  }

  SimulatedRobot Make(const std::vector<Obstacle>& obstacles = {}) const { return {map_, obstacles, options_}; }

  static void Drive(SimulatedRobot* robot, double speed, double turn_rate, double seconds) {
    for (double time = 0.0; time < seconds; time += kStep) {
      robot->Take(Twist(speed, turn_rate));
      robot->Step(kStep);
    }
  }

  costmap_2d::Costmap2D map_;
  SimulatedRobotOptions options_;
};

TEST_F(SimulatedRobotTest, TheScanBeginsBehindAndTellsTheDistanceToTheWall) {
  const sensor_msgs::LaserScan scan = Make().Scan(ros::Time(7.0));
  ASSERT_EQ(scan.ranges.size(), 360u);
  EXPECT_EQ(scan.header.stamp, ros::Time(7.0));
  EXPECT_EQ(scan.header.frame_id, "laser");
  EXPECT_NEAR(scan.ranges[180], 2.0F, 1e-5F);                         // straight ahead
  EXPECT_NEAR(scan.ranges[240], 4.0F, 1e-5F);                         // 60 degrees to the left
  EXPECT_EQ(scan.ranges[0], std::numeric_limits<float>::infinity());  // nothing behind
  EXPECT_NEAR(scan.angle_min + 180.0F * scan.angle_increment, 0.0F, 1e-6F);
}

TEST_F(SimulatedRobotTest, OffTheGridABoxIsSeenFeltAndKeptAwayFromAsItIs) {
  Obstacle box;
  box.center = {5.013, 5.0};
  box.length = box.width = 0.5;
  options_.shapes = Shapes::kTrue;
  SimulatedRobot robot = Make({box});
  EXPECT_NEAR(robot.Scan(ros::Time()).ranges[180], 5.013 - 0.25 - 4.0, 1e-5);
  EXPECT_NEAR(robot.Clearance(), 5.013 - 0.25 - 4.0 - follower::kRobotRadius, 1e-6);
  Drive(&robot, 0.4, 0.0, 3.0);
  EXPECT_NEAR(robot.GroundTruth(ros::Time()).pose.pose.position.x, 5.013 - 0.25 - follower::kRobotRadius, 0.005);
  EXPECT_THAT(robot.TakeTouches(), ElementsAre("seen"));
}

TEST_F(SimulatedRobotTest, OffTheGridALowBoxIsFeltAlone) {
  Obstacle sill;
  sill.center = {5.013, 5.0};
  sill.length = sill.width = 0.5;
  sill.low = true;
  MakeHarsh(&options_);
  SimulatedRobot robot = Make({sill});
  EXPECT_NEAR(robot.Scan(ros::Time()).ranges[180], 2.0, 0.06);  // the wall, with noise
  EXPECT_EQ(robot.Clearance(), SimulatedRobot::kFarthestClearance);
  Drive(&robot, 0.4, 0.0, 3.0);
  EXPECT_THAT(robot.TakeTouches(), ElementsAre("hidden"));
  EXPECT_NE(robot.TakeBumperBits() & kBumperFront, 0);
}

// The robot touches the low box already when it runs into the wall.
TEST_F(SimulatedRobotTest, ATouchOfWhatIsHiddenDoesNotHideOneOfWhatIsSeen) {
  Obstacle sill;
  sill.center = {4.0, 5.275};
  sill.length = 6.0;
  sill.width = 0.2;
  sill.low = true;
  options_.shapes = Shapes::kTrue;
  options_.start = {4.0, 5.0, 0.3};
  SimulatedRobot robot = Make({sill});
  Drive(&robot, 0.2, 0.0, 1.0);
  EXPECT_THAT(robot.TakeTouches(), ElementsAre("hidden"));
  Obstacle box;
  box.center = {4.3, 5.0};
  box.length = box.width = 0.2;
  robot.Add(box);
  Drive(&robot, 0.0, -1.0, 0.6);
  Drive(&robot, 0.2, 0.0, 1.0);
  EXPECT_THAT(robot.TakeTouches(), ElementsAre("seen"));
}

TEST_F(SimulatedRobotTest, ACommandReachesTheWheelsAfterItsDelay) {
  options_.command_delay = 0.1;
  SimulatedRobot robot = Make();
  robot.Take(Twist(0.3, 0.0));
  for (int step = 0; step < 5; ++step) {
    robot.Step(kStep);
    EXPECT_EQ(robot.GroundTruth(ros::Time()).twist.twist.linear.x, 0.0) << step;
  }
  robot.Step(kStep);
  EXPECT_GT(robot.GroundTruth(ros::Time()).twist.twist.linear.x, 0.0);
}

TEST_F(SimulatedRobotTest, RangesAreAsNoisyAsTheOptionSays) {
  options_.range_noise = 0.01;
  SimulatedRobot robot = Make();
  double sum_of_squares = 0.0;
  constexpr int kScans = 1000;
  for (int i = 0; i < kScans; ++i) {
    sum_of_squares += std::pow(double{robot.Scan(ros::Time()).ranges[180]} - 2.0, 2);
  }
  EXPECT_NEAR(std::sqrt(sum_of_squares / kScans), 0.01, 0.001);
}

TEST_F(SimulatedRobotTest, TheLaserSeesWhatIsDroppedAndLooksOverWhatIsLow) {
  Obstacle box;
  box.center = {5.0, 5.0};
  box.length = box.width = 0.5;
  SimulatedRobot robot = Make();
  robot.Add(box);
  robot.Step(kStep);
  EXPECT_NEAR(robot.Scan(ros::Time()).ranges[180], 0.75F, 0.05F);
  box.low = true;
  EXPECT_NEAR(Make({box}).Scan(ros::Time()).ranges[180], 2.0F, 1e-5F);
}

TEST_F(SimulatedRobotTest, ItDrivesAsToldAndStopsWhenNobodyTellsItAnything) {
  SimulatedRobot robot = Make();
  Drive(&robot, 0.3, 0.0, 1.0);
  EXPECT_NEAR(robot.GroundTruth(ros::Time()).pose.pose.position.x, 4.25, 0.03);
  for (int i = 0; i < 100; ++i) {
    robot.Step(kStep);
  }
  EXPECT_EQ(robot.GroundTruth(ros::Time()).twist.twist.linear.x, 0.0);
}

TEST_F(SimulatedRobotTest, ACommandThatIsNoNumberMeansStandStill) {
  SimulatedRobot robot = Make();
  Drive(&robot, 0.3, 0.0, 1.0);
  Drive(&robot, std::nan(""), 0.0, 1.0);
  EXPECT_EQ(robot.GroundTruth(ros::Time()).twist.twist.linear.x, 0.0);
  Drive(&robot, 0.3, HUGE_VAL, 1.0);
  EXPECT_EQ(robot.GroundTruth(ros::Time()).twist.twist.linear.x, 0.0);
}

TEST_F(SimulatedRobotTest, PerfectOdometryIsTheTruthInItsOwnFrame) {
  SimulatedRobot robot = Make();
  Drive(&robot, 0.3, 0.5, 3.0);
  Drive(&robot, -0.2, 0.5, 1.0);
  const nav_msgs::Odometry truth = robot.GroundTruth(ros::Time());
  const nav_msgs::Odometry odometry = robot.Odometry(ros::Time());
  EXPECT_NEAR(odometry.pose.pose.position.x, truth.pose.pose.position.x - 4.0, 2e-3);
  EXPECT_NEAR(odometry.pose.pose.position.y, truth.pose.pose.position.y - 5.0, 2e-3);
  EXPECT_NEAR(odometry.pose.pose.orientation.z, truth.pose.pose.orientation.z, 1e-9);
}

double ErrorOfTransforms(const SimulatedRobot& robot) {
  tf2::BufferCore buffer;
  for (const geometry_msgs::TransformStamped& transform : robot.Transforms(ros::Time(5.0))) {
    buffer.setTransform(transform, "test");
  }
  const geometry_msgs::TransformStamped pose = buffer.lookupTransform("map", "base_link", ros::Time(5.0));
  const geometry_msgs::Point truth = robot.GroundTruth(ros::Time()).pose.pose.position;
  return std::hypot(pose.transform.translation.x - truth.x, pose.transform.translation.y - truth.y);
}

TEST_F(SimulatedRobotTest, TheLocalisationCorrectsTheOdometryInSteps) {
  options_.odometry_scale_error = 0.1;
  options_.odometry_turn_drift = 0.05;
  options_.localisation_period = 2.01;
  SimulatedRobot robot = Make();
  Drive(&robot, 0.4, 0.5, 2.0);
  EXPECT_GT(ErrorOfTransforms(robot), 0.05);
  Drive(&robot, 0.4, 0.5, kStep);
  EXPECT_LT(ErrorOfTransforms(robot), 1e-9);
}

TEST_F(SimulatedRobotTest, TheOdometryDoesNotNoticeThatTheRobotIsLifted) {
  SimulatedRobot robot = Make();
  robot.Place({2.0, 3.0, 1.0});
  EXPECT_EQ(robot.GroundTruth(ros::Time()).pose.pose.position.x, 2.0);
  EXPECT_EQ(robot.Odometry(ros::Time()).pose.pose.position.x, 0.0);
  EXPECT_GT(ErrorOfTransforms(robot), 1.0);
  Drive(&robot, 0.0, 0.0, 1.1);
  EXPECT_LT(ErrorOfTransforms(robot), 1e-9);
}

TEST_F(SimulatedRobotTest, ATouchIsToldOnceAndWhetherItWasSeen) {
  SimulatedRobot robot = Make();
  Drive(&robot, 0.5, 0.0, 6.0);
  EXPECT_EQ(robot.TakeBumperBits(), kBumperFront);
  EXPECT_THAT(robot.TakeTouches(), ElementsAre("seen"));
  EXPECT_THAT(robot.TakeTouches(), IsEmpty());
  Drive(&robot, 0.0, 0.0, 1.0);
  robot.TakeBumperBits();
  EXPECT_EQ(robot.TakeBumperBits(), 0);

  Obstacle low;
  low.center = {4.6, 5.0};
  low.radius = 0.1;
  low.low = true;
  SimulatedRobot other = Make({low});
  Drive(&other, 0.3, 0.0, 3.0);
  EXPECT_THAT(other.TakeTouches(), ElementsAre("hidden"));
}

TEST_F(SimulatedRobotTest, ClearanceIsFromTheBodyToWhatTheLaserCanSee) {
  options_.start = {5.5, 5.0, 0.0};
  EXPECT_NEAR(Make().Clearance(), 0.5 - follower::kRobotRadius, 1e-9);
  options_.start = {2.0, 5.0, 0.0};
  EXPECT_EQ(Make().Clearance(), SimulatedRobot::kFarthestClearance);
}

}  // namespace
}  // namespace controller_base::simulation
