#ifndef CONTROLLER_BASE_ROBOT_FRAMES_H_
#define CONTROLLER_BASE_ROBOT_FRAMES_H_

#include <geometry_msgs/Pose.h>
#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Transform.h>
#include <geometry_msgs/TransformStamped.h>
#include <nav_msgs/Odometry.h>
#include <nav_msgs/Path.h>
#include <ros/time.h>
#include <tf2/buffer_core.h>

#include <optional>
#include <string>

// Poses and paths in the one frame that the follower works in. Where there is no answer, `error` says why.
namespace controller_base::robot {

// The frame's name as tf2 has it: older drivers still begin it with a slash.
std::string WithoutSlash(const std::string& frame);

// No NaN and no infinity. An orientation of zeros is fine: planners that know no heading leave it so.
bool IsFinite(const geometry_msgs::Pose& pose);
bool IsFinite(const nav_msgs::Path& path);

// The pose in the transform's parent frame, of a pose in its child frame. An orientation of zeros stays so.
geometry_msgs::Pose Transformed(const geometry_msgs::Pose& pose, const geometry_msgs::Transform& transform);

// The odometry as the place of `frame` in `target`, whatever the message calls them; z is left out.
geometry_msgs::TransformStamped TransformOf(const nav_msgs::Odometry& odometry, const std::string& target,
                                            const std::string& frame);

// Where the origin of `frame` is in `target` at `stamp`; stamp zero: at the latest time that is known.
std::optional<geometry_msgs::Pose> OriginIn(const tf2::BufferCore& buffer, const std::string& target,
                                            const std::string& frame, const ros::Time& stamp, std::string* error);

// The pose in `target`, by the latest transform: a goal stays where it is on the map however old it is. No value also
// for a pose that is not finite or has no heading.
std::optional<geometry_msgs::PoseStamped> PoseIn(const tf2::BufferCore& buffer, const std::string& target,
                                                 const geometry_msgs::PoseStamped& pose, std::string* error);

// The path in `target`, by the latest transform; its header and those of its poses say so, the stamps stay. The frame
// of a path is its header's or, where that is empty, its first pose's. No value also for a path that is not finite.
std::optional<nav_msgs::Path> PathIn(const tf2::BufferCore& buffer, const std::string& target,
                                     const nav_msgs::Path& path, std::string* error);

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_FRAMES_H_
