#include "demo/watch/operator_input.h"

#include <ros/console.h>

#include <string>
#include <utility>

#include "demo/messages/conversions.h"

namespace controller_base_demo {
namespace {

bool IsOnMap(const std_msgs::Header& header, const char* what) {
  const bool is_on_map = header.frame_id == kMapFrame || header.frame_id == std::string("/") + kMapFrame;
  if (!is_on_map) {
    ROS_WARN("%s in frame '%s' ignored: it must be in frame '%s'", what, header.frame_id.c_str(), kMapFrame);
  }
  return is_on_map;
}

}  // namespace

OperatorInput::OperatorInput(std::function<bool()> is_watched) : is_watched_(std::move(is_watched)) {
  constexpr std::uint32_t kQueueSize = 10;
  node_.setCallbackQueue(&messages_);
  goals_ = node_.subscribe("/move_base_simple/goal", kQueueSize, &OperatorInput::OnGoal, this);
  points_ = node_.subscribe("/clicked_point", kQueueSize, &OperatorInput::OnPoint, this);
}

Interventions OperatorInput::Take() {
  messages_.callAvailable();
  return std::exchange(gathered_, {});
}

void OperatorInput::OnGoal(const geometry_msgs::PoseStamped& goal) {
  if (IsOnMap(goal.header, "a goal")) {
    gathered_.goal = nav_core::math::Vec2d(goal.pose.position.x, goal.pose.position.y);
  }
}

void OperatorInput::OnPoint(const geometry_msgs::PointStamped& point) {
  if (IsOnMap(point.header, "a point")) {
    gathered_.obstacles.push_back(
        {"dropped box " + std::to_string(++boxes_), {point.point.x, point.point.y}, 0.0, kBoxSide, kBoxSide, false});
  }
}

}  // namespace controller_base_demo
