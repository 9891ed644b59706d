#ifndef CONTROLLER_BASE_RECORDING_MESSAGE_H_
#define CONTROLLER_BASE_RECORDING_MESSAGE_H_

#include <geometry_msgs/Pose2D.h>
#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_msgs/GridCells.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Path.h>
#include <rosgraph_msgs/Clock.h>
#include <sensor_msgs/Joy.h>
#include <std_msgs/Bool.h>
#include <std_msgs/Float64.h>
#include <std_msgs/Float64MultiArray.h>
#include <std_msgs/String.h>
#include <std_msgs/Time.h>
#include <std_msgs/UInt64.h>
#include <tf2_msgs/TFMessage.h>
#include <visualization_msgs/Marker.h>
#include <visualization_msgs/MarkerArray.h>

#include <string>
#include <variant>

namespace controller_base::recording {

// Any message that tells about a drive.
using Message =
    std::variant<geometry_msgs::Pose2D, geometry_msgs::PoseStamped, geometry_msgs::Twist, nav_msgs::GridCells,
                 nav_msgs::OccupancyGrid, nav_msgs::Path, rosgraph_msgs::Clock, sensor_msgs::Joy, std_msgs::Bool,
                 std_msgs::Float64, std_msgs::Float64MultiArray, std_msgs::String, std_msgs::Time, std_msgs::UInt64,
                 tf2_msgs::TFMessage, visualization_msgs::Marker, visualization_msgs::MarkerArray>;

struct TopicMessage {
  std::string topic;
  Message message;
};

// A message of a type with the one field `data`.
template <typename Type, typename Value>
Type DataMessage(const Value& value) {
  Type message;
  message.data = value;
  return message;
}

// Where messages go: to a ROS master, into a bag.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  // Whether anybody would see a message there; others need not be made.
  virtual bool Wants(const std::string& topic) const = 0;
  virtual void Take(const std::string& topic, const Message& message) = 0;
};

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_MESSAGE_H_
