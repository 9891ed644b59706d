#ifndef CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
#define CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/control_progress.h"
#include "controller_base/follower/command.h"
#include "controller_base/follower/local_map_view.h"
#include "controller_base/follower/outcome.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/follower/report.h"

namespace controller_base::follower {

// Follows a path, drives around what stands on it, backs away from what it touches, and gives up with a reason.
//
//   PathFollower follower(nullptr);
//   follower.SetPath(path);
//   while (!IsOver(follower.outcome().state)) {
//     Drive(follower.Cycle(robot_pose, local_map));  // 20 times a second
//   }
//
// Everything is in frame "map". It reads the ROS clock and never sets it, and the same inputs in the same order at the
// same times give a fresh follower the same outputs. Needs ros::init and a ROS master before it is constructed, and a
// ros::NodeHandle that lives as long: the library's objects publish what they do. Belongs to one thread, except for
// AddContact and AddBackContact.
class PathFollower {
 public:
  // `observer` may be null; else it must outlive the follower. Throws std::invalid_argument for parameters that
  // CheckParameters refuses.
  explicit PathFollower(FollowerObserver* observer, const Parameters& parameters = {});
  ~PathFollower();

  // Follows `path`, with at least one pose, from its beginning. Throws std::invalid_argument for a path without poses.
  //
  // In the middle of a drive, a beginning that the path shares with the one before counts as driven as far as the robot
  // is, and a detour that ends on the new path goes on: the robot neither stops nor looks back. A path to the same
  // goal, within the goal's tolerances, keeps what was learned on the way there, also when the drive was over: virtual
  // boxes and the count of contacts; in the middle of a drive also distance and time so far, against the longest path's
  // budget, and since when the robot waits. Another goal forgets all of that.
  void SetPath(const nav_msgs::Path& path);

  // Changes what it is to drive by, from the next cycle on; a drive goes on. Throws std::invalid_argument for parameters
  // that CheckParameters refuses, and changes nothing then.
  void SetParameters(const Parameters& parameters);

  // Ends the drive where the robot is. Without effect when it is over, or has not begun.
  void Cancel();

  // What the wheels are to do now, within the limits of speed and acceleration; standing still unless a drive is going
  // on. A contact, a clock that stands still, and a drive that ends elsewhere than at its goal stop the robot at once.
  // `robot` stands on the local map. Throws std::invalid_argument for a map without cells or with a resolution or
  // origin that is not a usable number.
  Command Cycle(const geometry_msgs::PoseStamped& robot, const LocalMapView& map);

  // A bumper was pressed, in front or at a side; from any thread. The robot stops, backs off and turns away.
  void AddContact(const nav_controller::CollisionEvent& contact);

  // The bumper at the back was pressed at that time; from any thread. The robot does not back off, or ceases to. It
  // goes on forwards, and drops virtual boxes behind itself. Reports that follow each other within 0.2 s are one press.
  void AddBackContact(const ros::Time& stamp);

  const Outcome& outcome() const;

  // For those who watch.

  // What the follower is doing, one word: path, detour, blocked, back-off, turn or clock (which stands still).
  const char* activity() const;
  // On the resampled path, whose poses are 0.05 m apart.
  std::uint64_t index() const;
  // Metres from the path.
  double deviation() const;
  // Distance and time against the path's budget.
  const nav_controller::ControlProgress& progress() const;
  // From the robot to its path, and on along it as far as the local map reaches, in the last cycle.
  const nav_msgs::Path& ahead() const;
  // The detour that is driven; null: none.
  std::shared_ptr<const DetourReport> detour() const;
  // What the last search for a detour was about; null once the path is free.
  std::shared_ptr<const Blockage> blockage() const;
  // All that the planner holds.
  const std::vector<VirtualBox>& boxes() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PATH_FOLLOWER_H_
