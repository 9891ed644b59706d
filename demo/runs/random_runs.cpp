#include "demo/runs/random_runs.h"

#include <ros/console.h>
#include <ros/init.h>
#include <ros/node_handle.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>

#include "demo/judge/judged_drive.h"
#include "demo/runs/random_world.h"
#include "demo/runs/run_table.h"
#include "demo/terminal/log_lines.h"
#include "ros_master/loopback_calls.h"
#include "simulation/map_file.h"

namespace controller_base::demo {
namespace {

std::shared_ptr<ros::NodeHandle> BecomeNode() {
  constexpr std::uint32_t kOptions =
      ros::init_options::AnonymousName | ros::init_options::NoSigintHandler | ros::init_options::NoRosout;
  ros::init(ros::M_string(), "controller_base_run", kOptions);
  if (ros::console::set_logger_level("ros.nav_controller", ros::console::levels::Error)) {
    ros::console::notifyLoggerLevelsChanged();
  }
  MakeLogLinesPrintable();
  auto node = std::make_shared<ros::NodeHandle>();
  ros_master::TakeCallsOnLoopbackAlone();
  return node;
}

}  // namespace

std::size_t JobsFor(std::size_t asked) { return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency()); }

std::unique_ptr<ros_master::RosMasterProcess> MasterForRuns(const std::function<void()>& while_waiting) {
  std::unique_ptr<ros_master::RosMasterProcess> master = ros_master::RosMasterProcess::StartOnFreePort(while_waiting);
  master->ServeThisProcess();
  return master;
}

void DriveRandomWorlds(const std::string& map_file, simulation::Conditions conditions, const ManyRuns& runs,
                       std::ostream* csv, const std::function<bool(const RunResult&)>& take,
                       const std::function<bool()>& stop, const simulation::Progress& progress) {
  WriteRunsHeader(*csv);
  const costmap_2d::Costmap2D map = simulation::LoadMap(map_file, progress);
  const RandomWorlds worlds(map_file, map, conditions, progress);
  worlds.Draw(runs.first_seed, progress);  // says at once when the map has no room
  const auto run = [&, node = std::shared_ptr<ros::NodeHandle>()](std::uint32_t seed) mutable {
    if (!node) {
      node = BecomeNode();
    }
    const RandomWorld world = worlds.Draw(seed);
    return DriveAndJudge(map, world.setup, world.path);
  };
  const auto write_and_take = [&](const RunResult& result) {
    WriteRun(result, *csv);
    return take(result);
  };
  RunAll(runs, run, write_and_take, stop);
}

}  // namespace controller_base::demo
