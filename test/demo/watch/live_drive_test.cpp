// The demo program in real time, with another node that listens and sends goals and boxes.

#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseStamped.h>
#include <gtest/gtest.h>
#include <nav_msgs/GridCells.h>
#include <nav_msgs/Path.h>
#include <ros/callback_queue.h>
#include <ros/master.h>
#include <ros/network.h>
#include <ros/ros.h>
#include <rosgraph_msgs/Clock.h>
#include <std_msgs/Float64.h>
#include <std_msgs/String.h>
#include <std_msgs/UInt64.h>
#include <tf2_msgs/TFMessage.h>
#include <visualization_msgs/MarkerArray.h>
#include <xmlrpcpp/XmlRpc.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "follower/geometry.h"
#include "ros_master/ros_master_process.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;

class LiveDrive : public testing::Test {
 protected:
  // The drive of 1.8 m along the bedroom's wall.
  LiveDrive()
      : goals_(node_.advertise<geometry_msgs::PoseStamped>("/move_base_simple/goal", 1)),
        points_(node_.advertise<geometry_msgs::PointStamped>("/clicked_point", 1)),
        demo_({CONTROLLER_BASE_DEMO_PROGRAM, "--realtime", "--start", "1.2,6.9,0", "--goal", "3.0,6.9", "--bag", Bag(),
               "--out", (folder_.path() / "out").string()},
              {}, (folder_.path() / "log").string()) {}

  // Handles messages until the condition holds; false when it does not within a minute.
  static bool Until(const std::function<bool()>& is_so) {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(60.0);
    while (!is_so() && ros::WallTime::now() < deadline) {
      ros::getGlobalCallbackQueue()->callAvailable(ros::WallDuration(0.02));
    }
    return is_so();
  }

  template <typename Message>
  ros::Subscriber Hear(const std::string& topic, std::vector<Message>* heard) {
    const boost::function<void(const Message&)> add = [heard](const Message& message) { heard->push_back(message); };
    return node_.subscribe<Message>(topic, 1000, add);
  }

  std::string Bag() const { return (folder_.path() / "a.bag").string(); }
  // Whether the operators' inputs are recorded, so that a new follower repeats the drive.
  bool ReplaysIdentically() const {
    return ChildProcess({CONTROLLER_BASE_REPLAY_PROGRAM, Bag()}, {}, "/dev/null").WaitForEnd() == 0;
  }

  std::string Log() const { return ReadFile(folder_.path() / "log"); }

  TemporaryFolder folder_;
  ros::NodeHandle node_;
  ros::Publisher goals_;
  ros::Publisher points_;
  ChildProcess demo_;
};

TEST(MasterHasClock, WhenSomebodyPublishesItOrProgramsAreToldToUseIt) {
  const std::string uri = controller_base::ros_master::MasterUriFromEnvironment();
  EXPECT_FALSE(controller_base::ros_master::MasterHasClock(uri));
  ros::param::set("/use_sim_time", true);
  EXPECT_TRUE(controller_base::ros_master::MasterHasClock(uri));
  ros::param::del("/use_sim_time");
  EXPECT_FALSE(controller_base::ros_master::MasterHasClock(uri));
  ros::NodeHandle node;
  const ros::Publisher clock = node.advertise<rosgraph_msgs::Clock>("/clock", 1);
  EXPECT_TRUE(controller_base::ros_master::MasterHasClock(uri));
}

TEST_F(LiveDrive, PublishesItselfAndTheClock) {
  std::vector<rosgraph_msgs::Clock> clock;
  std::vector<tf2_msgs::TFMessage> frames;
  std::vector<std_msgs::UInt64> index;
  std::map<std::string, std::vector<std_msgs::Float64>> numbers;
  std::vector<std_msgs::String> states;
  std::vector<std_msgs::String> reasons;
  std::vector<ros::Subscriber> subscribers{
      Hear("/clock", &clock), Hear("/tf", &frames), Hear("/controller_base_demo/index", &index),
      Hear("/controller_base_demo/state", &states), Hear("/controller_base_demo/reason", &reasons)};
  for (const char* name : {"deviation", "speed", "distance_ratio", "time_ratio"}) {
    subscribers.push_back(Hear(std::string("/controller_base_demo/") + name, &numbers[name]));
  }
  ASSERT_TRUE(Until([&] { return clock.size() >= 40; })) << Log();
  const ros::WallTime begin = ros::WallTime::now();
  const std::size_t first = clock.size();
  bool use_sim_time = false;
  EXPECT_TRUE(ros::param::get("/use_sim_time", use_sim_time) && use_sim_time);
  ASSERT_TRUE(Until([&] { return clock.size() >= first + 20; })) << Log();
  EXPECT_GT((ros::WallTime::now() - begin).toSec(), 0.8);  // twenty cycles of 50 ms
  for (std::size_t i = 1; i < clock.size(); ++i) {
    EXPECT_EQ((clock[i].clock - clock[i - 1].clock).toNSec(), 50'000'000);
  }
  ASSERT_FALSE(frames.empty());
  EXPECT_EQ(frames.back().transforms.at(0).header.frame_id, "map");
  EXPECT_EQ(frames.back().transforms.at(0).child_frame_id, "base_link");
  EXPECT_GT(index.back().data, 0u);
  EXPECT_NEAR(numbers["speed"].back().data, 0.45, 0.2);
  EXPECT_GT(numbers["distance_ratio"].back().data, 0.0);
  EXPECT_GT(numbers["time_ratio"].back().data, 0.0);
  EXPECT_LT(numbers["deviation"].back().data, 0.3);
  ASSERT_TRUE(Until([&] { return demo_.Ended().has_value(); }));
  EXPECT_EQ(demo_.Ended(), 0) << Log();
  EXPECT_EQ(states.front().data, "path");
  EXPECT_NE(reasons.back().data.find("from the path's end"), std::string::npos) << reasons.back().data;
  EXPECT_FALSE(ros::param::has("/use_sim_time"));
}

TEST_F(LiveDrive, ABoxThatSomebodyDropsOnThePathIsDrivenAround) {
  std::vector<visualization_msgs::MarkerArray> markers;
  std::vector<nav_msgs::Path> detours;
  std::vector<nav_msgs::GridCells> corridors;
  const ros::Subscriber hear_corridors = Hear("/controller_base_demo/corridor", &corridors);
  const ros::Subscriber hear_markers = Hear("/controller_base_demo/markers", &markers);
  const ros::Subscriber hear_detours = Hear("/controller_base_demo/detour", &detours);
  ASSERT_TRUE(Until([&] { return !markers.empty() && points_.getNumSubscribers() > 0; })) << Log();
  geometry_msgs::PointStamped point;
  point.header.frame_id = "map";
  point.point.x = 2.4;
  point.point.y = 6.9;
  points_.publish(point);
  const auto is_at_the_box = [&](const geometry_msgs::Point& corner) {
    return controller_base::follower::Distance(corner, point.point) < 0.25;
  };
  const auto shows_the_box = [&] {
    return std::any_of(markers.back().markers.begin(), markers.back().markers.end(), [&](const auto& marker) {
      return marker.ns == "obstacles" && std::any_of(marker.points.begin(), marker.points.end(), is_at_the_box);
    });
  };
  EXPECT_TRUE(Until(shows_the_box));
  ASSERT_TRUE(Until([&] { return !detours.empty(); })) << Log();
  for (const geometry_msgs::PoseStamped& pose : detours.front().poses) {
    const geometry_msgs::Quaternion& q = pose.pose.orientation;
    EXPECT_NEAR(q.z * q.z + q.w * q.w, 1.0, 1e-9);
    EXPECT_GT(controller_base::follower::Distance(pose.pose.position, point.point), 0.15);
  }
  // A box that drops right in front of the robot may be seen in part first and take a second detour.
  const auto the_detour_is_over = [&] { return corridors.size() >= 2 && corridors.back().cells.empty(); };
  ASSERT_TRUE(Until(the_detour_is_over)) << Log();
  EXPECT_LE(std::count_if(corridors.begin(), corridors.end(), [](const auto& shown) { return !shown.cells.empty(); }),
            2);
  EXPECT_FALSE(corridors.front().cells.empty());
  EXPECT_EQ(corridors.back().cell_width, corridors.front().cell_width);
  EXPECT_EQ(corridors.back().cell_height, corridors.front().cell_height);
  EXPECT_EQ(demo_.WaitForEnd(), 0) << Log();
  EXPECT_TRUE(ReplaysIdentically());
}

TEST_F(LiveDrive, ANewGoalIsDrivenToInstead) {
  std::vector<nav_msgs::Path> paths;
  const ros::Subscriber hear_paths = Hear("/controller_base_demo/path", &paths);
  ASSERT_TRUE(Until([&] { return !paths.empty() && goals_.getNumSubscribers() > 0; })) << Log();
  geometry_msgs::PoseStamped goal;
  goal.header.frame_id = "elsewhere";  // not the map: ignored
  goal.pose.orientation.w = 1.0;
  goals_.publish(goal);
  goal.header.frame_id = "map";
  goal.pose.position.x = 2.6;
  goal.pose.position.y = 7.6;
  goals_.publish(goal);
  ASSERT_TRUE(Until([&] { return paths.size() >= 2; })) << Log();
  EXPECT_LT(controller_base::follower::Distance(paths.back().poses.back().pose.position, goal.pose.position), 0.01);
  EXPECT_EQ(demo_.WaitForEnd(), 0) << Log();
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_TRUE(ReplaysIdentically());
  EXPECT_NE(Log().find("frame 'elsewhere'"), std::string::npos) << Log();
}

// The addresses at which other programs reach the nodes that publish a topic.
std::vector<std::string> AddressesOfPublishers(const std::string& topic) {
  XmlRpc::XmlRpcValue caller;
  caller[0] = ros::this_node::getName();
  XmlRpc::XmlRpcValue answer;
  XmlRpc::XmlRpcValue state;
  std::vector<std::string> addresses;
  if (!ros::master::execute("getSystemState", caller, answer, state, false)) {
    return addresses;
  }
  XmlRpc::XmlRpcValue& published = state[0];
  for (int i = 0; i < published.size(); ++i) {
    for (int j = 0; static_cast<std::string&>(published[i][0]) == topic && j < published[i][1].size(); ++j) {
      XmlRpc::XmlRpcValue question = caller;
      question[1] = published[i][1][j];
      XmlRpc::XmlRpcValue address;
      if (ros::master::execute("lookupNode", question, answer, address, false)) {
        addresses.push_back(static_cast<std::string&>(address));
      }
    }
  }
  return addresses;
}

// Any program that reaches a node's port can shut the node down; roscpp logs why.
TEST_F(LiveDrive, WhatOtherNodesSayDoesNothingToTheTerminal) {
  std::vector<rosgraph_msgs::Clock> clock;
  const ros::Subscriber hear_clock = Hear("/clock", &clock);
  ASSERT_TRUE(Until([&] { return !clock.empty(); })) << Log();
  const std::vector<std::string> addresses = AddressesOfPublishers("/controller_base_demo/map");
  ASSERT_EQ(addresses.size(), 1u);
  std::string host;
  std::uint32_t port = 0;
  ASSERT_TRUE(ros::network::splitURI(addresses.front(), host, port));
  XmlRpc::XmlRpcValue request;
  request[0] = "/somebody";
  request[1] = "\x1b]0;title\x07\x1b[31mred\nanother line" + std::string(10'000, 'x');
  XmlRpc::XmlRpcValue answer;
  XmlRpc::XmlRpcClient client(host.c_str(), static_cast<int>(port), "/");
  ASSERT_TRUE(client.execute("shutdown", request, answer));
  ASSERT_TRUE(Until([&] { return Log().find("Reason given for shutdown") != std::string::npos; })) << Log();
  const std::string log = Log();
  EXPECT_NE(log.find("\\x1b]0;title\\x07\\x1b[31mred\\x0aanother line"), std::string::npos) << log;
  EXPECT_EQ(log.find('\x1b'), std::string::npos);
  EXPECT_EQ(log.find("\nanother line"), std::string::npos);
  EXPECT_LT(log.find('\n', log.find("Reason given")) - log.find("Reason given"), 600u);
}

TEST_F(LiveDrive, WithoutInputNobodyIsHeard) {
  const TemporaryFolder folder;
  const std::string log = (folder.path() / "log").string();
  ASSERT_TRUE(Until([&] { return demo_.Ended().has_value(); })) << Log();  // the one that the other tests use
  ASSERT_TRUE(Until([&] { return goals_.getNumSubscribers() == 0 && points_.getNumSubscribers() == 0; }));
  std::vector<rosgraph_msgs::Clock> clock;
  const ros::Subscriber hear_clock = Hear("/clock", &clock);
  ChildProcess demo({CONTROLLER_BASE_DEMO_PROGRAM, "--realtime", "--no-input", "--start", "1.2,6.9,0", "--goal",
                     "3.0,6.9", "--out", (folder.path() / "out").string()},
                    {}, log);
  ASSERT_TRUE(Until([&] { return clock.size() > 20; })) << ReadFile(log);
  EXPECT_EQ(goals_.getNumSubscribers(), 0u);
  EXPECT_EQ(points_.getNumSubscribers(), 0u);
  EXPECT_EQ(demo.WaitForEnd(), 0) << ReadFile(log);
}

}  // namespace
}  // namespace controller_base_test
