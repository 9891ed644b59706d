#include "demo/judge/judged_drive.h"

#include <atomic>
#include <string>

#include "controller_base/follower/parameters.h"
#include "demo/judge/run_judge.h"
#include "demo/judge/verdict.h"
#include "demo/judge/way_check.h"
#include "follower/format.h"
#include "follower/path_geometry.h"
#include "simulation/closed_loop.h"

namespace controller_base::demo {
namespace {

// Why the robot did not reach the goal, without the progress checker's figures.
std::string ReasonOf(const simulation::DriveRecord& drive) {
  return drive.outcome.cause == follower::StopCause::kArrived
             ? follower::Format("goal not reached, stopped %.2f m from the goal", drive.goal_distance)
             : drive.outcome.summary;
}

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
  result.SetReason(ReasonOf(drive));
  result.has_reason = IsExplained(drive.outcome);
  return result;
}

}  // namespace controller_base::demo
