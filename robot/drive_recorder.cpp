#include "robot/drive_recorder.h"

#include <ros/console.h>
#include <ros/this_node.h>

#include <vector>

#include "follower/follower_session.h"
#include "recording/bag_format.h"
#include "recording/output_error.h"

namespace controller_base::robot {

DriveRecorder::DriveRecorder(const std::string& file)
    : owns_clock_(!ros::Time::isSimTime()), bag_(std::in_place, file, ros::this_node::getName()) {
  if (!owns_clock_) {
    ROS_WARN("recording with a simulated clock: where it ticks in the middle of a cycle, the replay will differ");
  }
}

void DriveRecorder::Tick() const {
  if (owns_clock_) {
    const ros::WallTime now = ros::WallTime::now();
    ros::Time::setNow(ros::Time(now.sec, now.nsec));
  }
}

void DriveRecorder::OnCycle(const follower::FollowerInput& input, const follower::FollowerOutput& output) {
  if (!bag_) {
    return;
  }
  const ros::SteadyTime now = ros::SteadyTime::now();
  begin_ = begin_.isZero() ? now : begin_;
  try {
    bag_->BeginCycle(ros::Time(recording::kFirstStamp) + ros::Duration((now - begin_).toSec()));
    for (const auto& messages : {recording::InputMessages(input), outputs_.Next(output)}) {
      for (const recording::TopicMessage& message : messages) {
        bag_->Write(message);
      }
    }
  } catch (const recording::OutputError& error) {
    ROS_ERROR("the recording ends: %s", error.what());
    bag_.reset();
  }
}

}  // namespace controller_base::robot
