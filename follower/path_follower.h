#ifndef CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_IMPLEMENTATION_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_IMPLEMENTATION_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <memory>
#include <string>
#include <vector>

#include "controller_base/follower/path_follower.h"
#include "controller_base/local_planner.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/arrival.h"
#include "follower/command_limiter.h"
#include "follower/contact_recovery.h"
#include "follower/detour_in_use.h"
#include "follower/detour_search.h"
#include "follower/input_watchdog.h"
#include "follower/outcome_keeper.h"
#include "follower/path_tracker.h"
#include "follower/progress_monitor.h"
#include "follower/reporter.h"
#include "follower/situation.h"
#include "follower/steering.h"

namespace controller_base::follower {

// The cycle that strings the follower's parts together, in the order in which a cycle needs them. The operations are
// those of PathFollower, with the library's own map.
class PathFollower::Implementation {
 public:
  Implementation(FollowerObserver* observer, const Parameters& parameters);

  void SetPath(const nav_msgs::Path& path);
  void SetParameters(const Parameters& parameters);
  void Cancel();
  Command Cycle(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);
  void AddContact(const nav_controller::CollisionEvent& contact) { recovery_.AddContact(contact); }
  void AddBackContact(const ros::Time& stamp) { recovery_.AddBackContact(stamp); }

  const Outcome& outcome() const { return keeper_.outcome(); }
  const char* activity() const;
  const PathTracker& tracker() const { return tracker_; }
  const nav_controller::ControlProgress& progress() const { return monitor_.progress(); }
  const nav_msgs::Path& ahead() const { return ahead_; }
  std::shared_ptr<const DetourReport> detour() const { return IsOver(outcome().state) ? nullptr : detour_.report(); }
  const std::shared_ptr<const Blockage>& blockage() const { return search_.blockage(); }
  const std::vector<VirtualBox>& boxes() const { return recovery_.boxes(); }

 private:
  void Begin(const nav_msgs::Path& path, bool is_same_goal);
  void Redirect(const nav_msgs::Path& path, bool is_same_goal);

  Command Drive(const Situation& now);

  bool WatchInputs(const Pose2d& robot);
  void RestartTimers();
  Situation Observe(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);
  void JudgeProgress(const Situation& now);

  void ReactToContact(const Situation& now);
  Command Recover(const Situation& now);

  bool IsLost(const Situation& now);
  Command FollowPath(const Situation& now);
  bool SearchDetour(const Situation& now);
  Command FollowDetour(const Situation& now);
  void TellOfHeadway(const Situation& now, const Command& command);
  Command AvoidBlockage(const Situation& now, const nav_msgs::Path& rest, const nav_msgs::Path& blocked, double room);
  void EndDetour(const Situation& now);

  void BackToPath();

  Parameters parameters_;  // the parts below read them in each cycle anew
  Reporter reporter_;
  PathTracker tracker_;
  nav_controller::LocalPlanner planner_;
  Arrival arrival_;
  Steering steering_;
  CommandLimiter limiter_;
  InputWatchdog watchdog_;
  ProgressMonitor monitor_;
  ContactRecovery recovery_;
  DetourSearch search_;
  DetourInUse detour_;
  OutcomeKeeper keeper_;

  Pose2d robot_;  // in the last cycle
  nav_msgs::Path ahead_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_IMPLEMENTATION_H_
