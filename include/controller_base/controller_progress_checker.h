#ifndef CONTROLLER_BASE_CONTROLLER_PROGRESS_CHECKER_H_
#define CONTROLLER_BASE_CONTROLLER_PROGRESS_CHECKER_H_

#include <geometry_msgs/PoseStamped.h>
#include <ros/duration.h>
#include <ros/time.h>

#include <deque>
#include <string>

#include "controller_base/control_progress.h"

namespace nav_controller {

// Tells whether the robot still makes progress, by two tests:
//   stall    it must move more than 0.2 m away from a baseline pose within 20 s; each time it does, this pose becomes
//            the baseline
//   budget   distance driven and time spent must stay below three times the path's length and time budget
// All times are ros::Time::now() at the call, never a pose's stamp. One checker belongs to one thread; it never stops
// the robot. Before ros::Time::init() the clock throws ros::TimeNotInitializedException; the checker stays as it was.
class ControllerProgressChecker {
 public:
  // Starts a new path: takes over all six fields of `progress` (which is only read) and forgets samples and baseline.
  void Reset(ControlProgress& progress);

  // One control cycle: UpdateProgress, CheckBaseLine, CheckProgress. True while progress is made. `reason` is replaced:
  // empty when true, else one text per failed test, in every locale with a decimal point and no grouping, for example
  //   "CheckBaseLine failed, baseline_pose:(1.00,2.00)  CheckProgress failed, dis:(12.00/4.00), time:(80.00/33.33)".
  bool Check(const geometry_msgs::PoseStamped& pose, std::string& reason);

  // Adds a sample: the step from the previous one grows the distance driven and the time spent. Both ratios are then
  // recomputed without a guard; they are informational.
  void UpdateProgress(const geometry_msgs::PoseStamped& pose);

  // Stall test. Without a baseline, or away from it, `pose` becomes the baseline and the answer is true; otherwise it
  // is true for less than 20 s after the baseline was set. That time is a 64-bit difference of nanoseconds: it never
  // throws, however far the clock has jumped.
  bool CheckBaseLine(const geometry_msgs::PoseStamped& pose);

  // Budget test. True also while the budget's length is below 1 mm or the time spent below 1 ms. The pose is not used.
  bool CheckProgress(const geometry_msgs::PoseStamped& pose) const;

  // Whether `pose` is strictly farther than 0.2 m (planar) from the baseline.
  bool IsRobotMovedEnough(const geometry_msgs::PoseStamped& pose) const;

  // Makes `pose` the baseline, from now.
  void ResetBaselinePose(const geometry_msgs::PoseStamped& pose);

 private:
  std::string FailureReason(bool baseline_ok, bool progress_ok) const;

  ControlProgress progress_;
  std::deque<geometry_msgs::PoseStamped>
      pose_history_;  // the last one or two samples, oldest first, stamped on arrival
  geometry_msgs::PoseStamped baseline_pose_;
  ros::Time baseline_time_;
  bool has_baseline_ = false;
  ros::Duration baseline_timeout_{20.0};
  double min_move_distance_ = 0.2;  // metres
  double distance_factor_ = 3.0;
  double time_factor_ = 3.0;
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_CONTROLLER_PROGRESS_CHECKER_H_
