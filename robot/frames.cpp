#include "robot/frames.h"

#include <tf2/LinearMath/Quaternion.h>
#include <tf2/LinearMath/Vector3.h>
#include <tf2/exceptions.h>

#include <algorithm>
#include <cmath>

namespace controller_base::robot {
namespace {

bool IsFinite(const geometry_msgs::Quaternion& q) {
  return std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
}

tf2::Quaternion ToTf(const geometry_msgs::Quaternion& q) { return {q.x, q.y, q.z, q.w}; }

std::optional<geometry_msgs::Transform> Lookup(const tf2::BufferCore& buffer, const std::string& target,
                                               const std::string& frame, const ros::Time& stamp, std::string* error) {
  if (WithoutSlash(frame).empty()) {
    *error = "it names no frame";
    return std::nullopt;
  }
  try {
    return buffer.lookupTransform(WithoutSlash(target), WithoutSlash(frame), stamp).transform;
  } catch (const tf2::TransformException& exception) {
    *error = exception.what();
    return std::nullopt;
  }
}

}  // namespace

std::string WithoutSlash(const std::string& frame) {
  return !frame.empty() && frame.front() == '/' ? frame.substr(1) : frame;
}

bool IsFinite(const geometry_msgs::Pose& pose) {
  return std::isfinite(pose.position.x) && std::isfinite(pose.position.y) && std::isfinite(pose.position.z) &&
         IsFinite(pose.orientation);
}

bool IsFinite(const nav_msgs::Path& path) {
  return std::all_of(path.poses.begin(), path.poses.end(),
                     [](const geometry_msgs::PoseStamped& pose) { return IsFinite(pose.pose); });
}

geometry_msgs::Pose Transformed(const geometry_msgs::Pose& pose, const geometry_msgs::Transform& transform) {
  const tf2::Quaternion rotation = ToTf(transform.rotation);
  const tf2::Vector3 turned = tf2::quatRotate(rotation, {pose.position.x, pose.position.y, pose.position.z});
  const tf2::Quaternion orientation = rotation * ToTf(pose.orientation);
  geometry_msgs::Pose result;
  result.position.x = transform.translation.x + turned.x();
  result.position.y = transform.translation.y + turned.y();
  result.position.z = transform.translation.z + turned.z();
  result.orientation.x = orientation.x();
  result.orientation.y = orientation.y();
  result.orientation.z = orientation.z();
  result.orientation.w = orientation.w();
  return result;
}

geometry_msgs::TransformStamped TransformOf(const nav_msgs::Odometry& odometry, const std::string& target,
                                            const std::string& frame) {
  geometry_msgs::TransformStamped transform;
  transform.header.stamp = odometry.header.stamp;
  transform.header.frame_id = target;
  transform.child_frame_id = frame;
  transform.transform.translation.x = odometry.pose.pose.position.x;
  transform.transform.translation.y = odometry.pose.pose.position.y;
  transform.transform.rotation = odometry.pose.pose.orientation;
  return transform;
}

std::optional<geometry_msgs::Pose> OriginIn(const tf2::BufferCore& buffer, const std::string& target,
                                            const std::string& frame, const ros::Time& stamp, std::string* error) {
  const std::optional<geometry_msgs::Transform> transform = Lookup(buffer, target, frame, stamp, error);
  if (!transform) {
    return std::nullopt;
  }
  geometry_msgs::Pose origin;
  origin.orientation.w = 1.0;
  return Transformed(origin, *transform);
}

std::optional<geometry_msgs::PoseStamped> PoseIn(const tf2::BufferCore& buffer, const std::string& target,
                                                 const geometry_msgs::PoseStamped& pose, std::string* error) {
  if (!IsFinite(pose.pose)) {
    *error = "it holds a number that is not finite";
    return std::nullopt;
  }
  if (ToTf(pose.pose.orientation).length2() == 0.0) {
    *error = "its orientation is all zeros";
    return std::nullopt;
  }
  const std::optional<geometry_msgs::Transform> transform =
      Lookup(buffer, target, pose.header.frame_id, ros::Time(), error);
  if (!transform) {
    return std::nullopt;
  }
  geometry_msgs::PoseStamped result = pose;
  result.header.frame_id = target;
  result.pose = Transformed(pose.pose, *transform);
  return result;
}

std::optional<nav_msgs::Path> PathIn(const tf2::BufferCore& buffer, const std::string& target,
                                     const nav_msgs::Path& path, std::string* error) {
  if (path.poses.empty()) {
    *error = "it has no poses";
    return std::nullopt;
  }
  if (!IsFinite(path)) {
    *error = "it holds a number that is not finite";
    return std::nullopt;
  }
  const std::string& frame = path.header.frame_id.empty() ? path.poses.front().header.frame_id : path.header.frame_id;
  const std::optional<geometry_msgs::Transform> transform = Lookup(buffer, target, frame, ros::Time(), error);
  if (!transform) {
    return std::nullopt;
  }
  nav_msgs::Path result = path;
  result.header.frame_id = target;
  for (geometry_msgs::PoseStamped& pose : result.poses) {
    pose.header.frame_id = target;
    pose.pose = Transformed(pose.pose, *transform);
  }
  return result;
}

}  // namespace controller_base::robot
