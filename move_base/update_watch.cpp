#include "move_base/update_watch.h"

namespace controller_base::move_base_plugin {

UpdateWatch::UpdateWatch() : last_update_(ros::Time::now().toSec()) {
  current_ = true;
  enabled_ = true;
}

void UpdateWatch::updateBounds(double /*robot_x*/, double /*robot_y*/, double /*robot_yaw*/, double* /*min_x*/,
                               double* /*min_y*/, double* /*max_x*/, double* /*max_y*/) {
  last_update_ = ros::Time::now().toSec();
}

}  // namespace controller_base::move_base_plugin
