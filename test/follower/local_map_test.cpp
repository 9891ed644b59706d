#include "follower/local_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace controller_base::follower {
namespace {

constexpr std::uint8_t kCosts[] = {1, 2, 3, 253, 254, 255};
constexpr std::uint8_t kMarks[] = {0, 7, 0, 0, 0, 1};
constexpr LocalMapView kView{kCosts, kMarks, 3, 2, 0.1, -1.0, 2.0};

TEST(LocalMap, TheViewsBytesAreTheMapsCellsTheLowestRowFirst) {
  const costmap_2d::Costmap2D map = ToCostmap(kView);
  EXPECT_EQ(map.getSizeInCellsX(), 3u);
  EXPECT_EQ(map.getSizeInCellsY(), 2u);
  EXPECT_EQ(map.getResolution(), 0.1);
  EXPECT_EQ(map.getOriginX(), -1.0);
  EXPECT_EQ(map.getOriginY(), 2.0);
  EXPECT_EQ(map.getCost(1, 0), 2);
  EXPECT_EQ(map.getCost(0, 1), 253);
  EXPECT_TRUE(map.IsLaserObstacle(1, 0));
  EXPECT_TRUE(map.IsLaserObstacle(2, 1));
  EXPECT_FALSE(map.IsLaserObstacle(0, 0));
}

TEST(LocalMap, WithoutMarksNothingIsMarked) {
  LocalMapView view = kView;
  view.laser_marks = nullptr;
  EXPECT_FALSE(ToCostmap(view).IsLaserObstacle(1, 0));
  EXPECT_EQ(LocalMapData(view).View().laser_marks, nullptr);
}

TEST(LocalMap, ARecordKeepsTheBytes) {
  std::vector<std::uint8_t> costs(kCosts, kCosts + 6);
  LocalMapView view = kView;
  view.costs = costs.data();
  const LocalMapData data(view);
  costs.assign(6, 0);
  EXPECT_EQ(data.View().costs[4], 254);
  EXPECT_EQ(ToCostmap(data.View()).getCost(2, 1), 255);
  const LocalMapData again = ToLocalMapData(ToCostmap(kView));
  EXPECT_EQ(again.costs, data.costs);
  EXPECT_EQ(again.laser_marks, std::vector<std::uint8_t>({0, 1, 0, 0, 0, 1}));
}

TEST(LocalMap, AMapThatIsNoneIsRefused) {
  for (auto spoil :
       {+[](LocalMapView* view) { view->size_x = 0; }, +[](LocalMapView* view) { view->costs = nullptr; },
        +[](LocalMapView* view) { view->resolution = 0.0; }, +[](LocalMapView* view) { view->origin_x = HUGE_VAL; }}) {
    LocalMapView view = kView;
    spoil(&view);
    EXPECT_THROW(ToCostmap(view), std::invalid_argument);
  }
}

}  // namespace
}  // namespace controller_base::follower
