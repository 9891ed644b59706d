#ifndef CONTROLLER_BASE_FOLLOWER_REPORTER_H_
#define CONTROLLER_BASE_FOLLOWER_REPORTER_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>

#include <string>

#include "controller_base/follower/report.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// Tells a FollowerObserver what happens. All parts of a follower share one.
class Reporter {
 public:
  // `observer` may be null; else it must outlive the reporter.
  explicit Reporter(FollowerObserver* observer) : observer_(observer) {}

  // Stamped with the current time.
  void Tell(EventKind kind, const geometry_msgs::Point& position, const std::string& text) const {
    if (observer_ != nullptr) {
      observer_->OnEvent({ros::Time::now(), kind, position, text});
    }
  }
  void Tell(EventKind kind, const Pose2d& pose, const std::string& text) const { Tell(kind, PositionOf(pose), text); }
  void Tell(const DetourReport& detour) const {
    if (observer_ != nullptr) {
      observer_->OnDetour(detour);
    }
  }

 private:
  FollowerObserver* observer_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_REPORTER_H_
