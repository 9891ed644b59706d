// The launch files, started by the real roslaunch, from a package of links to what is built.
#include <cstdlib>
#include <filesystem>

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

  // A file, and its arguments.
  void Roslaunch(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"/usr/bin/python3", "/usr/bin/roslaunch", "controller_base"});
    programs_.push_back(std::make_unique<controller_base::demo::ChildProcess>(
        arguments,
        std::vector<std::string>{"ROS_PACKAGE_PATH=" + folder_.path().string() + ":/usr/share",
                                 "ROS_LOG_DIR=" + folder_.path().string(), "ROS_HOME=" + folder_.path().string()},
        log_));
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

}  // namespace
}  // namespace controller_base_test
