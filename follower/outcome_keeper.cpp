#include "follower/outcome_keeper.h"

#include <ros/time.h>

#include "follower/format.h"

namespace controller_base::follower {
namespace {

constexpr double kFreshContact = 20.0;  // s; one that long ago does not explain a stall

}  // namespace

void OutcomeKeeper::Start() {
  outcome_ = Outcome();
  outcome_.state = DriveState::kDriving;
  outcome_.since = ros::Time::now();
}

void OutcomeKeeper::Note(const std::optional<Hindrance>& hindrance) {
  if (!IsDriving()) {
    return;
  }
  if (hindrance) {
    outcome_ = {hindrance->state,   hindrance->since, StopCause::kNone,
                hindrance->refusal, hindrance->text,  hindrance->text};
  } else if (outcome_.state != DriveState::kDriving) {
    Start();
  }
}

void OutcomeKeeper::GiveUp(const Pose2d& robot, const NoProgress& no_progress,
                           const std::optional<Hindrance>& hindrance, double seconds_since_contact) {
  const DriveState state = no_progress.state;
  if (hindrance) {
    const StopCause cause = hindrance->state == DriveState::kLost ? StopCause::kLost : StopCause::kRefused;
    Finish(state, cause, robot, hindrance->text, "; " + no_progress.Text());
    outcome_.refusal = hindrance->refusal;
  } else if (seconds_since_contact < kFreshContact) {
    Finish(state, StopCause::kContact, robot, Format("something touched %.1f s before", seconds_since_contact),
           "; " + no_progress.Text());
  } else {
    Finish(state, state == DriveState::kStalled ? StopCause::kStall : StopCause::kBudget, robot, no_progress.summary,
           ": " + no_progress.figures);
  }
}

void OutcomeKeeper::Finish(DriveState state, StopCause cause, const Pose2d& robot, const std::string& summary,
                           const std::string& rest) {
  outcome_ = {state, ros::Time::now(), cause, std::nullopt, summary + rest, summary};
  reporter_.Tell(state == DriveState::kReached ? EventKind::kArrival : EventKind::kStop, robot, outcome_.reason);
}

}  // namespace controller_base::follower
