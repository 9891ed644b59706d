#include "simulation/laser.h"

#include <costmap_2d/cost_values.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace controller_base::simulation {
namespace {

class Laser : public testing::Test {
 protected:
  Laser() : map_(240, 240, 0.05, 0.0, 0.0) {}

  // The cells that the laser hits from a pose, in a world with these obstacles.
  KnownMap Scan(const follower::Pose2d& robot, const std::vector<Obstacle>& obstacles) const {
    KnownMap known(map_);
    ScanWithLaser(World(map_, obstacles), robot, &known);
    return known;
  }

  costmap_2d::Costmap2D map_;
};

TEST_F(Laser, ItSeesTheNearFaceOfABoxAndNotTheFarOne) {
  const KnownMap known = Scan({3.01, 6.02, 0.4}, {{"box", {5.0, 6.0}, 0.0, 0.5, 0.5, false}});
  EXPECT_TRUE(known.IsSeen(95, 120));   // x 4.75: the near face
  EXPECT_FALSE(known.IsSeen(96, 120));  // behind it
  EXPECT_FALSE(known.IsSeen(104, 120));
  EXPECT_FALSE(known.IsSeen(94, 120));  // in front of it
}

TEST_F(Laser, ItDoesNotSeeWhatIsBehindAWall) {
  for (unsigned int my = 80; my < 160; ++my) {
    map_.setCost(90, my, costmap_2d::LETHAL_OBSTACLE);
  }
  const std::vector<Obstacle> box = {{"box", {5.5, 6.0}, 0.0, 0.3, 0.3, false}};
  EXPECT_FALSE(Scan({3.0, 6.0, 0.0}, box).IsSeen(107, 120));
  EXPECT_TRUE(Scan({3.0, 6.0, 0.0}, box).IsSeen(90, 120));
  EXPECT_TRUE(Scan({7.0, 6.0, 0.0}, box).IsSeen(112, 120));  // from the box's own side
}

TEST_F(Laser, ALineOfSightThroughAGapIsAsNarrowAsTheGap) {
  for (unsigned int my = 0; my < 240; ++my) {
    if (my < 118 || my > 122) {
      map_.setCost(90, my, costmap_2d::LETHAL_OBSTACLE);
    }
  }
  const KnownMap known = Scan({3.0, 6.025, 0.0}, {{"wall", {6.0, 6.0}, 0.5 * follower::kPi, 4.0, 0.1, false}});
  // The gap of 0.25 m is 1.5 m away, the wall behind it 3 m: 0.5 m of the wall are in sight.
  int seen = 0;
  for (int my = 80; my < 160; ++my) {
    seen += known.IsSeen(119, my) ? 1 : 0;
  }
  EXPECT_GE(seen, 8);
  EXPECT_LE(seen, 11);
}

TEST_F(Laser, ItLooksOverWhatIsLow) {
  const KnownMap known =
      Scan({3.0, 6.0, 0.0}, {{"sill", {4.0, 6.0}, 0.0, 0.1, 0.6, true}, {"box", {5.0, 6.0}, 0.0, 0.3, 0.3, false}});
  EXPECT_FALSE(known.IsSeen(79, 120));
  EXPECT_FALSE(known.IsSeen(80, 120));
  EXPECT_TRUE(known.IsSeen(97, 120));
}

TEST_F(Laser, ItSeesAsFarAsItsRange) {
  const double face = 3.0 + kLaserRange;
  const auto wall_at = [&](double x) { return Obstacle{"wall", {x + 0.05, 6.0}, 0.0, 0.1, 2.0, false}; };
  EXPECT_TRUE(Scan({3.01, 6.0, 0.0}, {wall_at(face)}).IsSeen(160, 120));
  EXPECT_FALSE(Scan({2.94, 6.0, 0.0}, {wall_at(face)}).IsSeen(160, 120));
}

TEST_F(Laser, ItForgetsWhatHasGone) {
  KnownMap known(map_);
  ScanWithLaser(World(map_, {{"box", {5.0, 6.0}, 0.0, 0.3, 0.3, false}}), {3.0, 6.0, 0.0}, &known);
  ASSERT_TRUE(known.IsSeen(97, 120));
  ScanWithLaser(World(map_, {}), {3.0, 6.0, 0.0}, &known);
  EXPECT_FALSE(known.IsSeen(97, 120));
}

TEST_F(Laser, NearACornerOfTheMapItSeesNothingBeyond) {
  const KnownMap known = Scan({0.01, 11.99, 1.0}, {});
  EXPECT_FALSE(known.IsSeen(-1, 239));
  EXPECT_FALSE(known.IsSeen(0, 239));
}

}  // namespace
}  // namespace controller_base::simulation
