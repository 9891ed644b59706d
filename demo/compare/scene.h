#ifndef CONTROLLER_BASE_DEMO_COMPARE_SCENE_H_
#define CONTROLLER_BASE_DEMO_COMPARE_SCENE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "demo/runs/random_world.h"
#include "follower/geometry.h"

namespace controller_base::demo {

struct SceneName {
  std::string map_file;
  std::uint32_t seed;

  std::string Map() const;  // the file's name, without the ending
};

// `count` scenes with seeds from `first_seed` on. The maps, at least one, take turns, so that those driven first are of
// all maps.
std::vector<SceneName> SceneNames(const std::vector<std::string>& map_files, std::size_t count,
                                  std::uint32_t first_seed);

// A random world of the harsh kind, and where its robot is to stop.
struct Scene {
  SceneName name;
  RandomWorld world;
  follower::Pose2d goal;  // the path's end, and where the path leads there
};

// Loads the map. Throws MapError, DriveError.
Scene DrawScene(const SceneName& name);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_COMPARE_SCENE_H_
