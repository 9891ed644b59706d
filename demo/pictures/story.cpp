#include "demo/pictures/story.h"

#include <cmath>

namespace controller_base_demo {
namespace {

Pose2d ToPose2d(const geometry_msgs::Pose& pose) {
  return {pose.position.x, pose.position.y, 2.0 * std::atan2(pose.orientation.z, pose.orientation.w)};
}

}  // namespace

void Story::OnPath(const nav_msgs::Path& path) { paths_.push_back(path); }

void Story::OnEvent(const Event& event) {
  if (event.kind != "progress") {
    events_.push_back(event);
  }
}

void Story::OnCycle(const CycleReport& cycle) {
  obstacles_ = cycle.world.obstacles();
  if (!events_.empty() && moments_.size() < kMostMoments) {
    const FollowerOutput& output = cycle.output;
    moments_.push_back({cycle.time, events_, cycle.true_pose, ToPose2d(cycle.input.robot.pose), cycle.motion,
                        output.deviation, cycle.input.map, output.ahead, output.detour, output.blockage, output.boxes,
                        obstacles_, samples_});
  } else {
    left_out_ += events_.size();
  }
  events_.clear();
  ++samples_;
}

}  // namespace controller_base_demo
