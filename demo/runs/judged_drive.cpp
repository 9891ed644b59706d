#include "demo/runs/judged_drive.h"

#include <ros/console.h>
#include <ros/init.h>
#include <ros/node_handle.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "controller_base/follower/parameters.h"
#include "demo/judge/run_judge.h"
#include "demo/judge/verdict.h"
#include "demo/judge/way_check.h"
#include "demo/output/output_folder.h"
#include "follower/geometry.h"
#include "follower/path_geometry.h"
#include "simulation/closed_loop.h"
#include "simulation/map_file.h"

namespace controller_base::demo {
namespace {

// What hindered the robot, in the follower's words, without what follows from it and without the library's own words.
std::string ShortReason(const simulation::DriveRecord& drive) {
  const auto stop = std::find_if(drive.events.rbegin(), drive.events.rend(),
                                 [](const follower::Event& event) { return event.kind == follower::EventKind::kStop; });
  const std::string reason = stop != drive.events.rend() ? stop->text : Judge(drive).text;
  const std::size_t refusal_end = reason.find("; ");
  return reason.substr(0, refusal_end != std::string::npos ? refusal_end : reason.find(": "));
}

// The follower knows of nothing in its way when it can only say that it does not get on.
bool HasReason(const std::string& reason) { return reason.rfind("stalled", 0) != 0; }

std::shared_ptr<ros::NodeHandle> BecomeNode() {
  constexpr std::uint32_t kOptions =
      ros::init_options::AnonymousName | ros::init_options::NoSigintHandler | ros::init_options::NoRosout;
  ros::init(ros::M_string(), "controller_base_run", kOptions);
  if (ros::console::set_logger_level("ros.nav_controller", ros::console::levels::Error)) {
    ros::console::notifyLoggerLevelsChanged();
  }
  return std::make_shared<ros::NodeHandle>();
}

}  // namespace

std::size_t JobsFor(std::size_t asked) { return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency()); }

std::unique_ptr<ros_master::RosMasterProcess> MasterForRuns() {
  std::unique_ptr<ros_master::RosMasterProcess> master = ros_master::RosMasterProcess::StartOnFreePort();
  master->ServeThisProcess();
  return master;
}

void DriveRandomWorlds(const std::string& map_file, const ManyRuns& runs, const std::filesystem::path& csv_file,
                       const std::function<bool(const RunResult&)>& take, const std::function<bool()>& stop) {
  const costmap_2d::Costmap2D map = simulation::LoadMap(map_file);
  const RandomWorlds worlds(map_file, map);
  worlds.Draw(runs.first_seed);  // says at once when the map has no room
  std::ofstream csv(csv_file);
  WriteRunsHeader(csv);
  const auto run = [&, node = std::shared_ptr<ros::NodeHandle>()](std::uint32_t seed) mutable {
    if (!node) {
      node = BecomeNode();
    }
    return DriveAndJudge(map, worlds.Draw(seed));
  };
  const auto write_and_take = [&](const RunResult& result) {
    WriteRun(result, csv);
    return take(result);
  };
  RunAll(runs, run, write_and_take, stop);
  csv.close();
  if (!csv) {
    throw OutputError("cannot write " + csv_file.string());
  }
}

RunResult DriveAndJudge(const costmap_2d::Costmap2D& map, const RandomWorld& world) {
  const std::atomic<bool> never{false};
  RunJudge judge(map, world.setup.obstacles);
  const simulation::DriveRecord drive = RunDrive(map, world.setup, world.path, {&judge}, never);

  RunResult result;
  result.seed = world.setup.seed;
  result.contacts = drive.contacts;
  result.touches = judge.touches();
  result.lethal_cells = judge.lethal_cells();
  result.detours = static_cast<int>(drive.detours.size());
  result.path = follower::PathLength(world.path);
  result.driven = drive.driven;
  for (const follower::DetourReport& detour : drive.detours) {
    result.detour += follower::PathLength(detour.detour);
  }
  result.time = drive.trajectory.back().time;
  const DriveOutcome outcome = Judge(drive).outcome;
  if (outcome == DriveOutcome::kReached || outcome == DriveOutcome::kTouched) {
    result.outcome = RunOutcome::kReached;
    return result;
  }
  const follower::Pose2d& stop = drive.trajectory.back().pose;
  const bool way_exists = WayExists(TrueMap(map, world.setup.obstacles), world.path, {stop.x, stop.y},
                                    follower::Parameters().corridor_widths.back());
  result.outcome = way_exists ? RunOutcome::kFellShort : RunOutcome::kRefused;
  const std::string reason = ShortReason(drive);
  result.SetReason(reason);
  result.has_reason = HasReason(reason);
  return result;
}

}  // namespace controller_base::demo
