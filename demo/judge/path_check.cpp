#include "demo/judge/path_check.h"

#include <limits>
#include <opencv2/imgproc.hpp>

#include "follower/geometry.h"
#include "follower/inflation.h"
#include "simulation/known_map.h"

namespace controller_base::demo {
namespace {

using nav_core::math::Vec2d;

cv::Mat CellsOf(const costmap_2d::Costmap2D& map) {
  return cv::Mat::zeros(static_cast<int>(map.getSizeInCellsY()), static_cast<int>(map.getSizeInCellsX()), CV_8UC1);
}

// 1 where the cell's centre is within `distance` of the path's poses.
cv::Mat CorridorAround(const costmap_2d::Costmap2D& map, const nav_msgs::Path& path, double distance) {
  cv::Mat poses = CellsOf(map);
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    unsigned int mx = 0;
    unsigned int my = 0;
    if (map.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my)) {
      poses.at<unsigned char>(static_cast<int>(my), static_cast<int>(mx)) = 1;
    }
  }
  return follower::DistanceToObstacles(poses, map.getResolution(), 2.0 * distance) <= distance;
}

// The number of the room of the free cell that is nearest to the point; 0: none within `reach` metres.
int RoomAt(const costmap_2d::Costmap2D& map, const cv::Mat& rooms, const Vec2d& point, double reach) {
  int room = 0;
  double nearest = reach;
  for (int my = 0; my < rooms.rows; ++my) {
    for (int mx = 0; mx < rooms.cols; ++mx) {
      Vec2d center;
      map.mapToWorld(static_cast<unsigned int>(mx), static_cast<unsigned int>(my), center.x, center.y);
      if (rooms.at<int>(my, mx) != 0 && follower::Distance(point, center) <= nearest) {
        nearest = follower::Distance(point, center);
        room = rooms.at<int>(my, mx);
      }
    }
  }
  return room;
}

}  // namespace

costmap_2d::Costmap2D TrueMap(const costmap_2d::Costmap2D& map, const std::vector<simulation::Obstacle>& obstacles) {
  const simulation::World world(map, obstacles);
  simulation::KnownMap known(map);
  for (int my = 0; my < static_cast<int>(map.getSizeInCellsY()); ++my) {
    for (int mx = 0; mx < static_cast<int>(map.getSizeInCellsX()); ++mx) {
      if (world.IsSolid(mx, my)) {
        known.MarkSeen(mx, my);
      }
    }
  }
  return known.WholeMap();
}

bool PathExists(const costmap_2d::Costmap2D& true_map, const nav_msgs::Path& path, const Vec2d& from, double corridor) {
  cv::Mat free = CorridorAround(true_map, path, corridor);
  for (int my = 0; my < free.rows; ++my) {
    for (int mx = 0; mx < free.cols; ++mx) {
      if (true_map.IsLethalObstacle(static_cast<unsigned int>(mx), static_cast<unsigned int>(my))) {
        free.at<unsigned char>(my, mx) = 0;
      }
    }
  }
  constexpr int kNoDiagonals = 4;
  cv::Mat rooms;
  cv::connectedComponents(free, rooms, kNoDiagonals);
  const geometry_msgs::Point& end = path.poses.back().pose.position;
  const int room = RoomAt(true_map, rooms, from, 2.0 * follower::kRobotRadius);
  return room != 0 && room == RoomAt(true_map, rooms, {end.x, end.y}, true_map.getResolution());
}

}  // namespace controller_base::demo
