#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_RUNS_COMMAND_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_RUNS_COMMAND_H_

#include <functional>
#include <string>

#include "demo/programs/exit_status.h"
#include "demo/programs/options.h"

namespace controller_base::demo {

// What --runs asks for: random worlds on the map, a table on standard output as they are done, and runs.csv in the
// output folder, also when `stop` ends it early. A ROS master of its own serves the runs. Throws what LoadMap,
// RandomWorlds, OutputFolder and RosMasterProcess throw.
ExitStatus DriveManyRuns(const Options& options, const std::string& map_file, const std::function<bool()>& stop);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_RUNS_COMMAND_H_
