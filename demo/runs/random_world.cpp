#include "demo/runs/random_world.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "follower/geometry.h"
#include "follower/inflation.h"
#include "follower/path_geometry.h"
#include "simulation/drive_plan.h"
#include "simulation/known_map.h"
#include "simulation/wait_for.h"

namespace controller_base::demo {

// Random numbers that are the same with every standard library, which its distributions are not.
class RandomSource {
 public:
  explicit RandomSource(std::uint32_t seed) : engine_(seed) {}

  double Between(double low, double high) { return low + (high - low) * static_cast<double>(engine_()) / 4294967296.0; }
  bool Happens(double probability) { return Between(0.0, 1.0) < probability; }
  // 0 .. count - 1
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Between(0.0, static_cast<double>(count))); }

 private:
  std::mt19937 engine_;
};

namespace {

using nav_core::math::Vec2d;

constexpr int kDraws = 1000;  // of start and goal, until the map is said to have too little room

constexpr double kFarthestBeside = 0.6;     // m
constexpr double kSmallestObstacle = 0.08;  // m, its side or diameter
constexpr double kLargestObstacle = 0.5;    // m
constexpr double kDenseSpacing = 2.5;       // m of path for each obstacle
constexpr double kSparseSpacing = 6.0;      // m
constexpr double kLowShare = 0.25;          // of all obstacles
constexpr double kDiscShare = 0.4;

simulation::Obstacle DrawObstacle(const nav_msgs::Path& path, RandomSource* random) {
  const geometry_msgs::Pose& pose = path.poses[random->Below(path.poses.size())].pose;
  const double heading = 2.0 * std::atan2(pose.orientation.z, pose.orientation.w);
  const double beside = random->Between(-kFarthestBeside, kFarthestBeside);
  simulation::Obstacle obstacle;
  obstacle.center = {pose.position.x - beside * std::sin(heading), pose.position.y + beside * std::cos(heading)};
  if (random->Happens(kDiscShare)) {
    obstacle.radius = 0.5 * random->Between(kSmallestObstacle, kLargestObstacle);
  } else {
    obstacle.yaw = random->Between(-follower::kPi, follower::kPi);
    obstacle.length = random->Between(kSmallestObstacle, kLargestObstacle);
    obstacle.width = random->Between(kSmallestObstacle, kLargestObstacle);
  }
  obstacle.low = random->Happens(kLowShare);
  return obstacle;
}

void DropObstacles(const nav_msgs::Path& path, RandomSource* random, simulation::DriveSetup* setup) {
  const double spacing = random->Between(kDenseSpacing, kSparseSpacing);
  const int count = static_cast<int>(std::lround(follower::PathLength(path) / spacing));
  for (int i = 0; i < count; ++i) {
    simulation::Obstacle obstacle = DrawObstacle(path, random);
    obstacle.name = (obstacle.low ? "low " : "") + std::to_string(i + 1);
    if (std::min(Distance(obstacle.center, setup->start), follower::Distance(obstacle.center, setup->goal)) >=
        kClearedRadius) {
      setup->obstacles.push_back(obstacle);
    }
  }
}

// 1 where a cell is free, and some way from what is not.
cv::Mat FreeCells(const costmap_2d::Costmap2D& costs, const simulation::Progress& progress) {
  constexpr int kRowsAtATime = 256;
  cv::Mat free(static_cast<int>(costs.getSizeInCellsY()), static_cast<int>(costs.getSizeInCellsX()), CV_8UC1);
  for (int my = 0; my < free.rows; ++my) {
    if (progress && my % kRowsAtATime == 0) {
      progress(simulation::StepText("looking for free cells", static_cast<double>(my) / free.rows));
    }
    for (int mx = 0; mx < free.cols; ++mx) {
      const unsigned char cost = costs.getCost(static_cast<unsigned int>(mx), static_cast<unsigned int>(my));
      free.at<unsigned char>(my, mx) = cost < follower::Inflation::kLowestRingCost ? 1 : 0;
    }
  }
  return free;
}

// A number for each free cell's room, and all free cells.
std::pair<cv::Mat, std::vector<cv::Point>> Rooms(const cv::Mat& free) {
  constexpr int kNoDiagonals = 4;
  std::pair<cv::Mat, std::vector<cv::Point>> rooms;
  cv::connectedComponents(free, rooms.first, kNoDiagonals);
  cv::findNonZero(free, rooms.second);
  return rooms;
}

}  // namespace

RandomWorlds::RandomWorlds(const std::string& map_file, const costmap_2d::Costmap2D& map,
                           simulation::Conditions conditions, const simulation::Progress& progress)
    : map_file_(map_file), conditions_(conditions), map_(map) {
  const costmap_2d::Costmap2D costs = simulation::KnownMap(map).WholeMap(progress);
  const cv::Mat free = FreeCells(costs, progress);
  std::tie(rooms_, cells_) =
      simulation::WaitFor(progress, "looking for rooms on the map", [free] { return Rooms(free); });
}

RandomWorld RandomWorlds::Draw(std::uint32_t seed, const simulation::Progress& progress) const {
  RandomSource random(seed);
  RandomWorld world;
  world.setup.map_file = map_file_;
  world.setup.seed = seed;
  if (conditions_ == simulation::Conditions::kHarsh) {
    MakeHarsh(&world.setup);
  }
  DrawStartAndGoal(&random, &world.setup);
  world.path = PlanDrive(map_, world.setup, progress);
  DropObstacles(world.path, &random, &world.setup);
  return world;
}

void RandomWorlds::DrawStartAndGoal(RandomSource* random, simulation::DriveSetup* setup) const {
  for (int draw = 0; !cells_.empty() && draw < kDraws; ++draw) {
    const cv::Point start_cell = cells_[random->Below(cells_.size())];
    const cv::Point goal_cell = cells_[random->Below(cells_.size())];
    const Vec2d start = CenterOf(start_cell);
    const Vec2d goal = CenterOf(goal_cell);
    if (rooms_.at<int>(start_cell) == rooms_.at<int>(goal_cell) &&
        follower::Distance(start, goal) >= kShortestRandomDrive) {
      setup->start = {start.x, start.y, random->Between(-follower::kPi, follower::kPi)};
      setup->goal = goal;
      return;
    }
  }
  throw simulation::DriveError(simulation::DriveProblem::kMap,
                               map_file_ + ": no room for a random drive; it needs " +
                                   std::to_string(static_cast<int>(kShortestRandomDrive)) + " m from start to goal");
}

Vec2d RandomWorlds::CenterOf(const cv::Point& cell) const {
  Vec2d center;
  map_.mapToWorld(static_cast<unsigned int>(cell.x), static_cast<unsigned int>(cell.y), center.x, center.y);
  return center;
}

}  // namespace controller_base::demo
