#ifndef CONTROLLER_BASE_DEMO_RUNS_JUDGED_DRIVE_H_
#define CONTROLLER_BASE_DEMO_RUNS_JUDGED_DRIVE_H_

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "costmap_2d/costmap_2d.h"
#include "demo/runs/many_runs.h"
#include "demo/runs/random_world.h"
#include "demo/runs/run_result.h"
#include "ros_master/ros_master_process.h"

namespace controller_base::demo {

// Drives through a world and judges the drive. Needs what RunDrive needs.
RunResult DriveAndJudge(const costmap_2d::Costmap2D& map, const RandomWorld& world);

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

#endif  // CONTROLLER_BASE_DEMO_RUNS_JUDGED_DRIVE_H_
