#include "robot/node_inputs.h"

#include <geometry_msgs/TransformStamped.h>
#include <tf2/exceptions.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "robot/frames.h"
#include "robot/occupancy_map.h"

namespace controller_base::robot {
namespace {

constexpr std::size_t kMostWaitingScans = 10;
constexpr double kFarthestPlace = 1e7;   // m from the origin of the frame
constexpr double kUnitTolerance = 0.01;  // of a quaternion's squared length

// Why a scan says nothing; empty: it says something.
std::string WhatIsWrong(const sensor_msgs::LaserScan& scan) {
  if (!std::isfinite(scan.angle_min) || !std::isfinite(scan.angle_increment) || !std::isfinite(scan.range_min) ||
      std::isnan(scan.range_max)) {
    return "its angles or its range limits are not numbers";
  }
  const bool is_blind =
      std::all_of(scan.ranges.begin(), scan.ranges.end(), [](float range) { return std::isnan(range); });
  return is_blind ? "none of its ranges is a number" : "";
}

bool IsPlace(const geometry_msgs::Pose& pose) {
  const geometry_msgs::Quaternion& q = pose.orientation;
  const double length = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
  return IsFinite(pose) && std::abs(length - 1.0) <= kUnitTolerance && std::abs(pose.position.x) <= kFarthestPlace &&
         std::abs(pose.position.y) <= kFarthestPlace;
}

// The same heading without a tilt.
geometry_msgs::Quaternion Upright(const geometry_msgs::Quaternion& q) {
  const double yaw = std::atan2(2.0 * (q.w * q.z + q.x * q.y), 1.0 - 2.0 * (q.y * q.y + q.z * q.z));
  geometry_msgs::Quaternion upright;
  upright.z = std::sin(0.5 * yaw);
  upright.w = std::cos(0.5 * yaw);
  return upright;
}

GridBytes FreeMap(const NodeOptions& options) {
  const int side = static_cast<int>(std::lround(options.free_map_side / options.free_map_resolution));
  const double origin = -0.5 * side * options.free_map_resolution;
  GridBytes map{{side, side, options.free_map_resolution, origin, origin}, {}};
  map.bytes.assign(map.grid.cells(), kFree);
  return map;
}

}  // namespace

NodeInputs::NodeInputs(const NodeOptions& options, double robot_radius)
    : options_(options),
      robot_radius_(robot_radius),
      scan_watch_("scan", options.scan_timeout, options.longest_delay),
      pose_watch_("pose", options.pose_timeout, options.longest_delay),
      bumper_watch_("bumper", options.bumper_timeout, options.longest_delay),
      clock_watch_(options.clock_timeout) {
  if (!options_.use_map) {
    map_ = std::make_unique<RobotMap>(FreeMap(options_), robot_radius_, options_.local_map_side);
  }
}

void NodeInputs::OnMap(const nav_msgs::OccupancyGrid& map) {
  std::string error;
  std::optional<GridBytes> bytes = ReadOccupancyGrid(map, &error);
  const std::string frame = WithoutSlash(map.header.frame_id);
  if (bytes && !frame.empty() && frame != options_.global_frame) {
    error = "its frame is \"" + map.header.frame_id + "\", and not \"" + options_.global_frame + "\"";
    bytes.reset();
  }
  map_error_ = error;
  if (bytes) {
    map_ = std::make_unique<RobotMap>(*std::move(bytes), robot_radius_, options_.local_map_side);
  }
}

void NodeInputs::OnScan(const sensor_msgs::LaserScan& scan) {
  const std::string wrong = WhatIsWrong(scan);
  if (!wrong.empty()) {
    scan_watch_.Reject(wrong);
    return;
  }
  scans_.push_back(scan);
  if (scans_.size() > kMostWaitingScans) {
    scans_.pop_front();
  }
}

void NodeInputs::OnOdometry(const nav_msgs::Odometry& odometry) {
  if (IsPlace(odometry.pose.pose)) {
    frames_.setTransform(TransformOf(odometry, options_.global_frame, options_.base_frame), "odometry");
  } else {
    pose_watch_.Reject("the odometry holds a number that is not finite, or no heading");
  }
}

void NodeInputs::OnBumper(const ros::Time& now) { bumper_watch_.Receive(now, now); }

void NodeInputs::Update(const ros::Time& now, const ros::SteadyTime& wall) {
  MarkScans(now);
  LocateRobot(now);
  health_ = {{"clock", clock_watch_.Problem(now, wall).value_or("")},
             {"map", MapProblem()},
             {"pose", pose_watch_.Problem(now).value_or("")},
             {"scan", scan_watch_.Problem(now).value_or("")}};
  if (options_.bumper_timeout > 0.0) {
    health_.push_back({"bumper", bumper_watch_.Problem(now).value_or("")});
  }
}

std::string NodeInputs::Problem() const {
  const auto sick =
      std::find_if(health_.begin(), health_.end(), [](const Health& health) { return !health.problem.empty(); });
  return sick != health_.end() ? sick->problem : "";
}

std::string NodeInputs::MapProblem() const {
  if (map_ == nullptr) {
    return map_error_.empty() ? "map: none yet" : "map: none yet; the last one was of no use: " + map_error_;
  }
  return "";
}

// In the order in which they came. One whose frames are not known yet holds up those after it, until it is too old.
void NodeInputs::MarkScans(const ros::Time& now) {
  while (!scans_.empty()) {
    const sensor_msgs::LaserScan& scan = scans_.front();
    std::string error;
    const auto laser = OriginIn(frames_, options_.global_frame, scan.header.frame_id, scan.header.stamp, &error);
    const bool is_late = std::abs(now.toSec() - scan.header.stamp.toSec()) > options_.longest_delay;
    if (!laser && !is_late) {
      scan_watch_.Reject(error);
      return;
    }
    if (laser) {
      scan_watch_.Receive(scan.header.stamp, now);
    }
    if (laser && map_ != nullptr) {
      map_->AddScan(scan, *laser);
    }
    scans_.pop_front();
  }
}

void NodeInputs::LocateRobot(const ros::Time& now) {
  std::string error;
  geometry_msgs::TransformStamped transform;
  try {
    transform = frames_.lookupTransform(options_.global_frame, options_.base_frame, ros::Time());
  } catch (const tf2::TransformException& exception) {
    pose_watch_.Reject(exception.what());
    return;
  }
  geometry_msgs::Pose pose;
  pose.position.x = transform.transform.translation.x;
  pose.position.y = transform.transform.translation.y;
  pose.orientation = transform.transform.rotation;
  if (!IsPlace(pose)) {
    pose_watch_.Reject("it is no place");
  } else if (transform.header.stamp != robot_.header.stamp) {
    pose.orientation = Upright(pose.orientation);
    robot_.header.stamp = transform.header.stamp;
    robot_.header.frame_id = options_.global_frame;
    robot_.pose = pose;
    pose_watch_.Receive(transform.header.stamp, now);
  }
}

void NodeInputs::Forget() {
  if (map_ != nullptr) {
    map_->Forget();
  }
}

}  // namespace controller_base::robot
