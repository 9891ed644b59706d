#ifndef CONTROLLER_BASE_CONTROL_PROGRESS_H_
#define CONTROLLER_BASE_CONTROL_PROGRESS_H_

namespace nav_controller {

// How far the robot has come on its path, against the path's budget.
// TrajectoryAnalyzer::GenerateControllProgress writes the totals, ControllerProgressChecker the rest.
struct ControlProgress {
  double moved_distance = 0.0;  // metres driven, summed over successive pose samples
  double total_distance = 0.0;  // metres, length of the path
  double distance_ratio = 0.0;  // moved_distance / total_distance; infinite or NaN without a budget
  double elapsed_time = 0.0;    // seconds, summed over successive pose samples
  double total_time = 0.0;      // seconds, time budget of the path
  double time_ratio = 0.0;      // elapsed_time / total_time; infinite or NaN without a budget
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_CONTROL_PROGRESS_H_
