#ifndef CONTROLLER_BASE_FOLLOWER_PROGRESS_MONITOR_H_
#define CONTROLLER_BASE_FOLLOWER_PROGRESS_MONITOR_H_

#include <geometry_msgs/PoseStamped.h>
#include <ros/time.h>

#include <cstddef>
#include <optional>
#include <string>

#include "controller_base/control_progress.h"
#include "controller_base/controller_progress_checker.h"
#include "controller_base/follower/outcome.h"
#include "controller_base/follower/parameters.h"
#include "follower/reporter.h"

namespace controller_base::follower {

// Where the robot is on its path, as it is told to people.
struct PathPosition {
  std::size_t index;  // on the resampled path
  std::size_t size;   // poses of the resampled path
  double deviation;   // m from the path
};

// What kept the robot from making progress.
struct NoProgress {
  DriveState state;     // kStalled or kOverBudget
  std::string summary;  // one line
  std::string figures;  // the checker's own words

  std::string Text() const { return summary + ": " + figures; }
};

// Whether the robot makes progress: the library's checker, its sums, and what they mean. The checker does not expose
// its sums, so the same ones are added up here to be shown.
class ProgressMonitor {
 public:
  // `parameters` and `reporter` must outlive the monitor.
  ProgressMonitor(const Parameters& parameters, const Reporter& reporter)
      : parameters_(parameters), reporter_(reporter) {}

  // A new path: `budget` holds its length and time.
  void Start(const nav_controller::ControlProgress& budget);

  // Another path to the same goal: distance and time so far still count, against the greater of both budgets.
  void Extend(const nav_controller::ControlProgress& budget);

  // The clock or the pose jumped: the step across it does not count. Distance and time so far still do.
  void Restart();

  // One cycle, at the current time. No value while the robot makes progress.
  std::optional<NoProgress> Check(const geometry_msgs::PoseStamped& robot);

  // Tells when the robot comes farther than 0.3 m from its path and when it is back, and now and then where it is.
  // `state` is one word.
  void Tell(const Pose2d& robot, const PathPosition& position, const char* state);

  // Distance and time against the path's budget.
  const nav_controller::ControlProgress& progress() const { return progress_; }
  // m/s, between the last two poses.
  double speed() const { return speed_; }

  // The most that the checker allows of the path's length and time budget.
  static constexpr double kBudgetFactor = 3.0;

 private:
  void AddSample(const geometry_msgs::PoseStamped& robot);

  const Parameters& parameters_;
  const Reporter& reporter_;
  nav_controller::ControllerProgressChecker checker_;
  nav_controller::ControlProgress progress_;
  std::optional<geometry_msgs::PoseStamped> last_sample_;  // stamped with the clock
  double speed_ = 0.0;                                     // m/s
  bool is_deviated_ = false;
  ros::Time next_report_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PROGRESS_MONITOR_H_
