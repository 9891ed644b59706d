#include "move_base/local_planner_plugin.h"

#include <costmap_2d/cost_values.h>
#include <costmap_2d/costmap_2d.h>
#include <costmap_2d/layered_costmap.h>
#include <costmap_2d/obstacle_layer.h>
#include <ros/console.h>

#include <boost/make_shared.hpp>
#include <boost/thread/locks.hpp>
#include <cstddef>
#include <cstdint>
#include <pluginlib/class_list_macros.hpp>

#include "robot/frames.h"
#include "robot/stock_costs.h"
#include "robot/turned_grid.h"

namespace controller_base::move_base_plugin {
namespace {

using robot::Grid;
using robot::GridBytes;

Grid GridOf(const costmap_2d::Costmap2D& map) {
  return {static_cast<int>(map.getSizeInCellsX()), static_cast<int>(map.getSizeInCellsY()), map.getResolution(),
          map.getOriginX(), map.getOriginY()};
}

GridBytes BytesOf(const costmap_2d::Costmap2D& map) {
  const Grid grid = GridOf(map);
  return {grid, {map.getCharMap(), map.getCharMap() + grid.cells()}};
}

}  // namespace

void LocalPlannerPlugin::initialize(std::string name, tf2_ros::Buffer* tf, costmap_2d::Costmap2DROS* costmap) {
  tf_ = tf;
  costmap_ = costmap;
  ros::NodeHandle handle("~/" + name);
  handle.param("blocked_timeout", blocked_timeout_, blocked_timeout_);
  handle.param("costmap_timeout", costmap_timeout_, costmap_timeout_);
  WatchUpdates();
  std::string bumper_topic;
  handle.param("bumper_topic", bumper_topic, std::string("/bumper"));
  bumper_ = handle.subscribe<std_msgs::UInt8>(bumper_topic, 10,
                                              [this](const std_msgs::UInt8::ConstPtr& message) { OnBumper(*message); });
  drive_ = std::make_unique<robot::FollowerDrive>(handle);
}

void LocalPlannerPlugin::WatchUpdates() {
  updates_ = boost::make_shared<UpdateWatch>();
  const boost::unique_lock<costmap_2d::Costmap2D::mutex_t> lock(*costmap_->getCostmap()->getMutex());
  costmap_->getLayeredCostmap()->addPlugin(updates_);
}

void LocalPlannerPlugin::OnBumper(const std_msgs::UInt8& message) {
  const ros::Time now = ros::Time::now();
  drive_->Touch(presses_.Update(message.data, now), now);
}

bool LocalPlannerPlugin::setPlan(const std::vector<geometry_msgs::PoseStamped>& plan) {
  nav_msgs::Path path;
  path.poses = plan;
  if (plan.empty() || !robot::IsFinite(path)) {
    return false;
  }
  plan_frame_ = plan.front().header.frame_id;
  path.header = plan.front().header;
  drive_->Follow(path);
  return true;
}

bool LocalPlannerPlugin::isGoalReached() { return drive_->state() == robot::DriveState::kReached; }

bool LocalPlannerPlugin::computeVelocityCommands(geometry_msgs::Twist& command) {
  command = geometry_msgs::Twist();
  geometry_msgs::PoseStamped robot_in_costmap;
  if (!costmap_->getRobotPose(robot_in_costmap)) {
    return Refuse("the robot's pose is not known");
  }
  if (!CostmapIsUsable()) {
    return false;
  }
  std::string error;
  const auto frame = robot::OriginIn(*tf_, plan_frame_, costmap_->getGlobalFrameID(), ros::Time(), &error);
  const auto pose = robot::PoseIn(*tf_, plan_frame_, robot_in_costmap, &error);
  if (!frame || !pose) {
    return Refuse(error);
  }
  GridBytes costs = robot::InOtherFrame(BytesOf(*costmap_->getCostmap()), *frame, costmap_2d::NO_INFORMATION,
                                        costmap_2d::LETHAL_OBSTACLE);
  const GridBytes marks = robot::InOtherFrame(LaserMarks(), *frame, 0, 1);
  const std::vector<std::uint8_t> stock = costs.bytes;
  robot::ReadStockCosts(stock.data(), static_cast<unsigned int>(costs.grid.size_x),
                        static_cast<unsigned int>(costs.grid.size_y), &costs.bytes);
  command = drive_->Cycle(*pose, costs, marks);
  const robot::DriveState state = drive_->state();
  if (state == robot::DriveState::kFailed) {
    command = geometry_msgs::Twist();
    return Refuse(drive_->reason());
  }
  if (state == robot::DriveState::kBlocked && (ros::Time::now() - drive_->blocked_since()).toSec() > blocked_timeout_) {
    command = geometry_msgs::Twist();
    return Refuse("the path stays blocked");
  }
  return true;
}

bool LocalPlannerPlugin::CostmapIsUsable() {
  if (!costmap_->isCurrent() || costmap_->isStopped()) {
    return Refuse("the local costmap is not current");
  }
  const double seconds = updates_->SecondsSinceUpdate();
  return seconds <= costmap_timeout_ ||
         Refuse("the local costmap was not updated for " + std::to_string(seconds) + " s");
}

// The obstacle layers' own cells, without what other layers and the inflation add.
GridBytes LocalPlannerPlugin::LaserMarks() const {
  GridBytes marks{GridOf(*costmap_->getCostmap()), {}};
  marks.bytes.assign(marks.grid.cells(), 0);
  for (const auto& layer : *costmap_->getLayeredCostmap()->getPlugins()) {
    const auto* obstacles = dynamic_cast<const costmap_2d::ObstacleLayer*>(layer.get());
    if (obstacles == nullptr || GridOf(*obstacles).cells() != marks.grid.cells()) {
      continue;
    }
    const unsigned char* cells = obstacles->getCharMap();
    for (std::size_t cell = 0; cell < marks.bytes.size(); ++cell) {
      marks.bytes[cell] = marks.bytes[cell] != 0 || cells[cell] == costmap_2d::LETHAL_OBSTACLE ? 1 : 0;
    }
  }
  return marks;
}

bool LocalPlannerPlugin::Refuse(const std::string& why) {
  ROS_WARN_THROTTLE_NAMED(1.0, "controller_base", "%s", why.c_str());
  return false;
}

}  // namespace controller_base::move_base_plugin

PLUGINLIB_EXPORT_CLASS(controller_base::move_base_plugin::LocalPlannerPlugin, nav_core::BaseLocalPlanner)
