#ifndef CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_
#define CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_

#include <ros/node_handle.h>
#include <ros/publisher.h>

#include <map>
#include <string>

#include "costmap_2d/costmap_2d.h"
#include "demo/messages/drive_messages.h"
#include "demo/messages/message.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// Publishes a drive on DriveTopics.
class DrivePublisher : public simulation::DriveObserver, private MessageSink {
 public:
  explicit DrivePublisher(const costmap_2d::Costmap2D& map);

  // Whether somebody listens to the markers: RViz does once it is ready.
  bool IsWatched() const;

  void OnPath(const nav_msgs::Path& path) override { messages_.OnPath(path); }
  void OnEvent(const follower::Event& event) override { messages_.OnEvent(event); }
  void OnCycle(const simulation::CycleReport& cycle) override { messages_.OnCycle(cycle); }

 private:
  bool Wants(const std::string& topic) const override { return publishers_.at(topic).getNumSubscribers() > 0; }
  void Take(const std::string& topic, const Message& message) override;

  std::map<std::string, ros::Publisher> publishers_;  // by topic
  DriveMessages messages_;                            // after the publishers, which its first message needs
};

// Publishes the robot's estimated pose on /tf.
class FramePublisher : public simulation::DriveObserver {
 public:
  FramePublisher();
  void OnCycle(const simulation::CycleReport& cycle) override;

 private:
  ros::NodeHandle node_;
  ros::Publisher transforms_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_
