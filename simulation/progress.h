#ifndef CONTROLLER_BASE_SIMULATION_PROGRESS_H_
#define CONTROLLER_BASE_SIMULATION_PROGRESS_H_

#include <exception>
#include <functional>
#include <string>

namespace controller_base::simulation {

// Called several times a second during a long calculation with what it is at, such as "inflating the map: 34 %". What
// it throws ends the calculation. Empty: not reported.
using Progress = std::function<void(const std::string& step)>;

// For a Progress to throw: the result is no longer needed.
class Interrupted : public std::exception {
 public:
  const char* what() const noexcept override { return "interrupted"; }
};

// "inflating the map: 34 %"
inline std::string StepText(const std::string& step, double share) {
  return step + ": " + std::to_string(static_cast<int>(100.0 * share)) + " %";
}

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_PROGRESS_H_
