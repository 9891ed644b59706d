#ifndef CONTROLLER_BASE_DEMO_COMPARE_STACK_H_
#define CONTROLLER_BASE_DEMO_COMPARE_STACK_H_

#include <functional>
#include <stdexcept>
#include <string>

#include "demo/compare/compared_drive.h"
#include "demo/compare/scene.h"

namespace controller_base::demo {

// The stock navigation stack cannot be run; what() is one line.
class StackError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct StackOptions {
  std::string configuration;  // the folder of move_base's YAML files
  std::string logs;           // a folder for what the nodes print
  double speed = 1.0;         // of the simulated clock against the wall's
};

// Drives a scene with the planner "plugin" or "dwa": starts the simulated robot, on the clock of its own, and move_base
// at this process's ROS master, sends the goal, and ends both. The programs are looked for in $CMAKE_PREFIX_PATH, as a
// catkin workspace sets it. Takes at most 60 s and 6 s for each metre of the path. This process must be a ROS node.
// Throws StackError when a program is missing, and simulation::Interrupted once `stop` says so.
ComparedDrive DriveWithStack(const Scene& scene, const std::string& planner, const StackOptions& options,
                             const std::function<bool()>& stop);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_COMPARE_STACK_H_
