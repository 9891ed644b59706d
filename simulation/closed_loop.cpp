#include "simulation/closed_loop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "costmap_2d/cost_values.h"
#include "follower/follower_session.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "follower/path_geometry.h"
#include "simulation/faulty_robot.h"
#include "simulation/known_map.h"
#include "simulation/laser.h"
#include "simulation/path_search.h"
#include "simulation/robot.h"

namespace controller_base_demo {
namespace {

using nav_controller::CollisionEvent;

constexpr std::int64_t kCycleNanoseconds = 50'000'000;  // 20 Hz
constexpr double kCycleSeconds = 0.05;
constexpr std::int64_t kCyclesPerScan = 2;
constexpr double kGoalTolerance = 0.25;  // m; the path may end kSnapDistance short of the goal

// Far off any map, the digits of a place say nothing more.
std::string Place(double x, double y) {
  constexpr double kFar = 1e7;
  return std::abs(x) < kFar && std::abs(y) < kFar ? Format("(%.2f, %.2f)", x, y) : Format("(%g, %g)", x, y);
}

geometry_msgs::PoseStamped ToStamped(const Pose2d& pose, const ros::Time& stamp) {
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
class Simulation : private FollowerObserver {
 public:
  Simulation(const costmap_2d::Costmap2D& map, const Scenario& scenario, const std::vector<DriveObserver*>& observers,
             Interaction* interaction)
      : world_(map, scenario.obstacles),
        known_(map),
        robot_(scenario.start),
        faulty_(scenario.faults, scenario.seed),
        goal_(scenario.goal),
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
      if (cycle_ % kCyclesPerScan == 0) {
        laser_ = ScanWithLaser(world_, robot_.pose(), &known_);
      }
      Step();
    }
    record_.boxes = output_.boxes;
    record_.goal_distance = Distance(robot_.pose(), goal_);
    Judge(stop);
    for (DriveObserver* observer : observers_) {
      observer->OnEnd(record_);
    }
    return std::move(record_);
  }

 private:
  bool GoesOn() const {
    return output_.outcome == Outcome::kDriving || (interaction_ != nullptr && interaction_->WaitsForGoals());
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
      Tell("no box",
           "a box at " + Place(obstacle.center.x, obstacle.center.y) + " would be off the map; it is ignored");
    }
  }

  void DriveTo(const nav_core::math::Vec2d& goal) {
    if (!world_.map().IsInmap(goal.x, goal.y)) {
      Tell("no path", "the new goal " + Place(goal.x, goal.y) + " is off the map; it is ignored");
      return;
    }
    const nav_msgs::Path path = PathTo(goal);
    if (*stop_) {
      return;
    }
    if (path.poses.size() >= 2 && PathLength(path) <= kLongestDrive) {
      goal_ = goal;
      TakePath(path);
    } else {
      Tell("no path", "the new goal " + Place(goal.x, goal.y) + " cannot be reached; it is ignored");
    }
  }

  // No poses where the drive is to end.
  nav_msgs::Path PathTo(const nav_core::math::Vec2d& goal) const {
    const auto end_with_drive = [this](const std::string&) {
      if (*stop_) {
        throw Interrupted();
      }
    };
    try {
      return SearchPath(known_, {robot_.pose().x, robot_.pose().y}, goal, end_with_drive);
    } catch (const Interrupted&) {
      return {};
    }
  }

  // An event where the robot stands.
  void Tell(const std::string& kind, const std::string& text) {
    geometry_msgs::Point place;
    place.x = robot_.pose().x;
    place.y = robot_.pose().y;
    OnEvent({ros::Time::now(), kind, place, text});
  }

  void Step() {
    const Pose2d before = robot_.pose();
    const Pose2d believed = faulty_.Believe(before, time_);
    input_.clock = faulty_.Clock(ros::Time(kStartTime), time_);
    input_.robot = ToStamped(believed, input_.clock);
    input_.map = known_.LocalMapAround({believed.x, believed.y});
    input_.contacts = faulty_.Deliver(std::exchange(pressed_, {}), time_);
    output_ = follower_.Cycle(input_);
    record_.trajectory.push_back({time_, before, robot_.motion(), output_.index, output_.deviation, output_.state,
                                  output_.progress.distance_ratio, output_.progress.time_ratio});
    for (DriveObserver* observer : observers_) {
      observer->OnCycle(
          {time_, before, input_, output_, robot_.motion(), laser_, bumper_, touched_, record_.path, world_});
    }
    input_.path.reset();
    Feel(robot_.Drive(faulty_.Limited(output_.command), kCycleSeconds, world_, faulty_.Stuck(time_)));
    robot_.Push(faulty_.PushedBy(time_, kCycleSeconds), world_);
    record_.driven += Distance(before, robot_.pose());
  }

  void Feel(const std::vector<World::Overlap>& contacts) {
    if (!contacts.empty() && touched_.empty()) {
      ++record_.contacts;
      const auto is_known = [&](const World::Overlap& contact) { return known_.IsObstacle(contact.mx, contact.my); };
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

  void Judge(bool stopped) {
    if (stopped && output_.outcome == Outcome::kDriving) {
      record_.status = ExitStatus::kInterrupted;
      record_.verdict = "interrupted";
    } else if (output_.outcome == Outcome::kAborted) {
      record_.status = ExitStatus::kAborted;
      record_.verdict = "given up " + GoalDistance() + ": " + output_.reason;
    } else if (output_.outcome != Outcome::kReached || record_.goal_distance > kGoalTolerance) {
      record_.status = ExitStatus::kNotReached;
      record_.verdict = "goal not reached, stopped " + GoalDistance() + ": " + output_.reason;
    } else if (record_.touched_seen > 0) {
      record_.status = ExitStatus::kTouched;
      record_.verdict = "goal reached, but something was touched that the laser had seen or the map shows";
    } else {
      record_.status = ExitStatus::kReached;
      record_.verdict = "goal reached, nothing touched that the laser had seen";
    }
  }

  std::string GoalDistance() const { return Format("%.2f m from the goal", record_.goal_distance); }

  void OnEvent(const Event& event) override {
    record_.events.push_back(event);
    for (DriveObserver* observer : observers_) {
      observer->OnEvent(event);
    }
  }

  void OnDetour(const DetourReport& detour) override {
    record_.detours.push_back(detour);
    for (DriveObserver* observer : observers_) {
      observer->OnDetour(detour);
    }
  }

  World world_;
  KnownMap known_;
  Robot robot_;
  FaultyRobot faulty_;
  nav_core::math::Vec2d goal_;
  const std::vector<DriveObserver*>& observers_;
  Interaction* interaction_;
  const std::atomic<bool>* stop_ = nullptr;
  FollowerSession follower_;
  FollowerInput input_;
  FollowerOutput output_;
  std::vector<nav_core::math::Vec2d> laser_;
  std::uint8_t bumper_ = 0;
  std::vector<World::Overlap> touched_;  // in the cycle before
  std::vector<CollisionEvent> pressed_;  // in the cycle before
  std::int64_t cycle_ = 0;
  double time_ = 0.0;  // s since the drive began
  DriveRecord record_;
};

// Searched from point to point; no poses when there is no way between two of them.
nav_msgs::Path SearchOver(const costmap_2d::Costmap2D& map, const std::vector<nav_core::math::Vec2d>& points,
                          const Progress& progress) {
  nav_msgs::Path path;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const nav_msgs::Path leg = SearchPath(KnownMap(map), points[i - 1], points[i], progress);
    if (leg.poses.empty()) {
      return {};
    }
    path.header = leg.header;
    path.poses.insert(path.poses.end(), leg.poses.begin(), leg.poses.end());
  }
  return path;
}

nav_msgs::Path MakePath(const costmap_2d::Costmap2D& map, const Scenario& scenario, const Progress& progress) {
  std::vector<nav_core::math::Vec2d> points = scenario.points;
  points.push_back(scenario.goal);
  if (scenario.path_kind == PathKind::kDrawn) {
    return ToPath(points);
  }
  points.insert(points.begin(), {scenario.start.x, scenario.start.y});
  return SearchOver(map, points, progress);
}

// Whether the map can be driven on, and the robot can stand on its start; throws DriveError.
void CheckPlaces(const costmap_2d::Costmap2D& map, const Scenario& scenario) {
  const nav_core::math::Vec2d start(scenario.start.x, scenario.start.y);
  if (map.getResolution() < kFinestResolution || map.getResolution() > kCoarsestResolution) {
    throw DriveError(ExitStatus::kBadMap,
                     scenario.map_file + Format(": a cell is %g m wide; the demo drives on cells of %g m to %g m",
                                                map.getResolution(), kFinestResolution, kCoarsestResolution));
  }
  if (!map.IsInmap(start.x, start.y)) {
    throw DriveError(ExitStatus::kBadStart, "the start " + Place(start.x, start.y) + " is off the map");
  }
  if (!World(map, scenario.obstacles).Overlaps(start, kRobotRadius).empty()) {
    throw DriveError(ExitStatus::kBadStart,
                     "the start " + Place(start.x, start.y) + " is in a wall: no room for a robot of radius 0.17 m");
  }
  if (!map.IsInmap(scenario.goal.x, scenario.goal.y)) {
    throw DriveError(ExitStatus::kBadGoal, "the goal " + Place(scenario.goal.x, scenario.goal.y) + " is off the map");
  }
}

}  // namespace

nav_msgs::Path PlanDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const Progress& progress) {
  CheckPlaces(map, scenario);
  nav_msgs::Path path = MakePath(map, scenario, progress);
  const std::string goal = "the goal " + Place(scenario.goal.x, scenario.goal.y);
  if (path.poses.empty()) {
    throw DriveError(ExitStatus::kUnreachable,
                     goal + " cannot be reached from the start " + Place(scenario.start.x, scenario.start.y));
  }
  if (PathLength(path) > kLongestDrive) {
    throw DriveError(ExitStatus::kUnreachable, Format("the path to %s is %g m long; the demo drives up to %g m",
                                                      goal.c_str(), PathLength(path), kLongestDrive));
  }
  return path;
}

DriveRecord RunDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const nav_msgs::Path& path,
                     const std::vector<DriveObserver*>& observers, const std::atomic<bool>& stop,
                     Interaction* interaction) {
  return Simulation(map, scenario, observers, interaction).Run(path, stop);
}

}  // namespace controller_base_demo
