#ifndef CONTROLLER_BASE_FOLLOWER_FOLLOWER_SESSION_H_
#define CONTROLLER_BASE_FOLLOWER_FOLLOWER_SESSION_H_

#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/control_progress.h"
#include "controller_base/follower/command.h"
#include "controller_base/follower/local_map_view.h"
#include "controller_base/follower/path_follower.h"
#include "controller_base/follower/report.h"

namespace controller_base::follower {

// All that reaches the follower in one control cycle. The same inputs, in their order, give a fresh follower the same
// outputs.
struct FollowerInput {
  ros::Time clock;                                       // what ros::Time::now() says during the cycle
  std::optional<Parameters> parameters;                  // to drive by from now on, first of all
  bool is_fresh = false;                                 // then: what was learned in the cycles before is forgotten
  std::optional<nav_msgs::Path> path;                    // then: a new path to follow
  std::vector<nav_controller::CollisionEvent> contacts;  // from the bumper's driver since the cycle before, in order
  std::vector<ros::Time> back_contacts;                  // likewise, when they were felt
  geometry_msgs::PoseStamped robot;                      // the robot's estimated pose, frame "map"
  LocalMapData map;                                      // the local map
};

// All that the follower says in one control cycle.
struct FollowerOutput {
  Command command;
  Outcome outcome;
  std::string state;                           // one word
  std::uint64_t index = 0;                     // on the resampled path
  double deviation = 0.0;                      // m from the path
  nav_controller::ControlProgress progress;    // distance and time against the path's budget
  nav_msgs::Path ahead;                        // from the robot to its path and on along it
  std::shared_ptr<const DetourReport> detour;  // the one that is driven now; null: none
  std::shared_ptr<const Blockage> blockage;    // what the last search was about; null once the path is free
  std::vector<VirtualBox> boxes;               // all that the planner holds
  std::vector<Event> events;                   // of this cycle
  std::vector<DetourReport> detours;           // that began in this cycle
};

// A follower that is fed with records. Needs what PathFollower needs. Whoever feeds it sets the ROS clock to
// `input.clock` before each cycle: it is read and never set here.
class FollowerSession : private FollowerObserver {
 public:
  // `observer`, which may be null, hears everything at once, before Cycle returns it; it must outlive the session.
  explicit FollowerSession(FollowerObserver* observer, const Parameters& parameters = {});

  // Throws std::invalid_argument for parameters that CheckParameters refuses.
  FollowerOutput Cycle(const FollowerInput& input);

 private:
  void OnEvent(const Event& event) override;
  void OnDetour(const DetourReport& detour) override;

  void Take(const FollowerInput& input);

  FollowerObserver* observer_;
  Parameters parameters_;
  FollowerOutput output_;
  std::unique_ptr<PathFollower> follower_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_FOLLOWER_SESSION_H_
