// How a drive begins, changes its path and is cancelled; path_follower.cpp has the cycle.
#include "controller_base/control_progress.h"
#include "follower/format.h"
#include "follower/path_follower.h"

namespace controller_base::follower {
namespace {

Parameters Checked(const Parameters& parameters) {
  CheckParameters(parameters);
  return parameters;
}

}  // namespace

PathFollower::Implementation::Implementation(FollowerObserver* observer, const Parameters& parameters)
    : parameters_(Checked(parameters)),
      reporter_(observer),
      tracker_(parameters_),
      planner_(true),
      arrival_(parameters_),
      steering_(parameters_),
      limiter_(parameters_),
      watchdog_(parameters_, reporter_),
      monitor_(parameters_, reporter_),
      recovery_(parameters_, reporter_, &planner_),
      search_(parameters_, reporter_, &planner_, &recovery_),
      detour_(parameters_, reporter_),
      keeper_(reporter_) {}

void PathFollower::Implementation::SetPath(const nav_msgs::Path& path) {
  const bool is_same_goal = arrival_.IsGoal(path.poses.back().pose);
  if (keeper_.IsDriving()) {
    Redirect(path, is_same_goal);
  } else {
    Begin(path, is_same_goal);
  }
  const nav_controller::ControlProgress& budget = monitor_.progress();
  reporter_.Tell(EventKind::kPath, path.poses.front().pose.position,
                 Format("new path: %.2f m in %zu poses, resampled to %zu; at most %.1f m and %.0f s, three times its "
                        "budget",
                        tracker_.Budget().total_distance, path.poses.size(), static_cast<std::size_t>(tracker_.size()),
                        ProgressMonitor::kBudgetFactor * budget.total_distance,
                        ProgressMonitor::kBudgetFactor * budget.total_time));
}

void PathFollower::Implementation::Begin(const nav_msgs::Path& path, bool is_same_goal) {
  tracker_.Start(path);
  arrival_.SetGoal(path.poses.back().pose);
  watchdog_.Reset();
  monitor_.Start(tracker_.Budget());
  if (is_same_goal) {
    recovery_.StartOver();
  } else {
    recovery_.Reset();
  }
  search_.Reset(tracker_.goal());
  detour_.Drop();
  keeper_.Start();
}

void PathFollower::Implementation::Redirect(const nav_msgs::Path& path, bool is_same_goal) {
  tracker_.Continue(path);
  if (detour_.IsDriven() && !tracker_.LeadsPast(detour_.end(), parameters_.rejoin_distance)) {
    detour_.Drop();
  }
  if (is_same_goal) {
    monitor_.Extend(tracker_.Budget());
    return;
  }
  arrival_.SetGoal(path.poses.back().pose);
  monitor_.Start(tracker_.Budget());
  recovery_.Reset();
  search_.Reset(tracker_.goal());
  keeper_.Start();
}

void PathFollower::Implementation::SetParameters(const Parameters& parameters) { parameters_ = Checked(parameters); }

void PathFollower::Implementation::Cancel() {
  if (keeper_.IsDriving()) {
    BackToPath();
    keeper_.Finish(DriveState::kCancelled, StopCause::kCancelled, robot_, "cancelled");
  }
}

}  // namespace controller_base::follower
