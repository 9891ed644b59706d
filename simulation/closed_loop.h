#ifndef CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_
#define CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_

#include <nav_msgs/Path.h>

#include <atomic>
#include <vector>

#include "controller_base/follower/command.h"
#include "controller_base/follower/report.h"
#include "costmap_2d/costmap_2d.h"
#include "simulation/drive_observer.h"
#include "simulation/drive_record.h"
#include "simulation/drive_setup.h"

namespace controller_base::simulation {

// Drives along `path` through the setup's world on `map`, 20 cycles a second of the ROS clock, which it sets, watched
// by `observers`. Ends early when `stop` becomes true. `interaction` may be null; without it the same arguments give
// the same record. What people put off the map is refused, with an event. Needs what PathFollower needs.
DriveRecord RunDrive(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const nav_msgs::Path& path,
                     const std::vector<DriveObserver*>& observers, const std::atomic<bool>& stop,
                     Interaction* interaction = nullptr);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_CLOSED_LOOP_H_
