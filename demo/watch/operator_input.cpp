#include "demo/watch/operator_input.h"

#include <ros/console.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "demo/messages/conversions.h"
#include "follower/format.h"
#include "follower/printable.h"

namespace controller_base::demo {

bool OperatorInput::Pause::IsOver() {
  const ros::WallTime now = ros::WallTime::now();
  const bool is_over = now >= end_ || end_ > now + length_;  // the wall's clock may be set back
  end_ = is_over ? now + length_ : end_;
  return is_over;
}

void OperatorInput::Listen() {
  constexpr std::uint32_t kQueueSize = 10;
  node_.setCallbackQueue(&messages_);
  goals_ = node_.subscribe("/move_base_simple/goal", kQueueSize, &OperatorInput::OnGoal, this);
  points_ = node_.subscribe("/clicked_point", kQueueSize, &OperatorInput::OnPoint, this);
}

simulation::Interventions OperatorInput::Take() {
  messages_.callAvailable();
  if (goal_ && goal_pause_.IsOver()) {
    gathered_.goal = std::exchange(goal_, std::nullopt);
  }
  return std::exchange(gathered_, {});
}

void OperatorInput::OnGoal(const geometry_msgs::PoseStamped& goal) {
  if (IsPlace(goal.header, goal.pose.position, "a goal")) {
    goal_ = nav_core::math::Vec2d(goal.pose.position.x, goal.pose.position.y);
  }
}

void OperatorInput::OnPoint(const geometry_msgs::PointStamped& point) {
  if (!IsPlace(point.header, point.point, "a point")) {
    return;
  }
  if (boxes_ >= kMostBoxes) {
    Ignore("a point", follower::Format("%d boxes were dropped already", boxes_));
  } else if (!box_pause_.IsOver()) {
    Ignore("a point", follower::Format("another one came less than %.1f s before", kBoxPause));
  } else {
    gathered_.obstacles.push_back(
        {"dropped box " + std::to_string(++boxes_), {point.point.x, point.point.y}, 0.0, kBoxSide, kBoxSide, false});
  }
}

bool OperatorInput::IsPlace(const std_msgs::Header& header, const geometry_msgs::Point& place,
                            const std::string& what) {
  constexpr std::size_t kLongestFrame = 60;  // bytes
  const bool is_on_map = header.frame_id == kMapFrame || header.frame_id == std::string("/") + kMapFrame;
  if (!is_on_map) {
    Ignore(what + " in frame '" + follower::Printable(header.frame_id, kLongestFrame) + "'",
           std::string("it must be in frame '") + kMapFrame + "'");
  }
  const bool is_finite = std::isfinite(place.x) && std::isfinite(place.y);
  if (is_on_map && !is_finite) {
    Ignore(what, "its place is no number");
  }
  return is_on_map && is_finite;
}

void OperatorInput::Ignore(const std::string& what, const std::string& why) {
  if (!warning_pause_.IsOver()) {
    ++ignored_;
    return;
  }
  const int before = std::exchange(ignored_, 0);
  ROS_WARN("%s ignored: %s%s", what.c_str(), why.c_str(),
           before > 0 ? follower::Format("; %d more before", before).c_str() : "");
}

}  // namespace controller_base::demo
