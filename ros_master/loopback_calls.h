#ifndef CONTROLLER_BASE_ROS_MASTER_LOOPBACK_CALLS_H_
#define CONTROLLER_BASE_ROS_MASTER_LOOPBACK_CALLS_H_

namespace controller_base::ros_master {

// Takes ROS's calls to this process (XML-RPC: who publishes what, shut down) on 127.0.0.1 alone. roscpp listens for
// them on every address of the machine, whatever ROS_IP says, and has no setting for it; topics and services follow
// ROS_IP.
//
// For a process whose ROS master nobody else can reach (RosMasterProcess), with its first ros::NodeHandle there and
// before it advertises or subscribes. Where the system does not allow it, everything stays as before, with a warning.
void TakeCallsOnLoopbackAlone();

}  // namespace controller_base::ros_master

#endif  // CONTROLLER_BASE_ROS_MASTER_LOOPBACK_CALLS_H_
