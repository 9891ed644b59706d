#include "follower/progress_monitor.h"

#include "follower/format.h"
#include "follower/geometry.h"

namespace controller_base::follower {
namespace {

constexpr double kDeviation = 0.3;  // m; the distance at which TrajectoryAnalyzer warns as well

}  // namespace

void ProgressMonitor::Start(const nav_controller::ControlProgress& budget) {
  progress_ = budget;
  is_deviated_ = false;
  Restart();
}

void ProgressMonitor::Extend(const nav_controller::ControlProgress& budget) {
  if (budget.total_distance > progress_.total_distance) {
    progress_.total_distance = budget.total_distance;
    progress_.total_time = budget.total_time;
    Restart();
  }
}

void ProgressMonitor::Restart() {
  checker_.Reset(progress_);
  last_sample_.reset();
  next_report_ = ros::Time::now() + ros::Duration(parameters_.progress_pause);
}

std::optional<NoProgress> ProgressMonitor::Check(const geometry_msgs::PoseStamped& robot) {
  AddSample(robot);
  std::string reason;
  if (checker_.Check(robot, reason)) {
    return std::nullopt;
  }
  if (!checker_.CheckBaseLine(robot)) {  // asked again for the cause
    return NoProgress{DriveState::kStalled, "stalled, less than 0.2 m in 20 s", reason};
  }
  const char* what =
      progress_.distance_ratio >= kBudgetFactor ? "three times its length driven" : "three times its time";
  return NoProgress{DriveState::kOverBudget, Format("the path's budget is used up, %s", what), reason};
}

void ProgressMonitor::AddSample(const geometry_msgs::PoseStamped& robot) {
  geometry_msgs::PoseStamped sample = robot;
  sample.header.stamp = ros::Time::now();
  if (last_sample_) {
    const double step = Distance(last_sample_->pose.position, sample.pose.position);
    const double seconds = (sample.header.stamp - last_sample_->header.stamp).toSec();
    speed_ = seconds > 0.0 ? step / seconds : 0.0;
    progress_.moved_distance += step;
    progress_.elapsed_time += seconds;
    progress_.distance_ratio = progress_.moved_distance / progress_.total_distance;
    progress_.time_ratio = progress_.elapsed_time / progress_.total_time;
  }
  last_sample_ = sample;
}

void ProgressMonitor::Tell(const Pose2d& robot, const PathPosition& position, const char* state) {
  if ((position.deviation > kDeviation) != is_deviated_) {
    is_deviated_ = !is_deviated_;
    reporter_.Tell(
        EventKind::kDeviation, robot,
        Format(is_deviated_ ? "%.2f m off the path: farther than %.1f m" : "%.2f m off the path: within %.1f m again",
               position.deviation, kDeviation));
  }
  if (ros::Time::now() >= next_report_) {
    next_report_ += ros::Duration(parameters_.progress_pause);
    reporter_.Tell(EventKind::kProgress, robot,
                   Format("index %zu of %zu, %.2f m off the path, state: %s", position.index, position.size,
                          position.deviation, state));
  }
}

}  // namespace controller_base::follower
