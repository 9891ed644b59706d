#include "robot/occupancy_map.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>

namespace controller_base_test {
namespace {

using controller_base::robot::GridBytes;
using controller_base::robot::ReadOccupancyGrid;
using testing::ElementsAre;
using testing::HasSubstr;

nav_msgs::OccupancyGrid SmallMap() {
  nav_msgs::OccupancyGrid map;
  map.info.width = 3;
  map.info.height = 2;
  map.info.resolution = 0.25F;
  map.info.origin.position.x = -1.0;
  map.info.origin.position.y = 2.0;
  map.info.origin.orientation.w = 1.0;
  map.data = {0, 64, 65, 100, -1, 101};
  return map;
}

TEST(ReadOccupancyGrid, ReadsFreeOccupiedAndUnknown) {
  std::string error;
  const std::optional<GridBytes> map = ReadOccupancyGrid(SmallMap(), &error);
  ASSERT_TRUE(map) << error;
  EXPECT_THAT(map->bytes, ElementsAre(0, 0, 254, 254, 255, 255));
  EXPECT_EQ(map->grid.size_x, 3);
  EXPECT_EQ(map->grid.size_y, 2);
  EXPECT_EQ(map->grid.resolution, 0.25);
  EXPECT_EQ(map->grid.IndexAt(-0.3, 2.3), 5u);
  EXPECT_EQ(error, "");
}

TEST(ReadOccupancyGrid, AnOriginWithoutAnOrientationIsNotTurned) {
  nav_msgs::OccupancyGrid map = SmallMap();
  map.info.origin.orientation.w = 0.0;
  std::string error;
  EXPECT_TRUE(ReadOccupancyGrid(map, &error)) << error;
}

std::string Refusal(const nav_msgs::OccupancyGrid& map) {
  std::string error;
  EXPECT_FALSE(ReadOccupancyGrid(map, &error));
  return error;
}

TEST(ReadOccupancyGrid, RefusesWhatIsNoMapAndSaysWhy) {
  nav_msgs::OccupancyGrid map = SmallMap();
  map.data.pop_back();
  EXPECT_EQ(Refusal(map), "the map brings 5 cells, its size says 3 x 2");

  EXPECT_EQ(Refusal(nav_msgs::OccupancyGrid()), "the map has 0 x 0 cells");
  map = SmallMap();
  map.info.width = 65536;
  EXPECT_EQ(Refusal(map), "the map has 65536 x 2 cells");

  for (const float resolution : {0.0F, -0.05F, std::numeric_limits<float>::quiet_NaN(), HUGE_VALF}) {
    map = SmallMap();
    map.info.resolution = resolution;
    EXPECT_THAT(Refusal(map), HasSubstr("resolution"));
  }
  map = SmallMap();
  map.info.origin.position.y = std::nan("");
  EXPECT_EQ(Refusal(map), "the map's origin is not a number");
  map = SmallMap();
  map.info.origin.orientation.z = 0.1;
  EXPECT_EQ(Refusal(map), "the map is turned in its frame; its rows must run along the x axis");
  map.info.origin.orientation.z = std::nan("");
  EXPECT_EQ(Refusal(map), "the map is turned in its frame; its rows must run along the x axis");
}

}  // namespace
}  // namespace controller_base_test
