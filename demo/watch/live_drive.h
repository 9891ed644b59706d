#ifndef CONTROLLER_BASE_DEMO_WATCH_LIVE_DRIVE_H_
#define CONTROLLER_BASE_DEMO_WATCH_LIVE_DRIVE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "demo/watch/drive_publisher.h"
#include "demo/watch/operator_input.h"
#include "demo/watch/real_time.h"
#include "demo/watch/rviz.h"

namespace controller_base::demo {

// What makes a drive one that people watch as it happens and take part in: the time of the wall, clock and frames for
// everybody at the ROS master, their goals and boxes, and RViz if they want it.
class LiveDrive {
 public:
  // Takes nobody's goals and boxes unless `takes_input`.
  explicit LiveDrive(bool takes_input);

  // Starts RViz and returns once it listens to `publisher`, or as soon as `stop` says so. Throws RvizError.
  void OpenRviz(const std::string& config_file, const DrivePublisher& publisher, const std::function<bool()>& stop);

  // For RunDrive; they belong to this object.
  std::vector<simulation::DriveObserver*> Observers() { return {&clock_, &frames_, &pace_}; }
  // As long as RViz is open, the robot waits for goals where it stopped.
  simulation::Interaction* interaction() { return &input_; }

 private:
  SharedClock clock_;  // before RViz, which asks for the clock's owner when it starts
  FramePublisher frames_;
  RealTime pace_;
  std::optional<Rviz> rviz_;
  OperatorInput input_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_LIVE_DRIVE_H_
