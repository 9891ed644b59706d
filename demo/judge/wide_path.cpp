#include "demo/judge/wide_path.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "follower/geometry.h"
#include "follower/inflation.h"

namespace controller_base::demo {
namespace {

using nav_core::math::Vec2d;

constexpr double kFine = 0.01;       // m, a cell of the search
constexpr double kRounding = 1e-4;   // m, of distances in single precision
constexpr double kGoalReach = 0.05;  // m; the way may end so near to the path's end

// A grid of fine cells around a path.
struct FineGrid {
  Vec2d origin;  // the lower left corner
  cv::Size size;

  Vec2d CenterOf(int x, int y) const { return {origin.x + (x + 0.5) * kFine, origin.y + (y + 0.5) * kFine}; }
  cv::Point CellOf(const Vec2d& point) const {
    return {cvFloor((point.x - origin.x) / kFine), cvFloor((point.y - origin.y) / kFine)};
  }
};

FineGrid GridAround(const nav_msgs::Path& path, double margin) {
  const geometry_msgs::Point& first = path.poses.front().pose.position;
  Vec2d low(first.x, first.y);
  Vec2d high = low;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    low = {std::min(low.x, pose.pose.position.x), std::min(low.y, pose.pose.position.y)};
    high = {std::max(high.x, pose.pose.position.x), std::max(high.y, pose.pose.position.y)};
  }
  const auto cells = [&](double length) { return cvCeil((length + 2.0 * margin) / kFine); };
  return {{low.x - margin, low.y - margin}, {cells(high.x - low.x), cells(high.y - low.y)}};
}

bool IsSolidAt(const simulation::World& world, const Vec2d& point) {
  const costmap_2d::Costmap2D& map = world.map();
  const auto cell = [&](double value, double origin) {
    return static_cast<int>(std::floor((value - origin) / map.getResolution()));
  };
  return world.IsSolid(cell(point.x, map.getOriginX()), cell(point.y, map.getOriginY()));
}

// 1 where the centre of a fine cell lies in something solid.
cv::Mat SolidCells(const simulation::World& world, const FineGrid& grid) {
  cv::Mat solid(grid.size, CV_8UC1);
  for (int y = 0; y < solid.rows; ++y) {
    for (int x = 0; x < solid.cols; ++x) {
      solid.at<unsigned char>(y, x) = IsSolidAt(world, grid.CenterOf(x, y)) ? 1 : 0;
    }
  }
  return solid;
}

void AddTrueShapes(const simulation::World& world, const FineGrid& grid, cv::Mat* solid) {
  for (const simulation::Obstacle& obstacle : world.obstacles()) {
    const Vec2d& center = obstacle.center;
    const double reach = obstacle.Reach();
    const cv::Rect box(grid.CellOf({center.x - reach, center.y - reach}),
                       grid.CellOf({center.x + reach, center.y + reach}) + cv::Point(1, 1));
    const cv::Rect inside = box & cv::Rect({0, 0}, grid.size);
    for (int y = inside.y; y < inside.br().y; ++y) {
      for (int x = inside.x; x < inside.br().x; ++x) {
        if (obstacle.Covers(grid.CenterOf(x, y), 0.0)) {
          solid->at<unsigned char>(y, x) = 1;
        }
      }
    }
  }
}

cv::Mat CorridorAround(const nav_msgs::Path& path, const FineGrid& grid, double corridor) {
  cv::Mat poses = cv::Mat::zeros(grid.size, CV_8UC1);
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    poses.at<unsigned char>(grid.CellOf({pose.pose.position.x, pose.pose.position.y})) = 1;
  }
  return follower::DistanceToObstacles(poses, kFine, 2.0 * corridor) <= corridor;
}

// The number of the wide cell's part that is nearest to the point; 0: none within `reach` metres.
int PartAt(const cv::Mat& parts, const FineGrid& grid, const Vec2d& point, double reach) {
  const cv::Point at = grid.CellOf(point);
  const int cells = cvCeil(reach / kFine);
  const cv::Rect around =
      cv::Rect(at - cv::Point(cells, cells), at + cv::Point(cells + 1, cells + 1)) & cv::Rect({0, 0}, grid.size);
  int part = 0;
  double nearest = reach;
  for (int y = around.y; y < around.br().y; ++y) {
    for (int x = around.x; x < around.br().x; ++x) {
      const double distance = follower::Distance(point, grid.CenterOf(x, y));
      if (parts.at<int>(y, x) != 0 && distance <= nearest) {
        nearest = distance;
        part = parts.at<int>(y, x);
      }
    }
  }
  return part;
}

}  // namespace

bool WidePathExists(const simulation::World& world, const nav_msgs::Path& path, const Vec2d& from, double corridor,
                    double width) {
  const FineGrid grid = GridAround(path, corridor + width);
  cv::Mat solid = SolidCells(world, grid);
  if (world.shapes() == simulation::Shapes::kTrue) {
    AddTrueShapes(world, grid, &solid);
  }
  const cv::Mat wide = follower::DistanceToObstacles(solid, kFine, 2.0 * width) >= 0.5 * width - kRounding;
  constexpr int kNoDiagonals = 4;
  cv::Mat parts;
  cv::connectedComponents(wide & CorridorAround(path, grid, corridor), parts, kNoDiagonals);
  const geometry_msgs::Point& end = path.poses.back().pose.position;
  const int part = PartAt(parts, grid, from, 2.0 * follower::kRobotRadius);
  return part != 0 && part == PartAt(parts, grid, {end.x, end.y}, kGoalReach);
}

}  // namespace controller_base::demo
