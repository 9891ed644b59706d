#ifndef CONTROLLER_BASE_SIMULATION_DRIVE_OBSERVER_H_
#define CONTROLLER_BASE_SIMULATION_DRIVE_OBSERVER_H_

#include <nav_msgs/Path.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "controller_base/follower/command.h"
#include "controller_base/follower/report.h"
#include "follower/follower_session.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/world.h"

namespace controller_base::simulation {

struct DriveRecord;

// One control cycle, seen from outside. Everything lives until OnCycle returns.
struct CycleReport {
  double time;                        // s since the drive began, whatever the robot's clock says
  const follower::Pose2d& true_pose;  // at the cycle's beginning
  const follower::FollowerInput& input;
  const follower::FollowerOutput& output;
  follower::Command motion;                         // what the wheels did in the cycle before
  const std::vector<nav_core::math::Vec2d>& laser;  // where its rays ended at something, map frame
  std::uint8_t bumper;                              // bits of robot.h, as the cycle before ended
  const std::vector<World::Overlap>& touched;       // what the robot ran into in the cycle before
  const nav_msgs::Path& path;                       // the followed one
  const World& world;
};

// Watches a drive, on the drive's thread.
class DriveObserver : public follower::FollowerObserver {
 public:
  virtual void OnPath(const nav_msgs::Path& /*path*/) {}      // a path to follow, the first one as well
  void OnEvent(const follower::Event& /*event*/) override {}  // as it happens, within the cycle
  void OnDetour(const follower::DetourReport& /*detour*/) override {}
  virtual void OnCycle(const CycleReport& /*cycle*/) {}
  virtual void OnEnd(const DriveRecord& /*drive*/) {}
};

// What people do to a drive while it goes on.
struct Interventions {
  std::optional<nav_core::math::Vec2d> goal;  // drive there instead, on a path from where the robot is
  std::vector<Obstacle> obstacles;            // put these into the world
};

class Interaction {
 public:
  virtual ~Interaction() = default;
  // Asked once before each cycle: what people did since the last time.
  virtual Interventions Take() = 0;
  // Whether the robot waits for another goal where it stopped; otherwise the drive ends there.
  virtual bool WaitsForGoals() const { return false; }
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_DRIVE_OBSERVER_H_
