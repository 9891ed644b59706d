#include "simulation/world.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

#include <cmath>

#include "follower/geometry.h"

namespace controller_base::simulation {
namespace {

// An empty map of 4 m x 4 m, and what stands on it. Cell (mx, my) begins at (mx, my) times 0.1 m.
class WorldTest : public testing::Test {
 protected:
  static Obstacle Disc(double x, double y, double radius) {
    Obstacle disc;
    disc.center = {x, y};
    disc.radius = radius;
    return disc;
  }

  static int SolidCells(const World& world) {
    int count = 0;
    for (int my = 0; my < 40; ++my) {
      for (int mx = 0; mx < 40; ++mx) {
        count += world.IsSolid(mx, my) ? 1 : 0;
      }
    }
    return count;
  }

  costmap_2d::Costmap2D map_{40, 40, 0.1, 0.0, 0.0};
};

TEST_F(WorldTest, ADiscIsRoundAndABoxIsTurned) {
  const World disc(map_, {Disc(2.0, 2.0, 0.5)});
  EXPECT_TRUE(disc.IsSolid(24, 20));
  EXPECT_FALSE(disc.IsSolid(24, 24));
  EXPECT_NEAR(SolidCells(disc), follower::kPi * 25.0, 4.0);
  const World box(map_, {{"box", {2.0, 2.0}, 0.25 * follower::kPi, 1.0, 0.2, false}});
  EXPECT_TRUE(box.IsSolid(22, 22));
  EXPECT_FALSE(box.IsSolid(22, 17));
}

TEST_F(WorldTest, AnObstacleAppearsAndVanishes) {
  Obstacle disc = Disc(2.0, 2.0, 0.3);
  disc.appears_at = 1.0;
  disc.vanishes_at = 2.0;
  World world(map_, {disc});
  EXPECT_FALSE(world.IsSolid(20, 20));
  world.SetTime(0.95);
  EXPECT_FALSE(world.IsSolid(20, 20));
  world.SetTime(1.0);
  EXPECT_TRUE(world.IsSolid(20, 20));
  EXPECT_TRUE(world.StopsLaser(20, 20));
  world.SetTime(2.0);
  EXPECT_FALSE(world.IsSolid(20, 20));
  EXPECT_FALSE(world.StopsLaser(20, 20));
}

TEST_F(WorldTest, AnObstacleMovesStraightToItsDestinationAndStaysThere) {
  Obstacle disc = Disc(1.0, 1.0, 0.2);
  disc.destination = nav_core::math::Vec2d(1.0, 3.0);
  disc.speed = 0.5;
  disc.moves_at = 2.0;
  World world(map_, {disc});
  world.SetTime(2.0);
  EXPECT_TRUE(world.IsSolid(10, 10));
  world.SetTime(4.0);
  EXPECT_FALSE(world.IsSolid(10, 10));
  EXPECT_TRUE(world.IsSolid(10, 20));
  world.SetTime(60.0);
  EXPECT_FALSE(world.IsSolid(10, 20));
  EXPECT_TRUE(world.IsSolid(10, 30));
  EXPECT_EQ(disc.CenterAt(60.0).y, 3.0);
}

TEST_F(WorldTest, OneThatStartsWhereItEndsStaysThere) {
  Obstacle disc = Disc(1.0, 1.0, 0.2);
  disc.destination = disc.center;
  disc.speed = 0.5;
  EXPECT_EQ(disc.CenterAt(3.0).x, 1.0);
  EXPECT_EQ(disc.CenterAt(3.0).y, 1.0);
}

TEST_F(WorldTest, WhatIsLowStopsTheBodyAlone) {
  Obstacle sill = Disc(2.0, 2.0, 0.2);
  sill.low = true;
  const World world(map_, {sill});
  EXPECT_TRUE(world.IsSolid(20, 20));
  EXPECT_FALSE(world.StopsLaser(20, 20));
}

TEST_F(WorldTest, WallsStayWhenAnObstacleMovesAwayFromThem) {
  map_.setCost(10, 10, costmap_2d::LETHAL_OBSTACLE);
  Obstacle disc = Disc(1.0, 1.0, 0.2);
  disc.vanishes_at = 1.0;
  World world(map_, {disc});
  world.Add(Disc(3.0, 3.0, 0.2));
  EXPECT_TRUE(world.IsSolid(30, 30));
  world.SetTime(1.0);
  EXPECT_TRUE(world.IsSolid(10, 10));
  EXPECT_FALSE(world.IsSolid(9, 9));
  EXPECT_TRUE(world.IsSolid(30, 30));
}

TEST_F(WorldTest, ObstaclesBeyondTheMapAreOfNoConcern) {
  const World world(map_, {Disc(4.0, 4.0, 0.3), Disc(-50.0, 2.0, 0.3), Disc(2.0, 1e6, 0.3)});
  EXPECT_TRUE(world.IsSolid(39, 39));
  EXPECT_NEAR(SolidCells(world), follower::kPi * 9.0 / 4.0, 3.0);
}

}  // namespace
}  // namespace controller_base::simulation
