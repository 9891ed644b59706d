#include "demo/pictures/map_cells.h"

#include <algorithm>
#include <cmath>

#include "costmap_2d/cost_values.h"

namespace controller_base::demo {
namespace {

// Cells of one axis: first, and one beyond the last.
struct Span {
  int first, end;

  int Blocks(int side) const { return (end - first + side - 1) / side; }
};

Span CellsWithin(double low, double high, double origin, double resolution, unsigned int size) {
  const auto cells = static_cast<double>(size);
  const double first = std::clamp(std::floor((low - origin) / resolution), 0.0, cells - 1.0);
  const double end = std::clamp(std::ceil((high - origin) / resolution), first + 1.0, cells);
  return {static_cast<int>(first), static_cast<int>(end)};
}

// What counts most in a block.
unsigned char Heavier(unsigned char a, unsigned char b) {
  const auto weight = [](unsigned char cost) {
    return cost == costmap_2d::LETHAL_OBSTACLE ? 2 : cost == costmap_2d::NO_INFORMATION ? 1 : 0;
  };
  return weight(a) >= weight(b) ? a : b;
}

}  // namespace

Area AreaOf(const costmap_2d::Costmap2D& map) {
  return {map.getOriginX(), map.getOriginY(), map.getOriginX() + map.getSizeInCellsX() * map.getResolution(),
          map.getOriginY() + map.getSizeInCellsY() * map.getResolution()};
}

MapBlocks BlocksOf(const costmap_2d::Costmap2D& map, const Area& area, int side) {
  const double resolution = map.getResolution();
  const Span columns = CellsWithin(area.min_x, area.max_x, map.getOriginX(), resolution, map.getSizeInCellsX());
  const Span rows = CellsWithin(area.min_y, area.max_y, map.getOriginY(), resolution, map.getSizeInCellsY());
  cv::Mat costs(rows.Blocks(side), columns.Blocks(side), CV_8UC1, cv::Scalar(costmap_2d::FREE_SPACE));
  for (int my = rows.first; my < rows.end; ++my) {
    auto* const row = costs.ptr<unsigned char>(costs.rows - 1 - (my - rows.first) / side);
    for (int mx = columns.first; mx < columns.end; ++mx) {
      unsigned char& block = row[(mx - columns.first) / side];
      block = Heavier(block, map.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my)));
    }
  }
  const double left = map.getOriginX() + columns.first * resolution;
  const double bottom = map.getOriginY() + rows.first * resolution;
  return {costs, {left, bottom, left + costs.cols * side * resolution, bottom + costs.rows * side * resolution}};
}

}  // namespace controller_base::demo
