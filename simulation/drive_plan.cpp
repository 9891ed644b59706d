#include "simulation/drive_plan.h"

#include <string>
#include <vector>

#include "follower/format.h"
#include "follower/inflation.h"
#include "follower/path_geometry.h"
#include "simulation/known_map.h"
#include "simulation/path_search.h"
#include "simulation/place.h"
#include "simulation/world.h"

namespace controller_base::simulation {
namespace {

// Searched from point to point; no poses when there is no way between two of them.
nav_msgs::Path SearchOver(const costmap_2d::Costmap2D& map, const std::vector<nav_core::math::Vec2d>& points,
                          const Progress& progress) {
  nav_msgs::Path path;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const nav_msgs::Path leg = SearchPath(KnownMap(map), points[i - 1], points[i], progress);
    if (leg.poses.empty()) {
      return {};
    }
    path.header = leg.header;
    path.poses.insert(path.poses.end(), leg.poses.begin(), leg.poses.end());
  }
  return path;
}

nav_msgs::Path MakePath(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const Progress& progress) {
  std::vector<nav_core::math::Vec2d> points = setup.points;
  points.push_back(setup.goal);
  if (setup.path_kind == PathKind::kDrawn) {
    return ToPath(points);
  }
  points.insert(points.begin(), {setup.start.x, setup.start.y});
  return SearchOver(map, points, progress);
}

// Whether the map can be driven on, and the robot can stand on its start; throws DriveError.
void CheckPlaces(const costmap_2d::Costmap2D& map, const DriveSetup& setup) {
  const nav_core::math::Vec2d start(setup.start.x, setup.start.y);
  if (map.getResolution() < kFinestResolution || map.getResolution() > kCoarsestResolution) {
    throw DriveError(
        DriveProblem::kMap,
        setup.map_file + follower::Format(": a cell is %g m wide; the demo drives on cells of %g m to %g m",
                                          map.getResolution(), kFinestResolution, kCoarsestResolution));
  }
  if (!map.IsInmap(start.x, start.y)) {
    throw DriveError(DriveProblem::kStart, "the start " + Place(start.x, start.y) + " is off the map");
  }
  if (!World(map, setup.obstacles).Overlaps(start, follower::kRobotRadius).empty()) {
    throw DriveError(DriveProblem::kStart,
                     "the start " + Place(start.x, start.y) + " is in a wall: no room for a robot of radius 0.17 m");
  }
  if (!map.IsInmap(setup.goal.x, setup.goal.y)) {
    throw DriveError(DriveProblem::kGoal, "the goal " + Place(setup.goal.x, setup.goal.y) + " is off the map");
  }
}

}  // namespace

nav_msgs::Path PlanDrive(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const Progress& progress) {
  CheckPlaces(map, setup);
  nav_msgs::Path path = MakePath(map, setup, progress);
  const std::string goal = "the goal " + Place(setup.goal.x, setup.goal.y);
  if (path.poses.empty()) {
    throw DriveError(DriveProblem::kUnreachable,
                     goal + " cannot be reached from the start " + Place(setup.start.x, setup.start.y));
  }
  if (follower::PathLength(path) > kLongestDrive) {
    throw DriveError(DriveProblem::kUnreachable,
                     follower::Format("the path to %s is %g m long; the demo drives up to %g m", goal.c_str(),
                                      follower::PathLength(path), kLongestDrive));
  }
  return path;
}

}  // namespace controller_base::simulation
