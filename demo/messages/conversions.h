#ifndef CONTROLLER_BASE_DEMO_MESSAGES_CONVERSIONS_H_
#define CONTROLLER_BASE_DEMO_MESSAGES_CONVERSIONS_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/GridCells.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>
#include <tf2_msgs/TFMessage.h>

#include "costmap_2d/costmap_2d.h"
#include "recording/empty_grid.h"

namespace controller_base::demo {

// What people's tools expect of messages about a drive. Only functions of their arguments; everything is in frame
// kMapFrame.

using recording::EmptyGrid;
using recording::kMapFrame;
constexpr char kRobotFrame[] = "base_link";

// Cost bytes in the numbers that map displays colour as costs: 0 free, 1..98 growing with the bytes 1..127, 99 where
// the robot's centre cannot be (253), 100 obstacle (254), -1 unknown (255). Other bytes, which the demo's maps do not
// hold, count as 99.
nav_msgs::OccupancyGrid CostGrid(const costmap_2d::Costmap2D& map, const ros::Time& stamp);

// The cells of the corridor, those that are 0.
nav_msgs::GridCells CorridorCells(const nav_msgs::OccupancyGrid& corridor);

// The same places, each looking at the next one that lies elsewhere, and the last ones where those before them looked.
// A path that never moves keeps its orientations, or looks along the x axis where they are none.
nav_msgs::Path WithHeadings(const nav_msgs::Path& path);

// Where kRobotFrame is.
tf2_msgs::TFMessage RobotTransform(const geometry_msgs::PoseStamped& robot);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_MESSAGES_CONVERSIONS_H_
