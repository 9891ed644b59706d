#include "benchmark/detours.h"

#include <astar/block_allocator.h>
#include <nav_core/math/box2d.h>

#include <algorithm>
#include <utility>

#include "benchmark/measure.h"
#include "benchmark/plain_smoother.h"

namespace controller_base_benchmark {
namespace {

using costmap_2d::Costmap2D;
using nav_core::math::Box2d;
using nav_core::math::Vec2d;

constexpr int kCorridorWidth = 20;  // cells
constexpr std::uint32_t kSeed = 3;
constexpr bool kPublish = false;
constexpr bool kSmooth = true;

std::vector<AStar::Vec2> Search(const GridMap& map, const Query& query) {
  BlockAllocator allocator;
  return AStar(&allocator).Find(RequestOn(map, query));
}

nav_msgs::Path PathThrough(const std::vector<AStar::Vec2>& cells, const Costmap2D& costmap) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  for (const AStar::Vec2& cell : cells) {
    geometry_msgs::PoseStamped& pose = path.poses.emplace_back();
    costmap.mapToWorld(cell.x, cell.y, pose.pose.position.x, pose.pose.position.y);
  }
  return path;
}

// The passable cells of `map` whose centres lie in the box at `place`.
std::vector<AStar::Vec2> CellsIn(const BoxPlace& place, const Costmap2D& costmap, const GridMap& map) {
  constexpr int kReach = 3;  // cells, a little farther than from the box's centre to its corners
  const Box2d box = BoxAt(place);
  unsigned int mx = 0;
  unsigned int my = 0;
  Require(costmap.worldToMap(place.center.x, place.center.y, mx, my), "a box is off the map");
  std::vector<AStar::Vec2> cells;
  for (int y = static_cast<int>(my) - kReach; y <= static_cast<int>(my) + kReach; ++y) {
    for (int x = static_cast<int>(mx) - kReach; x <= static_cast<int>(mx) + kReach; ++x) {
      const AStar::Vec2 cell{static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y)};
      Vec2d center;
      costmap.mapToWorld(cell.x, cell.y, center.x, center.y);
      if (costmap.IsInmap(x, y) && map.passable[map.IndexOf(cell)] != 0 && box.IsPointIn(center)) {
        cells.push_back(cell);
      }
    }
  }
  return cells;
}

void SetPassable(const std::vector<AStar::Vec2>& cells, bool passable, GridMap& map) {
  for (const AStar::Vec2& cell : cells) {
    map.passable[map.IndexOf(cell)] = passable;
  }
}

bool HaveCommonCell(const std::vector<AStar::Vec2>& a, const std::vector<AStar::Vec2>& b) {
  return std::find_first_of(a.begin(), a.end(), b.begin(), b.end()) != a.end();
}

// Closes the cells in the box at `place` unless that leaves no path; updates `path`. Whether they were closed.
bool CloseUnlessNeeded(const BoxPlace& place, const Costmap2D& costmap, const Query& query, GridMap& cells,
                       std::vector<AStar::Vec2>& path) {
  const std::vector<AStar::Vec2> covered = CellsIn(place, costmap, cells);
  SetPassable(covered, false, cells);
  if (!HaveCommonCell(covered, path)) {
    return true;
  }
  std::vector<AStar::Vec2> detour = Search(cells, query);
  if (detour.empty()) {
    SetPassable(covered, true, cells);
    return false;
  }
  path = std::move(detour);
  return true;
}

}  // namespace

Detours::Detours(const GridMap& map, std::size_t queries, int boxes)
    : map_(map),
      costmap_(CostmapOf(map)),
      planner_(kPublish),
      corridor_(std::make_shared<nav_controller::PathMapFiller>(kCorridorWidth)),
      bare_(map) {
  RandomSource random(kSeed);
  for (std::size_t i = 0; i < queries; ++i) {
    detours_.push_back(MakeDetour(map.queries.at(i), boxes, random));
  }
}

void Detours::Arrange(std::size_t index) {
  arranged_ = &detours_.at(index);
  planner_.ClearAllBoxObstacle();
  for (const BoxPlace& place : arranged_->boxes) {
    planner_.CreateBoxObstacle(place.center, place.heading);
  }
  bare_.passable = arranged_->passable;
  corridor_->prepare(kCorridorWidth, &costmap_, arranged_->followed);
}

std::optional<nav_msgs::Path> Detours::Plan() {
  return planner_.CreatePlan(&costmap_, corridor_, arranged_->followed.poses.front(), arranged_->followed, kSmooth);
}

std::vector<AStar::Vec2> Detours::SearchBare() const { return Search(bare_, arranged_->query); }

nav_msgs::Path Detours::PlanPlainly() const {
  std::vector<Box2d> boxes;
  for (const BoxPlace& place : arranged_->boxes) {
    boxes.push_back(BoxAt(place));
  }
  return SmoothPlainly(PathThrough(SearchBare(), costmap_), costmap_, boxes);
}

Detours::Detour Detours::MakeDetour(const Query& query, int boxes, RandomSource& random) {
  Detour detour;
  detour.query = query;
  std::vector<AStar::Vec2> path = Search(map_, query);
  detour.followed = PathThrough(path, costmap_);
  corridor_->prepare(kCorridorWidth, &costmap_, detour.followed);
  GridMap cells = CellsInCorridor();
  while (static_cast<int>(detour.boxes.size()) < boxes) {
    const BoxPlace place = RandomPlaceInCorridor(random);
    if (CloseUnlessNeeded(place, costmap_, query, cells, path)) {
      detour.boxes.push_back(place);
    }
  }
  detour.passable = std::move(cells.passable);
  return detour;
}

GridMap Detours::CellsInCorridor() const {
  GridMap cells = map_;
  for (std::uint16_t y = 0; y < map_.height; ++y) {
    for (std::uint16_t x = 0; x < map_.width; ++x) {
      if (corridor_->IsLethalObstacle(x, y)) {
        cells.passable[cells.IndexOf({x, y})] = 0;
      }
    }
  }
  return cells;
}

BoxPlace Detours::RandomPlaceInCorridor(RandomSource& random) const {
  while (true) {
    const BoxPlace place = RandomPlace(costmap_, random);
    if (IsInCorridor(place)) {
      return place;
    }
  }
}

bool Detours::IsInCorridor(const BoxPlace& place) const {
  unsigned int mx = 0;
  unsigned int my = 0;
  return costmap_.worldToMap(place.center.x, place.center.y, mx, my) && !corridor_->IsLethalObstacle(mx, my);
}

}  // namespace controller_base_benchmark
