#include "simulation/closed_loop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "follower/follower_session.h"
#include "follower/local_map.h"
#include "follower/path_geometry.h"
#include "simulation/drive_plan.h"
#include "simulation/faulty_robot.h"
#include "simulation/known_map.h"
#include "simulation/laser.h"
#include "simulation/path_search.h"
#include "simulation/place.h"
#include "simulation/random_source.h"
#include "simulation/robot.h"

namespace controller_base::simulation {
namespace {

using nav_controller::CollisionEvent;

constexpr std::int64_t kCycleNanoseconds = 50'000'000;  // 20 Hz
constexpr double kCycleSeconds = 0.05;
constexpr std::int64_t kCyclesPerScan = 2;
constexpr double kBumperTravel = 0.01;  // m that a pressed bumper gives

// When a blocked path is planned again: after the first searches for a detour, before boxes are forgotten.
constexpr double kBlockedTimeout = 1.5;  // s
constexpr double kPlanPause = 5.0;       // s, between two plans

geometry_msgs::PoseStamped ToStamped(const follower::Pose2d& pose, const ros::Time& stamp) {
  geometry_msgs::PoseStamped stamped;
  stamped.header.frame_id = "map";
  stamped.header.stamp = stamp;
  stamped.pose.position.x = pose.x;
  stamped.pose.position.y = pose.y;
  stamped.pose.orientation.z = std::sin(0.5 * pose.yaw);
  stamped.pose.orientation.w = std::cos(0.5 * pose.yaw);
  return stamped;
}

// The type of CollisionEvent for bumper bits; 0 when no bumper is pressed.
std::int8_t ContactType(std::uint8_t bumper_bits) {
  switch (bumper_bits) {
    case 0:
      return 0;
    case kBumperLeft:
      return 1;
    case kBumperRight:
      return 2;
    default:
      return 3;
  }
}

// A robot in its world, and a follower that drives it.
class Simulation : private follower::FollowerObserver {
 public:
  Simulation(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const std::vector<DriveObserver*>& observers,
             Interaction* interaction)
      : setup_(setup),
        world_(map, setup.obstacles, setup.shapes),
        known_(map, setup.shapes == Shapes::kTrue ? follower::ObstacleCell::kSurface : follower::ObstacleCell::kSolid),
        robot_(setup.start, setup.faults.lasting_press),
        faulty_(setup.faults, setup.seed),
        laser_random_(setup.seed),
        goal_(setup.goal),
        observers_(observers),
        interaction_(interaction),
        follower_(this) {}

  DriveRecord Run(const nav_msgs::Path& path, const std::atomic<bool>& stop) {
    stop_ = &stop;
    TakePath(path);
    for (; GoesOn() && !stop; ++cycle_) {
      time_ = ros::Duration().fromNSec(cycle_ * kCycleNanoseconds).toSec();
      world_.SetTime(time_);
      Intervene();
      const follower::Pose2d estimated = faulty_.Estimate(robot_.pose(), time_);
      if (cycle_ % kCyclesPerScan == 0) {
        Scan(estimated);
      }
      Step(estimated);
      PlanAgain();
    }
    record_.boxes = output_.boxes;
    record_.goal_distance = follower::Distance(robot_.pose(), goal_);
    record_.outcome = output_.outcome;
    for (DriveObserver* observer : observers_) {
      observer->OnEnd(record_);
    }
    return std::move(record_);
  }

 private:
  bool GoesOn() const {
    return !IsOver(output_.outcome.state) || (interaction_ != nullptr && interaction_->WaitsForGoals());
  }

  void TakePath(const nav_msgs::Path& path) {
    record_.path = path;
    input_.path = path;
    for (DriveObserver* observer : observers_) {
      observer->OnPath(path);
    }
  }

  void Intervene() {
    if (interaction_ == nullptr) {
      return;
    }
    const Interventions interventions = interaction_->Take();
    for (const Obstacle& obstacle : interventions.obstacles) {
      Drop(obstacle);
    }
    if (interventions.goal) {
      DriveTo(*interventions.goal);
    }
  }

  void Drop(const Obstacle& obstacle) {
    if (world_.map().IsInmap(obstacle.center.x, obstacle.center.y)) {
      world_.Add(obstacle);
    } else {
      Tell(follower::EventKind::kNoBox,
           "a box at " + Place(obstacle.center.x, obstacle.center.y) + " would be off the map; it is ignored");
    }
  }

  void DriveTo(const nav_core::math::Vec2d& goal) {
    if (!world_.map().IsInmap(goal.x, goal.y)) {
      Tell(follower::EventKind::kNoPath, "the new goal " + Place(goal.x, goal.y) + " is off the map; it is ignored");
      return;
    }
    if (TakePathTo(goal, {})) {
      goal_ = goal;
    } else if (!*stop_) {
      const std::string why = WhyNobodyStandsAt(known_, goal);
      Tell(follower::EventKind::kNoPath, "the new goal " + Place(goal.x, goal.y) + " cannot be reached" +
                                             (why.empty() ? "" : ": " + why) + "; it is ignored");
    }
  }

  // A path that stays blocked is planned again over what was learned.
  void PlanAgain() {
    const follower::Outcome& outcome = output_.outcome;
    const bool stays_blocked = outcome.state == follower::DriveState::kBlocked &&
                               (ros::Time::now() - outcome.since).toSec() >= kBlockedTimeout;
    if (!setup_.replanning || !stays_blocked || time_ < next_plan_) {
      return;
    }
    next_plan_ = time_ + kPlanPause;
    if (!TakePathTo(goal_, output_.boxes) && !*stop_) {
      Tell(follower::EventKind::kNoPath, "no other way to the goal " + Place(goal_.x, goal_.y) + " is known");
    }
  }

  // Whether there is a way that does not lead through `boxes`, and the drive goes on.
  bool TakePathTo(const nav_core::math::Vec2d& goal, const std::vector<follower::VirtualBox>& boxes) {
    const nav_msgs::Path path = PathTo(goal, boxes);
    if (*stop_ || path.poses.size() < 2 || follower::PathLength(path) > kLongestDrive) {
      return false;
    }
    TakePath(path);
    return true;
  }

  // No poses where the drive is to end.
  nav_msgs::Path PathTo(const nav_core::math::Vec2d& goal, const std::vector<follower::VirtualBox>& boxes) const {
    const auto end_with_drive = [this](const std::string&) {
      if (*stop_) {
        throw Interrupted();
      }
    };
    try {
      return SearchPath(known_, {robot_.pose().x, robot_.pose().y}, goal, end_with_drive, boxes);
    } catch (const Interrupted&) {
      return {};
    }
  }

  // An event where the robot stands.
  void Tell(follower::EventKind kind, const std::string& text) {
    geometry_msgs::Point place;
    place.x = robot_.pose().x;
    place.y = robot_.pose().y;
    OnEvent({ros::Time::now(), kind, place, text});
  }

  // A laser that sees cells is not affected by a wrong pose; one that measures is.
  void Scan(const follower::Pose2d& estimated) {
    const bool measures = setup_.shapes == Shapes::kTrue || setup_.faults.laser_noise > 0.0;
    laser_ = measures ? MeasureWithLaser(world_, {robot_.pose(), estimated}, setup_.faults.laser_noise, &laser_random_,
                                         &known_)
                      : ScanWithLaser(world_, robot_.pose(), &known_);
  }

  void Step(const follower::Pose2d& estimated) {
    const follower::Pose2d before = robot_.pose();
    input_.clock = faulty_.Clock(ros::Time(kStartTime), time_);
    input_.robot = ToStamped(estimated, input_.clock);
    input_.map = follower::ToLocalMapData(known_.LocalMapAround({estimated.x, estimated.y}));
    input_.contacts = faulty_.Deliver(std::exchange(pressed_, {}), time_);
    ros::Time::setNow(input_.clock);
    output_ = follower_.Cycle(input_);
    record_.trajectory.push_back({time_, before, robot_.motion(), output_.index, output_.deviation, output_.state,
                                  output_.progress.distance_ratio, output_.progress.time_ratio});
    for (DriveObserver* observer : observers_) {
      observer->OnCycle(
          {time_, before, input_, output_, robot_.motion(), laser_, bumper_, touched_, record_.path, world_});
    }
    input_.path.reset();
    const follower::Command command = faulty_.Limited(faulty_.Delayed(output_.command, time_));
    Feel(WithLasting(robot_.Drive(command, kCycleSeconds, world_, faulty_.Stuck(time_))));
    robot_.Push(faulty_.PushedBy(time_, kCycleSeconds), world_);
    record_.driven += follower::Distance(before, robot_.pose());
  }

  // What was touched presses the bumper until the robot is clear of it.
  std::vector<World::Overlap> WithLasting(const std::vector<World::Overlap>& contacts) const {
    if (!setup_.faults.lasting_press || !contacts.empty() || touched_.empty()) {
      return contacts;
    }
    std::vector<World::Overlap> lasting =
        world_.Overlaps({robot_.pose().x, robot_.pose().y}, follower::kRobotRadius + kBumperTravel);
    const auto was_not_touched = [this](const World::Overlap& overlap) {
      return std::none_of(touched_.begin(), touched_.end(),
                          [&](const World::Overlap& touched) { return touched.obstacle == overlap.obstacle; });
    };
    lasting.erase(std::remove_if(lasting.begin(), lasting.end(), was_not_touched), lasting.end());
    return lasting;
  }

  void Feel(const std::vector<World::Overlap>& contacts) {
    if (!contacts.empty() && touched_.empty()) {
      ++record_.contacts;
      const auto is_known = [&](const World::Overlap& contact) {
        return contact.obstacle < 0 ? known_.IsObstacle(contact.mx, contact.my)
                                    : known_.IsObstacleAround(contact.mx, contact.my) &&
                                          !world_.obstacles()[static_cast<std::size_t>(contact.obstacle)].low;
      };
      record_.touched_seen += std::any_of(contacts.begin(), contacts.end(), is_known) ? 1 : 0;
    }
    touched_ = contacts;
    bumper_ = faulty_.Bumper(BumperBits(robot_.pose(), contacts), time_, cycle_);
    if (bumper_ != 0) {
      CollisionEvent event;
      event.collided = true;
      event.stamp = input_.clock;
      event.type = ContactType(bumper_);
      pressed_.push_back(event);
    }
  }

  void OnEvent(const follower::Event& event) override {
    record_.events.push_back(event);
    for (DriveObserver* observer : observers_) {
      observer->OnEvent(event);
    }
  }

  void OnDetour(const follower::DetourReport& detour) override {
    record_.detours.push_back(detour);
    for (DriveObserver* observer : observers_) {
      observer->OnDetour(detour);
    }
  }

  const DriveSetup& setup_;
  World world_;
  KnownMap known_;
  Robot robot_;
  FaultyRobot faulty_;
  RandomSource laser_random_;
  nav_core::math::Vec2d goal_;
  double next_plan_ = 0.0;  // s since the drive began; not before
  const std::vector<DriveObserver*>& observers_;
  Interaction* interaction_;
  const std::atomic<bool>* stop_ = nullptr;
  follower::FollowerSession follower_;
  follower::FollowerInput input_;
  follower::FollowerOutput output_;
  std::vector<nav_core::math::Vec2d> laser_;
  std::uint8_t bumper_ = 0;
  std::vector<World::Overlap> touched_;  // in the cycle before
  std::vector<CollisionEvent> pressed_;  // in the cycle before
  std::int64_t cycle_ = 0;
  double time_ = 0.0;  // s since the drive began
  DriveRecord record_;
};

}  // namespace

DriveRecord RunDrive(const costmap_2d::Costmap2D& map, const DriveSetup& setup, const nav_msgs::Path& path,
                     const std::vector<DriveObserver*>& observers, const std::atomic<bool>& stop,
                     Interaction* interaction) {
  return Simulation(map, setup, observers, interaction).Run(path, stop);
}

}  // namespace controller_base::simulation
