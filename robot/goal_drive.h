#ifndef CONTROLLER_BASE_ROBOT_GOAL_DRIVE_H_
#define CONTROLLER_BASE_ROBOT_GOAL_DRIVE_H_

#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <optional>
#include <vector>

#include "controller_base/follower/report.h"
#include "robot/follower_drive.h"
#include "robot/robot_map.h"

namespace controller_base::robot {

struct ReplanOptions {
  double blocked_timeout = 2.0;  // s that the path may stay blocked before another one is planned
  double replan_pause = 3.0;     // s between two plans to the same goal
};

// Drives to a goal, or along a path that somebody gives. The path to a goal is planned on the map, and planned anew
// over what was learned (what the laser sees, and the virtual boxes around what was touched) when it stays blocked and
// when the follower gives up. Everything is in the frame of the map.
class GoalDrive {
 public:
  // `drive` must outlive this object.
  GoalDrive(FollowerDrive* drive, const ReplanOptions& options) : drive_(*drive), options_(options) {}

  // A path with poses, to be followed as it is: it is never planned anew.
  void Follow(const nav_msgs::Path& path);
  // A goal, of which the next Plan makes a path.
  void GoTo(const geometry_msgs::PoseStamped& goal);
  // Stops the robot and forgets what was learned.
  void Stop();

  // Whether the robot is on its way.
  bool IsActive() const { return is_active_; }

  // Whether Plan is to be called before the next cycle. Planning may take longer than a cycle: stop the wheels first.
  bool WantsPlan(const ros::Time& now) const;
  void Plan(const geometry_msgs::PoseStamped& robot, const RobotMap& map, const ros::Time& now);

  // What the wheels are to do now. Standing still unless the robot is on its way.
  geometry_msgs::Twist Cycle(const geometry_msgs::PoseStamped& robot, RobotMap* map);

  static constexpr int kMostPlans = 20;  // to one goal

 private:
  nav_msgs::Path Search(const geometry_msgs::PoseStamped& robot, const RobotMap& map) const;
  void Learn();
  void EndWithoutPath();

  FollowerDrive& drive_;
  ReplanOptions options_;
  bool is_active_ = false;
  std::optional<geometry_msgs::PoseStamped> goal_;  // none: a given path is followed
  bool has_path_ = false;                           // to the goal
  int plans_ = 0;                                   // to the goal
  ros::Time last_plan_;
  std::vector<follower::VirtualBox> learned_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_GOAL_DRIVE_H_
