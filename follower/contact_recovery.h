#ifndef CONTROLLER_BASE_FOLLOWER_CONTACT_RECOVERY_H_
#define CONTROLLER_BASE_FOLLOWER_CONTACT_RECOVERY_H_

#include <geometry_msgs/Point.h>
#include <ros/time.h>

#include <cstddef>
#include <limits>
#include <mutex>
#include <optional>
#include <vector>

#include "controller_base/collision_history.h"
#include "controller_base/follower/command.h"
#include "controller_base/follower/parameters.h"
#include "controller_base/local_planner.h"
#include "follower/geometry.h"
#include "follower/planner_view.h"
#include "follower/reporter.h"

namespace controller_base::follower {

// What the robot does when it touches something: it backs off, turns, and remembers the place as virtual boxes of the
// planner.
class ContactRecovery {
 public:
  // The arguments must outlive the recovery.
  ContactRecovery(const Parameters& parameters, const Reporter& reporter, nav_controller::LocalPlanner* planner)
      : parameters_(parameters), reporter_(reporter), planner_(planner) {}

  // The bumper's driver says that it is pressed; from any thread. Reports that follow each other within 0.2 s are one
  // press while the robot brakes, 0.7 s long; a longer one counts again.
  void AddContact(const nav_controller::CollisionEvent& contact);

  // The bumper at the back is pressed, at that time; from any thread. Reports that follow each other within 0.2 s are
  // one press.
  void AddBackContact(const ros::Time& stamp);

  // Another goal: no contacts, no boxes.
  void Reset();

  // A new drive to the same goal: what was touched is still there, and contacts are counted on.
  void StartOver();

  // The clock or the pose jumped: contacts start over, and so does the time of the phase.
  void RestartTimers();

  // Takes a waiting contact, if there is one, and begins to back off. `elapsed` is the path's elapsed time in seconds.
  // Returns the number of contacts when these are too many to go on, else 0.
  int React(const Pose2d& robot, double elapsed);

  // Takes a waiting contact at the back, if there is one: drops boxes there, and ends backing off. The robot goes on with
  // all else that it was about. Such a contact does not count towards those that are too many. `elapsed` as in React.
  void ReactBehind(const PlannerView& view, const Pose2d& robot, double elapsed);

  enum class Phase { kNone, kBackOff, kTurn };
  Phase phase() const { return phase_; }

  // One cycle of a phase that is not kNone. At the end of the turn it drops the boxes and the phase is kNone again.
  Command Recover(const PlannerView& view, const Pose2d& robot);

  // The phase ends where it is.
  void Abandon() { phase_ = Phase::kNone; }

  // No way is left around the boxes. At first each wall of boxes shrinks to the place that was touched, which leaves
  // another side to try. Where no way is left around these places either, they are forgotten after a while: what was
  // touched may be gone. Contacts until the next rejoining leave no more boxes than are held now.
  void GiveWay(const PlannerView& view, const Pose2d& robot);

  // The robot is past what it touched: contacts are counted anew.
  void Rejoined();

  // Since the last contact that it reacted to, by the path's elapsed time; large when there was none.
  double SecondsSinceContact(double elapsed) const { return elapsed - last_contact_; }

  // All that the planner holds.
  const std::vector<VirtualBox>& boxes() const { return boxes_; }

 private:
  // How much is closed around a contact.
  enum class Closed {
    kWall,    // more than the robot's width: what was touched may be long
    kPlace,   // where the robot's centre cannot be
    kColumn,  // less; further contacts tell how wide the way is
  };

  struct Contact {
    geometry_msgs::Point point;
    double direction;        // from the robot, rad
    bool is_behind = false;  // the robot does not back away from it
  };

  Contact ContactAt(const Pose2d& robot, double bearing) const;
  static std::vector<double> BoxesAcross(Closed closed);
  static std::vector<VirtualBox> BoxesAround(const Contact& contact, Closed closed);

  Command BackOff(const PlannerView& view, const Pose2d& robot);
  Command Turn(const PlannerView& view, const Pose2d& robot);
  bool IsTouchedBehind(const Pose2d& robot) const;
  std::optional<ros::Time> TakeBackContact();
  void DropBoxes(const Contact& contact, const PlannerView& view, const Pose2d& robot);
  std::size_t DropBoxesAround(const Contact& contact, const PlannerView& view, const Pose2d& robot);
  void RemoveBoxes();
  void Begin(Phase phase, const Pose2d& robot);

  const Parameters& parameters_;
  const Reporter& reporter_;
  nav_controller::LocalPlanner* planner_;
  nav_controller::CollisionHistory contacts_;

  std::mutex press_mutex_;
  ros::Time press_began_;  // under press_mutex_, like the next three
  ros::Time last_report_;
  ros::Time last_back_report_;
  std::optional<ros::Time> waiting_behind_;  // a contact at the back that was not reacted to yet

  Phase phase_ = Phase::kNone;
  Pose2d phase_pose_;     // where, and
  ros::Time phase_time_;  // when it began

  // By the path's elapsed time, s.
  double last_contact_ = -std::numeric_limits<double>::infinity();
  Contact contact_;          // the last one
  double turn_angle_ = 0.0;  // rad
  Closed closed_ = Closed::kWall;
  ros::Time shrunk_at_;             // when walls became places
  std::vector<Contact> contacted_;  // those that the boxes stand for
  std::vector<VirtualBox> boxes_;
};

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_CONTACT_RECOVERY_H_
