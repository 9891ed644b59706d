#ifndef CONTROLLER_BASE_ROBOT_FOLLOWER_CONFIG_H_
#define CONTROLLER_BASE_ROBOT_FOLLOWER_CONFIG_H_

#include <dynamic_reconfigure/Config.h>
#include <dynamic_reconfigure/ConfigDescription.h>
#include <ros/node_handle.h>

#include <cstdint>
#include <string>
#include <vector>

#include "controller_base/follower/parameters.h"

namespace controller_base::robot {

// The follower's parameters as dynamic_reconfigure::Server wants a configuration, made of the follower's own table: all
// numbers and flags but the robot's radius, which the costs were inflated with, by the names of ShownName. Lists are no
// type of dynamic_reconfigure.
//
// The operations with underscores are those that the server calls.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
class FollowerConfig {
 public:
  FollowerConfig() = default;
  explicit FollowerConfig(const follower::Parameters& parameters) : parameters_(parameters) {}

  const follower::Parameters& parameters() const { return parameters_; }

  // Throws what ReadFollowerParameters throws.
  void __fromServer__(const ros::NodeHandle& handle);
  void __toServer__(const ros::NodeHandle& handle) const;
  // What the message does not have stays; what is not known is passed over, with a warning.
  void __fromMessage__(const dynamic_reconfigure::Config& message);
  void __toMessage__(dynamic_reconfigure::Config& message) const;
  template <typename Descriptions, typename Groups>
  void __toMessage__(dynamic_reconfigure::Config& message, const Descriptions& /*all*/, const Groups& /*one*/) const {
    __toMessage__(message);
  }
  // Takes numbers out of their range as its nearest end, with a warning.
  void __clamp__();
  // Which kinds of parameters differ: there is one kind.
  std::uint32_t __level__(const FollowerConfig& other) const;

  static FollowerConfig __getDefault__() { return FollowerConfig(); }
  static FollowerConfig __getMin__();
  static FollowerConfig __getMax__();
  static dynamic_reconfigure::ConfigDescription __getDescriptionMessage__();
  static std::vector<dynamic_reconfigure::ParamDescription> __getParamDescriptions__();
  static std::vector<dynamic_reconfigure::Group> __getGroupDescriptions__();

 private:
  follower::Parameters parameters_;
};
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_FOLLOWER_CONFIG_H_
