#ifndef CONTROLLER_BASE_DEMO_REPLAY_BAG_RECORDER_H_
#define CONTROLLER_BASE_DEMO_REPLAY_BAG_RECORDER_H_

#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "demo/messages/drive_messages.h"
#include "demo/messages/message.h"
#include "recording/bag_writer.h"
#include "recording/follower_messages.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// Records a drive into a bag: /clock, /tf, DriveTopics, and the follower's inputs and outputs (follower_messages.h).
//
// Messages are recorded under the drive's time, which only grows, whatever the robot's clock says: those of a cycle a
// nanosecond apart in the order in which they were written. BagWriter says what becomes of the file.
class BagRecorder : public simulation::DriveObserver, private MessageSink {
 public:
  // Throws OutputError where the file cannot be written, and so do the calls below.
  BagRecorder(const std::string& file, const costmap_2d::Costmap2D& map);

  void OnPath(const nav_msgs::Path& path) override { shown_.OnPath(path); }
  void OnEvent(const follower::Event& event) override { shown_.OnEvent(event); }
  void OnCycle(const simulation::CycleReport& cycle) override;
  void OnEnd(const simulation::DriveRecord& drive) override;

 private:
  bool Wants(const std::string& /*topic*/) const override { return true; }
  void Take(const std::string& topic, const Message& message) override { waiting_.push_back({topic, message}); }
  void Write(const std::vector<TopicMessage>& messages);

  recording::BagWriter bag_;
  std::vector<TopicMessage> waiting_;  // for the cycle's end, when its time is known
  DriveMessages shown_;                // after waiting_, which takes its first message
  recording::OutputMessages outputs_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_REPLAY_BAG_RECORDER_H_
