// The launch files, started by the real roslaunch, from a package of links to what is built.
#include <yaml-cpp/yaml.h>

#include <cstdlib>
#include <filesystem>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <set>
#include <sstream>
#include <variant>

#include "robot/follower_parameters.h"
#include "robot/node_options.h"
#include "test/demo/watch/virtual_screen.h"
#include "test/robot/node_fixture.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;

class Launch : public NodeFixture {
 protected:
  Launch() {
    const fs::path package = folder_.path() / "controller_base";
    fs::create_directory(package);
    for (const char* entry : {"package.xml", "demo", "robot"}) {
      fs::create_symlink(fs::path(CONTROLLER_BASE_SOURCE) / entry, package / entry);
    }
    fs::create_directory(package / "bin");
    for (const fs::path program : {CONTROLLER_BASE_SIMULATED_ROBOT, CONTROLLER_BASE_PATH_FOLLOWER}) {
      fs::create_symlink(program, package / "bin" / program.filename());
    }
  }

  // A launch file, its arguments, and additions to the environment.
  void Roslaunch(std::vector<std::string> arguments, std::vector<std::string> environment = {}) {
    arguments.insert(arguments.begin(), {"/usr/bin/python3", "/usr/bin/roslaunch", "controller_base"});
    environment.insert(environment.end(),
                       {"ROS_PACKAGE_PATH=" + folder_.path().string() + ":/usr/share",
                        "ROS_LOG_DIR=" + folder_.path().string(), "ROS_HOME=" + folder_.path().string()});
    programs_.push_back(std::make_unique<controller_base::demo::ChildProcess>(arguments, environment, log_));
  }

  std::string log_ = (folder_.path() / "roslaunch.log").string();
};

TEST_F(Launch, SimulationDrivesToAGoal) {
  Roslaunch({"simulation.launch", "rviz:=false"});
  ASSERT_TRUE(Eventually([this] { return goals_.getNumSubscribers() > 0 && scans_ > 0; }, 30.0)) << ReadFile(log_);
  GoTo(2.2, 6.9);
  EXPECT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ReadFile(log_);
  EXPECT_TRUE(IsAt(2.2, 6.9));
}

TEST_F(Launch, SimulationTakesItsArguments) {
  Roslaunch({"simulation.launch", "rviz:=false", "map:=" CONTROLLER_BASE_DEMO_MAPS "/hall.yaml", "start_x:=2.0",
             "start_y:=3.0", "start_yaw:=1.0", "speed:=2.0", "obstacles:=[{x: 4.0, y: 3.0, radius: 0.2}]"});
  ros::param::set("use_sim_time", true);
  ASSERT_TRUE(Eventually([this] { return goals_.getNumSubscribers() > 0 && scans_ > 0 && IsAt(2.0, 3.0); }, 30.0))
      << ReadFile(log_);
  GoTo(6.0, 3.0);
  EXPECT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ReadFile(log_);
  EXPECT_EQ(touches_, 0);
}

TEST_F(Launch, RobotTakesTheTopicsOfARobot) {
  StartRobot();
  Roslaunch({"robot.launch", "cmd_vel:=wheels", "goal:=go", "map:=house"});
  ros::Publisher goals = handle_.advertise<geometry_msgs::PoseStamped>("go", 1);
  ros::Publisher map = handle_.advertise<nav_msgs::OccupancyGrid>("house", 1, /*latch=*/true);
  map.publish(TwoRooms());
  bool is_driven = false;
  Hear<geometry_msgs::Twist>("wheels", [&](const geometry_msgs::Twist& twist) { is_driven |= twist.linear.x > 0.0; });
  ASSERT_TRUE(Eventually([&] { return goals.getNumSubscribers() > 0; }, 30.0)) << ReadFile(log_);
  goals.publish(PoseAt(2.0, 0.9));
  EXPECT_TRUE(Eventually([&] { return is_driven; })) << state_ << ": " << reason_ << ReadFile(log_);
}

// The parameters of robot.launch, as it gives them to the node.
YAML::Node LaunchedParameters() {
  const std::string text = ReadFile(CONTROLLER_BASE_SOURCE "/robot/launch/robot.launch");
  const std::size_t begin = text.find("<rosparam>") + std::string("<rosparam>").size();
  return YAML::Load(text.substr(begin, text.find("</rosparam>") - begin));
}

TEST(RobotLaunch, HasEveryParameterThatTheNodeReadsAndNoOther) {
  std::set<std::string> launched;
  for (const auto& entry : LaunchedParameters()) {
    launched.insert(entry.first.as<std::string>());
  }
  std::istringstream table(controller_base::robot::ParameterTable());
  std::set<std::string> read;
  for (std::string line; std::getline(table, line);) {
    read.insert(line.substr(0, line.find(' ')));
  }
  for (const controller_base::follower::ParameterField& field : controller_base::follower::ParameterFields()) {
    if (controller_base::robot::ShownName(field) != std::string(field.name)) {
      read.erase(field.name);  // it goes by the other name
    }
  }
  EXPECT_EQ(launched, read);
}

// All but the tolerance of the goal, which is set for a real localisation.
TEST(RobotLaunch, HasTheFollowersDefaults) {
  const YAML::Node launched = LaunchedParameters();
  const controller_base::follower::Parameters defaults;
  for (const controller_base::follower::ParameterField& field : controller_base::follower::ParameterFields()) {
    const std::string name = controller_base::robot::ShownName(field);
    if (const auto* number = std::get_if<double controller_base::follower::Parameters::*>(&field.value)) {
      EXPECT_NEAR(launched[name].as<double>(), name == "xy_goal_tolerance" ? 0.1 : defaults.*(*number), 0.005) << name;
    }
  }
  EXPECT_EQ(launched["corridor_widths"].as<std::vector<double>>(), defaults.corridor_widths);
}

TEST_F(Launch, SimulationShowsRobotPathAndScanInRviz) {
  if (!fs::exists("/usr/bin/rviz") || !fs::exists("/usr/bin/Xvfb")) {
    GTEST_SKIP() << "there is no rviz or no Xvfb on this machine; scripts/setup installs them";
  }
  const VirtualScreen screen;
  Roslaunch({"simulation.launch", "obstacles:=[{x: 2.6, y: 6.9, radius: 0.15}]"},
            {"DISPLAY=" + screen.display(), "LIBGL_ALWAYS_SOFTWARE=1", "XDG_RUNTIME_DIR=" + folder_.path().string()});
  ASSERT_TRUE(Eventually([this] { return goals_.getNumSubscribers() > 0 && scans_ > 0; }, 60.0)) << ReadFile(log_);
  const auto shows_scan = [&] { return screen.WorldPixels(255, 200, 0) > 100; };
  ASSERT_TRUE(Eventually(shows_scan, 120.0)) << ReadFile(log_);
  GoTo(12.6, 4.4);
  EXPECT_TRUE(Eventually([&] { return screen.WorldPixels(40, 120, 200) > 100; }, 20.0));  // the path
  EXPECT_TRUE(Eventually([&] { return screen.WorldPixels(0, 200, 255) > 100; }, 20.0));   // the stretch ahead
  Listen(2.0);
  cv::imwrite("rviz-robot.png", screen.Picture());  // for whoever wants to see it
}

}  // namespace
}  // namespace controller_base_test
