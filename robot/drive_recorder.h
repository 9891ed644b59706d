#ifndef CONTROLLER_BASE_ROBOT_DRIVE_RECORDER_H_
#define CONTROLLER_BASE_ROBOT_DRIVE_RECORDER_H_

#include <ros/time.h>

#include <optional>
#include <string>

#include "recording/bag_writer.h"
#include "recording/follower_messages.h"
#include "robot/follower_drive.h"

namespace controller_base::robot {

// Records the follower's cycles into a bag that the replay program reads. A bag that can no longer be written ends the
// recording with an error on the log; the drive goes on.
//
// The follower reads ROS's clock several times in a cycle, and a replay stops it meanwhile. So does the recorder, where
// nobody else sets the clock: this process has then a clock of its own, which follows the wall's with each Tick. A
// simulated clock that ticks in the middle of a cycle makes the replay differ.
class DriveRecorder : public CycleObserver {
 public:
  // Throws recording::OutputError where the file cannot be written. The file is complete when this object is gone.
  explicit DriveRecorder(const std::string& file);

  void Tick() const;

  void OnCycle(const follower::FollowerInput& input, const follower::FollowerOutput& output) override;

 private:
  bool owns_clock_;
  std::optional<recording::BagWriter> bag_;  // none once it failed
  recording::OutputMessages outputs_;
  ros::SteadyTime begin_;  // of the first cycle
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_DRIVE_RECORDER_H_
