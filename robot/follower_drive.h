#ifndef CONTROLLER_BASE_ROBOT_FOLLOWER_DRIVE_H_
#define CONTROLLER_BASE_ROBOT_FOLLOWER_DRIVE_H_

#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_msgs/Path.h>
#include <ros/node_handle.h>
#include <ros/time.h>

#include <memory>
#include <string>
#include <vector>

#include "controller_base/follower/report.h"
#include "robot/bumper.h"
#include "robot/grid.h"

namespace controller_base::follower {
struct FollowerInput;
struct FollowerOutput;
}  // namespace controller_base::follower

namespace controller_base::robot {

// Hears all that went into the follower in a control cycle, and all that came out of it.
class CycleObserver {
 public:
  virtual ~CycleObserver() = default;
  virtual void OnCycle(const follower::FollowerInput& input, const follower::FollowerOutput& output) = 0;
};

enum class DriveState { kIdle, kDriving, kBlocked, kReached, kFailed };

// The follower between topics: what the node and the plugin have in common. Its header shows no costmap_2d, so that the
// plugin can stand beside the stock navigation stack's headers, whose classes have the same names as the library's.
//
// The parameters can be changed between cycles through dynamic_reconfigure, as FollowerConfig shows them: what is out of
// its range is taken as the range's end, and what does not go together is refused, each with a warning.
//
// It publishes what the follower does below `topics`: state, reason and events (std_msgs/String), path, ahead and
// detour (nav_msgs/Path), boxes (visualization_msgs/MarkerArray).
class FollowerDrive {
 public:
  // The follower's parameters and dynamic_reconfigure's service stand beside the topics; see ReadFollowerParameters, whose exceptions pass through.
  explicit FollowerDrive(const ros::NodeHandle& topics);
  ~FollowerDrive();

  // `observer`, which may be null, must outlive this object or be replaced.
  void SetObserver(CycleObserver* observer);

  // Follows a path. Its header names the frame of everything until the next one.
  void Follow(const nav_msgs::Path& path);
  // Ends the drive and forgets it, the boxes included.
  void Stop();

  // One control cycle: the pose in the path's frame, and the local map around it in that frame: costs as the library
  // reads them (see ReadStockCosts) and, as many, the laser's marks. Standing still unless the state is driving or
  // blocked.
  geometry_msgs::Twist Cycle(const geometry_msgs::PoseStamped& robot, const GridBytes& costs, const GridBytes& marks);

  // Says on the topics how things stand and why, until the next cycle.
  void Show(const std::string& state, const std::string& reason);
  // Tells an event that is not the follower's own.
  void Tell(follower::EventKind kind, const std::string& text);

  // The bumper was pressed anew; see BumperPresses.
  void Touch(Sectors sectors, const ros::Time& stamp);

  DriveState state() const;
  // Why it is blocked or failed; empty otherwise.
  std::string reason() const;
  // Since when it is blocked; meaningful in that state alone.
  ros::Time blocked_since() const;
  // The virtual boxes around what the robot touched.
  std::vector<follower::VirtualBox> boxes() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_FOLLOWER_DRIVE_H_
