// The cost of a cycle of the node, from the scan to the twist, in distance transforms of its local map: a unit that
// does not depend on the speed of the machine.
#include <gmock/gmock.h>
#include <ros/node_handle.h>
#include <ros/time.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "robot/follower_drive.h"
#include "robot/frames.h"
#include "robot/goal_drive.h"
#include "robot/occupancy_map.h"
#include "robot/robot_map.h"
#include "simulation/map_file.h"
#include "simulation/node/simulated_robot.h"

namespace controller_base_test {
namespace {

using controller_base::robot::FollowerDrive;
using controller_base::robot::GoalDrive;
using controller_base::robot::GridBytes;
using controller_base::robot::kFree;
using controller_base::robot::kLethal;
using controller_base::robot::RobotMap;
using controller_base::simulation::SimulatedRobot;

constexpr double kPeriod = 0.05;         // s
constexpr int kCycles = 400;             // 20 s of driving
constexpr double kMostTransforms = 3.0;  // that a cycle may cost
constexpr double kMostOfACore = 0.01;    // at 20 Hz

// Seconds of this thread's processor time.
double CostOf(const std::function<void()>& work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  };
  const double before = now();
  work();
  return now() - before;
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double Mean(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) {
    sum += value;
  }
  return sum / static_cast<double>(values.size());
}

GridBytes BytesOf(const costmap_2d::Costmap2D& map) {
  GridBytes bytes{{static_cast<int>(map.getSizeInCellsX()), static_cast<int>(map.getSizeInCellsY()),
                   map.getResolution(), map.getOriginX(), map.getOriginY()},
                  {}};
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      bytes.bytes.push_back(map.getCost(mx, my) == costmap_2d::LETHAL_OBSTACLE ? kLethal : kFree);
    }
  }
  return bytes;
}

geometry_msgs::PoseStamped GoalAt(double x, double y) {
  geometry_msgs::PoseStamped goal;
  goal.pose.position.x = x;
  goal.pose.position.y = y;
  goal.pose.orientation.w = 1.0;
  return goal;
}

geometry_msgs::PoseStamped TruePose(const SimulatedRobot& robot, const ros::Time& now) {
  geometry_msgs::PoseStamped pose;
  pose.header.stamp = now;
  pose.header.frame_id = "map";
  pose.pose = robot.GroundTruth(now).pose.pose;
  return pose;
}

double CostOfTransform(const RobotMap::Local& local) {
  EXPECT_EQ(local.costs.grid.size_x, 120);
  const cv::Mat costs(120, 120, CV_8UC1, const_cast<std::uint8_t*>(local.costs.bytes.data()));
  const cv::Mat free = costs != kLethal;
  cv::Mat distances;
  return CostOf([&] { cv::distanceTransform(free, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE); });
}

TEST(CycleCost, IsAtMostThreeDistanceTransformsOfTheLocalMap) {
  const costmap_2d::Costmap2D walls = controller_base::simulation::LoadMap(CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml");
  controller_base::simulation::SimulatedRobotOptions options;
  options.start = {1.2, 6.9, 0.0};
  SimulatedRobot robot(walls, {}, options);
  RobotMap map(BytesOf(walls), 0.17, 6.0);
  FollowerDrive drive(ros::NodeHandle("cycle_cost"));
  GoalDrive goal_drive(&drive, {});
  goal_drive.GoTo(GoalAt(12.6, 4.4));

  std::vector<double> cycles;
  std::vector<double> transforms;
  for (int i = 0; i < kCycles; ++i) {
    const ros::Time now(100.0 + i * kPeriod);
    ros::Time::setNow(now);
    const sensor_msgs::LaserScan scan = robot.Scan(now);
    const geometry_msgs::PoseStamped pose = TruePose(robot, now);
    if (goal_drive.WantsPlan(now)) {
      goal_drive.Plan(pose, map, now);
    }
    geometry_msgs::Twist command;
    cycles.push_back(CostOf([&] {
      if (i % 2 == 0) {  // the laser's 10 Hz
        map.AddScan(scan, pose.pose);
      }
      command = goal_drive.Cycle(pose, &map);
    }));
    transforms.push_back(CostOfTransform(map.LocalAround(pose.pose.position.x, pose.pose.position.y)));
    robot.Take(command);
    robot.Step(kPeriod);
  }
  ASSERT_TRUE(goal_drive.IsActive()) << "the drive ended: " << drive.reason();
  const double transform = Median(transforms);
  std::printf("a cycle: %.0f us in the mean, %.0f us with a scan; a distance transform: %.0f us; ratio %.2f\n",
              1e6 * Mean(cycles), 1e6 * Median(cycles), 1e6 * transform, Mean(cycles) / transform);
  EXPECT_LE(Mean(cycles), kMostTransforms * transform);
  EXPECT_LE(Mean(cycles) / kPeriod, kMostOfACore);
}

}  // namespace
}  // namespace controller_base_test
