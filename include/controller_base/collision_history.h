#ifndef CONTROLLER_BASE_COLLISION_HISTORY_H_
#define CONTROLLER_BASE_COLLISION_HISTORY_H_

#include <ros/time.h>

#include <cstdint>
#include <deque>
#include <mutex>

namespace nav_controller {

enum class EventDirection : std::int32_t {
  None = 0,
  Left = 1,
  Center = 2,  // in front, or on both sides at once
  Right = 3,
};

struct CollisionEvent {
  bool collided = false;  // a live contact, which FetchCollision reports
  ros::Time stamp;        // when it happened
  std::int8_t type = 0;   // 0 none, 1 left, 2 right, 3 both sides
};

// Remembers bumper contacts and says how to turn away from them and when to give up.
//
// The first contact since Reset chooses the side to turn to, away from the contact (a frontal one turns left), and the
// choice stays. Every contact then asks for a small turn of pi/6, or for a large one of pi/2 when it is on the side
// towards which the robot already turns. Angles are radians, positive counter-clockwise (to the left).
//
//   history.Add(event);                                   // from the bumper's callback
//   double angle;
//   if (history.ProcessNewEvent(angle)) { /* turn by angle */ }
//   if (history.ShouldAbort()) { /* ten contacts: give up */ }
//
// Threads: Add(const CollisionEvent&) may come from another thread, but the flags and the angle that it writes are read
// and cleared without its lock. A contact that arrives while ProcessNewCollision or ProcessNewEvent runs can therefore
// be lost, or be reported with the angle of another, and a reading may be old. A caller that needs every contact holds
// one mutex of its own around every call, or delivers contacts on the control thread.
class CollisionHistory {
 public:
  // Records a contact. An event stamped less than 0.3 s after the newest accepted one (so also an earlier one) is
  // dropped silently, which makes a bounce one contact; the spacing is a difference of two doubles, and 100.3 s minus
  // 100.0 s is just below 0.3 s.
  //
  // Left counts left and clears right, right the other way round. Both sides, deliberately asymmetric: counts right
  // when there are left contacts, else sets left to one when there are right contacts, else sets right to one. All
  // three count as contacts. Every accepted event, also one of type 0 or of an unknown type, triggers and turns; those
  // two have direction None.
  void Add(const CollisionEvent& event);

  // Records a raw mask: bit 0 left, bit 1 right, bit 2 front; other bits are ignored. It triggers and turns when one of
  // the three is set, but is no part of the history: nothing is counted. Logs at DEBUG on every call.
  void Add(std::int8_t bumper_mask);

  // Records a frontal contact without history, whatever the argument.
  void Add(bool);

  // Chooses the turn strategy on the first call since Reset, else applies it; see the class comment. `None` counts as
  // left.
  void CalculateTurnAngle(const EventDirection& direction);

  // Whether a new contact was counted since the last call; clears that and the trigger. Writes the number of contacts
  // since Reset into `signed_count`, negative when there are left contacts, else positive when there are right ones,
  // else leaves it alone.
  bool ProcessNewCollision(int& signed_count);

  // Whether a contact is waiting; consumes it. Always writes the turn angle (radians).
  bool ProcessNewEvent(double& angle);

  bool IsTriggerEvent() const { return trigger_event_; }

  // Direction of the waiting contact; None when none waits.
  EventDirection GetEventDirection() const { return trigger_event_ ? direction_ : EventDirection::None; }

  // True from the tenth counted contact on (until the 8-bit count wraps at 256).
  bool ShouldAbort() const;

  bool IsLeft() const { return left_count_ != 0; }

  // Whether the newest event is a live contact not older than 0.2 s; the same contact is reported on every call while
  // it is fresh. Once it is too old it is no longer new either. The age is a 64-bit difference of nanoseconds: it never
  // throws, however far stamp and clock lie apart, and a stamp in the future is fresh.
  bool FetchCollision();

  // The newest event, or an all-zero one.
  CollisionEvent GetLastCollision();

  // Moves the oldest event into `out`; false, with `out` left alone, when there is none.
  bool TryPopCollisionEvent(CollisionEvent& out);

  // Forgets everything except the turn angle's value.
  void Reset();

 private:
  void CountContact(std::int8_t type);
  void Trigger(EventDirection direction);

  // Holds mutex_ throughout: Add(const CollisionEvent&), FetchCollision, GetLastCollision, TryPopCollisionEvent, Reset.
  // Everything else runs without it, on the controller's thread; CalculateTurnAngle also inside the locked Add.
  std::mutex mutex_;
  std::deque<CollisionEvent> events_;  // only under mutex_; accepted events, oldest first, at most 10

  // Plain fields, written under mutex_ by the locked operations and read and cleared without it by the others.
  std::uint8_t collision_count_ = 0;  // contacts since Reset; wraps
  bool has_new_collision_ = false;
  std::uint8_t left_count_ = 0;   // consecutive, cleared by a right contact; wraps
  std::uint8_t right_count_ = 0;  // consecutive, cleared by a left contact; wraps
  bool trigger_event_ = false;
  EventDirection direction_ = EventDirection::None;
  std::int32_t turn_strategy_ = 0;  // 0 not chosen, 1 turn left (positive angles), 2 turn right (negative angles)
  double turn_angle_ = 0.0;         // radians
};

}  // namespace nav_controller

#endif  // CONTROLLER_BASE_COLLISION_HISTORY_H_
