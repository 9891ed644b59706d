#include <astar/astar.h>
#include <costmap_2d/costmap_2d.h>
#include <gmock/gmock.h>
#include <nav_msgs/Path.h>
#include <rapidcheck.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controller_base/local_path_smoother.h"
#include "controller_base/local_planner.h"
#include "controller_base/path_map_filler.h"
#include "test/local_plan/grid_paths.h"
#include "test/local_plan/random_worlds.h"
#include "test/support/grid_search_reference.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/same_message.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;
using geometry_msgs::PoseStamped;
using nav_controller::LocalMapObstacle;
using nav_controller::LocalPathSmoother;
using nav_controller::LocalPlanner;
using nav_controller::PathMapFiller;
using nav_msgs::Path;

// The world of a request by the planner's rules, cell by cell: whether it may be entered, and at what extra cost.
GridWorld PlainWorld(const Costmap2D& map, const PathMapFiller* corridor, const LocalMapObstacle& obstacles) {
  GridWorld world(static_cast<std::uint16_t>(map.getSizeInCellsX()), static_cast<std::uint16_t>(map.getSizeInCellsY()));
  world.extra.resize(world.passable.size());
  for (std::uint16_t y = 0; y < world.height; ++y) {
    for (std::uint16_t x = 0; x < world.width; ++x) {
      const int cost = map.getCost(x, y);
      const bool lethal = cost == 253 || cost == 254;
      const bool outside = corridor != nullptr && corridor->IsLethalObstacle(x, y);
      world.passable[world.IndexOf(x, y)] = !obstacles.IsInObstacle(CenterOf(map, x, y)) && !lethal && !outside;
      const bool border = x == 0 || y == 0 || x + 1 >= world.width || y + 1 >= world.height;
      const bool charged = !border && cost > 94 && cost < 128;
      world.extra[world.IndexOf(x, y)] = static_cast<std::uint16_t>(charged ? 20 * (cost - 94) : 0);
    }
  }
  return world;
}

std::optional<AStar::Vec2> CellAt(const Costmap2D& map, const PoseStamped& pose) {
  unsigned int mx = 0;
  unsigned int my = 0;
  if (!map.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my)) {
    return std::nullopt;
  }
  return AStar::Vec2{static_cast<std::uint16_t>(mx), static_cast<std::uint16_t>(my)};
}

bool IsLethal(const Costmap2D& map, const AStar::Vec2& cell) {
  return map.getCost(cell.x, cell.y) == 253 || map.getCost(cell.x, cell.y) == 254;
}

std::string AsText(const geometry_msgs::Point& point) {
  return "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
}

std::string AsText(const AStar::Vec2& cell) {
  return "(" + std::to_string(cell.x) + "," + std::to_string(cell.y) + ")";
}

// What CreatePlan has to do with a request, by the rules read in their order.
struct Expectation {
  std::vector<std::string> lines;
  bool searches = false;
  AStar::Vec2 start, goal;  // of the search
};

Expectation PlainChecks(const Costmap2D& map, const PoseStamped& start, const Path& path) {
  Expectation expected;
  const std::optional<AStar::Vec2> start_cell = CellAt(map, start);
  if (!start_cell) {
    expected.lines.push_back("[LocalPlanner] Start is out map: " + AsText(start.pose.position));
    return expected;
  }
  if (IsLethal(map, *start_cell)) {
    expected.lines.push_back("[LocalPlanner] Start is occupied:" + AsText(start.pose.position));
    return expected;
  }
  const PoseStamped& goal = path.poses.back();
  const std::optional<AStar::Vec2> goal_cell = CellAt(map, goal);
  if (!goal_cell) {
    expected.lines.push_back("[LocalPlanner] Goal is out map: " + AsText(goal.pose.position));
    return expected;
  }
  expected.start = *start_cell;
  expected.goal = *goal_cell;
  expected.searches = true;
  if (!IsLethal(map, *goal_cell)) {
    return expected;
  }
  expected.lines.push_back("[LocalPlanner] Goal is occupied:" + AsText(goal.pose.position));
  for (std::size_t i = path.poses.size(); i-- > 0;) {
    const std::optional<AStar::Vec2> cell = CellAt(map, path.poses[i]);
    if (cell && !IsLethal(map, *cell)) {
      if (std::abs(cell->x - start_cell->x) + std::abs(cell->y - start_cell->y) <= 30) {
        expected.searches = false;
        return expected;
      }
      expected.goal = *cell;
      expected.lines.push_back("[LocalPlanner] use new vaild goal: " + AsText(*cell));
      return expected;
    }
  }
  return expected;
}

std::vector<std::string> TextsOf(const LogCapture& log) {
  std::vector<std::string> texts;
  for (const LogLine& line : log.Lines()) {
    texts.push_back(line.text);
  }
  return texts;
}

PoseStamped RandomPoseAround(const Costmap2D& map) {
  PoseStamped pose;
  const int cells_off = *rc::gen::inRange(0, 20) == 0 ? 1 : 0;  // hardly ever
  pose.pose.position = RandomPointAround(map, cells_off);
  return pose;
}

Path RandomPathAround(const Costmap2D& map) {
  Path path;
  for (int poses = *rc::gen::inRange(1, 6); poses > 0; --poses) {
    path.poses.push_back(RandomPoseAround(map));
  }
  return path;
}

class LocalPlannerPropertyTest : public SimTimeTest {
 protected:
  // Makes up a map with boxes and perhaps a corridor, and asks for a path.
  void CheckOneWorld(int longest_side) {
    const Costmap2D map = RandomMap(*rc::gen::inRange(1, longest_side + 1), *rc::gen::inRange(1, longest_side + 1));
    DropBoxes(map);
    const PoseStamped start = RandomPoseAround(map);
    const Path path = RandomPathAround(map);
    const std::shared_ptr<PathMapFiller> corridor = PerhapsCorridor(map, start, path);
    GridWorld world = PlainWorld(map, corridor.get(), planner_.GetLocalMapObstacle());
    Expectation expected = PlainChecks(map, start, path);
    const std::uint64_t cheapest = PlainSearch(world, expected);

    LogCapture log;
    const std::optional<Path> plan = planner_.CreatePlan(&map, corridor, start, path, false);
    RC_ASSERT(TextsOf(log) == expected.lines);
    RC_ASSERT(plan.has_value() == (cheapest != kNoPath));
    const std::optional<Path> smooth = planner_.CreatePlan(&map, corridor, start, path, true);
    RC_ASSERT(smooth.has_value() == plan.has_value());
    if (plan) {
      CheckPlan(map, world, *plan, cheapest);
      RC_ASSERT(BytesOf(*smooth) == BytesOf(LocalPathSmoother::Process(*plan, &map, planner_.GetLocalMapObstacle())));
    }
  }

 private:
  void DropBoxes(const Costmap2D& map) {
    const LogCapture silent;
    planner_.ClearAllBoxObstacle();
    for (const RandomBox& box : RandomBoxes(map, 2)) {
      planner_.CreateBoxObstacle(box.center, box.heading);
    }
  }

  std::shared_ptr<PathMapFiller> PerhapsCorridor(const Costmap2D& map, const PoseStamped& start, Path path) {
    if (!*rc::gen::arbitrary<bool>()) {
      return nullptr;
    }
    path.poses.insert(path.poses.begin(), start);
    corridor_->prepare(*rc::gen::inRange(1, 6), &map, path);
    return corridor_;
  }

  // The cost of the search that is expected, if one is, and the line that is logged when it fails.
  static std::uint64_t PlainSearch(GridWorld& world, Expectation& expected) {
    if (!expected.searches) {
      RC_TAG("refused");
      return kNoPath;
    }
    world.start = expected.start;
    world.goal = expected.goal;
    const std::uint64_t cheapest = DijkstraCost(world);
    if (cheapest == kNoPath) {
      expected.lines.push_back("[LocalPlanner] Cannot get a path." + AsText(world.start) + ", " + AsText(world.goal));
    }
    RC_TAG(cheapest == kNoPath ? "no path" : "planned");
    return cheapest;
  }

  static void CheckPlan(const Costmap2D& map, const GridWorld& world, const Path& plan, std::uint64_t cheapest) {
    std::vector<AStar::Vec2> cells;
    for (const PoseStamped& pose : plan.poses) {
      const std::optional<AStar::Vec2> cell = CellAt(map, pose);
      RC_ASSERT(cell.has_value());
      PoseStamped bare;
      bare.pose.position = CenterOf(map, cell->x, cell->y);
      RC_ASSERT(BytesOf(pose) == BytesOf(bare));
      cells.push_back(*cell);
    }
    RC_ASSERT(cells.front() == world.start);
    RC_ASSERT(cells.back() == world.goal);
    RC_ASSERT(PathCost(world, cells) == cheapest);  // passable cells only, no corner cut, a cheapest path
  }

  LocalPlanner planner_{false};
  std::shared_ptr<PathMapFiller> corridor_ = std::make_shared<PathMapFiller>(1);
};

TEST_F(LocalPlannerPropertyTest, OnTinyMapsEveryPlanIsACheapestOne) {
  EXPECT_TRUE(rc::check([this] { CheckOneWorld(6); }));
}

TEST_F(LocalPlannerPropertyTest, OnLargerMapsEveryPlanIsACheapestOne) {
  EXPECT_TRUE(rc::check([this] { CheckOneWorld(40); }));
}

}  // namespace
}  // namespace controller_base_test
