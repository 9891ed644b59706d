// The follower as a node. docs/robot.md lists its topics and parameters.
#include <ros/ros.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>

#include "follower/printable.h"
#include "robot/node_options.h"
#include "robot/path_follower_node.h"

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--parameters") {
    std::fputs(controller_base::robot::ParameterTable().c_str(), stdout);
    return 0;
  }
  ros::init(argc, argv, "path_follower");
  std::signal(SIGTERM, [](int /*signal*/) { ros::requestShutdown(); });  // roscpp does so on SIGINT alone
  try {
    controller_base::robot::PathFollowerNode().Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "path_follower_node: %s\n", controller_base::follower::Printable(error.what()).c_str());
    return 1;
  }
  return 0;
}
