#include "follower/inflation.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

namespace controller_base::follower {
namespace {

constexpr double kResolutions[] = {0.02, 0.05, 0.1, 0.2};

TEST(Inflation, NoCostOutsideTheInscribedDistanceTurnsNegativeWhenReadAsSigned) {
  for (const double resolution : kResolutions) {
    const Inflation inflation(resolution);
    for (double distance = inflation.inscribed_distance() + 1e-6; distance < 2.0; distance += 0.001) {
      EXPECT_LE(inflation.CostAt(distance), 127) << distance;
    }
  }
}

TEST(Inflation, CostsFallWithTheDistance) {
  const Inflation inflation(0.05);
  EXPECT_EQ(inflation.CostAt(0.0), costmap_2d::LETHAL_OBSTACLE);
  EXPECT_EQ(inflation.CostAt(0.05), costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  EXPECT_EQ(inflation.CostAt(inflation.inscribed_distance()), costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  EXPECT_EQ(inflation.CostAt(inflation.radius()), costmap_2d::FREE_SPACE);
  for (double distance = 0.0; distance < 1.0; distance += 0.001) {
    EXPECT_GE(inflation.CostAt(distance), inflation.CostAt(distance + 0.001)) << distance;
  }
}

// The robot touches when an obstacle's cell reaches within its radius of its centre.
TEST(Inflation, AFreeCellLeavesRoomForTheRobot) {
  for (const double resolution : kResolutions) {
    EXPECT_GT(Inflation(resolution).inscribed_distance() - 0.5 * resolution, kRobotRadius);
  }
}

TEST(Inflation, AWiderRobotKeepsFartherAway) {
  EXPECT_NEAR(Inflation(0.05, 0.37).inscribed_distance() - Inflation(0.05, 0.17).inscribed_distance(), 0.2, 1e-12);
}

TEST(DistanceToObstacles, IsMeasuredBetweenCentresAndLargeWhereThereIsNoObstacle) {
  cv::Mat obstacles = cv::Mat::zeros(10, 10, CV_8UC1);
  EXPECT_GE(DistanceToObstacles(obstacles, 0.05, 3.0).at<float>(4, 4), 3.0F);
  obstacles.at<unsigned char>(0, 0) = 1;
  const cv::Mat distances = DistanceToObstacles(obstacles, 0.05, 3.0);
  EXPECT_EQ(distances.at<float>(0, 0), 0.0F);
  EXPECT_NEAR(distances.at<float>(4, 3), 0.25, 1e-6);
}

}  // namespace
}  // namespace controller_base::follower
