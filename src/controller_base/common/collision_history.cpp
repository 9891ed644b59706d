#include "controller_base/collision_history.h"

#include "controller_base/common/time_difference.h"
#include "controller_base/internal/logging.h"

namespace nav_controller {
namespace {

constexpr std::size_t kHistoryLength = 10;         // events
constexpr double kContactSpacing = 0.3;            // seconds; a closer event is the same contact bouncing
constexpr double kFreshContactAge = 0.2;           // seconds
constexpr std::uint8_t kAbortCount = 10;           // contacts
constexpr double kSmallTurn = 0.5235987901687622;  // radians: pi/6 in single precision, widened
constexpr double kLargeTurn = 1.5707963705062866;  // radians: pi/2 in single precision, widened

enum EventType : std::int8_t { kNoContact = 0, kLeftContact = 1, kRightContact = 2, kBothContacts = 3 };
enum BumperBit : unsigned int { kLeftBumper = 1, kRightBumper = 2, kFrontBumper = 4 };
enum TurnStrategy : std::int32_t { kNotChosen = 0, kTurnLeft = 1, kTurnRight = 2 };

double StampSeconds(const ros::Time& stamp) { return stamp.sec + stamp.nsec * 1e-9; }

EventDirection DirectionOfType(std::int8_t type) {
  switch (type) {
    case kLeftContact:
      return EventDirection::Left;
    case kRightContact:
      return EventDirection::Right;
    case kBothContacts:
      return EventDirection::Center;
    default:
      return EventDirection::None;
  }
}

EventDirection DirectionOfMask(std::int8_t bumper_mask) {
  const auto mask = static_cast<unsigned int>(bumper_mask);
  const bool left = (mask & kLeftBumper) != 0;
  const bool right = (mask & kRightBumper) != 0;
  if ((mask & kFrontBumper) != 0 || (left && right)) {
    return EventDirection::Center;
  }
  if (left) {
    return EventDirection::Left;
  }
  return right ? EventDirection::Right : EventDirection::None;
}

}  // namespace

void CollisionHistory::Add(const CollisionEvent& event) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!events_.empty() && StampSeconds(event.stamp) - StampSeconds(events_.back().stamp) < kContactSpacing) {
    return;
  }
  events_.push_back(event);
  if (events_.size() > kHistoryLength) {
    events_.pop_front();
  }
  CountContact(event.type);
  Trigger(DirectionOfType(event.type));
}

void CollisionHistory::Add(std::int8_t bumper_mask) {
  const EventDirection direction = DirectionOfMask(bumper_mask);
  NAV_CONTROLLER_DEBUG("CollisionHistory::Add: %d, %d", bumper_mask, static_cast<int>(direction));
  if (direction != EventDirection::None) {
    Trigger(direction);
  }
}

void CollisionHistory::Add(bool) { Trigger(EventDirection::Center); }

void CollisionHistory::CalculateTurnAngle(const EventDirection& direction) {
  if (turn_strategy_ == kNotChosen) {
    const bool turn_left = direction == EventDirection::Center || direction == EventDirection::Right;
    turn_strategy_ = turn_left ? kTurnLeft : kTurnRight;
    turn_angle_ = turn_left ? kSmallTurn : -kSmallTurn;
    NAV_CONTROLLER_DEBUG("[CollisionHistory] turn strategy: %d", turn_strategy_);
    return;
  }
  if (turn_strategy_ == kTurnLeft) {
    turn_angle_ = direction == EventDirection::Left ? kLargeTurn : kSmallTurn;
  } else {
    turn_angle_ = direction == EventDirection::Right ? -kLargeTurn : -kSmallTurn;
  }
}

bool CollisionHistory::ProcessNewCollision(int& signed_count) {
  if (left_count_ != 0) {
    signed_count = -collision_count_;
  } else if (right_count_ != 0) {
    signed_count = collision_count_;
  }
  if (!has_new_collision_) {
    return false;
  }
  has_new_collision_ = false;
  trigger_event_ = false;
  return true;
}

bool CollisionHistory::ProcessNewEvent(double& angle) {
  angle = turn_angle_;
  if (!trigger_event_) {
    return false;
  }
  trigger_event_ = false;
  direction_ = EventDirection::None;
  return true;
}

bool CollisionHistory::ShouldAbort() const { return collision_count_ >= kAbortCount; }

bool CollisionHistory::FetchCollision() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!has_new_collision_ || events_.empty() || !events_.back().collided) {
    return false;
  }
  if (internal::SecondsBetween(events_.back().stamp, ros::Time::now()) > kFreshContactAge) {
    has_new_collision_ = false;
    return false;
  }
  return true;
}

CollisionEvent CollisionHistory::GetLastCollision() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return events_.empty() ? CollisionEvent{} : events_.back();
}

bool CollisionHistory::TryPopCollisionEvent(CollisionEvent& out) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (events_.empty()) {
    return false;
  }
  out = events_.front();
  events_.pop_front();
  return true;
}

void CollisionHistory::Reset() {
  const std::lock_guard<std::mutex> lock(mutex_);
  events_.clear();
  collision_count_ = 0;
  has_new_collision_ = false;
  left_count_ = 0;
  right_count_ = 0;
  trigger_event_ = false;
  direction_ = EventDirection::None;
  turn_strategy_ = kNotChosen;
}

void CollisionHistory::CountContact(std::int8_t type) {
  if (type == kNoContact) {
    return;
  }
  has_new_collision_ = true;
  switch (type) {
    case kLeftContact:
      ++collision_count_;
      ++left_count_;
      right_count_ = 0;
      break;
    case kRightContact:
      ++collision_count_;
      left_count_ = 0;
      ++right_count_;
      break;
    case kBothContacts:
      ++collision_count_;
      if (left_count_ != 0) {
        ++right_count_;
      } else if (right_count_ != 0) {
        left_count_ = 1;
      } else {
        right_count_ = 1;
      }
      break;
    default:
      break;
  }
}

void CollisionHistory::Trigger(EventDirection direction) {
  trigger_event_ = true;
  direction_ = direction;
  CalculateTurnAngle(direction);
}

}  // namespace nav_controller
