#ifndef CONTROLLER_BASE_DEMO_COMPARE_COMPARED_DRIVE_H_
#define CONTROLLER_BASE_DEMO_COMPARE_COMPARED_DRIVE_H_

#include <cstdint>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace controller_base::demo {

// What came of a scene with one of the local planners. Times are the simulated clock's.
struct ComparedDrive {
  std::string map;
  std::uint32_t seed = 0;
  std::string planner;             // "plugin" or "dwa"
  std::string outcome;             // "reached", "aborted", "timeout" or "failed"
  double path = 0.0;               // m, as it was planned on the map
  double time = 0.0;               // s from the goal to its end
  double driven = 0.0;             // m
  int touched_seen = 0;            // times that something was touched anew that the laser sees
  int touched_hidden = 0;          // likewise, that only the bumper feels
  double closest = 0.0;            // m from the body to what the laser sees, at the closest
  double processor_seconds = 0.0;  // of the process of move_base
  int late_cycles = 0;             // control cycles that move_base says it missed
  double speed = 1.0;              // of the simulated clock against the wall's
  std::string reason;              // why the goal was not reached; empty where it was

  bool IsReached() const { return outcome == "reached"; }
};

// A table that is none of ours, or is damaged; what() is one line.
class ComparedDrivesError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void WriteComparedHeader(std::ostream& out);
void WriteCompared(const ComparedDrive& drive, std::ostream& out);

// A table as the two above write it, in the order of its lines. A last line that was cut off is left out. Throws
// ComparedDrivesError.
std::vector<ComparedDrive> ReadCompared(std::istream& in);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_COMPARE_COMPARED_DRIVE_H_
