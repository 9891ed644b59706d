#ifndef CONTROLLER_BASE_DEMO_MESSAGES_DRIVE_MESSAGES_H_
#define CONTROLLER_BASE_DEMO_MESSAGES_DRIVE_MESSAGES_H_

#include <ros/time.h>
#include <rosgraph_msgs/Clock.h>
#include <tf2_msgs/TFMessage.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "demo/messages/markers.h"
#include "demo/messages/message.h"
#include "simulation/drive_observer.h"

namespace controller_base::demo {

// All topics of the demo's own begin so.
constexpr char kTopicPrefix[] = "/controller_base_demo/";

struct Topic {
  std::string name;
  Message prototype;  // of its type
  std::uint32_t queue_size;
  bool is_latched;
};

// The topics that show a drive to RViz, rqt_plot and bags:
//
//   map             what the robot knows before it starts
//   local_map       costs around the robot
//   path, detour    with headings; the detour is empty while none is driven
//   corridor        empty while no detour is driven
//   ahead           from the robot to its path and on along it
//   markers         robot, trail, laser, obstacles, boxes, contacts, blocked run, side points, reason
//   index           on the resampled path
//   deviation       m
//   speed           m/s
//   distance_ratio  driven over the path's length; the budget ends at 3
//   time_ratio      time over the path's budget; likewise
//   state, reason   what the follower does, and what it last told
const std::vector<Topic>& DriveTopics();

// A drive as messages on these topics. Stamps count from kStartTime with the drive, whatever the robot's clock says.
class DriveMessages : public simulation::DriveObserver {
 public:
  // `sink` must outlive this object.
  DriveMessages(const costmap_2d::Costmap2D& map, MessageSink* sink);

  void OnPath(const nav_msgs::Path& path) override;
  void OnEvent(const follower::Event& event) override;
  void OnCycle(const simulation::CycleReport& cycle) override;

 private:
  void Put(const std::string& name, const Message& message);
  bool IsWanted(const std::string& name) const;
  void PutNumbers(const simulation::CycleReport& cycle);
  void PutDetour(const simulation::CycleReport& cycle);
  visualization_msgs::MarkerArray Markers(const simulation::CycleReport& cycle) const;
  void GrowTrail(const follower::Pose2d& pose);

  MessageSink* sink_;
  std::shared_ptr<const follower::DetourReport> shown_detour_;
  std::string shown_state_;
  std::string last_reason_;
  Points trail_;
  Points contacts_;
};

// For /clock and /tf: the drive's time, and the robot's estimated pose.
rosgraph_msgs::Clock ClockMessage(const simulation::CycleReport& cycle);
tf2_msgs::TFMessage FrameMessage(const simulation::CycleReport& cycle);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_MESSAGES_DRIVE_MESSAGES_H_
