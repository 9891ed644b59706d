#ifndef CONTROLLER_BASE_FOLLOWER_OUTCOME_KEEPER_H_
#define CONTROLLER_BASE_FOLLOWER_OUTCOME_KEEPER_H_

#include <optional>
#include <string>

#include "controller_base/follower/outcome.h"
#include "follower/detour_search.h"
#include "follower/geometry.h"
#include "follower/progress_monitor.h"
#include "follower/reporter.h"

namespace controller_base::follower {

// How the drive stands, and what ended it.
class OutcomeKeeper {
 public:
  // `reporter` must outlive the keeper.
  explicit OutcomeKeeper(const Reporter& reporter) : reporter_(reporter) {}

  const Outcome& outcome() const { return outcome_; }
  // A drive has begun and is not over.
  bool IsDriving() const { return outcome_.state != DriveState::kIdle && !IsOver(outcome_.state); }

  // A new path.
  void Start();

  // The robot waits for `hindrance`, or drives where there is none. Without effect once the drive is over.
  void Note(const std::optional<Hindrance>& hindrance);

  // No progress. The cause is what hindered the robot: what it waits for, else a contact in the last 20 s.
  void GiveUp(const Pose2d& robot, const NoProgress& no_progress, const std::optional<Hindrance>& hindrance,
              double seconds_since_contact);

  // The reason is `summary` and `rest` in one.
  void Finish(DriveState state, StopCause cause, const Pose2d& robot, const std::string& summary,
              const std::string& rest = {});

 private:
  const Reporter& reporter_;
  Outcome outcome_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_OUTCOME_KEEPER_H_
