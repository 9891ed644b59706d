#ifndef CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_

#include <geometry_msgs/Point.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/control_progress.h"
#include "controller_base/controller_progress_checker.h"
#include "controller_base/local_planner.h"
#include "controller_base/path_map_filler.h"
#include "controller_base/trajectory_analyzer.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/command.h"
#include "follower/follower_report.h"
#include "follower/geometry.h"

namespace controller_base_demo {

// How far the corridor in which detours are searched reaches to each side of the path, at the widest.
constexpr double kWidestCorridor = 1.5;  // m
constexpr double kTrackingSpacing =
    0.05;  // m; TrajectoryAnalyzer resamples a path so, and its indices count those poses

enum class Outcome {
  kDriving,     // not decided yet
  kReached,     // the robot stands on the path's last pose
  kNoProgress,  // it stood still for too long, or the path's budget is used up
  kAborted,     // it ran into things too often
};

// An example of a controller that is built on this library: follows a path, drives around what stands on it, backs away
// from what it touches, and gives up with a reason. One cycle at a time, and everything that it does with the library
// is in path_follower.cpp, in the order in which a cycle does it.
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
  // `observer` must outlive the follower.
  explicit PathFollower(FollowerObserver* observer);

  // Follows `path`, in frame "map" and with at least two poses, from its beginning.
  void SetPath(const nav_msgs::Path& path);

  // What the wheels are to do now. The pose is in frame "map", and so is the local map, which the robot stands on;
  // outside of obstacles its costs must stay within 1..127, with a closed ring of 94 or more around every obstacle,
  // because the library reads cost bytes as signed numbers (see Inflation). Standing still once the outcome is decided.
  Command Cycle(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);

  // Where the bumper's driver adds its events, from any thread.
  nav_controller::CollisionHistory& contacts() { return contacts_; }

  Outcome outcome() const { return outcome_; }
  // Why the drive ended, one line; empty while driving.
  const std::string& reason() const { return reason_; }

  // For those who watch: the index on the path, the distance from it in metres, and what the follower is doing.
  std::uint64_t index() const { return tracker_.GetCurrentIndex(); }
  double deviation() const { return deviation_; }
  const char* state() const;
  const std::vector<VirtualBox>& boxes() const { return boxes_; }
  // The way and the time against the path's budget, as the progress checker adds them up.
  const nav_controller::ControlProgress& progress() const { return budget_; }
  // From the robot to its path, and on along it as far as the local map reaches, in the last cycle.
  const nav_msgs::Path& ahead() const { return ahead_; }
  // The detour that is driven; null: none.
  const std::shared_ptr<const DetourReport>& detour() const { return detour_; }
  // What the last search for a detour was about; null once the path is free.
  const std::shared_ptr<const Blockage>& blockage() const { return blockage_; }

 private:
  enum class Mode { kFollowPath, kFollowDetour, kBackOff, kTurn };

  // What one cycle knows.
  struct Situation {
    const geometry_msgs::PoseStamped& robot;
    const costmap_2d::Costmap2D& map;
    Pose2d pose;
    nav_msgs::Path ahead;  // from the robot to its path, and on along it as far as the local map reaches
    std::size_t way_back;  // poses of `ahead` that are not the path's own
  };

  bool WatchClock(const geometry_msgs::PoseStamped& robot);
  void WatchPose(const geometry_msgs::PoseStamped& robot);
  void RestartTimers();
  std::string NoProgress(const std::string& reason) const;
  Situation Observe(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);
  nav_msgs::Path Track(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map);
  void AddProgress(const Situation& now);
  void TellProgress(const Situation& now);
  bool HasArrived(const Situation& now) const;

  void ReactToContact(const Situation& now);
  Command BackOff(const Situation& now);
  Command Turn(const Situation& now);
  void DropBoxes(const Situation& now);

  bool IsLost(const Situation& now);
  Command FollowPath(const Situation& now);
  Command FollowDetour(const Situation& now);
  Command LeaveObstacle(const Situation& now) const;
  geometry_msgs::Point AroundCorner(const Situation& now, const geometry_msgs::Point& target) const;
  geometry_msgs::Point BesideCorner(const Situation& now, const geometry_msgs::Point& target) const;
  Command StopBeforeObstacles(const Situation& now, const Command& command, const geometry_msgs::Point& target) const;
  Command DriveAlong(const Situation& now, const nav_msgs::Path& way, double room) const;

  bool SearchDetour(const Situation& now);
  std::optional<nav_msgs::Path> CreateSafePlan(const Situation& now, const nav_msgs::Path& path, bool* smoothed);
  nav_msgs::Path StretchToRejoin(const Situation& now, const nav_msgs::Path& blocked) const;
  void Refused(const Situation& now, const nav_msgs::Path& path, int width);
  void ForgetRefusals();
  void ForgetBoxes(const Situation& now);
  void BeginDetour(const Situation& now, DetourReport report);
  void EndDetour(const Situation& now);

  bool IsBlocked(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& point) const;
  bool IsLineBlocked(const costmap_2d::Costmap2D& map, const geometry_msgs::Point& from,
                     const geometry_msgs::Point& to) const;
  nav_msgs::Path WithoutBlockedStart(const costmap_2d::Costmap2D& map, nav_msgs::Path path) const;
  nav_msgs::Path BlockedRun(const costmap_2d::Costmap2D& map, const nav_msgs::Path& path) const;

  void SwitchTo(Mode mode, const Pose2d& pose);
  void Finish(Outcome outcome, const geometry_msgs::PoseStamped& robot, const std::string& reason);
  void Tell(const std::string& kind, const geometry_msgs::Point& position, const std::string& text) const;

  FollowerObserver* observer_;

  nav_controller::TrajectoryAnalyzer tracker_;
  nav_controller::ControllerProgressChecker progress_;
  nav_controller::CollisionHistory contacts_;
  nav_controller::LocalPlanner planner_;
  std::shared_ptr<nav_controller::PathMapFiller> corridor_;
  nav_controller::TrajectoryAnalyzer detour_tracker_;  // a detour is tracked like a path

  Outcome outcome_ = Outcome::kDriving;
  std::string reason_;
  Mode mode_ = Mode::kFollowPath;
  Pose2d mode_pose_;     // where, and
  ros::Time mode_time_;  // when the mode began

  ros::Time last_clock_;  // in the cycle before
  int still_cycles_ = 0;  // during which the clock has stood still

  geometry_msgs::Point goal_;  // the path's last pose
  double deviation_ = 0.0;
  bool is_deviated_ = false;
  ros::Time next_progress_;  // when to tell the progress again

  nav_controller::ControlProgress budget_;
  geometry_msgs::PoseStamped last_sample_;  // stamped with the clock; no frame before the first
  double speed_ = 0.0;                      // m/s, as the poses tell
  nav_msgs::Path ahead_;

  std::shared_ptr<const DetourReport> detour_;
  std::shared_ptr<const Blockage> blockage_;
  geometry_msgs::Point detour_end_;
  std::size_t attempts_ = 0;  // searches since the path was last free that a wider corridor may help
  std::string refusal_;       // why the robot waits; empty while the path is free
  ros::Time next_search_;     // not before

  double last_contact_ = 0.0;  // by the path's elapsed time, s
  geometry_msgs::Point contact_point_;
  double contact_direction_ = 0.0;  // from the robot to the contact, rad
  double turn_angle_ = 0.0;
  bool boxes_closed_the_way_ = false;
  std::vector<VirtualBox> boxes_;  // those that the planner holds
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
