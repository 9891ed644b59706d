#ifndef CONTROLLER_BASE_FOLLOWER_DETOUR_SEARCH_H_
#define CONTROLLER_BASE_FOLLOWER_DETOUR_SEARCH_H_

#include <geometry_msgs/Point.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "controller_base/follower/outcome.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/follower/report.h"
#include "controller_base/local_planner.h"
#include "controller_base/path_map_filler.h"
#include "follower/closed_places.h"
#include "follower/contact_recovery.h"
#include "follower/reporter.h"
#include "follower/situation.h"

namespace controller_base::follower {

// What the robot waits for.
struct Hindrance {
  DriveState state;                // kBlocked or kLost
  ros::Time since;                 // when it began to wait in this state
  std::optional<Refusal> refusal;  // the last one, with kBlocked; none: a detour that was found is too narrow
  std::string text;                // one line
};

// Looks for a way around what blocks the path: asks where it is blocked and whether a side is open, plans inside a
// corridor, checks the plan, and tries again with a wider corridor when the planner refuses.
class DetourSearch {
 public:
  // The arguments must outlive the search.
  DetourSearch(const Parameters& parameters, const Reporter& reporter, nav_controller::LocalPlanner* planner,
               ContactRecovery* recovery);

  // A new path, which ends at `goal`.
  void Reset(const geometry_msgs::Point& goal);

  // No pause before the next search: the place or the obstacles are others now.
  void SearchAtOnce();
  bool IsDue() const;

  // The next detour that is found had best lead along `detour`, on the same side of what is in the way.
  void KeepSide(const nav_msgs::Path& detour) { side_ = detour; }

  // The detour that is driven is blocked at `place`.
  void DetourIsBlocked(const geometry_msgs::Point& place);

  // The robot gets nowhere on its detour, although nothing blocks it.
  void DetourIsTooNarrow(const Pose2d& robot);
  // It does get somewhere.
  void DetourIsDriven();

  // One search around the first blocked run of `now.ahead`, which has one. Nothing when the planner refuses.
  std::optional<DetourReport> Search(const Situation& now);

  // The path is free: forgets what hindered the robot, and tells so if something did.
  void PathIsFree(const Pose2d& robot);

  // The local map does not show the robot or its path; `why` says so. Told once.
  void Lost(const Pose2d& robot, const std::string& why);

  // What the robot waits for; nothing while the path is free.
  const std::optional<Hindrance>& hindrance() const { return hindrance_; }
  // What the last search was about; null once the path is free.
  const std::shared_ptr<const Blockage>& blockage() const { return blockage_; }

 private:
  struct Plan {
    nav_msgs::Path path;
    bool smoothed;
  };

  void Examine(const Situation& now, const nav_msgs::Path& blocked);
  int CorridorCells(const Situation& now) const;
  nav_msgs::Path StretchToRejoin(const Situation& now, const nav_msgs::Path& blocked) const;
  std::optional<Plan> MakePlan(const Situation& now, const nav_msgs::Path& stretch, int cells);
  std::optional<Plan> PlanOnSameSide(const Situation& now, const nav_msgs::Path& stretch);
  std::optional<Plan> CreateSafePlan(const Situation& now, const nav_msgs::Path& stretch);
  bool IsSafe(const PlannerView& view, const nav_msgs::Path& detour) const;
  void Refused(const Situation& now, const nav_msgs::Path& stretch, double width);
  void Hinder(DriveState state, std::optional<Refusal> refusal, const std::string& text);
  void ForgetHindrance();

  const Parameters& parameters_;
  const Reporter& reporter_;
  nav_controller::LocalPlanner* planner_;
  ContactRecovery* recovery_;
  std::shared_ptr<nav_controller::PathMapFiller> corridor_;
  geometry_msgs::Point goal_;

  nav_msgs::Path side_;  // no poses: any side will do
  ClosedPlaces closed_;
  bool is_noted_ = false;  // where the last detour is blocked
  std::shared_ptr<const Blockage> blockage_;
  std::size_t attempts_ = 0;  // searches since the path was last free that a wider corridor may help
  std::optional<Hindrance> hindrance_;
  ros::Time next_search_;  // not before
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_DETOUR_SEARCH_H_
