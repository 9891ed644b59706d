#include "robot/turned_grid.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "test/support/paths.h"

namespace controller_base_test {
namespace {

using controller_base::robot::Grid;
using controller_base::robot::GridBytes;
using controller_base::robot::InOtherFrame;
using testing::DoubleNear;
using testing::ElementsAre;

constexpr double kPi = 3.14159265358979323846;
constexpr std::uint8_t kOutside = 255;
constexpr std::uint8_t kLethal = 254;

// 3 x 2 cells of 1 m from (10, 20) on.
GridBytes Source() { return {{3, 2, 1.0, 10.0, 20.0}, {1, 2, 3, 4, 5, 6}}; }

TEST(InOtherFrame, AGridThatIsOnlyMovedKeepsItsCells) {
  const GridBytes moved = InOtherFrame(Source(), PoseAt(-7.5, 0.25).pose, kOutside, kLethal);
  EXPECT_THAT(moved.bytes, ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(moved.grid.origin_x, DoubleNear(2.5, 1e-9));
  EXPECT_THAT(moved.grid.origin_y, DoubleNear(20.25, 1e-9));
}

TEST(InOtherFrame, ATurnByHalfReversesTheCells) {
  const GridBytes turned = InOtherFrame(Source(), PoseAt(0.0, 0.0, kPi).pose, kOutside, kLethal);
  EXPECT_THAT(turned.bytes, ElementsAre(6, 5, 4, 3, 2, 1));
  EXPECT_THAT(turned.grid.origin_x, DoubleNear(-13.0, 1e-9));
  EXPECT_THAT(turned.grid.origin_y, DoubleNear(-22.0, 1e-9));
}

TEST(InOtherFrame, CellsBeyondTheCornersAreOutside) {
  GridBytes square{{3, 3, 1.0, -1.5, -1.5}, {1, 2, 3, 4, 5, 6, 7, 8, 9}};
  const GridBytes quarter = InOtherFrame(square, PoseAt(0.0, 0.0, 0.5 * kPi).pose, kOutside, kLethal);
  EXPECT_THAT(quarter.bytes, ElementsAre(7, 4, 1, 8, 5, 2, 9, 6, 3));
  const GridBytes eighth = InOtherFrame(square, PoseAt(0.0, 0.0, 0.25 * kPi).pose, 0, kLethal);
  EXPECT_THAT(eighth.bytes, ElementsAre(4, 1, 2, 7, 5, 3, 8, 9, 6));
  square.grid = {9, 1, 1.0, -4.5, -0.5};
  const GridBytes bar = InOtherFrame(square, PoseAt(0.0, 0.0, 0.5 * kPi).pose, kOutside, kLethal);
  EXPECT_THAT(bar.bytes,
              ElementsAre(kOutside, kOutside, kOutside, kOutside, 5, kOutside, kOutside, kOutside, kOutside));
}

// Sampled places alone would miss it in some of these turns.
TEST(InOtherFrame, ASingleLethalCellStaysWithinHalfACellsDiagonal) {
  GridBytes source{{40, 40, 0.05, 3.0, -2.0}, {}};
  source.bytes.assign(source.grid.cells(), 0);
  source.bytes[source.grid.Index(30, 12)] = kLethal;
  for (int degrees = 0; degrees < 360; degrees += 7) {
    const double yaw = degrees * kPi / 180.0;
    const GridBytes turned = InOtherFrame(source, PoseAt(0.7, -0.3, yaw).pose, kOutside, kLethal);
    const double x = 3.0 + 30.5 * 0.05;
    const double y = -2.0 + 12.5 * 0.05;
    const double there_x = 0.7 + std::cos(yaw) * x - std::sin(yaw) * y;
    const double there_y = -0.3 + std::sin(yaw) * x + std::cos(yaw) * y;
    double nearest = 1.0;
    for (int cell = 0; cell < 1600; ++cell) {
      if (turned.bytes[static_cast<std::size_t>(cell)] == kLethal) {
        nearest = std::min(nearest, std::hypot(turned.grid.origin_x + (cell % 40 + 0.5) * 0.05 - there_x,
                                               turned.grid.origin_y + (cell / 40 + 0.5) * 0.05 - there_y));
      }
    }
    EXPECT_LE(nearest, 0.0354) << degrees;
  }
}

}  // namespace
}  // namespace controller_base_test
