#include "demo/messages/conversions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "costmap_2d/cost_values.h"
#include "follower/geometry.h"
#include "follower/inflation.h"

namespace controller_base::demo {
namespace {

std::int8_t OccupancyOf(unsigned char cost) {
  constexpr int kHighestGraded = 98;
  switch (cost) {
    case costmap_2d::FREE_SPACE:
      return 0;
    case costmap_2d::LETHAL_OBSTACLE:
      return 100;
    case costmap_2d::NO_INFORMATION:
      return -1;
    default:
      break;
  }
  if (cost > follower::Inflation::kHighestCost) {
    return 99;
  }
  return static_cast<std::int8_t>(1 + (cost - 1) * (kHighestGraded - 1) / (follower::Inflation::kHighestCost - 1));
}

geometry_msgs::Quaternion Heading(double yaw) {
  geometry_msgs::Quaternion orientation;
  orientation.z = std::sin(0.5 * yaw);
  orientation.w = std::cos(0.5 * yaw);
  return orientation;
}

bool IsUnit(const geometry_msgs::Quaternion& q) {
  return std::abs(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w - 1.0) < 1e-3;
}

}  // namespace

nav_msgs::OccupancyGrid CostGrid(const costmap_2d::Costmap2D& map, const ros::Time& stamp) {
  nav_msgs::OccupancyGrid grid = EmptyGrid(map);
  grid.header.stamp = stamp;
  grid.info.map_load_time = stamp;
  std::transform(map.getCharMap(), map.getCharMap() + grid.data.size(), grid.data.begin(), OccupancyOf);
  return grid;
}

nav_msgs::GridCells CorridorCells(const nav_msgs::OccupancyGrid& corridor) {
  nav_msgs::GridCells cells;
  cells.header = corridor.header;
  cells.cell_width = corridor.info.resolution;
  cells.cell_height = corridor.info.resolution;
  const double resolution = static_cast<double>(corridor.info.resolution);
  for (std::size_t i = 0; i < corridor.data.size(); ++i) {
    if (corridor.data[i] == 0) {
      geometry_msgs::Point center;
      center.x = corridor.info.origin.position.x + (static_cast<double>(i % corridor.info.width) + 0.5) * resolution;
      center.y = corridor.info.origin.position.y + (static_cast<double>(i / corridor.info.width) + 0.5) * resolution;
      cells.cells.push_back(center);
    }
  }
  return cells;
}

nav_msgs::Path WithHeadings(const nav_msgs::Path& path) {
  nav_msgs::Path result = path;
  std::optional<geometry_msgs::Quaternion> heading;
  for (std::size_t i = 0; i < path.poses.size(); ++i) {
    const geometry_msgs::Point& here = path.poses[i].pose.position;
    const auto is_elsewhere = [&](const geometry_msgs::PoseStamped& pose) {
      return follower::Distance(here, pose.pose.position) > 0.0;
    };
    const auto next = std::find_if(path.poses.begin() + static_cast<std::ptrdiff_t>(i), path.poses.end(), is_elsewhere);
    if (next != path.poses.end()) {
      heading = Heading(follower::Direction(here, next->pose.position));
    }
    geometry_msgs::Quaternion& orientation = result.poses[i].pose.orientation;
    if (heading || !IsUnit(orientation)) {
      orientation = heading.value_or(Heading(0.0));
    }
    result.poses[i].header.frame_id = path.header.frame_id;
  }
  return result;
}

tf2_msgs::TFMessage RobotTransform(const geometry_msgs::PoseStamped& robot) {
  geometry_msgs::TransformStamped transform;
  transform.header = robot.header;
  transform.child_frame_id = kRobotFrame;
  transform.transform.translation.x = robot.pose.position.x;
  transform.transform.translation.y = robot.pose.position.y;
  transform.transform.translation.z = robot.pose.position.z;
  transform.transform.rotation = robot.pose.orientation;
  tf2_msgs::TFMessage message;
  message.transforms.push_back(transform);
  return message;
}

}  // namespace controller_base::demo
