#include "follower/planning_costs.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

#include "follower/inflation.h"

namespace controller_base::follower {
namespace {

// A lethal cell in the middle of a free map with cells of 0.05 m.
class PlanningCosts : public testing::Test {
 protected:
  PlanningCosts() { map_.setCost(20, 20, costmap_2d::INSCRIBED_INFLATED_OBSTACLE); }

  int CostAt(unsigned int mx, double clearance = 0.16) const {
    return WithPlanningCosts(map_, clearance).getCost(mx, 20);
  }

  costmap_2d::Costmap2D map_{41, 41, 0.05, 0.0, 0.0};
};

TEST_F(PlanningCosts, WithinTheClearanceCellsCostTheMoreTheNearerTheyAre) {
  EXPECT_EQ(CostAt(20), costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  EXPECT_GT(CostAt(21), CostAt(22));
  EXPECT_GT(CostAt(22), CostAt(23));
  EXPECT_GE(CostAt(23), 95);  // 0.15 m away: a byte that LocalPlanner adds extra cost for
  EXPECT_LE(CostAt(21), 127);
  EXPECT_EQ(CostAt(24), costmap_2d::FREE_SPACE);
  EXPECT_GE(CostAt(24, 0.21), 95);
}

TEST_F(PlanningCosts, BeyondTheClearanceNothingIsCharged) {
  map_.setCost(30, 20, 120);
  map_.setCost(31, 20, 60);
  map_.setCost(32, 20, costmap_2d::NO_INFORMATION);
  EXPECT_EQ(CostAt(30), Inflation::kLowestRingCost - 1);
  EXPECT_EQ(CostAt(31), 60);
  EXPECT_EQ(CostAt(32), costmap_2d::NO_INFORMATION);
}

TEST_F(PlanningCosts, AMapWithoutObstaclesStaysAsItIs) {
  map_.setCost(20, 20, 50);
  EXPECT_EQ(CostAt(20), 50);
  EXPECT_EQ(CostAt(21), 0);
}

}  // namespace
}  // namespace controller_base::follower
