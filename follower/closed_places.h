#ifndef CONTROLLER_BASE_FOLLOWER_CLOSED_PLACES_H_
#define CONTROLLER_BASE_FOLLOWER_CLOSED_PLACES_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>

#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"

namespace controller_base::follower {

// Where detours turned out to be blocked. A gap that looks open from afar and proves to be closed from near by would be
// tried again and again, in turn with another one like it. When the robot has come back to it and it is blocked again, it
// counts as closed, for 30 s. One that is blocked now and then, while the robot tries nothing else, does not.
class ClosedPlaces {
 public:
  // A detour is blocked at `place`.
  void Note(const geometry_msgs::Point& place);

  void Forget() { places_.clear(); }

  // Makes what is closed lethal, and gives the cells around it a cost at which the shortcut smoother does not cross. Not
  // around a robot that stands there: no search would start.
  void CloseOn(const Pose2d& robot, costmap_2d::Costmap2D* costs) const;

 private:
  struct Place {
    geometry_msgs::Point point;
    int times;
    ros::Time last;
  };

  std::vector<Place> places_;  // the last one that was noted is the last
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_CLOSED_PLACES_H_
