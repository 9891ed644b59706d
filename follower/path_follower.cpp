#include "follower/path_follower.h"

#include "follower/format.h"
#include "follower/path_geometry.h"

namespace controller_base::follower {

Command PathFollower::Implementation::Cycle(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
  robot_ = ToPose2d(robot.pose);
  const Command wanted = keeper_.IsDriving() && WatchInputs(robot_) ? Drive(Observe(robot, map)) : Command();
  keeper_.Note(search_.hindrance());
  if (!keeper_.IsDriving() || watchdog_.IsClockStill()) {
    limiter_.Stop();
    return {};
  }
  return limiter_.Limit(wanted);
}

Command PathFollower::Implementation::Drive(const Situation& now) {
  JudgeProgress(now);
  if (!keeper_.IsDriving()) {
    return {};
  }
  ReactToContact(now);
  if (recovery_.phase() != ContactRecovery::Phase::kNone) {
    return Recover(now);
  }
  if (arrival_.IsLatched()) {
    return Steering::TurnBy(arrival_.LeftToTurn(now.pose));
  }
  if (IsLost(now)) {
    return {};
  }
  return detour_.IsDriven() ? FollowDetour(now) : FollowPath(now);
}

const char* PathFollower::Implementation::activity() const {
  if (watchdog_.IsClockStill()) {
    return "clock";
  }
  switch (recovery_.phase()) {
    case ContactRecovery::Phase::kBackOff:
      return "back-off";
    case ContactRecovery::Phase::kTurn:
      return "turn";
    case ContactRecovery::Phase::kNone:
      break;
  }
  return arrival_.IsLatched() ? "turn" : detour_.IsDriven() ? "detour" : search_.hindrance() ? "blocked" : "path";
}

// False while the robot has to wait for its clock. After a jump of the clock or the pose, what was measured before it
// is forgotten; a detour from where the robot is not is of no use.
bool PathFollower::Implementation::WatchInputs(const Pose2d& robot) {
  switch (watchdog_.WatchClock(robot)) {
    case InputWatchdog::Clock::kHasStoodStill:
      keeper_.Finish(DriveState::kClockStopped, StopCause::kClock, robot,
                     Format("the clock has stood still for %d cycles", watchdog_.still_cycles()));
      return false;
    case InputWatchdog::Clock::kStandsStill:
      return false;
    case InputWatchdog::Clock::kJumped:
      RestartTimers();
      break;
    case InputWatchdog::Clock::kRuns:
      break;
  }
  if (watchdog_.WatchPose(robot)) {
    RestartTimers();
    BackToPath();
  }
  return true;
}

void PathFollower::Implementation::RestartTimers() {
  monitor_.Restart();
  recovery_.RestartTimers();
  search_.SearchAtOnce();
}

Situation PathFollower::Implementation::Observe(const geometry_msgs::PoseStamped& robot,
                                                const costmap_2d::Costmap2D& map) {
  const nav_msgs::Path stretch = tracker_.Track(robot, map);
  ahead_ = PathFromRobot(robot, stretch);
  return {robot, ToPose2d(robot.pose), PlannerView(map, planner_.GetLocalMapObstacle()), ahead_,
          ahead_.poses.size() - stretch.poses.size()};
}

void PathFollower::Implementation::JudgeProgress(const Situation& now) {
  monitor_.Tell(now.pose, {tracker_.index(), tracker_.size(), tracker_.deviation()}, activity());
  const std::optional<NoProgress> no_progress = monitor_.Check(now.robot);
  steering_.SetMeasuredSpeed(monitor_.speed());
  if (no_progress) {
    keeper_.GiveUp(now.pose, *no_progress, search_.hindrance(),
                   recovery_.SecondsSinceContact(monitor_.progress().elapsed_time));
    return;
  }
  if (tracker_.HasArrived(now.pose, now.ahead)) {
    arrival_.Latch();
  } else if (!parameters_.latch_goal) {
    arrival_.Release();
  }
  if (arrival_.IsLatched() && arrival_.LeftToTurn(now.pose) == 0.0 && limiter_.IsStanding()) {
    arrival_.Release();
    keeper_.Finish(DriveState::kReached, StopCause::kArrived, now.pose,
                   Format("%.3f m from the path's end", Distance(now.pose, tracker_.goal())));
  }
}

// What was touched has stopped the robot: braking gently would press against it.
void PathFollower::Implementation::ReactToContact(const Situation& now) {
  const double elapsed = monitor_.progress().elapsed_time;
  const int too_many = recovery_.React(now.pose, elapsed);
  recovery_.ReactBehind(now.view, now.pose, elapsed);
  if (recovery_.SecondsSinceContact(elapsed) == 0.0) {
    limiter_.Stop();
  }
  if (too_many > 0) {
    keeper_.Finish(DriveState::kAborted, StopCause::kContact, now.pose,
                   Format("%d contacts without getting away", too_many));
  }
  if (recovery_.phase() != ContactRecovery::Phase::kNone) {
    detour_.Drop();
    arrival_.Release();
  }
}

Command PathFollower::Implementation::Recover(const Situation& now) {
  const Command command = recovery_.Recover(now.view, now.pose);
  if (recovery_.phase() == ContactRecovery::Phase::kNone) {
    search_.SearchAtOnce();
  }
  return command;
}

// Where the local map shows nothing of the robot or of its path, no step is safe: the robot waits, and unless the
// localisation finds back, the progress monitor ends this.
bool PathFollower::Implementation::IsLost(const Situation& now) {
  const bool is_on_map = now.view.map().IsInmap(now.pose.x, now.pose.y);
  if (is_on_map && !now.ahead.poses.empty()) {
    return false;
  }
  search_.Lost(now.pose, is_on_map ? "the path ahead is not on the local map" : "the robot is not on its local map");
  BackToPath();
  return true;
}

Command PathFollower::Implementation::FollowPath(const Situation& now) {
  const nav_msgs::Path near = now.view.WithoutBlockedStart(Beginning(now.ahead, parameters_.detour_horizon));
  const nav_msgs::Path blocked = now.view.BlockedRun(near);
  if (blocked.poses.empty()) {
    search_.PathIsFree(now.pose);
    const double room = tracker_.EndsAtGoal(now.ahead) ? PathLength(now.ahead) : parameters_.detour_horizon;
    return steering_.DriveAlong(now.view, now.pose, now.ahead, room);
  }
  if (search_.IsDue() && SearchDetour(now)) {
    return FollowDetour(now);
  }
  if (now.view.IsBlocked(PositionOf(now.pose))) {
    return steering_.LeaveObstacle(now.view, now.pose);  // no search will start here
  }
  const double room = Distance(now.pose, blocked.poses.front().pose.position) - parameters_.waiting_distance;
  return steering_.DriveAlong(now.view, now.pose, near, room);
}

bool PathFollower::Implementation::SearchDetour(const Situation& now) {
  const std::optional<DetourReport> found = search_.Search(now);
  if (found) {
    detour_.Start(*found);
  }
  return found.has_value();
}

Command PathFollower::Implementation::FollowDetour(const Situation& now) {
  const nav_msgs::Path ahead = detour_.Track(now.robot, now.view.map());
  if (detour_.IsDone(now.pose, ahead)) {
    EndDetour(now);
    return steering_.DriveAlong(now.view, now.pose, now.ahead, parameters_.lookahead);
  }
  const nav_msgs::Path rest = now.view.WithoutBlockedStart(ahead);
  const nav_msgs::Path blocked = now.view.BlockedRun(rest);
  const double room = blocked.poses.empty()
                          ? PathLength(ahead) + parameters_.lookahead
                          : Distance(now.pose, blocked.poses.front().pose.position) - now.view.map().getResolution();
  if (detour_.IsBlockedForLong(blocked)) {
    return AvoidBlockage(now, rest, blocked, room);
  }
  const Command command = steering_.DriveAlong(now.view, now.pose, rest, room);
  TellOfHeadway(now, command);
  return command;
}

void PathFollower::Implementation::TellOfHeadway(const Situation& now, const Command& command) {
  if (detour_.GetsNowhere(now.pose, command)) {
    search_.DetourIsTooNarrow(now.pose);
  } else {
    search_.DetourIsDriven();
  }
}

// The detour is driven on, up to what blocks it, until there is another.
Command PathFollower::Implementation::AvoidBlockage(const Situation& now, const nav_msgs::Path& rest,
                                                    const nav_msgs::Path& blocked, double room) {
  const nav_msgs::Path near = now.view.WithoutBlockedStart(Beginning(now.ahead, parameters_.detour_horizon));
  if (now.view.BlockedRun(near).poses.empty()) {
    BackToPath();
    return FollowPath(now);
  }
  if (search_.IsDue()) {
    reporter_.Tell(EventKind::kBlocked, blocked.poses.front().pose.position,
                   "the detour is blocked as well: another one is needed");
    search_.KeepSide(rest);
    search_.DetourIsBlocked(blocked.poses.front().pose.position);
    if (SearchDetour(now)) {
      const nav_msgs::Path& detour = detour_.report()->detour;
      return steering_.DriveAlong(now.view, now.pose, detour, PathLength(detour));
    }
  }
  if (now.view.IsBlocked(PositionOf(now.pose))) {
    return steering_.LeaveObstacle(now.view, now.pose);
  }
  return steering_.DriveAlong(now.view, now.pose, rest, room);
}

void PathFollower::Implementation::EndDetour(const Situation& now) {
  tracker_.WalkAlong(detour_.report()->path, detour_.end(), now.view.map().getResolution());
  tracker_.Track(now.robot, now.view.map());
  reporter_.Tell(EventKind::kRejoined, now.pose,
                 Format("back on the path, %.2f m off it, index %zu", tracker_.deviation(),
                        static_cast<std::size_t>(tracker_.index())));
  recovery_.Rejoined();
  detour_.Drop();
}

// Whatever the robot was about, it follows its path again.
void PathFollower::Implementation::BackToPath() {
  recovery_.Abandon();
  detour_.Drop();
}

}  // namespace controller_base::follower
