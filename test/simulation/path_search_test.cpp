#include "simulation/path_search.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "follower/geometry.h"
#include "simulation/known_map.h"

namespace controller_base::simulation {
namespace {

class PathSearch : public testing::Test {
 protected:
  // Two rooms of 3 m x 4 m with a door of 0.8 m between them, in walls of one cell.
  PathSearch() : map_(122, 80, 0.05, -1.0, 0.0) {
    for (unsigned int my = 0; my < 80; ++my) {
      if (my < 50 || my > 65) {
        map_.setCost(60, my, costmap_2d::LETHAL_OBSTACLE);
      }
    }
  }

  nav_msgs::Path Search(const nav_core::math::Vec2d& start, const nav_core::math::Vec2d& goal) const {
    return SearchPath(KnownMap(map_), start, goal);
  }

  costmap_2d::Costmap2D map_;
};

TEST_F(PathSearch, ThePathLeadsFromStartToGoalThroughTheDoor) {
  const nav_core::math::Vec2d start(0.5, 0.5);
  const nav_core::math::Vec2d goal(4.1, 0.6);
  const nav_msgs::Path path = Search(start, goal);
  ASSERT_GE(path.poses.size(), 2u);
  EXPECT_EQ(path.header.frame_id, "map");
  EXPECT_EQ(follower::Distance(start, path.poses.front().pose.position), 0.0);
  EXPECT_EQ(follower::Distance(goal, path.poses.back().pose.position), 0.0);
  const costmap_2d::Costmap2D inflated = KnownMap(map_).WholeMap();
  for (std::size_t i = 1; i < path.poses.size(); ++i) {
    const geometry_msgs::Point& point = path.poses[i].pose.position;
    unsigned int mx = 0;
    unsigned int my = 0;
    ASSERT_TRUE(inflated.worldToMap(point.x, point.y, mx, my));
    EXPECT_FALSE(inflated.IsLethalObstacle(mx, my)) << i;
    EXPECT_LT(follower::Distance(path.poses[i - 1].pose.position, point), 0.09) << i;
  }
}

TEST_F(PathSearch, ItKeepsToTheMiddleOfTheDoor) {
  double crossing_y = 0.0;
  for (const geometry_msgs::PoseStamped& pose : Search({0.5, 0.5}, {4.1, 0.6}).poses) {
    if (std::abs(pose.pose.position.x - 2.025) < 0.05) {
      crossing_y = pose.pose.position.y;
    }
  }
  EXPECT_NEAR(crossing_y, 2.9, 0.15);
}

TEST_F(PathSearch, HeadingsFollowThePath) {
  const nav_msgs::Path path = Search({0.5, 0.5}, {0.5, 3.0});
  const geometry_msgs::Quaternion& middle = path.poses[path.poses.size() / 2].pose.orientation;
  EXPECT_NEAR(2.0 * std::atan2(middle.z, middle.w), 0.5 * follower::kPi, 0.2);
}

TEST_F(PathSearch, StartEqualToGoalIsAPathOfTwoPosesOrMore) {
  EXPECT_GE(Search({0.5, 0.5}, {0.5, 0.5}).poses.size(), 2u);
}

TEST_F(PathSearch, AGoalTooCloseToAWallIsReplacedByTheNearestPlaceBesideIt) {
  const nav_core::math::Vec2d goal(1.82, 1.0);  // the wall's face is at 2.0
  const nav_msgs::Path path = Search({0.5, 0.5}, goal);
  ASSERT_FALSE(path.poses.empty());
  EXPECT_GT(follower::Distance(goal, path.poses.back().pose.position), 0.0);
  EXPECT_LT(follower::Distance(goal, path.poses.back().pose.position), kSnapDistance);
}

TEST_F(PathSearch, ThereIsNoPathIntoAWallOrThroughAClosedDoor) {
  EXPECT_TRUE(Search({0.5, 0.5}, {2.02, 1.0}).poses.empty());
  for (unsigned int my = 50; my <= 65; ++my) {
    map_.setCost(60, my, costmap_2d::LETHAL_OBSTACLE);
  }
  EXPECT_TRUE(Search({0.5, 0.5}, {4.1, 0.6}).poses.empty());
}

TEST_F(PathSearch, UnknownCellsAreCrossedOnlyWhereThereIsNoOtherWay) {
  for (unsigned int my = 30; my < 45; ++my) {
    map_.setCost(60, my, costmap_2d::NO_INFORMATION);  // a second, nearer door that nobody has looked at
  }
  bool crosses = false;
  const auto crosses_unknown = [](const nav_msgs::Path& path) {
    for (const geometry_msgs::PoseStamped& pose : path.poses) {
      if (std::abs(pose.pose.position.x - 2.025) < 0.05 && pose.pose.position.y < 2.3) {
        return true;
      }
    }
    return false;
  };
  crosses = crosses_unknown(Search({0.5, 1.8}, {4.1, 1.8}));
  EXPECT_FALSE(crosses);
  for (unsigned int my = 50; my <= 65; ++my) {
    map_.setCost(60, my, costmap_2d::LETHAL_OBSTACLE);
  }
  EXPECT_TRUE(crosses_unknown(Search({0.5, 1.8}, {4.1, 1.8})));
}

TEST_F(PathSearch, PlacesFarAwayAreReachedByNoPath) {
  for (const double far : {7.0, 1e6, -1e12, 1e300}) {
    EXPECT_TRUE(Search({0.5, 0.5}, {far, 1.0}).poses.empty()) << far;
    EXPECT_TRUE(Search({0.5, far}, {1.0, 1.0}).poses.empty()) << far;
  }
}

// The search can be interrupted in any of its steps.
TEST(LargePathSearch, TellsHowFarItIsAndMayBeEnded) {
  costmap_2d::Costmap2D map(800, 800, 0.05, 0.0, 0.0);
  for (unsigned int my = 0; my < 760; ++my) {
    map.setCost(400, my, costmap_2d::LETHAL_OBSTACLE);  // a detour that looks at half of the map
  }
  const KnownMap known(map);
  std::vector<std::string> steps;
  const auto hear = [&](const std::string& step) { steps.push_back(step.substr(0, step.find(' '))); };
  ASSERT_FALSE(SearchPath(known, {1.0, 20.0}, {39.0, 20.0}, hear).poses.empty());
  for (const std::string step : {"inflating", "planning", "smoothing"}) {
    EXPECT_THAT(steps, testing::Contains(step));
    const auto interrupt = [&](const std::string& told) {
      if (told.rfind(step, 0) == 0) {
        throw Interrupted();
      }
    };
    EXPECT_THROW(SearchPath(known, {1.0, 20.0}, {39.0, 20.0}, interrupt), Interrupted) << step;
  }
}

// A wall of virtual boxes across the first room leaves 0.5 m free at its upper end.
TEST_F(PathSearch, ItLeadsAroundVirtualBoxes) {
  std::vector<follower::VirtualBox> boxes;
  for (double y = 0.0; y < 3.5; y += 0.1) {
    boxes.emplace_back().center.x = 1.0;
    boxes.back().center.y = y;
    boxes.back().heading = 0.5 * follower::kPi;
  }
  const nav_msgs::Path path = SearchPath(KnownMap(map_), {0.5, 0.5}, {1.5, 0.5}, {}, boxes);
  ASSERT_FALSE(path.poses.empty());
  double highest = 0.0;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    highest = std::max(highest, pose.pose.position.y);
  }
  EXPECT_GT(highest, 3.4);
  boxes.emplace_back().center.y = 3.65;
  boxes.back().center.x = 1.0;
  boxes.back().heading = 0.5 * follower::kPi;
  for (const double y : {3.55, 3.75, 3.85, 3.95}) {
    boxes.push_back(boxes.back());
    boxes.back().center.y = y;
  }
  EXPECT_TRUE(SearchPath(KnownMap(map_), {0.5, 0.5}, {1.5, 0.5}, {}, boxes).poses.empty());
  EXPECT_FALSE(SearchPath(KnownMap(map_), {0.5, 0.5}, {1.5, 0.5}).poses.empty());
}

}  // namespace
}  // namespace controller_base::simulation
