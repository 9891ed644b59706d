#ifndef CONTROLLER_BASE_DEMO_PICTURES_STORY_H_
#define CONTROLLER_BASE_DEMO_PICTURES_STORY_H_

#include <nav_msgs/Path.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// A cycle in which something happened, with all that it takes to draw it.
struct Moment {
  double time;                          // s since the drive began
  std::vector<follower::Event> events;  // at least one
  follower::Pose2d true_pose;
  follower::Pose2d estimated_pose;
  follower::Command motion;
  double deviation;  // m
  costmap_2d::Costmap2D map;
  nav_msgs::Path ahead;
  std::shared_ptr<const follower::DetourReport> detour;  // null: none
  std::shared_ptr<const follower::Blockage> blockage;    // null: none
  std::vector<follower::VirtualBox> boxes;
  std::vector<simulation::Obstacle> obstacles;
  std::size_t sample;  // of the drive's trajectory
};

// Keeps what a drive's pictures show.
class Story : public simulation::DriveObserver {
 public:
  // Of a drive in which more happens, the rest is told without pictures.
  static constexpr std::size_t kMostMoments = 60;

  void OnPath(const nav_msgs::Path& path) override;
  void OnEvent(const follower::Event& event) override;
  void OnCycle(const simulation::CycleReport& cycle) override;

  // In their order; those beyond kMostMoments are left out. Progress is no event here.
  const std::vector<Moment>& moments() const { return moments_; }
  // Events that no moment holds.
  std::size_t left_out() const { return left_out_; }
  // All that were followed.
  const std::vector<nav_msgs::Path>& paths() const { return paths_; }
  // What stood in the world in the end.
  const std::vector<simulation::Obstacle>& obstacles() const { return obstacles_; }

 private:
  std::vector<nav_msgs::Path> paths_;
  std::vector<follower::Event> events_;  // since the last cycle
  std::vector<Moment> moments_;
  std::vector<simulation::Obstacle> obstacles_;
  std::size_t left_out_ = 0;
  std::size_t samples_ = 0;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_STORY_H_
