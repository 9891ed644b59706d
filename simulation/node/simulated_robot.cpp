#include "simulation/node/simulated_robot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "follower/inflation.h"
#include "simulation/harsh_world.h"

namespace controller_base::simulation {
namespace {

constexpr int kRays = 360;
constexpr float kShortestRange = 0.05F;  // m
constexpr double kMarkerHeight = 0.3;    // m
constexpr double kLowMarkerHeight = 0.05;
constexpr double kTouchMargin = 0.01;  // m; longer than a step of the robot, so that what holds it is within

geometry_msgs::Quaternion Orientation(double yaw) {
  geometry_msgs::Quaternion orientation;
  orientation.z = std::sin(0.5 * yaw);
  orientation.w = std::cos(0.5 * yaw);
  return orientation;
}

// The pose in the frame in which `frame` is, of a pose in `frame`.
follower::Pose2d Compose(const follower::Pose2d& frame, const follower::Pose2d& pose) {
  return {frame.x + std::cos(frame.yaw) * pose.x - std::sin(frame.yaw) * pose.y,
          frame.y + std::sin(frame.yaw) * pose.x + std::cos(frame.yaw) * pose.y,
          follower::NormalizeAngle(frame.yaw + pose.yaw)};
}

// Where the frame must be for `pose` in it to be `composed`.
follower::Pose2d FrameOf(const follower::Pose2d& composed, const follower::Pose2d& pose) {
  const double yaw = follower::NormalizeAngle(composed.yaw - pose.yaw);
  return {composed.x - std::cos(yaw) * pose.x + std::sin(yaw) * pose.y,
          composed.y - std::sin(yaw) * pose.x - std::cos(yaw) * pose.y, yaw};
}

geometry_msgs::TransformStamped Transform(const std::string& parent, const std::string& child,
                                          const follower::Pose2d& pose, const ros::Time& stamp) {
  geometry_msgs::TransformStamped transform;
  transform.header.frame_id = parent;
  transform.header.stamp = stamp;
  transform.child_frame_id = child;
  transform.transform.translation.x = pose.x;
  transform.transform.translation.y = pose.y;
  transform.transform.rotation = Orientation(pose.yaw);
  return transform;
}

nav_msgs::Odometry OdometryOf(const std::string& frame, const follower::Pose2d& pose, const follower::Command& motion,
                              const ros::Time& stamp) {
  nav_msgs::Odometry odometry;
  odometry.header.frame_id = frame;
  odometry.header.stamp = stamp;
  odometry.child_frame_id = "base_link";
  odometry.pose.pose.position.x = pose.x;
  odometry.pose.pose.position.y = pose.y;
  odometry.pose.pose.orientation = Orientation(pose.yaw);
  odometry.twist.twist.linear.x = motion.speed;
  odometry.twist.twist.angular.z = motion.turn_rate;
  return odometry;
}

visualization_msgs::Marker MarkerOf(const Obstacle& obstacle, int id, double time, const ros::Time& stamp) {
  visualization_msgs::Marker marker;
  marker.header.frame_id = "map";
  marker.header.stamp = stamp;
  marker.ns = "obstacles";
  marker.id = id;
  if (!obstacle.IsThere(time)) {
    marker.action = visualization_msgs::Marker::DELETE;
    return marker;
  }
  const bool is_disc = obstacle.radius > 0.0;
  marker.type = is_disc ? visualization_msgs::Marker::CYLINDER : visualization_msgs::Marker::CUBE;
  marker.scale.x = is_disc ? 2.0 * obstacle.radius : obstacle.length;
  marker.scale.y = is_disc ? 2.0 * obstacle.radius : obstacle.width;
  marker.scale.z = obstacle.low ? kLowMarkerHeight : kMarkerHeight;
  marker.pose.position.x = obstacle.CenterAt(time).x;
  marker.pose.position.y = obstacle.CenterAt(time).y;
  marker.pose.position.z = 0.5 * marker.scale.z;
  marker.pose.orientation = Orientation(obstacle.yaw);
  marker.color.r = obstacle.low ? 0.5F : 0.8F;
  marker.color.g = marker.color.b = obstacle.low ? 0.5F : 0.1F;
  marker.color.a = 0.8F;
  return marker;
}

}  // namespace

void MakeHarsh(SimulatedRobotOptions* options) {
  DriveSetup harsh;
  MakeHarsh(&harsh);
  options->shapes = harsh.shapes;
  options->range_noise = harsh.faults.laser_noise;
  options->brakes = harsh.faults.lasting_press;
  options->command_delay = harsh.faults.command_delay;
  options->odometry_scale_error = harsh.faults.drift.scale;
  options->odometry_turn_drift = harsh.faults.drift.turn;
  options->localisation_period = harsh.faults.drift.correction;
}

SimulatedRobot::SimulatedRobot(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles,
                               const SimulatedRobotOptions& options)
    : options_(options),
      world_(map, obstacles, options.shapes),
      robot_(options.start, options.brakes),
      odom_in_map_(options.start),  // the odometry begins at its origin
      random_(options.seed) {}

void SimulatedRobot::Take(const geometry_msgs::Twist& command) {
  const bool is_finite = std::isfinite(command.linear.x) && std::isfinite(command.angular.z);
  commands_.push_back(
      {time_, is_finite ? follower::Command{command.linear.x, command.angular.z} : follower::Command()});
}

void SimulatedRobot::Step(double seconds) {
  time_ += seconds;
  world_.SetTime(time_);
  const follower::Command command = DelayedCommand();
  const follower::Pose2d before = robot_.pose();
  Feel(robot_.Drive(command, seconds, world_));
  CountWheels(before);
  if (time_ - localisation_time_ >= options_.localisation_period) {
    localisation_time_ = time_;
    odom_in_map_ = FrameOf(robot_.pose(), odometry_);
  }
}

// Without a new one for long, one to stand still.
follower::Command SimulatedRobot::DelayedCommand() {
  for (; !commands_.empty() && time_ - commands_.front().time > options_.command_delay; commands_.pop_front()) {
    command_ = commands_.front().command;
    command_time_ = commands_.front().time + options_.command_delay;
  }
  return time_ - command_time_ > options_.command_timeout ? follower::Command() : command_;
}

bool SimulatedRobot::IsSeen(const World::Overlap& overlap) const {
  if (overlap.obstacle >= 0) {
    return !world_.obstacles()[static_cast<std::size_t>(overlap.obstacle)].low;
  }
  return world_.StopsLaser(overlap.mx, overlap.my) || !world_.map().IsInmap(overlap.mx, overlap.my);
}

// The robot stops just before what it runs into; that counts as touched until it is more than kTouchMargin away.
void SimulatedRobot::Feel(const std::vector<World::Overlap>& contacts) {
  const std::vector<World::Overlap> near =
      world_.Overlaps({robot_.pose().x, robot_.pose().y}, follower::kRobotRadius + kTouchMargin);
  const auto update = [&](bool is_seen, bool* touches) {
    const auto is_of_kind = [&](const World::Overlap& overlap) { return IsSeen(overlap) == is_seen; };
    const bool touched_before = *touches;
    *touches = std::any_of(contacts.begin(), contacts.end(), is_of_kind) ||
               (touched_before && std::any_of(near.begin(), near.end(), is_of_kind));
    if (*touches && !touched_before) {
      touched_.emplace_back(is_seen ? "seen" : "hidden");
    }
  };
  update(true, &touches_seen_);
  update(false, &touches_hidden_);
  if (touches_seen_ || touches_hidden_) {
    bumper_bits_ = static_cast<std::uint8_t>(bumper_bits_ | BumperBits(robot_.pose(), near));
  }
}

void SimulatedRobot::CountWheels(const follower::Pose2d& before) {
  const double driven = Distance(before, robot_.pose());
  const double turn = follower::NormalizeAngle(robot_.pose().yaw - before.yaw);
  const double scale = 1.0 + options_.odometry_scale_error;
  const double sign = robot_.motion().speed < 0.0 ? -1.0 : 1.0;
  const double counted_turn = scale * turn + options_.odometry_turn_drift * driven;
  // Half of the turn comes before the distance, half after it.
  odometry_ = Compose(odometry_, {0.0, 0.0, 0.5 * counted_turn});
  odometry_ = Compose(odometry_, {sign * scale * driven, 0.0, 0.5 * counted_turn});
}

double SimulatedRobot::RangeAlong(double bearing) {
  const follower::Pose2d& pose = robot_.pose();
  const double range = world_.RangeAlong({pose.x, pose.y, pose.yaw + bearing}, options_.laser_range);
  return std::isfinite(range) ? std::max(range + random_.Normal(options_.range_noise), double{kShortestRange}) : range;
}

sensor_msgs::LaserScan SimulatedRobot::Scan(const ros::Time& stamp) {
  sensor_msgs::LaserScan scan;
  scan.header.frame_id = "laser";
  scan.header.stamp = stamp;
  scan.angle_min = static_cast<float>(-follower::kPi);
  scan.angle_increment = static_cast<float>(2.0 * follower::kPi / kRays);
  scan.angle_max = scan.angle_min + (kRays - 1) * scan.angle_increment;
  scan.range_min = kShortestRange;
  scan.range_max = static_cast<float>(options_.laser_range);
  for (int ray = 0; ray < kRays; ++ray) {
    scan.ranges.push_back(static_cast<float>(RangeAlong(-follower::kPi + ray * 2.0 * follower::kPi / kRays)));
  }
  return scan;
}

nav_msgs::Odometry SimulatedRobot::Odometry(const ros::Time& stamp) const {
  return OdometryOf("odom", odometry_, robot_.motion(), stamp);
}

nav_msgs::Odometry SimulatedRobot::GroundTruth(const ros::Time& stamp) const {
  return OdometryOf("map", robot_.pose(), robot_.motion(), stamp);
}

std::vector<geometry_msgs::TransformStamped> SimulatedRobot::Transforms(const ros::Time& stamp) const {
  return {Transform("map", "odom", odom_in_map_, stamp), Transform("odom", "base_link", odometry_, stamp),
          Transform("base_link", "laser", {}, stamp)};
}

visualization_msgs::MarkerArray SimulatedRobot::Markers(const ros::Time& stamp) const {
  visualization_msgs::MarkerArray markers;
  for (const Obstacle& obstacle : world_.obstacles()) {
    markers.markers.push_back(MarkerOf(obstacle, static_cast<int>(markers.markers.size()), time_, stamp));
  }
  return markers;
}

std::uint8_t SimulatedRobot::TakeBumperBits() { return std::exchange(bumper_bits_, std::uint8_t{0}); }

std::vector<std::string> SimulatedRobot::TakeTouches() { return std::exchange(touched_, {}); }

double SimulatedRobot::Clearance() const {
  double nearest = kFarthestClearance;
  for (const World::Overlap& overlap :
       world_.Overlaps({robot_.pose().x, robot_.pose().y}, follower::kRobotRadius + kFarthestClearance)) {
    if (world_.map().IsInmap(overlap.mx, overlap.my) && IsSeen(overlap)) {
      nearest = std::min(nearest, Distance(robot_.pose(), overlap.nearest) - follower::kRobotRadius);
    }
  }
  return nearest;
}

}  // namespace controller_base::simulation
