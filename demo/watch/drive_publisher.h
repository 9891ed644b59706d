#ifndef CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_
#define CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_

#include <ros/node_handle.h>
#include <ros/publisher.h>

#include <memory>
#include <string>

#include "costmap_2d/costmap_2d.h"
#include "drive_observer.h"
#include "watch/markers.h"

namespace controller_base_demo {

// Publishes a drive for RViz, rqt_plot and bags, under /controller_base_demo/:
//
//   map             OccupancyGrid  latched: what the robot knows before it starts
//   local_map       OccupancyGrid  costs around the robot
//   path, detour    Path           latched, with headings; the detour is empty while none is driven
//   corridor        GridCells      latched; empty while no detour is driven
//   ahead           Path           from the robot to its path and on along it
//   markers         MarkerArray    robot, trail, laser, obstacles, boxes, contacts, blocked run, side points, reason
//   index           UInt64         on the resampled path
//   deviation       Float64        m
//   speed           Float64        m/s
//   distance_ratio  Float64        driven over the path's length; the budget ends at 3
//   time_ratio      Float64        time over the path's budget; likewise
//   state, reason   String         latched: what the follower does, and what it last told
//
// Stamps count from kStartTime with the drive, whatever the robot's clock says.
class DrivePublisher : public DriveObserver {
 public:
  explicit DrivePublisher(const costmap_2d::Costmap2D& map);

  // Whether somebody listens to the markers: RViz does once it is ready.
  bool IsWatched() const { return markers_.getNumSubscribers() > 0; }

  void OnPath(const nav_msgs::Path& path) override;
  void OnEvent(const Event& event) override;
  void OnCycle(const CycleReport& cycle) override;

 private:
  void PublishNumbers(const CycleReport& cycle);
  void PublishDetour(const CycleReport& cycle, const ros::Time& stamp);
  void PublishMarkers(const CycleReport& cycle, const ros::Time& stamp);
  void GrowTrail(const Pose2d& pose);

  ros::NodeHandle node_{"/controller_base_demo"};
  ros::Publisher map_;
  ros::Publisher local_map_;
  ros::Publisher path_;
  ros::Publisher ahead_;
  ros::Publisher detour_;
  ros::Publisher corridor_;
  ros::Publisher markers_;
  ros::Publisher index_;
  ros::Publisher deviation_;
  ros::Publisher speed_;
  ros::Publisher distance_ratio_;
  ros::Publisher time_ratio_;
  ros::Publisher state_;
  ros::Publisher reason_;

  std::shared_ptr<const DetourReport> shown_detour_;
  std::string shown_state_;
  std::string last_reason_;
  Points trail_;
  Points contacts_;
};

// Publishes on /tf where the robot believes to be.
class FramePublisher : public DriveObserver {
 public:
  FramePublisher();
  void OnCycle(const CycleReport& cycle) override;

 private:
  ros::NodeHandle node_;
  ros::Publisher transforms_;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_DRIVE_PUBLISHER_H_
