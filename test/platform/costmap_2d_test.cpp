// The grid of cost bytes: which point lies in which cell, what counts as an obstacle, and the laser's marks.
#include "costmap_2d/costmap_2d.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "test/support/maps.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

static_assert(!std::is_polymorphic_v<Costmap2D>);
static_assert(std::is_same_v<decltype(&Costmap2D::worldToMap),
                             bool (Costmap2D::*)(double, double, unsigned int&, unsigned int&) const>);
static_assert(
    std::is_same_v<decltype(&Costmap2D::getCost), unsigned char (Costmap2D::*)(unsigned int, unsigned int) const>);
static_assert(std::is_same_v<decltype(&Costmap2D::getSizeInCellsX), unsigned int (Costmap2D::*)() const>);
static_assert(std::is_same_v<decltype(&Costmap2D::getResolution), double (Costmap2D::*)() const>);
static_assert(std::is_same_v<decltype(&Costmap2D::getCharMap), const unsigned char* (Costmap2D::*)() const>);
static_assert(costmap_2d::FREE_SPACE == 0 && costmap_2d::INSCRIBED_INFLATED_OBSTACLE == 253 &&
              costmap_2d::LETHAL_OBSTACLE == 254 && costmap_2d::NO_INFORMATION == 255);

struct Cell {
  unsigned int mx;
  unsigned int my;
};

bool operator==(const Cell& a, const Cell& b) { return a.mx == b.mx && a.my == b.my; }
std::ostream& operator<<(std::ostream& out, const Cell& cell) {
  return out << "(" << cell.mx << ", " << cell.my << ")";
}

constexpr Cell kUntouched{4711, 815};

// The cell of a point; kUntouched when it is off the map.
Cell CellAt(const Costmap2D& map, double wx, double wy) {
  Cell cell = kUntouched;
  const bool on_map = map.worldToMap(wx, wy, cell.mx, cell.my);
  EXPECT_EQ(on_map, map.IsInmap(wx, wy)) << wx << ", " << wy;
  EXPECT_EQ(on_map, !(cell == kUntouched)) << wx << ", " << wy;
  return cell;
}

TEST(Costmap2D, KeepsWhatItWasBuiltWith) {
  const Costmap2D map(3, 5, 0.25, -1.5, 2.5, 17);
  EXPECT_EQ(map.getSizeInCellsX(), 3u);
  EXPECT_EQ(map.getSizeInCellsY(), 5u);
  EXPECT_EQ(map.getResolution(), 0.25);
  EXPECT_EQ(map.getOriginX(), -1.5);
  EXPECT_EQ(map.getOriginY(), 2.5);
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(map.getCharMap()[i], 17);
  }
}

TEST(Costmap2D, IsFreeWhenNothingIsSaid) {
  const Costmap2D map(2, 2, 1.0, 0.0, 0.0);
  EXPECT_EQ(map.getCost(1, 1), costmap_2d::FREE_SPACE);
}

TEST(Costmap2D, RefusesAMapWithoutCells) {
  EXPECT_THROW(Costmap2D(0, 1, 1.0, 0.0, 0.0), std::invalid_argument);
  EXPECT_THROW(Costmap2D(1, 0, 1.0, 0.0, 0.0), std::invalid_argument);
  EXPECT_THROW(Costmap2D(0, 0, 1.0, 0.0, 0.0), std::invalid_argument);
  EXPECT_NO_THROW(Costmap2D(1, 1, 1.0, 0.0, 0.0));
}

TEST(Costmap2D, RefusesAResolutionThatIsNotPositiveAndFinite) {
  for (const double resolution : {0.0, -0.0, -0.05, kNan, kInfinity, -kInfinity}) {
    EXPECT_THROW(Costmap2D(1, 1, resolution, 0.0, 0.0), std::invalid_argument) << resolution;
  }
  for (const double resolution : {1e-300, 1e300, std::numeric_limits<double>::denorm_min()}) {
    EXPECT_NO_THROW(Costmap2D(1, 1, resolution, 0.0, 0.0)) << resolution;
  }
}

TEST(Costmap2D, RefusesAnOriginThatIsNotFinite) {
  for (const double origin : {kNan, kInfinity, -kInfinity}) {
    EXPECT_THROW(Costmap2D(1, 1, 1.0, origin, 0.0), std::invalid_argument) << origin;
    EXPECT_THROW(Costmap2D(1, 1, 1.0, 0.0, origin), std::invalid_argument) << origin;
  }
}

TEST(Costmap2D, StoresEachCellByItself) {
  Costmap2D map(3, 4, 1.0, 0.0, 0.0);
  for (unsigned int my = 0; my < 4; ++my) {
    for (unsigned int mx = 0; mx < 3; ++mx) {
      map.setCost(mx, my, static_cast<unsigned char>(10 * my + mx));
    }
  }
  for (unsigned int my = 0; my < 4; ++my) {
    for (unsigned int mx = 0; mx < 3; ++mx) {
      EXPECT_EQ(map.getCost(mx, my), 10 * my + mx);
      EXPECT_EQ(map.getCharMap()[my * 3 + mx], 10 * my + mx);  // row by row, the lowest first
    }
  }
}

TEST(Costmap2D, CopiesAreIndependent) {
  Costmap2D map(2, 2, 1.0, 0.0, 0.0);
  Costmap2D copy = map;
  copy.setCost(1, 0, 9);
  copy.SetLaserObstacle(1, 0, true);
  EXPECT_EQ(map.getCost(1, 0), 0);
  EXPECT_FALSE(map.IsLaserObstacle(1, 0));
}

TEST(Costmap2D, MapToWorldGivesTheCellsCentre) {
  const Costmap2D map(10, 10, 0.5, -1.0, 3.0);
  double wx = 0.0;
  double wy = 0.0;
  map.mapToWorld(0, 0, wx, wy);
  EXPECT_DOUBLE_EQ(wx, -0.75);
  EXPECT_DOUBLE_EQ(wy, 3.25);
  map.mapToWorld(9, 4, wx, wy);
  EXPECT_DOUBLE_EQ(wx, 3.75);
  EXPECT_DOUBLE_EQ(wy, 5.25);
}

TEST(Costmap2D, LowerAndLeftEdgesBelongUpperAndRightOnesDoNot) {
  const Costmap2D map(4, 2, 0.5, -1.0, 3.0);
  EXPECT_EQ(CellAt(map, -1.0, 3.0), (Cell{0, 0}));
  EXPECT_EQ(CellAt(map, -0.5, 3.5), (Cell{1, 1}));
  EXPECT_EQ(CellAt(map, std::nextafter(-0.5, -1.0), std::nextafter(3.5, 0.0)), (Cell{0, 0}));
  EXPECT_EQ(CellAt(map, std::nextafter(1.0, 0.0), std::nextafter(4.0, 0.0)), (Cell{3, 1}));
  EXPECT_EQ(CellAt(map, 1.0, 3.5), kUntouched);
  EXPECT_EQ(CellAt(map, 0.0, 4.0), kUntouched);
  EXPECT_EQ(CellAt(map, std::nextafter(-1.0, -2.0), 3.5), kUntouched);
  EXPECT_EQ(CellAt(map, 0.0, std::nextafter(3.0, 0.0)), kUntouched);
}

TEST(Costmap2D, EveryEdgeBelongsToTheCellItBegins) {
  constexpr unsigned int kSize = 600;
  for (const double resolution : {0.05, 0.1, 0.025, 0.03, 0.01, 1.0 / 3, 0.07, 1.0, 0.5, 12.3, 1e-4, 1e-9, 1e9}) {
    for (const double origin : {0.0, -10.0, -12.34, 0.1, 7.77, -0.05, 1e3 + 0.1, -1e6 - 0.3, 1e-7}) {
      if (resolution < std::abs(origin) * 1e-14) {
        continue;  // the edges are not distinct doubles
      }
      const Costmap2D across(kSize, 1, resolution, origin, 0.0);
      const Costmap2D upwards(1, kSize, resolution, 0.0, origin);
      const auto edge = [&](unsigned int k) { return origin + k * resolution; };
      for (unsigned int k = 0; k < kSize; ++k) {
        const double inside = std::nextafter(edge(k + 1), -kInfinity);
        if (!(CellAt(across, edge(k), 0.0) == Cell{k, 0} && CellAt(upwards, 0.0, edge(k)) == Cell{0, k} &&
              CellAt(across, inside, 0.0) == Cell{k, 0} && CellAt(upwards, 0.0, inside) == Cell{0, k})) {
          ADD_FAILURE() << "cell " << k << " of resolution " << resolution << ", origin " << origin;
          break;
        }
      }
      EXPECT_EQ(CellAt(across, edge(kSize), 0.0), kUntouched);
      EXPECT_EQ(CellAt(upwards, 0.0, edge(kSize)), kUntouched);
      EXPECT_EQ(CellAt(across, std::nextafter(origin, -kInfinity), 0.0), kUntouched);
    }
  }
}

// Where several cells begin at one double, all but the last of them are empty.
TEST(Costmap2D, EdgesThatFallTogetherBelongToTheLastCellThatBeginsThere) {
  constexpr unsigned int kSize = 600;
  for (const double origin : {1e9, -1e9, 1e3 + 0.1, -1e6 - 0.3, 4e15, -4e15, 1e300}) {
    const double spacing = std::abs(std::nextafter(origin, kInfinity) - origin);  // of doubles
    for (const double cells_per_double : {0.7, 1.1, 1.5, 2.0, 3.0, 7.3, 20.0, 599.0, 1e6}) {
      const double resolution = spacing / cells_per_double;
      const Costmap2D map(kSize, 1, resolution, origin, 0.0);
      const auto edge = [&](unsigned int k) { return origin + k * resolution; };
      for (unsigned int k = 0; k < kSize; ++k) {
        unsigned int last = k;
        while (last < kSize && edge(last + 1) == edge(k)) {
          ++last;
        }
        const Cell expected = last == kSize ? kUntouched : Cell{last, 0};
        ASSERT_EQ(CellAt(map, edge(k), 0.0), expected) << "cell " << k << ", origin " << origin << ", " << resolution;
      }
    }
  }
}

TEST(Costmap2D, EveryCentreLiesInItsCell) {
  const Costmap2D map(200, 150, 0.05, -3.21, 7.77);
  for (unsigned int my = 0; my < 150; ++my) {
    for (unsigned int mx = 0; mx < 200; ++mx) {
      const geometry_msgs::Point center = CenterOf(map, mx, my);
      ASSERT_EQ(CellAt(map, center.x, center.y), (Cell{mx, my}));
    }
  }
}

TEST(Costmap2D, WhatIsNoPlaceIsOffTheMap) {
  const Costmap2D map(4, 4, 0.5, 0.0, 0.0);
  for (const double nowhere : {kNan, kInfinity, -kInfinity, 1e308, -1e308, 1e18, -1e18}) {
    EXPECT_EQ(CellAt(map, nowhere, 1.0), kUntouched) << nowhere;
    EXPECT_EQ(CellAt(map, 1.0, nowhere), kUntouched) << nowhere;
    EXPECT_EQ(CellAt(map, nowhere, nowhere), kUntouched) << nowhere;
  }
}

TEST(Costmap2D, APointOffAlongOneAxisLeavesBothIndicesAlone) {
  const Costmap2D map(4, 4, 0.5, 0.0, 0.0);
  unsigned int mx = 77;
  unsigned int my = 88;
  EXPECT_FALSE(map.worldToMap(1.0, 9.0, mx, my));
  EXPECT_FALSE(map.worldToMap(9.0, 1.0, mx, my));
  EXPECT_EQ(mx, 77u);
  EXPECT_EQ(my, 88u);
}

TEST(Costmap2D, HoldsACellOnEveryExtremeResolution) {
  for (const double resolution :
       {std::numeric_limits<double>::denorm_min(), 1e-300, 1e300, std::numeric_limits<double>::max()}) {
    const Costmap2D map(3, 3, resolution, 0.0, 0.0);
    EXPECT_EQ(CellAt(map, 0.0, resolution), (Cell{0, 1})) << resolution;
    EXPECT_EQ(CellAt(map, -resolution, 0.0), kUntouched) << resolution;
  }
}

TEST(Costmap2D, AMapWiderThanADoubleReachesStillGivesACellOfItsOwn) {
  const Costmap2D map(34, 1, 1e307, -1.7e308, 0.0);
  const unsigned int mx = CellAt(map, 1.65e308, 0.0).mx;
  EXPECT_GE(mx, 17u);  // the last cell whose left edge is a finite number
  EXPECT_LT(mx, 34u);
  EXPECT_EQ(CellAt(map, -1.65e308, 0.0), (Cell{0, 0}));
}

TEST(Costmap2D, CellsAreOnTheMapBelowItsSizeAndNotBelowZero) {
  const Costmap2D map(3, 2, 1.0, 0.0, 0.0);
  EXPECT_TRUE(map.IsInmap(0, 0));
  EXPECT_TRUE(map.IsInmap(2, 1));
  EXPECT_FALSE(map.IsInmap(3, 1));
  EXPECT_FALSE(map.IsInmap(2, 2));
  EXPECT_FALSE(map.IsInmap(-1, 0));
  EXPECT_FALSE(map.IsInmap(0, -1));
  EXPECT_FALSE(map.IsInmap(std::numeric_limits<int>::max(), 0));
  EXPECT_FALSE(map.IsInmap(0, std::numeric_limits<int>::min()));
}

TEST(Costmap2D, InscribedAndLethalBytesAreLethalAndNoOthers) {
  Costmap2D map(256, 1, 1.0, 0.0, 0.0);
  for (unsigned int byte = 0; byte < 256; ++byte) {
    map.setCost(byte, 0, static_cast<unsigned char>(byte));
    EXPECT_EQ(map.IsLethalObstacle(byte, 0), byte == 253 || byte == 254) << byte;
  }
}

TEST(Costmap2D, LaserMarksAreIndependentOfCosts) {
  Costmap2D map(256, 2, 1.0, 0.0, 0.0);
  for (unsigned int byte = 0; byte < 256; ++byte) {
    map.SetLaserObstacle(byte, 1, true);
    map.setCost(byte, 0, static_cast<unsigned char>(byte));
    map.setCost(byte, 1, static_cast<unsigned char>(byte));
  }
  for (unsigned int byte = 0; byte < 256; ++byte) {
    EXPECT_FALSE(map.IsLaserObstacle(byte, 0));
    EXPECT_TRUE(map.IsLaserObstacle(byte, 1));
    EXPECT_EQ(map.getCost(byte, 1), byte);
    EXPECT_EQ(map.IsLethalObstacle(byte, 1), byte == 253 || byte == 254);
  }
}

TEST(Costmap2D, LaserMarksAreSetAndTakenAwayCellByCell) {
  Costmap2D map(3, 3, 1.0, 0.0, 0.0);
  map.SetLaserObstacle(1, 2, true);
  map.SetLaserObstacle(2, 1, true);
  map.SetLaserObstacle(1, 2, false);
  for (unsigned int my = 0; my < 3; ++my) {
    for (unsigned int mx = 0; mx < 3; ++mx) {
      EXPECT_EQ(map.IsLaserObstacle(mx, my), mx == 2 && my == 1);
    }
  }
}

TEST(Costmap2D, ClearsAllLaserMarksAndNoCosts) {
  Costmap2D map = MapFromText({"XL", "LX"});
  map.ClearLaserObstacles();
  for (const Cell& cell : {Cell{0, 0}, Cell{1, 0}, Cell{0, 1}, Cell{1, 1}}) {
    EXPECT_FALSE(map.IsLaserObstacle(cell.mx, cell.my));
  }
  EXPECT_TRUE(map.IsLethalObstacle(0, 1));
  EXPECT_TRUE(map.IsLethalObstacle(1, 0));
}

RC_GTEST_PROP(Costmap2DProperty, APointLiesBetweenTheEdgesOfItsCell, ()) {
  const auto number = [](int low, int high) { return *rc::gen::inRange(low, high); };
  const double resolution = number(1, 2000) / 1000.0;
  const double origin_x = number(-100000, 100000) / 1000.0;
  const double origin_y = number(-100000, 100000) / 1000.0;
  const auto columns = *rc::gen::inRange(1u, 50u);
  const auto rows = *rc::gen::inRange(1u, 50u);
  const Costmap2D map(columns, rows, resolution, origin_x, origin_y);
  const double wx = origin_x + number(-1000, 60000) / 1000.0 * resolution;
  const double wy = origin_y + number(-1000, 60000) / 1000.0 * resolution;

  const bool on_map =
      wx >= origin_x && wx < origin_x + columns * resolution && wy >= origin_y && wy < origin_y + rows * resolution;
  RC_ASSERT(map.IsInmap(wx, wy) == on_map);
  if (on_map) {
    const Cell cell = CellAt(map, wx, wy);
    RC_ASSERT(wx >= origin_x + cell.mx * resolution && wx < origin_x + (cell.mx + 1) * resolution);
    RC_ASSERT(wy >= origin_y + cell.my * resolution && wy < origin_y + (cell.my + 1) * resolution);
  }
}

TEST(MapFromText, ShowsTheHighestRowFirst) {
  const Costmap2D map = MapFromText({"#..",  //
                                     "?9X"},
                                    0.5, {-1, 2});
  EXPECT_EQ(map.getCost(0, 1), 254);
  EXPECT_EQ(map.getCost(0, 0), 255);
  EXPECT_EQ(map.getCost(1, 0), 90);
  EXPECT_TRUE(map.IsLaserObstacle(2, 0));
  EXPECT_FALSE(map.IsLaserObstacle(0, 1));
  EXPECT_EQ(map.getOriginX(), -1);
  EXPECT_EQ(map.getOriginY(), 2);
  EXPECT_EQ(map.getResolution(), 0.5);
}

}  // namespace
}  // namespace controller_base_test
