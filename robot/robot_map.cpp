#include "robot/robot_map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "costmap_2d/cost_values.h"
#include "follower/inflation.h"
#include "follower/path_search.h"
#include "nav_core/math/box2d.h"
#include "robot/occupancy_map.h"

namespace controller_base::robot {
namespace {

using follower::Inflation;
using follower::VirtualBox;
using nav_core::math::Box2d;
using nav_core::math::Vec2d;

constexpr double kBoxLength = 0.2;  // m along its heading, and
constexpr double kBoxWidth = 0.1;   // m across it; as LocalMapObstacle makes them

// The index of a cell along one axis; far off the map it is clamped, so that sums with it do not overflow.
int CellAlong(double value, double origin, double resolution) {
  constexpr double kFarthest = 1e9;
  return static_cast<int>(std::clamp(std::floor((value - origin) / resolution), -kFarthest, kFarthest));
}

// Cells whose centres lie in the box keep the robot's centre out.
void Close(const VirtualBox& box, costmap_2d::Costmap2D* map) {
  const Box2d outline(Vec2d(box.center.x, box.center.y), box.heading, kBoxLength, kBoxWidth);
  const int reach = static_cast<int>(std::ceil(kBoxLength / map->getResolution()));
  unsigned int middle_x = 0;
  unsigned int middle_y = 0;
  if (!map->worldToMap(box.center.x, box.center.y, middle_x, middle_y)) {
    return;
  }
  for (int my = static_cast<int>(middle_y) - reach; my <= static_cast<int>(middle_y) + reach; ++my) {
    for (int mx = static_cast<int>(middle_x) - reach; mx <= static_cast<int>(middle_x) + reach; ++mx) {
      Vec2d center;
      if (map->IsInmap(mx, my)) {
        map->mapToWorld(static_cast<unsigned int>(mx), static_cast<unsigned int>(my), center.x, center.y);
        if (outline.IsPointIn(center)) {
          map->setCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my),
                       costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
        }
      }
    }
  }
}

}  // namespace

RobotMap::RobotMap(GridBytes map, double robot_radius, double local_map_side)
    : map_(std::move(map)),
      laser_(map_.grid),
      robot_radius_(robot_radius),
      local_side_(std::max(1, static_cast<int>(std::lround(local_map_side / map_.grid.resolution)))),
      cost_at_wall_(CostsByDistance(follower::ObstacleCell::kSolid)),
      cost_at_mark_(CostsByDistance(follower::ObstacleCell::kSurface)),
      margin_(static_cast<int>(
          std::ceil(Inflation(map_.grid.resolution, robot_radius).inscribed_distance() / map_.grid.resolution + 1.5))) {
}

void RobotMap::AddScan(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
  laser_.Add(scan, laser);
  local_cells_.reset();
}

void RobotMap::Forget() {
  laser_.Clear();
  local_cells_.reset();
}

const RobotMap::Local& RobotMap::LocalAround(double x, double y) {
  const Grid& grid = map_.grid;
  const cv::Rect wanted(CellAlong(x, grid.origin_x, grid.resolution) - local_side_ / 2,
                        CellAlong(y, grid.origin_y, grid.resolution) - local_side_ / 2, local_side_, local_side_);
  const bool is_near = local_cells_ && std::abs(local_cells_->x - wanted.x) <= kLargestShift &&
                       std::abs(local_cells_->y - wanted.y) <= kLargestShift;
  if (!is_near) {
    BuildLocal(wanted);
  }
  return local_;
}

void RobotMap::BuildLocal(const cv::Rect& cells) {
  const Grid& grid = map_.grid;
  local_.costs.grid = {cells.width, cells.height, grid.resolution, grid.origin_x + cells.x * grid.resolution,
                       grid.origin_y + cells.y * grid.resolution};
  local_.costs.bytes = Inflated(cells, &laser_.marks().bytes);
  local_.marks.grid = local_.costs.grid;
  local_.marks.bytes.assign(local_.costs.bytes.size(), 0);
  const cv::Rect on_map = cells & cv::Rect(0, 0, grid.size_x, grid.size_y);
  for (int my = on_map.y; my < on_map.y + on_map.height; ++my) {
    const auto* row = laser_.marks().bytes.data() + grid.Index(on_map.x, my);
    std::copy(row, row + on_map.width,
              local_.marks.bytes.data() + local_.marks.grid.Index(on_map.x - cells.x, my - cells.y));
  }
  local_cells_ = cells;
}

std::vector<std::uint8_t> RobotMap::CostsByDistance(follower::ObstacleCell cell) const {
  const Inflation inflation(map_.grid.resolution, robot_radius_, cell);
  const double radius = inflation.radius() / map_.grid.resolution;
  std::vector<std::uint8_t> costs(static_cast<std::size_t>(radius * radius) + 1);
  for (std::size_t square = 0; square < costs.size(); ++square) {
    costs[square] = inflation.CostAt(std::sqrt(static_cast<double>(square)) * map_.grid.resolution);
  }
  return costs;
}

bool RobotMap::IsUnknown(int mx, int my, Marks marks) const {
  const std::size_t cell = map_.grid.Index(mx, my);
  return map_.bytes[cell] == kUnknown && (marks == nullptr || (*marks)[cell] == 0);
}

// 0 for walls or, with marks, for those, as cv::distanceTransform wants them.
cv::Mat RobotMap::FreeCells(const cv::Rect& cells, Marks marks) const {
  cv::Mat free(cells.size(), CV_8UC1, cv::Scalar(marks != nullptr ? 1 : 0));
  const cv::Rect on_map = cells & cv::Rect(0, 0, map_.grid.size_x, map_.grid.size_y);
  for (int my = on_map.y; my < on_map.y + on_map.height; ++my) {
    std::size_t cell = map_.grid.Index(on_map.x, my);
    std::uint8_t* byte = free.ptr(my - cells.y, on_map.x - cells.x);
    for (int i = 0; i < on_map.width; ++i) {
      *byte++ = (marks != nullptr ? (*marks)[cell] != 0 : map_.bytes[cell] == kLethal) ? 0 : 1;
      ++cell;
    }
  }
  return free;
}

std::vector<std::uint8_t> RobotMap::Inflated(const cv::Rect& cells, Marks marks) const {
  std::vector<std::uint8_t> costs = InflatedAlone(cells, nullptr);
  if (marks != nullptr) {
    const std::vector<std::uint8_t> around_marks = InflatedAlone(cells, marks);
    std::transform(costs.begin(), costs.end(), around_marks.begin(), costs.begin(),
                   [](std::uint8_t a, std::uint8_t b) { return std::max(a, b); });
  }
  auto cost = costs.begin();
  for (int row = 0; row < cells.height; ++row) {
    for (int column = 0; column < cells.width; ++column, ++cost) {
      if (*cost < Inflation::kLowestRingCost && map_.grid.Contains(cells.x + column, cells.y + row) &&
          IsUnknown(cells.x + column, cells.y + row, marks)) {
        *cost = costmap_2d::NO_INFORMATION;
      }
    }
  }
  return costs;
}

std::vector<std::uint8_t> RobotMap::InflatedAlone(const cv::Rect& cells, Marks marks) const {
  const std::vector<std::uint8_t>& cost_at = marks != nullptr ? cost_at_mark_ : cost_at_wall_;
  const cv::Rect with_margin(cells.x - margin_, cells.y - margin_, cells.width + 2 * margin_,
                             cells.height + 2 * margin_);
  const cv::Mat free = FreeCells(with_margin, marks);
  std::vector<std::uint8_t> costs(static_cast<std::size_t>(cells.area()), costmap_2d::FREE_SPACE);
  if (cv::countNonZero(free) == static_cast<int>(free.total())) {
    return costs;
  }
  cv::Mat distances;
  cv::distanceTransform(free, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  auto cost = costs.begin();
  for (int row = 0; row < cells.height; ++row) {
    const float* distance = distances.ptr<float>(row + margin_) + margin_;
    for (int column = 0; column < cells.width; ++column, ++cost, ++distance) {
      const auto square = static_cast<std::size_t>(cvRound(*distance * *distance));
      *cost = square < cost_at.size() ? cost_at[square] : costmap_2d::FREE_SPACE;
    }
  }
  return costs;
}

costmap_2d::Costmap2D RobotMap::WholeMap(Marks marks) const {
  const Grid& grid = map_.grid;
  costmap_2d::Costmap2D map(static_cast<unsigned int>(grid.size_x), static_cast<unsigned int>(grid.size_y),
                            grid.resolution, grid.origin_x, grid.origin_y);
  const std::vector<std::uint8_t> costs = Inflated({0, 0, grid.size_x, grid.size_y}, marks);
  auto cost = costs.begin();
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      map.setCost(mx, my, *cost++);
    }
  }
  return map;
}

nav_msgs::Path RobotMap::Search(const costmap_2d::Costmap2D& costs, Marks marks, const Vec2d& start,
                                const Vec2d& goal) const {
  return follower::SearchPath({costs, [&](int mx, int my) { return IsUnknown(mx, my, marks); }, {}}, start, goal);
}

nav_msgs::Path RobotMap::SearchPath(const Vec2d& start, const Vec2d& goal) const {
  return Search(WholeMap(nullptr), nullptr, start, goal);
}

nav_msgs::Path RobotMap::SearchPathAround(const std::vector<VirtualBox>& learned, const Vec2d& start,
                                          const Vec2d& goal) const {
  const Marks marks = &laser_.marks().bytes;
  costmap_2d::Costmap2D map = WholeMap(marks);
  for (const VirtualBox& box : learned) {
    Close(box, &map);
  }
  return Search(map, marks, start, goal);
}

}  // namespace controller_base::robot
