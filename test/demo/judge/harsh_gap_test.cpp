#include <gtest/gtest.h>

#include <atomic>

#include "controller_base/follower/outcome.h"
#include "simulation/closed_loop.h"
#include "simulation/harsh_world.h"
#include "test/support/hall.h"

// A gap between two obstacles that are not aligned with the grid, in the harsh world.
namespace controller_base_test {
namespace {

using controller_base::simulation::DriveRecord;
using controller_base::simulation::DriveSetup;

constexpr double kDepth = 4.0;  // m; the path leads along the middle

// Through a gap whose middle lies `aside` metres from the path.
DriveRecord DriveThroughGap(double width, double aside) {
  const costmap_2d::Costmap2D hall = controller_base::demo::Hall(kDepth);
  DriveSetup setup;
  setup.start = {1.0, 0.5 * kDepth, 0.0};
  setup.goal = {11.0, 0.5 * kDepth};
  const double middle = 0.5 * kDepth + aside;
  const double south = middle - 0.5 * width;
  const double north = kDepth - middle - 0.5 * width;
  setup.obstacles = {controller_base::demo::Box(6.0, 0.5 * south, 0.4, south),
                     controller_base::demo::Box(6.0, kDepth - 0.5 * north, 0.4, north)};
  MakeHarsh(&setup);
  const std::atomic<bool> never{false};
  return RunDrive(hall, setup, controller_base::demo::AlongHall(kDepth), {}, never);
}

class HarshGap : public testing::TestWithParam<double> {};

TEST_P(HarshGap, OfHalfAMetreIsPassedWithoutATouch) {
  const DriveRecord drive = DriveThroughGap(0.50, GetParam());
  EXPECT_EQ(drive.outcome.state, controller_base::follower::DriveState::kReached) << drive.outcome.reason;
  EXPECT_EQ(drive.contacts, 0);
}

INSTANTIATE_TEST_SUITE_P(OffTheGrid, HarshGap, testing::Values(0.0, 0.0125, 0.025, -0.0375, 0.26));

}  // namespace
}  // namespace controller_base_test
