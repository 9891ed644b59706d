// The demo's world as a robot that speaks topics. What it publishes, subscribes to and reads stands in
// docs/simulated-robot.md.
#include <geometry_msgs/PointStamped.h>
#include <geometry_msgs/PoseWithCovarianceStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_msgs/OccupancyGrid.h>
#include <ros/node_handle.h>
#include <ros/ros.h>
#include <rosgraph_msgs/Clock.h>
#include <std_msgs/Float64.h>
#include <std_msgs/String.h>
#include <std_msgs/UInt8.h>
#include <std_srvs/SetBool.h>
#include <tf2_msgs/TFMessage.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "follower/printable.h"
#include "simulation/map_file.h"
#include "simulation/node/simulated_robot.h"

namespace controller_base::simulation {
namespace {

constexpr double kStep = 0.02;          // s
constexpr int kStepsPerScan = 5;        // 10 Hz
constexpr int kStepsPerMarkers = 50;    // 1 Hz
constexpr int kStepsPerBumper = 2;      // 25 Hz
constexpr double kClockStart = 1000.0;  // s
constexpr double kDroppedBox = 0.3;     // m, the side of a box that somebody drops by click

double Number(const XmlRpc::XmlRpcValue& value) {
  XmlRpc::XmlRpcValue copy = value;  // its conversions are not const
  return copy.getType() == XmlRpc::XmlRpcValue::TypeInt ? static_cast<int>(copy) : static_cast<double>(copy);
}

double NumberOr(const XmlRpc::XmlRpcValue& record, const std::string& name, double otherwise) {
  return record.hasMember(name) ? Number(record[name]) : otherwise;
}

// {x: m, y: m, length: m, width: m, yaw: rad} or {x: m, y: m, radius: m}; seen: false for what lies below the laser.
Obstacle ReadObstacle(const XmlRpc::XmlRpcValue& record) {
  Obstacle obstacle;
  obstacle.center = {Number(record["x"]), Number(record["y"])};
  obstacle.yaw = NumberOr(record, "yaw", 0.0);
  obstacle.length = NumberOr(record, "length", kDroppedBox);
  obstacle.width = NumberOr(record, "width", kDroppedBox);
  obstacle.radius = NumberOr(record, "radius", 0.0);
  if (record.hasMember("seen")) {
    XmlRpc::XmlRpcValue seen = record["seen"];
    obstacle.low = !static_cast<bool>(seen);
  }
  return obstacle;
}

std::vector<Obstacle> ReadObstacles(const ros::NodeHandle& parameters) {
  XmlRpc::XmlRpcValue records;
  std::vector<Obstacle> obstacles;
  if (parameters.getParam("obstacles", records)) {
    for (int i = 0; i < records.size(); ++i) {
      obstacles.push_back(ReadObstacle(records[i]));
    }
  }
  return obstacles;
}

SimulatedRobotOptions ReadOptions(const ros::NodeHandle& parameters) {
  SimulatedRobotOptions options;
  if (parameters.param("harsh", false)) {
    MakeHarsh(&options);
  }
  parameters.param("start_x", options.start.x, 0.0);
  parameters.param("start_y", options.start.y, 0.0);
  parameters.param("start_yaw", options.start.yaw, 0.0);
  parameters.param("laser_range", options.laser_range, options.laser_range);
  parameters.param("range_noise", options.range_noise, options.range_noise);
  parameters.param("odometry_scale_error", options.odometry_scale_error, options.odometry_scale_error);
  parameters.param("odometry_turn_drift", options.odometry_turn_drift, options.odometry_turn_drift);
  parameters.param("localisation_period", options.localisation_period, options.localisation_period);
  bool off_grid = options.shapes == Shapes::kTrue;
  parameters.param("off_grid", off_grid, off_grid);
  options.shapes = off_grid ? Shapes::kTrue : Shapes::kCells;
  parameters.param("lasting_press", options.brakes, options.brakes);
  parameters.param("command_delay", options.command_delay, options.command_delay);
  int seed = 1;
  parameters.param("seed", seed, seed);
  options.seed = static_cast<unsigned int>(seed);
  return options;
}

costmap_2d::Costmap2D ReadMap(const ros::NodeHandle& parameters) {
  std::string file;
  if (!parameters.getParam("map_file", file)) {
    throw std::runtime_error("the parameter map_file is missing; it names the YAML file of a map");
  }
  return LoadMap(file);
}

// As map_server sends it: 100 a wall, 0 free, -1 unknown.
nav_msgs::OccupancyGrid MapMessage(const costmap_2d::Costmap2D& map) {
  nav_msgs::OccupancyGrid message;
  message.header.frame_id = "map";
  message.info.resolution = static_cast<float>(map.getResolution());
  message.info.width = map.getSizeInCellsX();
  message.info.height = map.getSizeInCellsY();
  message.info.origin.position.x = map.getOriginX();
  message.info.origin.position.y = map.getOriginY();
  message.info.origin.orientation.w = 1.0;
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < map.getSizeInCellsX(); ++mx) {
      const unsigned char cost = map.getCost(mx, my);
      message.data.push_back(static_cast<std::int8_t>(cost == costmap_2d::LETHAL_OBSTACLE ? 100
                                                      : cost == costmap_2d::FREE_SPACE    ? 0
                                                                                          : -1));
    }
  }
  return message;
}

class SimulatedRobotNode {
 public:
  SimulatedRobotNode()
      : map_(ReadMap(parameters_)), robot_(map_, ReadObstacles(parameters_), ReadOptions(parameters_)) {
    parameters_.param("publish_clock", publishes_clock_, false);
    parameters_.param("publish_map", publishes_map_, false);
    parameters_.param("speed", speed_, 1.0);
    Advertise();
    Subscribe();
  }

  void Run() {
    ros::WallRate rate(speed_ / kStep);
    for (std::int64_t step = 0; ros::ok(); ++step) {
      ros::spinOnce();
      robot_.Step(kStep);
      Publish(step, Stamp(step));
      rate.sleep();
    }
  }

 private:
  void Advertise() {
    publishers_["scan"] = topics_.advertise<sensor_msgs::LaserScan>("scan", 1);
    publishers_["odom"] = topics_.advertise<nav_msgs::Odometry>("odom", 1);
    publishers_["tf"] = topics_.advertise<tf2_msgs::TFMessage>("/tf", 10);
    publishers_["bumper"] = topics_.advertise<std_msgs::UInt8>("bumper", 10);
    publishers_["ground_truth"] = topics_.advertise<nav_msgs::Odometry>("ground_truth", 1);
    publishers_["clearance"] = topics_.advertise<std_msgs::Float64>("clearance", 10);
    publishers_["touched"] = topics_.advertise<std_msgs::String>("touched", 10);
    if (publishes_map_) {
      publishers_["map"] = topics_.advertise<nav_msgs::OccupancyGrid>("map", 1, true);
      publishers_["map"].publish(MapMessage(map_));
    }
    publishers_["obstacles"] = topics_.advertise<visualization_msgs::MarkerArray>("obstacles", 1, true);
    if (publishes_clock_) {
      publishers_["clock"] = topics_.advertise<rosgraph_msgs::Clock>("/clock", 10);
    }
    for (const auto& publisher : publishers_) {
      AdvertiseSwitch(publisher.first);
    }
  }

  void AdvertiseSwitch(const std::string& output) {
    is_on_[output] = true;
    switches_.push_back(parameters_.advertiseService<std_srvs::SetBool::Request, std_srvs::SetBool::Response>(
        output, [this, output](const std_srvs::SetBool::Request& request, std_srvs::SetBool::Response& response) {
          is_on_[output] = request.data;
          response.success = 1;
          return true;
        }));
  }

  void Subscribe() {
    subscribers_.push_back(topics_.subscribe<geometry_msgs::Twist>(
        "cmd_vel", 1, [this](const geometry_msgs::Twist::ConstPtr& command) { robot_.Take(*command); }));
    subscribers_.push_back(topics_.subscribe<geometry_msgs::PointStamped>(
        "clicked_point", 10, [this](const geometry_msgs::PointStamped::ConstPtr& point) { Drop(*point); }));
    subscribers_.push_back(topics_.subscribe<geometry_msgs::PoseWithCovarianceStamped>(
        "initialpose", 10,
        [this](const geometry_msgs::PoseWithCovarianceStamped::ConstPtr& pose) { Place(pose->pose.pose); }));
  }

  void Drop(const geometry_msgs::PointStamped& point) {
    Obstacle box;
    box.center = {point.point.x, point.point.y};
    box.length = box.width = kDroppedBox;
    robot_.Add(box);
  }

  void Place(const geometry_msgs::Pose& pose) {
    robot_.Place({pose.position.x, pose.position.y, 2.0 * std::atan2(pose.orientation.z, pose.orientation.w)});
  }

  // The wall's clock, or a clock of its own, which it publishes.
  ros::Time Stamp(std::int64_t step) const {
    return publishes_clock_ ? ros::Time(kClockStart + kStep * static_cast<double>(step)) : ros::Time::now();
  }

  template <typename Message>
  void Send(const std::string& output, const Message& message) {
    if (is_on_[output]) {
      publishers_[output].publish(message);
    }
  }

  void Publish(std::int64_t step, const ros::Time& stamp) {
    if (publishes_clock_) {
      rosgraph_msgs::Clock clock;
      clock.clock = stamp;
      Send("clock", clock);
    }
    tf2_msgs::TFMessage transforms;
    transforms.transforms = robot_.Transforms(stamp);
    Send("tf", transforms);
    Send("odom", robot_.Odometry(stamp));
    Send("ground_truth", robot_.GroundTruth(stamp));
    PublishSensors(step, stamp);
    for (const std::string& touch : robot_.TakeTouches()) {
      std_msgs::String message;
      message.data = touch;
      Send("touched", message);
    }
  }

  void PublishSensors(std::int64_t step, const ros::Time& stamp) {
    if (step % kStepsPerBumper == 0) {
      std_msgs::UInt8 bumper;
      bumper.data = robot_.TakeBumperBits();
      Send("bumper", bumper);
    }
    if (step % kStepsPerScan == 0) {
      Send("scan", robot_.Scan(stamp));
      std_msgs::Float64 clearance;
      clearance.data = robot_.Clearance();
      Send("clearance", clearance);
    }
    if (step % kStepsPerMarkers == 0) {
      Send("obstacles", robot_.Markers(stamp));
    }
  }

  ros::NodeHandle topics_;
  ros::NodeHandle parameters_{"~"};
  costmap_2d::Costmap2D map_;
  SimulatedRobot robot_;
  bool publishes_clock_ = false;
  bool publishes_map_ = false;
  double speed_ = 1.0;  // of the robot's time against the wall's
  std::map<std::string, ros::Publisher> publishers_;
  std::map<std::string, bool> is_on_;
  std::vector<ros::ServiceServer> switches_;
  std::vector<ros::Subscriber> subscribers_;
};

}  // namespace
}  // namespace controller_base::simulation

int main(int argc, char** argv) {
  ros::init(argc, argv, "simulated_robot");
  try {
    controller_base::simulation::SimulatedRobotNode().Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "simulated_robot_node: %s\n", controller_base::follower::Printable(error.what()).c_str());
    return 1;
  }
  return 0;
}
