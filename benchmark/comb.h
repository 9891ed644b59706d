#ifndef BENCHMARK_COMB_H_
#define BENCHMARK_COMB_H_

#include <costmap_2d/costmap_2d.h>
#include <nav_msgs/Path.h>

namespace controller_base_benchmark {

constexpr double kCombCell = 0.05;        // metres
constexpr unsigned char kWallCost = 100;  // blocks a shortcut, which a lethal cost would not

// Appends a pose at the centre of cell (x, y).
inline void AppendCell(const costmap_2d::Costmap2D& costmap, int x, int y, nav_msgs::Path& path) {
  geometry_msgs::PoseStamped& pose = path.poses.emplace_back();
  costmap.mapToWorld(static_cast<unsigned int>(x), static_cast<unsigned int>(y), pose.pose.position.x,
                     pose.pose.position.y);
}

// A map of lanes one cell wide between walls one cell thick, joined at their upper and lower ends in turn, and the path
// through them.
//
//   .#...#...
//   .#.#.#.#.
//   ...#...#.
struct Comb {
  // A path of `path_cells` cells through lanes that are longer than their teeth by one cell.
  Comb(int path_cells, int tooth) : costmap(Width(path_cells, tooth), Height(tooth), kCombCell, 0.0, 0.0) {
    path.header.frame_id = "map";
    const int top = tooth;
    for (int x = 0; CellsOf(path) < path_cells; ++x) {
      const bool upwards = x % 4 < 2;
      if (x % 2 == 1) {  // a wall with a gap at the end that the lane before it leads to
        const int gap = upwards ? top : 0;
        for (int y = 0; y <= top; ++y) {
          if (y != gap) {
            costmap.setCost(static_cast<unsigned int>(x), static_cast<unsigned int>(y), kWallCost);
          }
        }
        AppendCell(costmap, x, gap, path);
        continue;
      }
      for (int i = 0; i <= top && CellsOf(path) < path_cells; ++i) {
        AppendCell(costmap, x, upwards ? i : top - i, path);
      }
    }
  }

  static int CellsOf(const nav_msgs::Path& path) { return static_cast<int>(path.poses.size()); }
  static unsigned int Width(int path_cells, int tooth) {
    return 2 * static_cast<unsigned int>(path_cells / (tooth + 2) + 1);
  }
  static unsigned int Height(int tooth) { return static_cast<unsigned int>(tooth) + 1; }

  costmap_2d::Costmap2D costmap;
  nav_msgs::Path path;
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_COMB_H_
