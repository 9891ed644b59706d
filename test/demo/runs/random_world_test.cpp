#include "demo/runs/random_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "demo/maps/apartment.h"
#include "follower/inflation.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "test/support/hall.h"

namespace controller_base::demo {
namespace {

using testing::HasSubstr;

class RandomWorldsOfTheApartment : public testing::Test {
 protected:
  RandomWorldsOfTheApartment()
      : map_(simulation::LoadMap(CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml")),
        worlds_("apartment.yaml", map_, simulation::Conditions::kKind) {}

  costmap_2d::Costmap2D map_;
  RandomWorlds worlds_;
};

// Figures of one world: when worlds change, the seeds named in reports no longer reproduce their runs.
TEST_F(RandomWorldsOfTheApartment, ASeedIsAWorldForEver) {
  const simulation::DriveSetup world = worlds_.Draw(7).setup;
  const simulation::DriveSetup again =
      RandomWorlds("apartment.yaml", map_, simulation::Conditions::kKind).Draw(7).setup;
  EXPECT_EQ(world.map_file, "apartment.yaml");
  EXPECT_EQ(world.seed, 7u);
  ASSERT_EQ(world.obstacles.size(), again.obstacles.size());
  EXPECT_EQ(world.start.x, again.start.x);
  EXPECT_EQ(world.start.yaw, again.start.yaw);
  for (std::size_t i = 0; i < world.obstacles.size(); ++i) {
    EXPECT_EQ(world.obstacles[i].center.x, again.obstacles[i].center.x);
    EXPECT_EQ(world.obstacles[i].low, again.obstacles[i].low);
  }
}

TEST_F(RandomWorldsOfTheApartment, AreTheSamePlacesInAHarshWorld) {
  const RandomWorld kind = worlds_.Draw(7);
  const RandomWorld harsh = RandomWorlds("apartment.yaml", map_, simulation::Conditions::kHarsh).Draw(7);
  EXPECT_EQ(harsh.setup.shapes, simulation::Shapes::kTrue);
  EXPECT_GT(harsh.setup.faults.laser_noise, 0.0);
  EXPECT_EQ(kind.setup.shapes, simulation::Shapes::kCells);
  EXPECT_EQ(kind.setup.faults.laser_noise, 0.0);
  EXPECT_EQ(harsh.path, kind.path);
  ASSERT_EQ(harsh.setup.obstacles.size(), kind.setup.obstacles.size());
  for (std::size_t i = 0; i < kind.setup.obstacles.size(); ++i) {
    EXPECT_EQ(harsh.setup.obstacles[i].center.x, kind.setup.obstacles[i].center.x);
    EXPECT_EQ(harsh.setup.obstacles[i].low, kind.setup.obstacles[i].low);
  }
}

TEST_F(RandomWorldsOfTheApartment, OtherSeedsAreOtherWorlds) {
  const simulation::DriveSetup a = worlds_.Draw(1).setup;
  const simulation::DriveSetup b = worlds_.Draw(2).setup;
  EXPECT_NE(a.start.x, b.start.x);
  EXPECT_NE(a.goal.y, b.goal.y);
}

TEST_F(RandomWorldsOfTheApartment, HaveObstaclesOfAllKindsNearThePathAndAwayFromItsEnds) {
  int boxes = 0;
  int discs = 0;
  int low = 0;
  int all = 0;
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    const RandomWorld world = worlds_.Draw(seed);
    EXPECT_GE(Distance(world.setup.start, world.setup.goal), kShortestRandomDrive);
    for (const simulation::Obstacle& obstacle : world.setup.obstacles) {
      ++all;
      (obstacle.radius > 0.0 ? discs : boxes) += 1;
      low += obstacle.low ? 1 : 0;
      EXPECT_GE(Distance(obstacle.center, world.setup.start), kClearedRadius);
      EXPECT_GE(follower::Distance(obstacle.center, world.setup.goal), kClearedRadius);
      double from_path = 1e9;
      for (const geometry_msgs::PoseStamped& pose : world.path.poses) {
        from_path = std::min(from_path, follower::Distance(obstacle.center, pose.pose.position));
      }
      EXPECT_LE(from_path, 0.6);
    }
  }
  EXPECT_GT(all, 100);
  EXPECT_NEAR(discs, 0.4 * all, 0.1 * all);
  EXPECT_NEAR(low, 0.25 * all, 0.1 * all);
  EXPECT_EQ(boxes + discs, all);
}

TEST_F(RandomWorldsOfTheApartment, CanBeDrivenAsTheyAre) {
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    const RandomWorld world = worlds_.Draw(seed);
    const nav_msgs::Path path = PlanDrive(map_, world.setup);
    ASSERT_EQ(path.poses.size(), world.path.poses.size()) << seed;
    EXPECT_EQ(path.poses.back().pose.position.x, world.path.poses.back().pose.position.x);
    EXPECT_EQ(path.poses.back().pose.position.x, world.setup.goal.x);
  }
}

TEST(RandomWorlds, AMapWithoutRoomIsSaidSo) {
  const costmap_2d::Costmap2D room(60, 60, 0.05, 0.0, 0.0);  // 3 m x 3 m
  const costmap_2d::Costmap2D full(200, 200, 0.05, 0.0, 0.0, costmap_2d::LETHAL_OBSTACLE);
  for (const costmap_2d::Costmap2D* map : {&room, &full}) {
    try {
      RandomWorlds("small.yaml", *map, simulation::Conditions::kKind).Draw(1);
      FAIL();
    } catch (const simulation::DriveError& error) {
      EXPECT_EQ(error.problem(), simulation::DriveProblem::kMap);
      EXPECT_STREQ(error.what(), "small.yaml: no room for a random drive; it needs 4 m from start to goal");
    }
  }
}

TEST_F(RandomWorldsOfTheApartment, EachStepIsToldAndMayBeTheLast) {
  std::set<std::string> steps;
  const auto note = [&](const std::string& step) { steps.insert(step.substr(0, step.find(':'))); };
  RandomWorlds("apartment.yaml", map_, simulation::Conditions::kKind, note).Draw(1, note);
  EXPECT_THAT(steps, testing::ElementsAre("inflating the map", "looking for free cells", "looking for rooms on the map",
                                          "smoothing the path"));
  for (const std::string& last : steps) {
    const auto interrupt = [&](const std::string& step) {
      if (step.rfind(last, 0) == 0) {
        throw simulation::Interrupted();
      }
    };
    EXPECT_THROW(RandomWorlds("apartment.yaml", map_, simulation::Conditions::kKind, interrupt).Draw(1, interrupt),
                 simulation::Interrupted)
        << last;
  }
}

}  // namespace
}  // namespace controller_base::demo
