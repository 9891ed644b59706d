#ifndef CONTROLLER_BASE_DEMO_WATCH_REAL_TIME_H_
#define CONTROLLER_BASE_DEMO_WATCH_REAL_TIME_H_

#include <ros/node_handle.h>
#include <ros/publisher.h>

#include <chrono>

#include "simulation/drive_observer.h"

namespace controller_base::demo {

// The drive's clock for everybody at this ROS master: published on /clock, and /use_sim_time set as long as this object
// lives. Nobody else may own the clock (see MasterHasClock), and this process must have started its ROS node before,
// or it would take its own clock for somebody else's.
class SharedClock : public simulation::DriveObserver {
 public:
  SharedClock();
  ~SharedClock() override;
  SharedClock(const SharedClock&) = delete;
  SharedClock& operator=(const SharedClock&) = delete;

  void OnCycle(const simulation::CycleReport& cycle) override;

 private:
  ros::NodeHandle node_;
  ros::Publisher clock_;
};

// Slows a drive down to the time of the wall: each cycle ends no sooner than as long after the first one as in the
// simulation. After a delay of more than half a second, time is not made up for.
class RealTime : public simulation::DriveObserver {
 public:
  void OnCycle(const simulation::CycleReport& cycle) override;

 private:
  std::chrono::steady_clock::time_point beginning_;  // of the drive, delays left out
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_REAL_TIME_H_
