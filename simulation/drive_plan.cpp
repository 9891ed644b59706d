#include "simulation/drive_plan.h"

#include <algorithm>
#include <string>
#include <vector>

#include "follower/format.h"
#include "follower/geometry.h"
#include "follower/inflation.h"
#include "follower/path_geometry.h"
#include "simulation/known_map.h"
#include "simulation/path_search.h"
#include "simulation/place.h"
#include "simulation/world.h"

namespace controller_base::simulation {
namespace {

using nav_core::math::Vec2d;

// `points` are the start, way points and the goal; `to` is the one that cannot be reached from the one before.
[[noreturn]] void FailToReach(const costmap_2d::Costmap2D& map, const std::vector<Vec2d>& points, std::size_t to) {
  const bool is_goal = to + 1 == points.size();
  const std::string why =
      map.IsInmap(points[to].x, points[to].y) ? WhyNobodyStandsAt(KnownMap(map), points[to]) : "it is off the map";
  throw DriveError(DriveProblem::kUnreachable,
                   (is_goal ? "the goal " : "the way point ") + Place(points[to].x, points[to].y) +
                       " cannot be reached" +
                       (why.empty() ? " from " + Place(points[to - 1].x, points[to - 1].y) : ": " + why),
                   is_goal ? std::nullopt : std::optional<std::size_t>(to - 1));
}

// Searched from point to point. Throws DriveError where there is no way between two of them.
nav_msgs::Path SearchOver(const costmap_2d::Costmap2D& map, const std::vector<Vec2d>& points,
                          const Progress& progress) {
  const KnownMap known(map);
  nav_msgs::Path path;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const nav_msgs::Path leg = SearchPath(known, points[i - 1], points[i], progress);
    if (leg.poses.empty()) {
      FailToReach(map, points, i);
    }
    path.header = leg.header;
    path.poses.insert(path.poses.end(), leg.poses.begin(), leg.poses.end());
  }
  return path;
}

nav_msgs::Path MakePath(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const Progress& progress) {
  std::vector<Vec2d> points = setup.points;
  points.push_back(setup.goal);
  if (setup.path_kind == PathKind::kDrawn) {
    return ToPath(points);
  }
  points.insert(points.begin(), {setup.start.x, setup.start.y});
  return SearchOver(map, points, progress);
}

// How near the cells are: "in a wall", "0.12 m from a wall".
std::string Nearness(const Vec2d& place, const std::vector<World::Overlap>& overlaps, const std::string& name) {
  double nearest = follower::Distance(place, overlaps.front().nearest);
  for (const World::Overlap& overlap : overlaps) {
    nearest = std::min(nearest, follower::Distance(place, overlap.nearest));
  }
  return nearest >= kTouching ? follower::Format("%.2f m from ", nearest) + name : "in " + name;
}

// What leaves the robot no room on its start; empty where there is room.
std::string Hindrance(const costmap_2d::Costmap2D& map, const DriveSetup& setup) {
  const Vec2d start(setup.start.x, setup.start.y);
  const auto overlaps = [&](const std::vector<Obstacle>& obstacles) {
    return World(map, obstacles, setup.shapes).Overlaps(start, follower::kRobotRadius);
  };
  if (overlaps(setup.obstacles).empty()) {
    return "";
  }
  if (const std::vector<World::Overlap> walls = overlaps({}); !walls.empty()) {
    return Nearness(start, walls, "a wall");
  }
  for (const Obstacle& obstacle : setup.obstacles) {
    if (const std::vector<World::Overlap> touched = overlaps({obstacle}); !touched.empty()) {
      return Nearness(start, touched, "the obstacle '" + obstacle.name + "'");
    }
  }
  return "in an obstacle";
}

// Whether the map can be driven on, and the robot can stand on its start; throws DriveError.
void CheckPlaces(const costmap_2d::Costmap2D& map, const DriveSetup& setup) {
  const Vec2d start(setup.start.x, setup.start.y);
  if (map.getResolution() < kFinestResolution || map.getResolution() > kCoarsestResolution) {
    throw DriveError(
        DriveProblem::kMap,
        setup.map_file + follower::Format(": a cell is %g m wide; the demo drives on cells of %g m to %g m",
                                          map.getResolution(), kFinestResolution, kCoarsestResolution));
  }
  if (!map.IsInmap(start.x, start.y)) {
    throw DriveError(DriveProblem::kStart, "the start " + Place(start.x, start.y) + " is off the map");
  }
  if (const std::string hindrance = Hindrance(map, setup); !hindrance.empty()) {
    throw DriveError(DriveProblem::kStart,
                     "the start " + Place(start.x, start.y) + " is " + hindrance +
                         follower::Format(": no room for a robot of radius %.2f m", follower::kRobotRadius));
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
  if (follower::PathLength(path) > kLongestDrive) {
    throw DriveError(DriveProblem::kUnreachable,
                     follower::Format("the path to %s is %g m long; the demo drives up to %g m", goal.c_str(),
                                      follower::PathLength(path), kLongestDrive));
  }
  return path;
}

}  // namespace controller_base::simulation
