// Looks at a running path_follower_node and says in one line each what is missing, stale or implausible.
#include <ros/init.h>
#include <ros/master.h>
#include <ros/names.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "robot/doctor.h"

namespace {

constexpr char kUsage[] =
    "usage: doctor [NODE] [SECONDS]\n\n"
    "Listens to what the path_follower_node NODE (/path_follower) needs for SECONDS (3), and says in one line each "
    "which\n"
    "topic, frame, rate or parameter is missing, stale or implausible.\n\n"
    "The exit status is 0 when the robot can drive, 1 when it cannot, 2 for a wrong argument, 3 without a ROS "
    "master.\n";

constexpr double kLongest = 600.0;  // s

int Report(const std::vector<controller_base::robot::Finding>& findings) {
  int severe = 0;
  for (const controller_base::robot::Finding& finding : findings) {
    std::printf("%-7s  %s: %s\n", finding.is_severe ? "FAILS" : "warning", finding.subject.c_str(),
                finding.text.c_str());
    severe += finding.is_severe ? 1 : 0;
  }
  const int slight = static_cast<int>(findings.size()) - severe;
  std::printf("%s: %d failing, %d %s\n", severe == 0 ? "fit to drive" : "NOT fit to drive", severe, slight,
              slight == 1 ? "warning" : "warnings");
  return severe == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  ros::init(argc, argv, "doctor", ros::init_options::AnonymousName | ros::init_options::NoRosout);
  const std::string node = argc > 1 ? argv[1] : "/path_follower";
  if (node == "--help") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  char* end = nullptr;
  const double seconds = argc > 2 ? std::strtod(argv[2], &end) : 3.0;
  std::string error;
  if (argc > 3 || (end != nullptr && *end != '\0') || !(seconds > 0.0 && seconds <= kLongest) ||
      !ros::names::validate(node, error)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  if (!ros::master::check()) {
    std::fprintf(stderr, "doctor: no ROS master answers at %s\n", ros::master::getURI().c_str());
    return 3;
  }
  try {
    return Report(controller_base::robot::Doctor(ros::names::resolve("/", node)).Examine(seconds));
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "doctor: %s\n", exception.what());
    return 3;
  }
}
