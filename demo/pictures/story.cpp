#include "demo/pictures/story.h"

#include "follower/local_map.h"

namespace controller_base::demo {

void Story::OnPath(const nav_msgs::Path& path) { paths_.push_back(path); }

void Story::OnEvent(const follower::Event& event) {
  if (event.kind != follower::EventKind::kProgress) {
    events_.push_back(event);
  }
}

void Story::OnCycle(const simulation::CycleReport& cycle) {
  obstacles_ = cycle.world.obstacles();
  if (!events_.empty() && moments_.size() < kMostMoments) {
    const follower::FollowerOutput& output = cycle.output;
    moments_.push_back({cycle.time, events_, cycle.true_pose, follower::ToPose2d(cycle.input.robot.pose), cycle.motion,
                        output.deviation, ToCostmap(cycle.input.map.View()), output.ahead, output.detour,
                        output.blockage, output.boxes, obstacles_, samples_});
  } else {
    left_out_ += events_.size();
  }
  events_.clear();
  ++samples_;
}

}  // namespace controller_base::demo
