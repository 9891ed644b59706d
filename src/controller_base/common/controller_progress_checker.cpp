#include "controller_base/controller_progress_checker.h"

#include <iomanip>
#include <locale>
#include <sstream>

#include "controller_base/common/planar_distance.h"
#include "controller_base/common/time_difference.h"

namespace nav_controller {
namespace {

constexpr std::size_t kSampleCount = 2;          // all that the sums need
constexpr double kShortestBudgetLength = 0.001;  // metres; below it there is no budget to overrun
constexpr double kShortestElapsedTime = 0.001;   // seconds

}  // namespace

void ControllerProgressChecker::Reset(ControlProgress& progress) {
  progress_ = progress;
  has_baseline_ = false;
  pose_history_.clear();
}

bool ControllerProgressChecker::Check(const geometry_msgs::PoseStamped& pose, std::string& reason) {
  UpdateProgress(pose);
  const bool baseline_ok = CheckBaseLine(pose);
  const bool progress_ok = CheckProgress(pose);
  reason.clear();
  if (!baseline_ok || !progress_ok) {
    reason = FailureReason(baseline_ok, progress_ok);
  }
  return baseline_ok && progress_ok;
}

void ControllerProgressChecker::UpdateProgress(const geometry_msgs::PoseStamped& pose) {
  const ros::Time now = ros::Time::now();  // throws where no clock is initialised: nothing of the sample is kept then
  pose_history_.push_back(pose);
  pose_history_.back().header.stamp = now;
  if (pose_history_.size() > kSampleCount) {
    pose_history_.pop_front();
  }
  if (pose_history_.size() == kSampleCount) {
    const geometry_msgs::PoseStamped& previous = pose_history_.front();
    const geometry_msgs::PoseStamped& current = pose_history_.back();
    progress_.moved_distance += internal::PlanarDistance(previous.pose.position, current.pose.position);
    progress_.elapsed_time += internal::SecondsBetween(previous.header.stamp, current.header.stamp);
  }
  progress_.distance_ratio = progress_.moved_distance / progress_.total_distance;
  progress_.time_ratio = progress_.elapsed_time / progress_.total_time;
}

bool ControllerProgressChecker::CheckBaseLine(const geometry_msgs::PoseStamped& pose) {
  if (!has_baseline_ || IsRobotMovedEnough(pose)) {
    ResetBaselinePose(pose);
    return true;
  }
  return internal::NanosecondsBetween(baseline_time_, ros::Time::now()) < baseline_timeout_.toNSec();
}

bool ControllerProgressChecker::CheckProgress(const geometry_msgs::PoseStamped&) const {
  if (progress_.total_distance < kShortestBudgetLength || progress_.elapsed_time < kShortestElapsedTime) {
    return true;
  }
  if (progress_.moved_distance >= progress_.total_distance * distance_factor_) {
    return false;
  }
  return progress_.elapsed_time < progress_.total_time * time_factor_;
}

bool ControllerProgressChecker::IsRobotMovedEnough(const geometry_msgs::PoseStamped& pose) const {
  return internal::PlanarDistance(baseline_pose_.pose.position, pose.pose.position) > min_move_distance_;
}

void ControllerProgressChecker::ResetBaselinePose(const geometry_msgs::PoseStamped& pose) {
  baseline_time_ = ros::Time::now();  // first, because it may throw
  baseline_pose_ = pose;
  has_baseline_ = true;
}

std::string ControllerProgressChecker::FailureReason(bool baseline_ok, bool progress_ok) const {
  std::ostringstream text;
  text.imbue(std::locale::classic());  // a global locale may write 1.234,50
  text << std::fixed << std::setprecision(2);
  if (!baseline_ok) {
    const geometry_msgs::Point& baseline = baseline_pose_.pose.position;
    text << "CheckBaseLine failed, baseline_pose:(" << baseline.x << "," << baseline.y << ")  ";
  }
  if (!progress_ok) {
    text << "CheckProgress failed, dis:(" << progress_.moved_distance << "/" << progress_.total_distance << "), time:("
         << progress_.elapsed_time << "/" << progress_.total_time << ")";
  }
  return text.str();
}

}  // namespace nav_controller
