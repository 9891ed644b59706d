#ifndef CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_
#define CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "demo/judge/run_result.h"
#include "demo/runs/many_runs.h"
#include "ros_master/ros_master_process.h"
#include "simulation/harsh_world.h"
#include "simulation/progress.h"

namespace controller_base::demo {

// As many drives at the same time as the machine has processors, unless `asked` for another number.
std::size_t JobsFor(std::size_t asked);

// A ROS master that serves this process and its children alone, who all publish the same topics. Throws MasterError.
// `while_waiting` as RosMasterProcess::StartOnFreePort calls it.
std::unique_ptr<ros_master::RosMasterProcess> MasterForRuns(const std::function<void()>& while_waiting);

// Drives through random worlds on a map as RunAll does, and writes a line for each result that `take` is given into
// `csv`. Loading the map is told to `progress`, which may end it, as for RandomWorlds. The child processes become ROS
// nodes that log errors alone. Throws MapError, DriveError when the map has no room.
void DriveRandomWorlds(const std::string& map_file, simulation::Conditions conditions, const ManyRuns& runs,
                       std::ostream* csv, const std::function<bool(const RunResult&)>& take,
                       const std::function<bool()>& stop, const simulation::Progress& progress);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_
