#ifndef CONTROLLER_BASE_SIMULATION_DRIVE_PLAN_H_
#define CONTROLLER_BASE_SIMULATION_DRIVE_PLAN_H_

#include <nav_msgs/Path.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "costmap_2d/costmap_2d.h"
#include "simulation/drive_setup.h"
#include "simulation/progress.h"

namespace controller_base::simulation {

// Why a drive cannot begin.
enum class DriveProblem {
  kMap,          // its cells are far too small or large, or it has no room
  kStart,        // it is off the map, or a wall or an obstacle leaves the robot no room there
  kGoal,         // it is off the map
  kUnreachable,  // there is no way to the goal or to a way point, or only one that is too long
};

// A drive that cannot begin; what() is one line that says why.
class DriveError : public std::runtime_error {
 public:
  DriveError(DriveProblem problem, const std::string& what, std::optional<std::size_t> way_point = {})
      : std::runtime_error(what), problem_(problem), way_point_(way_point) {}
  DriveProblem problem() const { return problem_; }
  // Of DriveSetup::points, the one that cannot be reached; nothing where it is not a way point that is wrong.
  std::optional<std::size_t> way_point() const { return way_point_; }

 private:
  DriveProblem problem_;
  std::optional<std::size_t> way_point_;
};

constexpr double kLongestDrive = 10'000.0;  // m; a drive of six hours or more

// Checks start and goal, and searches the path or takes the drawn one. Throws DriveError; a path that is longer than
// kLongestDrive counts as kUnreachable.
nav_msgs::Path PlanDrive(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const Progress& progress = {});

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_DRIVE_PLAN_H_
