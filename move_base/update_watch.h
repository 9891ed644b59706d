#ifndef CONTROLLER_BASE_MOVE_BASE_UPDATE_WATCH_H_
#define CONTROLLER_BASE_MOVE_BASE_UPDATE_WATCH_H_

#include <costmap_2d/costmap_2d.h>
#include <costmap_2d/layer.h>
#include <ros/time.h>

#include <atomic>

namespace controller_base::move_base_plugin {

// A layer of a costmap that changes nothing and knows when the costmap was updated last: a costmap itself does not tell.
class UpdateWatch : public costmap_2d::Layer {
 public:
  // The clock must be there.
  UpdateWatch();

  // s since the last update; before the first one, since the watch began.
  double SecondsSinceUpdate() const { return ros::Time::now().toSec() - last_update_.load(); }

  void updateBounds(double robot_x, double robot_y, double robot_yaw, double* min_x, double* min_y, double* max_x,
                    double* max_y) override;

 private:
  std::atomic<double> last_update_;  // s
};

}  // namespace controller_base::move_base_plugin

#endif  // CONTROLLER_BASE_MOVE_BASE_UPDATE_WATCH_H_
