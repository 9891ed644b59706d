#ifndef CONTROLLER_BASE_DEMO_JUDGE_RUN_JUDGE_H_
#define CONTROLLER_BASE_DEMO_JUDGE_RUN_JUDGE_H_

#include <vector>

#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"
#include "simulation/drive_observer.h"
#include "simulation/world.h"

namespace controller_base::demo {

// Compares a drive with the true world. Obstacles must not move, come or go.
class RunJudge : public simulation::DriveObserver {
 public:
  // A touch of something that the laser has seen for less than this may be too late to avoid.
  static constexpr double kWarning = 0.5;  // s

  // `map` must outlive this object.
  RunJudge(const costmap_2d::Costmap2D& map, const std::vector<simulation::Obstacle>& obstacles);

  void OnCycle(const simulation::CycleReport& cycle) override;

  // How often the robot ran into a wall of the map, or into an obstacle that the laser had seen for kWarning or longer.
  int touches() const { return touches_; }
  // How often the robot's centre entered a cell that is lethal on the true map of walls and visible obstacles. Among
  // obstacles of true shape it is the body that is judged, by its touches.
  int lethal_cells() const { return lethal_cells_; }

 private:
  void LookAt(const simulation::CycleReport& cycle);
  bool WasAvoidable(const simulation::World::Overlap& touched, const simulation::CycleReport& cycle) const;
  bool WasSeenInTime(std::size_t visible, double time) const { return time - seen_since_[visible] >= kWarning; }
  void CountLethalCell(const follower::Pose2d& pose);

  const costmap_2d::Costmap2D& map_;
  std::vector<simulation::Obstacle> visible_;
  std::vector<double> seen_since_;  // s since the drive began, for each of visible_; infinity: not yet
  costmap_2d::Costmap2D true_map_;  // of walls and visible obstacles
  unsigned int last_mx_ = 0;
  unsigned int last_my_ = 0;
  bool was_touching_ = false;
  int touches_ = 0;
  int lethal_cells_ = 0;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_RUN_JUDGE_H_
