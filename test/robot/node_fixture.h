#ifndef TEST_ROBOT_NODE_FIXTURE_H_
#define TEST_ROBOT_NODE_FIXTURE_H_

#include <diagnostic_msgs/DiagnosticArray.h>
#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseStamped.h>
#include <geometry_msgs/Twist.h>
#include <gmock/gmock.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Odometry.h>
#include <nav_msgs/Path.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/param.h>
#include <ros/service.h>
#include <sensor_msgs/LaserScan.h>
#include <std_msgs/String.h>
#include <std_srvs/SetBool.h>
#include <std_srvs/Trigger.h>
#include <visualization_msgs/MarkerArray.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "test/support/paths.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {

// Two rooms of 2.5 m x 4 m side by side with two passages of 0.8 m between them, one below the other:
//
//   +-------+   +-------+
//   |       +---+       |   upper passage: y from 2.7 to 3.5
//   |       +---+       |   x from 2.5 to 3.5 between the rooms
//   | start +---+  goal |   lower passage: y from 0.5 to 1.3
//   +-------+   +-------+   (0, 0) to (6, 4)
inline nav_msgs::OccupancyGrid TwoRooms() {
  constexpr double kResolution = 0.05;
  nav_msgs::OccupancyGrid map;
  map.header.frame_id = "map";
  map.info.resolution = static_cast<float>(kResolution);
  map.info.width = 120;
  map.info.height = 80;
  map.info.origin.orientation.w = 1.0;
  for (unsigned int my = 0; my < map.info.height; ++my) {
    for (unsigned int mx = 0; mx < map.info.width; ++mx) {
      const double x = (mx + 0.5) * kResolution;
      const double y = (my + 0.5) * kResolution;
      const bool is_edge = x < 0.1 || y < 0.1 || x > 5.9 || y > 3.9;
      const bool is_passage = (y > 0.5 && y < 1.3) || (y > 2.7 && y < 3.5);
      map.data.push_back(is_edge || (x > 2.5 && x < 3.5 && !is_passage) ? 100 : 0);
    }
  }
  return map;
}

// The real node, the real simulated robot in the two rooms, and a master between them. Messages are kept in the order
// of their arrival; times are those of the wall clock.
class NodeFixture : public testing::Test {
 protected:
  struct Told {
    ros::WallTime when;
    double speed;
    double turn_rate;
    bool IsToStand() const { return speed == 0.0 && turn_rate == 0.0; }
  };

  NodeFixture() {
    robot_.setParam("map_file", WriteMap());
    robot_.setParam("start_x", 1.0);
    robot_.setParam("start_y", 0.9);
    Hear<geometry_msgs::Twist>("cmd_vel", [this](const geometry_msgs::Twist& twist) {
      commands_.push_back({ros::WallTime::now(), twist.linear.x, twist.angular.z});
    });
    Hear<std_msgs::String>("path_follower/state", [this](const std_msgs::String& text) { state_ = text.data; });
    Hear<std_msgs::String>("path_follower/reason", [this](const std_msgs::String& text) { reason_ = text.data; });
    Hear<std_msgs::String>("path_follower/events",
                           [this](const std_msgs::String& text) { events_.push_back(text.data); });
    Hear<nav_msgs::Path>("path_follower/path", [this](const nav_msgs::Path& path) { paths_.push_back(path); });
    Hear<nav_msgs::Odometry>("ground_truth", [this](const nav_msgs::Odometry& truth) { truth_ = truth; });
    Hear<std_msgs::String>("touched", [this](const std_msgs::String& /*what*/) { ++touches_; });
    Hear<sensor_msgs::LaserScan>("scan", [this](const sensor_msgs::LaserScan& /*scan*/) { ++scans_; });
    Hear<diagnostic_msgs::DiagnosticArray>("/diagnostics",
                                           [this](const diagnostic_msgs::DiagnosticArray& array) { Note(array); });
    goals_ = handle_.advertise<geometry_msgs::PoseStamped>("move_base_simple/goal", 1);
    plans_ = handle_.advertise<nav_msgs::Path>("plan", 1);
    map_ = handle_.advertise<nav_msgs::OccupancyGrid>("map", 1, /*latch=*/true);
  }
  ~NodeFixture() override {
    programs_.clear();
    for (const char* name : {"simulated_robot", "path_follower", "use_sim_time"}) {
      ros::param::del(name);
    }
  }

  void Start() {
    map_.publish(TwoRooms());
    StartRobot();
    StartNode();
  }
  void StartRobot() {
    Run(CONTROLLER_BASE_SIMULATED_ROBOT);
    ASSERT_TRUE(ros::service::waitForService("simulated_robot/scan", ros::Duration(10.0)));
  }
  void StartNode() {
    Run(CONTROLLER_BASE_PATH_FOLLOWER);
    ASSERT_TRUE(ros::service::waitForService("path_follower/reset", ros::Duration(10.0)));
    ASSERT_TRUE(Eventually([this] { return goals_.getNumSubscribers() > 0 && plans_.getNumSubscribers() > 0; }));
  }
  void Run(const std::string& program) {
    programs_.push_back(
        std::make_unique<controller_base::demo::ChildProcess>(std::vector<std::string>{program, "__log:=/dev/null"}));
  }

  // Handles callbacks until the condition holds; false when it does not within so many seconds.
  bool Eventually(const std::function<bool()>& condition, double seconds = 10.0) const {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(seconds);
    while (!condition() && ros::WallTime::now() < deadline) {
      ros::getGlobalCallbackQueue()->callAvailable(ros::WallDuration(0.005));
    }
    return condition();
  }
  void Listen(double seconds) const {
    Eventually([] { return false; }, seconds);
  }

  template <typename Message>
  void Hear(const std::string& topic, const std::function<void(const Message&)>& hear) {
    subscribers_.push_back(
        handle_.subscribe<Message>(topic, 100, [hear](const typename Message::ConstPtr& message) { hear(*message); }));
  }

  void GoTo(double x, double y) const { goals_.publish(PoseAt(x, y)); }

  bool IsAt(double x, double y) const {
    const geometry_msgs::Point& place = truth_.pose.pose.position;
    return std::hypot(place.x - x, place.y - y) < 0.1;
  }
  bool IsMoving() const {
    return !commands_.empty() && !commands_.back().IsToStand() && std::abs(truth_.twist.twist.linear.x) > 0.05;
  }
  bool IsStanding() const { return std::abs(truth_.twist.twist.linear.x) < 1e-3; }

  // Each of the robot's outputs can be cut, and restored.
  static void Switch(const std::string& output, bool on) {
    std_srvs::SetBool call;
    call.request.data = static_cast<std_srvs::SetBool::Request::_data_type>(on);
    ASSERT_TRUE(ros::service::call("simulated_robot/" + output, call));
  }
  static void Call(const std::string& service) {
    std_srvs::Trigger call;
    ASSERT_TRUE(ros::service::call("path_follower/" + service, call));
    EXPECT_TRUE(call.response.success);
  }

  // The text of the node's last diagnostic about the input when that was an error; else nothing.
  std::string ErrorOf(const std::string& input) const {
    for (const diagnostic_msgs::DiagnosticStatus& status : diagnostics_.status) {
      if (status.name == "path_follower: " + input && status.level == diagnostic_msgs::DiagnosticStatus::ERROR) {
        return status.message;
      }
    }
    return "";
  }

  ros::NodeHandle handle_;
  ros::NodeHandle robot_{"simulated_robot"};
  ros::NodeHandle node_{"path_follower"};
  TemporaryFolder folder_;
  ros::Publisher goals_;
  ros::Publisher plans_;
  ros::Publisher map_;
  std::vector<Told> commands_;
  std::string state_;
  std::string reason_;
  std::vector<std::string> events_;
  std::vector<nav_msgs::Path> paths_;
  nav_msgs::Odometry truth_;
  int touches_ = 0;
  int scans_ = 0;
  diagnostic_msgs::DiagnosticArray diagnostics_;
  std::vector<std::unique_ptr<controller_base::demo::ChildProcess>> programs_;

 private:
  std::string WriteMap() const {
    const nav_msgs::OccupancyGrid map = TwoRooms();
    std::string image = "P5 120 80 255\n";
    for (int row = 79; row >= 0; --row) {
      for (int column = 0; column < 120; ++column) {
        image += map.data[static_cast<std::size_t>(120 * row + column)] != 0 ? '\0' : '\xff';
      }
    }
    folder_.Write("map.pgm", image);
    return folder_.Write("map.yaml",
                         "image: map.pgm\nresolution: 0.05\norigin: [0, 0, 0]\nnegate: 0\noccupied_thresh: 0.65\n"
                         "free_thresh: 0.25\n");
  }
  void Note(const diagnostic_msgs::DiagnosticArray& array) {
    if (array.status.size() > 1) {
      diagnostics_ = array;
    }
  }

  std::vector<ros::Subscriber> subscribers_;
};

}  // namespace controller_base_test

#endif  // TEST_ROBOT_NODE_FIXTURE_H_
