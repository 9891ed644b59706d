#ifndef CONTROLLER_BASE_FOLLOWER_REPORTER_H_
#define CONTROLLER_BASE_FOLLOWER_REPORTER_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>

#include <string>

#include "follower/follower_report.h"
#include "follower/geometry.h"

namespace controller_base_demo {

// Tells a FollowerObserver, which must outlive it, what happens. All parts of a follower share one.
class Reporter {
 public:
  explicit Reporter(FollowerObserver* observer) : observer_(observer) {}

  // Stamped with the current time.
  void Tell(const std::string& kind, const geometry_msgs::Point& position, const std::string& text) const {
    observer_->OnEvent({ros::Time::now(), kind, position, text});
  }
  void Tell(const std::string& kind, const Pose2d& pose, const std::string& text) const {
    Tell(kind, PositionOf(pose), text);
  }
  void Tell(const DetourReport& detour) const { observer_->OnDetour(detour); }

 private:
  FollowerObserver* observer_;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_REPORTER_H_
