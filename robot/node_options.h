#ifndef CONTROLLER_BASE_ROBOT_NODE_OPTIONS_H_
#define CONTROLLER_BASE_ROBOT_NODE_OPTIONS_H_

#include <ros/node_handle.h>

#include <string>

namespace controller_base::robot {

// What the node takes beside the follower's parameters. Units and ranges stand beside each field; both ends are
// allowed.
struct NodeOptions {
  std::string global_frame = "map";      // of the map, and of all that is published
  std::string base_frame = "base_link";  // x ahead
  std::string pose_source = "tf";        // or "odometry": the topic odom says where base_frame is in global_frame
  bool use_map = true;                   // false: nothing is known of the place but what the laser sees
  std::string record;                    // the bag to record the follower's cycles into; empty: none
  double free_map_side = 60.0;           // m, 1 to 1000; of that place, around the frame's origin
  double free_map_resolution = 0.05;     // m, 0.005 to 0.5
  double local_map_side = 6.0;           // m, 1 to 60
  double controller_frequency = 20.0;    // Hz, 1 to 100
  double scan_timeout = 0.2;             // s, 0.01 to 10; without a usable scan for longer the robot stands
  double pose_timeout = 0.2;             // s, 0.01 to 10; likewise
  double bumper_timeout = 0.0;           // s, 0 to 10; likewise; 0: a bumper that says nothing is fine
  double clock_timeout = 0.2;            // s of the wall's clock, 0.01 to 10; that the ROS clock may stand still
  double longest_delay = 0.3;            // s, 0 to 10; an older message is of no use
  double blocked_timeout = 2.0;          // s, 0 to 1000; that the path to a goal may stay blocked before a new plan
  double replan_pause = 3.0;             // s, 0.1 to 1000; between two plans to the same goal
};

// The options as `handle` has them, each by the name of its field; what it does not have keeps its default. Throws
// std::invalid_argument, naming the parameter, for a value of another type or out of its range.
NodeOptions ReadNodeOptions(const ros::NodeHandle& handle);

// The names of all parameters that the node reads, those of the follower included, one a line with unit, range and
// default.
std::string ParameterTable();

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_NODE_OPTIONS_H_
