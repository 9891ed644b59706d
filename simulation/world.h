#ifndef CONTROLLER_BASE_SIMULATION_WORLD_H_
#define CONTROLLER_BASE_SIMULATION_WORLD_H_

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"

namespace controller_base::simulation {

// A box or a disc in the world that is missing on the map. Times are seconds since the drive began.
struct Obstacle {
  std::string name;
  nav_core::math::Vec2d center;  // m
  double yaw = 0.0;              // rad
  double length = 0.0;           // m, along the yaw
  double width = 0.0;            // m, across it
  bool low = false;              // the laser looks over it; only the bumper feels it
  double radius = 0.0;           // m; a disc where it is positive: yaw, length and width say nothing then
  double appears_at = 0.0;       // s
  double vanishes_at = std::numeric_limits<double>::infinity();  // s
  std::optional<nav_core::math::Vec2d> destination = {};         // it moves there in a straight line, and stays
  double speed = 0.0;                                            // m/s
  double moves_at = 0.0;                                         // s

  bool IsThere(double time) const { return time >= appears_at && time < vanishes_at; }
  // Its centre at that time.
  nav_core::math::Vec2d CenterAt(double time) const;
  // No point of it is farther from its centre, metres.
  double Reach() const;
  // Whether it lies over the point then, if it is there; its edge counts.
  bool Covers(const nav_core::math::Vec2d& point, double time) const;
};

// How obstacles stand in the world.
enum class Shapes {
  kCells,  // as the cells of the map whose centres they cover
  kTrue,   // as they are, off the grid
};

// What is really there now: the map's walls and the obstacles, in cells of the map. What the map does not know is
// empty, and the map's edge is a wall that the laser does not see. Obstacles of true shape are no cells: what is said
// of cells below is said of the walls alone then.
class World {
 public:
  // `map` (LETHAL_OBSTACLE: a wall) must outlive the world, which begins at time 0.
  World(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles, Shapes shapes = Shapes::kCells);

  const costmap_2d::Costmap2D& map() const { return map_; }
  const std::vector<Obstacle>& obstacles() const { return obstacles_; }

  void Add(const Obstacle& obstacle);
  // Lets obstacles appear, vanish and move. Seconds since the drive began.
  void SetTime(double time);

  Shapes shapes() const { return shapes_; }

  // Whether the cell stops the robot's body. Off the map: yes.
  bool IsSolid(int mx, int my) const;
  // Whether a ray of the laser ends at the cell. Off the map: no.
  bool StopsLaser(int mx, int my) const;

  // How far along the ray, at most `reach` metres, the laser sees something; infinity where it sees nothing.
  double RangeAlong(const follower::Pose2d& ray, double reach) const;

  // A place where a disc and something solid overlap: a cell, or an obstacle of true shape.
  struct Overlap {
    int mx;  // the cell, or the one that holds the nearest point
    int my;
    nav_core::math::Vec2d nearest;  // the point that is nearest to the disc's centre
    int obstacle = -1;              // its place among the obstacles; -1 for a cell
  };
  // All of them, the cells row by row, then the obstacles. A disc that just touches does not overlap.
  std::vector<Overlap> Overlaps(const nav_core::math::Vec2d& center, double radius) const;

 private:
  std::vector<Overlap> CellOverlaps(const nav_core::math::Vec2d& center, double radius) const;
  bool HasTrueShape(const Obstacle& obstacle) const { return shapes_ == Shapes::kTrue && obstacle.IsThere(time_); }
  void Draw(const Obstacle& obstacle);
  void DrawAll();

  const costmap_2d::Costmap2D& map_;
  std::vector<Obstacle> obstacles_;
  Shapes shapes_;
  double time_ = 0.0;                 // s since the drive began
  std::vector<unsigned char> cells_;  // one byte of CellFlag bits for each cell of the map
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_WORLD_H_
