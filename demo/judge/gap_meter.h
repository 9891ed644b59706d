#ifndef CONTROLLER_BASE_DEMO_JUDGE_GAP_METER_H_
#define CONTROLLER_BASE_DEMO_JUDGE_GAP_METER_H_

#include <limits>

#include "simulation/drive_observer.h"

namespace controller_base::demo {

// Measures how narrow the places were that a robot drove through.
class GapMeter : public simulation::DriveObserver {
 public:
  static constexpr double kWidest = 0.8;  // m; what is wider is no gap

  void OnCycle(const simulation::CycleReport& cycle) override;

  // The narrowest gap, metres: from the nearest solid point on the robot's left, over its centre, to the nearest on its
  // right, each within 30 degrees of straight across. Infinity where there was none up to kWidest.
  double narrowest() const { return narrowest_; }

 private:
  double narrowest_ = std::numeric_limits<double>::infinity();
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_GAP_METER_H_
