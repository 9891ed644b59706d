#ifndef CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/control_progress.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/local_planner.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/command.h"
#include "follower/contact_recovery.h"
#include "follower/detour_search.h"
#include "follower/follower_report.h"
#include "follower/geometry.h"
#include "follower/input_watchdog.h"
#include "follower/path_tracker.h"
#include "follower/progress_monitor.h"
#include "follower/reporter.h"
#include "follower/situation.h"
#include "follower/steering.h"

namespace controller_base_demo {

enum class Outcome {
  kDriving,     // not decided yet
  kReached,     // the robot stands on the path's last pose
  kNoProgress,  // it stood still for too long, or the path's budget is used up
  kAborted,     // it ran into things too often
};

// An example of a controller that is built on this library: follows a path, drives around what stands on it, backs away
// from what it touches, and gives up with a reason. One cycle at a time; path_follower.cpp strings its parts together
// in the order in which a cycle needs them.
//
//   PathFollower follower(&observer);
//   follower.SetPath(path);
//   while (follower.outcome() == Outcome::kDriving) {
//     wheels.Drive(follower.Cycle(robot_pose, local_map));  // 20 times a second
//   }
//
// Needs ros::init and a ROS master before it is constructed, and a ros::NodeHandle that lives as long: the library's
// objects publish what they do. Belongs to one thread, except for contacts().
class PathFollower {
 public:
  // `observer` must outlive the follower. Throws std::invalid_argument for parameters that CheckParameters refuses.
  explicit PathFollower(FollowerObserver* observer, const Parameters& parameters = {});

  // Follows `path`, in frame "map" and with at least two poses, from its beginning.
  void SetPath(const nav_msgs::Path& path);

  // What the wheels are to do now. The pose is in frame "map", and so is the local map, which the robot stands on;
  // outside of obstacles its costs must stay within 1..127, with a closed ring of 94 or more around every obstacle,
  // because the library reads cost bytes as signed numbers (see Inflation). Standing still once the outcome is decided.
  Command Cycle(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);

  // Where the bumper's driver adds its events, from any thread.
  nav_controller::CollisionHistory& contacts() { return recovery_.contacts(); }

  Outcome outcome() const { return outcome_; }
  // Why the drive ended, one line; empty while driving.
  const std::string& reason() const { return reason_; }

  // For those who watch: the index on the path, the distance from it in metres, and what the follower is doing.
  std::uint64_t index() const { return tracker_.index(); }
  double deviation() const { return tracker_.deviation(); }
  const char* state() const;
  const std::vector<VirtualBox>& boxes() const { return recovery_.boxes(); }
  // The way and the time against the path's budget, as the progress checker adds them up.
  const nav_controller::ControlProgress& progress() const { return monitor_.progress(); }
  // From the robot to its path, and on along it as far as the local map reaches, in the last cycle.
  const nav_msgs::Path& ahead() const { return ahead_; }
  // The detour that is driven; null: none.
  std::shared_ptr<const DetourReport> detour() const { return outcome_ == Outcome::kDriving ? detour_ : nullptr; }
  // What the last search for a detour was about; null once the path is free.
  const std::shared_ptr<const Blockage>& blockage() const { return search_.blockage(); }

 private:
  bool WatchInputs(const Pose2d& robot);
  void RestartTimers();
  Situation Observe(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);
  void JudgeProgress(const Situation& now);
  std::string Hindrance() const;

  void ReactToContact(const Situation& now);
  Command Recover(const Situation& now);

  bool IsLost(const Situation& now);
  Command FollowPath(const Situation& now);
  bool SearchDetour(const Situation& now);
  Command FollowDetour(const Situation& now);
  void EndDetour(const Situation& now);

  void BackToPath();
  void Finish(Outcome outcome, const Pose2d& robot, const std::string& reason);

  Parameters parameters_;
  Reporter reporter_;
  PathTracker tracker_;
  nav_controller::LocalPlanner planner_;
  PathTracker detour_tracker_;  // a detour is tracked like a path
  Steering steering_;
  InputWatchdog watchdog_;
  ProgressMonitor monitor_;
  ContactRecovery recovery_;
  DetourSearch search_;

  Outcome outcome_ = Outcome::kDriving;
  std::string reason_;
  nav_msgs::Path ahead_;
  std::shared_ptr<const DetourReport> detour_;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
