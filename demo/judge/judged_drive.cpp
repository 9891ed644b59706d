#include "demo/judge/judged_drive.h"

#include <algorithm>
#include <atomic>
#include <string>

#include "controller_base/follower/parameters.h"
#include "demo/judge/run_judge.h"
#include "demo/judge/verdict.h"
#include "demo/judge/way_check.h"
#include "follower/path_geometry.h"
#include "simulation/closed_loop.h"

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

// What can be counted and measured, whatever became of the drive.
RunResult FiguresOf(const simulation::DriveRecord& drive, const RunJudge& judge) {
  RunResult result;
  result.contacts = drive.contacts;
  result.touches = judge.touches();
  result.lethal_cells = judge.lethal_cells();
  result.detours = static_cast<int>(drive.detours.size());
  result.driven = drive.driven;
  for (const follower::DetourReport& detour : drive.detours) {
    result.detour += follower::PathLength(detour.detour);
  }
  result.time = drive.trajectory.back().time;
  return result;
}

bool ReachedGoal(const simulation::DriveRecord& drive) {
  const DriveOutcome outcome = Judge(drive).outcome;
  return outcome == DriveOutcome::kReached || outcome == DriveOutcome::kTouched;
}

// Whether the robot could have gone on from where it stopped.
bool CouldGoOn(const costmap_2d::Costmap2D& map, const std::vector<simulation::Obstacle>& obstacles,
               const nav_msgs::Path& path, const follower::Pose2d& stop) {
  return WayExists(TrueMap(map, obstacles), path, {stop.x, stop.y}, follower::Parameters().corridor_widths.back());
}

}  // namespace

RunResult DriveAndJudge(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup,
                        const nav_msgs::Path& path) {
  const std::atomic<bool> never{false};
  RunJudge judge(map, setup.obstacles);
  const simulation::DriveRecord drive = RunDrive(map, setup, path, {&judge}, never);

  RunResult result = FiguresOf(drive, judge);
  result.seed = setup.seed;
  result.path = follower::PathLength(path);
  if (ReachedGoal(drive)) {
    result.outcome = RunOutcome::kReached;
    return result;
  }
  const bool could_go_on = CouldGoOn(map, setup.obstacles, path, drive.trajectory.back().pose);
  result.outcome = could_go_on ? RunOutcome::kFellShort : RunOutcome::kRefused;
  const std::string reason = ShortReason(drive);
  result.SetReason(reason);
  result.has_reason = HasReason(reason);
  return result;
}

}  // namespace controller_base::demo
