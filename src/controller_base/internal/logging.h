#ifndef CONTROLLER_BASE_INTERNAL_LOGGING_H_
#define CONTROLLER_BASE_INTERNAL_LOGGING_H_

#include <ros/console.h>

// Every line of the library goes to this logger, whatever package name the build system would put there.
#define NAV_CONTROLLER_LOGGER "ros.nav_controller"

#define NAV_CONTROLLER_DEBUG(...) ROS_LOG(::ros::console::levels::Debug, NAV_CONTROLLER_LOGGER, __VA_ARGS__)
#define NAV_CONTROLLER_INFO(...) ROS_LOG(::ros::console::levels::Info, NAV_CONTROLLER_LOGGER, __VA_ARGS__)
#define NAV_CONTROLLER_WARN(...) ROS_LOG(::ros::console::levels::Warn, NAV_CONTROLLER_LOGGER, __VA_ARGS__)
#define NAV_CONTROLLER_ERROR(...) ROS_LOG(::ros::console::levels::Error, NAV_CONTROLLER_LOGGER, __VA_ARGS__)

namespace nav_controller::internal {

// Whether DEBUG lines are enabled, for texts that take time to make.
inline bool IsDebugLogged() {
  ROSCONSOLE_DEFINE_LOCATION(true, ::ros::console::levels::Debug, NAV_CONTROLLER_LOGGER);
  return __rosconsole_define_location__enabled;
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_INTERNAL_LOGGING_H_
