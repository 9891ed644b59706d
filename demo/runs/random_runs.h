#ifndef CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_
#define CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "demo/judge/run_result.h"
#include "demo/runs/many_runs.h"
#include "ros_master/ros_master_process.h"

namespace controller_base::demo {

// As many drives at the same time as the machine has processors, unless `asked` for another number.
std::size_t JobsFor(std::size_t asked);

// A ROS master that serves this process and its children alone, who all publish the same topics. Throws MasterError.
std::unique_ptr<ros_master::RosMasterProcess> MasterForRuns();

// Drives through random worlds on a map as RunAll does, and writes a line for each result that `take` is given into
// `csv_file`. The child processes become ROS nodes that log errors alone. Throws MapError, DriveError when the map has
// no room, and OutputError.
void DriveRandomWorlds(const std::string& map_file, const ManyRuns& runs, const std::filesystem::path& csv_file,
                       const std::function<bool(const RunResult&)>& take, const std::function<bool()>& stop);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_RUNS_RANDOM_RUNS_H_
