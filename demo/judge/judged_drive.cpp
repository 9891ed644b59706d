#include "demo/judge/judged_drive.h"

#include <atomic>
#include <string>

#include "controller_base/follower/parameters.h"
#include "demo/judge/gap_meter.h"
#include "demo/judge/hidden_contacts.h"
#include "demo/judge/path_check.h"
#include "demo/judge/run_judge.h"
#include "demo/judge/verdict.h"
#include "demo/judge/wide_path.h"
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

// All that watches a run.
struct Watchers {
  RunJudge judge;
  HiddenContacts hidden;
  GapMeter gaps;
};

// What can be counted and measured, whatever became of the drive.
RunResult FiguresOf(const simulation::DriveRecord& drive, const Watchers& watchers) {
  RunResult result;
  result.contacts = drive.contacts;
  result.touches = watchers.judge.touches();
  result.lethal_cells = watchers.judge.lethal_cells();
  result.hidden_touched = watchers.hidden.touched();
  result.hidden_contacts = watchers.hidden.contacts();
  result.narrowest_gap = watchers.gaps.narrowest();
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

// Whether the robot could have gone on from where it stopped: over cells, or where there are none, with room enough.
void JudgeStop(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup, const nav_msgs::Path& path,
               const follower::Pose2d& stop, RunResult* result) {
  const double corridor = follower::Parameters().corridor_widths.back();
  const nav_core::math::Vec2d place(stop.x, stop.y);
  result->has_wide_path = WidePathExists(simulation::World(map, setup.obstacles, setup.shapes), path, place, corridor);
  const bool could_go_on = setup.shapes == simulation::Shapes::kTrue
                               ? result->has_wide_path
                               : PathExists(TrueMap(map, setup.obstacles), path, place, corridor);
  result->outcome = could_go_on ? RunOutcome::kFellShort : RunOutcome::kRefused;
}

}  // namespace

RunResult DriveAndJudge(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup,
                        const nav_msgs::Path& path) {
  const std::atomic<bool> never{false};
  Watchers watchers{{map, setup.obstacles}, {}, {}};
  const simulation::DriveRecord drive =
      RunDrive(map, setup, path, {&watchers.judge, &watchers.hidden, &watchers.gaps}, never);

  RunResult result = FiguresOf(drive, watchers);
  result.seed = setup.seed;
  result.path = follower::PathLength(path);
  if (ReachedGoal(drive)) {
    result.outcome = RunOutcome::kReached;
    return result;
  }
  JudgeStop(map, setup, path, drive.trajectory.back().pose, &result);
  result.SetReason(ReasonOf(drive));
  result.has_reason = IsExplained(drive.outcome);
  return result;
}

}  // namespace controller_base::demo
