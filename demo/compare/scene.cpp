#include "demo/compare/scene.h"

#include <cmath>
#include <filesystem>
#include <utility>

#include "simulation/map_file.h"

namespace controller_base::demo {
namespace {

follower::Pose2d EndOf(const nav_msgs::Path& path) {
  const geometry_msgs::Point& end = path.poses.back().pose.position;
  const std::size_t before = path.poses.size() > 1 ? path.poses.size() - 2 : 0;
  const geometry_msgs::Point& last = path.poses[before].pose.position;
  return {end.x, end.y, std::atan2(end.y - last.y, end.x - last.x)};
}

}  // namespace

std::string SceneName::Map() const { return std::filesystem::path(map_file).stem().string(); }

std::vector<SceneName> SceneNames(const std::vector<std::string>& map_files, std::size_t count,
                                  std::uint32_t first_seed) {
  std::vector<SceneName> names;
  for (std::size_t i = 0; i < count; ++i) {
    names.push_back({map_files[i % map_files.size()], first_seed + static_cast<std::uint32_t>(i / map_files.size())});
  }
  return names;
}

Scene DrawScene(const SceneName& name) {
  const costmap_2d::Costmap2D map = simulation::LoadMap(name.map_file);
  RandomWorld world = RandomWorlds(name.map_file, map, simulation::Conditions::kHarsh).Draw(name.seed);
  const follower::Pose2d goal = EndOf(world.path);
  return {name, std::move(world), goal};
}

}  // namespace controller_base::demo
