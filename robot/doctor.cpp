#include "robot/doctor.h"

#include <XmlRpcClient.h>
#include <XmlRpcValue.h>
#include <ros/callback_queue.h>
#include <ros/master.h>
#include <ros/network.h>
#include <ros/param.h>
#include <ros/this_node.h>
#include <rosgraph_msgs/Clock.h>
#include <tf2/exceptions.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <sstream>
#include <utility>

#include "follower/format.h"
#include "robot/follower_parameters.h"
#include "robot/frames.h"
#include "robot/occupancy_map.h"

namespace controller_base::robot {
namespace {

using follower::Format;

constexpr double kFarthestLaser = 1.0;    // m from the robot's centre
constexpr double kLargestTilt = 0.1;      // rad of the laser
constexpr double kWallReach = 0.2;        // m; a hit as near to a wall of the map belongs to it
constexpr double kFewHitsOnWalls = 0.3;   // share; with less, the pose of the robot or of its laser is wrong
constexpr int kFewestHits = 20;           // for a verdict
constexpr double kSlowestMessages = 2.0;  // of a timeout; fewer messages in it are too few

using Names = std::vector<std::string>;

bool Contains(const Names& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Whether the node answers. The master goes on listing one that crashed.
bool Answers(const std::string& node) {
  XmlRpc::XmlRpcValue request;
  XmlRpc::XmlRpcValue response;
  XmlRpc::XmlRpcValue uri;
  request[0] = ros::this_node::getName();
  request[1] = node;
  std::string host;
  std::uint32_t port = 0;
  if (!ros::master::execute("lookupNode", request, response, uri, false) ||
      !ros::network::splitURI(std::string(uri), host, port)) {
    return false;
  }
  XmlRpc::XmlRpcClient client(host.c_str(), static_cast<int>(port), "/");
  XmlRpc::XmlRpcValue caller;
  caller[0] = ros::this_node::getName();
  return client.execute("getPid", caller, response);
}

// [[topic, [node, ...]], ...], as the master says it, without the nodes that are not `alive`.
std::vector<Names> ReadTopics(XmlRpc::XmlRpcValue& topics, const Names& alive) {
  std::vector<Names> result;
  for (int i = 0; i < topics.size(); ++i) {
    Names& names = result.emplace_back();
    names.push_back(topics[i][0]);
    for (int node = 0; node < topics[i][1].size(); ++node) {
      const std::string name = topics[i][1][node];
      if (Contains(alive, name)) {
        names.push_back(name);
      }
    }
  }
  return result;
}

// Which topic of that type the node is on; the first one.
std::string TopicOf(const std::vector<Names>& topics, const std::string& node, const std::string& type) {
  ros::master::V_TopicInfo types;
  ros::master::getTopics(types);
  for (const Names& topic : topics) {
    const bool has_type = std::any_of(types.begin(), types.end(), [&](const ros::master::TopicInfo& info) {
      return info.name == topic.front() && info.datatype == type;
    });
    if (has_type && std::find(topic.begin() + 1, topic.end(), node) != topic.end()) {
      return topic.front();
    }
  }
  return "";
}

double TiltOf(const geometry_msgs::Quaternion& q) {
  const double up = 1.0 - 2.0 * (q.x * q.x + q.y * q.y);
  return std::acos(std::clamp(std::abs(up), 0.0, 1.0));  // upside down is fine
}

}  // namespace

void Doctor::Arrivals::Count() {
  last = ros::WallTime::now();
  first = count == 0 ? last : first;
  ++count;
}

double Doctor::Arrivals::Rate() const {
  return count < 2 ? 0.0 : static_cast<double>(count - 1) / std::max(1e-9, (last - first).toSec());
}

Doctor::Doctor(std::string node) : node_(std::move(node)), parameters_(node_) {}

std::vector<Finding> Doctor::Examine(double seconds) {
  ReadGraph();
  if (!graph_.has_node) {
    Severe("node", "no node " + node_ + " runs at this master");
    return findings_;
  }
  ExamineParameters();
  Listen(seconds);
  ExamineClock();
  ExamineMap();
  ExamineScan();
  ExaminePose();
  ExamineBumper();
  ExamineCommand();
  return findings_;
}

void Doctor::ReadGraph() {
  XmlRpc::XmlRpcValue request;
  XmlRpc::XmlRpcValue response;
  XmlRpc::XmlRpcValue state;
  request[0] = ros::this_node::getName();
  if (!ros::master::execute("getSystemState", request, response, state, false)) {
    return;
  }
  Names nodes;
  ros::master::getNodes(nodes);
  nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [](const std::string& node) { return !Answers(node); }),
              nodes.end());
  publishers_ = ReadTopics(state[0], nodes);
  subscribers_ = ReadTopics(state[1], nodes);
  graph_.has_node = Contains(nodes, node_);
  graph_.scan = TopicOf(subscribers_, node_, "sensor_msgs/LaserScan");
  graph_.map = TopicOf(subscribers_, node_, "nav_msgs/OccupancyGrid");
  graph_.odometry = TopicOf(subscribers_, node_, "nav_msgs/Odometry");
  graph_.bumper = TopicOf(subscribers_, node_, "std_msgs/UInt8");
  graph_.command = TopicOf(publishers_, node_, "geometry_msgs/Twist");
}

std::vector<std::string> Doctor::Of(const std::string& topic, bool publishers) const {
  for (const Names& names : publishers ? publishers_ : subscribers_) {
    if (names.front() == topic) {
      return {names.begin() + 1, names.end()};
    }
  }
  return {};
}

// Where the odometry is the pose, another one from tf would alternate with it.
void Doctor::OnTransforms(const tf2_msgs::TFMessage& message, bool is_static) {
  const std::string posed = options_.pose_source == "odometry" ? options_.base_frame : "";
  for (const geometry_msgs::TransformStamped& transform : message.transforms) {
    if (WithoutSlash(transform.child_frame_id) != posed) {
      frames_.setTransform(transform, "doctor", is_static);
    }
  }
  NotePose();
}

// As the node does: where base_frame is in global_frame, whatever its message says of frames.
void Doctor::OnOdometry(const nav_msgs::Odometry& odometry) {
  odometry_.Count();
  odometry_frame_ = WithoutSlash(odometry.header.frame_id);
  frames_.setTransform(TransformOf(odometry, options_.global_frame, options_.base_frame), "doctor");
  NotePose();
}

void Doctor::NotePose() {
  try {
    const ros::Time stamp =
        frames_.lookupTransform(options_.global_frame, options_.base_frame, ros::Time()).header.stamp;
    if (stamp != last_pose_) {
      last_pose_ = stamp;
      poses_.Count();
    }
  } catch (const tf2::TransformException&) {
    // Reported at the end.
  }
}

void Doctor::OnScan(const sensor_msgs::LaserScan& scan) {
  scans_.Count();
  scan_ = scan;
  scan_age_ = ros::Time::now().toSec() - scan.header.stamp.toSec();
}

void Doctor::Listen(double seconds) {
  std::vector<ros::Subscriber> subscribers;
  const auto hear = [&](const std::string& topic, auto callback) {
    if (!topic.empty()) {
      subscribers.push_back(callback(topic));
    }
  };
  hear(graph_.scan, [this](const std::string& topic) {
    return topics_.subscribe<sensor_msgs::LaserScan>(
        topic, 100, [this](const sensor_msgs::LaserScan::ConstPtr& scan) { OnScan(*scan); });
  });
  hear(graph_.map, [this](const std::string& topic) {
    return topics_.subscribe<nav_msgs::OccupancyGrid>(
        topic, 1, [this](const nav_msgs::OccupancyGrid::ConstPtr& map) { map_message_ = *map; });
  });
  hear(graph_.bumper, [this](const std::string& topic) {
    return topics_.subscribe<std_msgs::UInt8>(topic, 100,
                                              [this](const std_msgs::UInt8::ConstPtr& /*bits*/) { bumpers_.Count(); });
  });
  hear(options_.pose_source == "odometry" ? graph_.odometry : "", [this](const std::string& topic) {
    return topics_.subscribe<nav_msgs::Odometry>(
        topic, 100, [this](const nav_msgs::Odometry::ConstPtr& odometry) { OnOdometry(*odometry); });
  });
  hear("/clock", [this](const std::string& topic) {
    return topics_.subscribe<rosgraph_msgs::Clock>(
        topic, 100, [this](const rosgraph_msgs::Clock::ConstPtr& /*clock*/) { clocks_.Count(); });
  });
  for (const bool is_static : {false, true}) {
    hear(is_static ? "/tf_static" : "/tf", [this, is_static](const std::string& topic) {
      return topics_.subscribe<tf2_msgs::TFMessage>(
          topic, 100,
          [this, is_static](const tf2_msgs::TFMessage::ConstPtr& message) { OnTransforms(*message, is_static); });
    });
  }
  const ros::WallTime end = ros::WallTime::now() + ros::WallDuration(seconds);
  while (ros::ok() && ros::WallTime::now() < end) {
    ros::getGlobalCallbackQueue()->callAvailable(ros::WallDuration(0.02));
  }
}

// What the node reads, and what it does not.
void Doctor::ExamineParameters() {
  try {
    options_ = ReadNodeOptions(parameters_);
    robot_radius_ = ReadFollowerParameters(parameters_).robot_radius;
  } catch (const std::exception& error) {
    Severe("parameter", error.what());
  }
  Names known = {"diagnostic_period"};
  std::istringstream table(ParameterTable());
  for (std::string line; std::getline(table, line);) {
    known.push_back(line.substr(0, line.find(' ')));
  }
  Names names;
  ros::param::getParamNames(names);
  for (const std::string& name : names) {
    if (name.rfind(node_ + "/", 0) == 0 && !Contains(known, name.substr(node_.size() + 1))) {
      Slight("parameter", name + " is none that the node reads");
    }
  }
}

void Doctor::ExamineClock() {
  bool uses_clock = false;
  ros::param::param("/use_sim_time", uses_clock, false);
  if (uses_clock && Of("/clock", true).empty()) {
    Severe("clock", "/use_sim_time is set, and nobody publishes /clock");
  } else if (uses_clock && clocks_.count < 2) {
    Severe("clock", "/use_sim_time is set, and /clock stands still");
  } else if (!uses_clock && !Of("/clock", true).empty()) {
    Slight("clock", Of("/clock", true).front() + " publishes /clock, and /use_sim_time is not set");
  }
}

// Whether a message arrived; else reports what is missing.
bool Doctor::IsSent(const std::string& subject, const std::string& topic, const std::string& type,
                    const Arrivals& arrivals) {
  if (topic.empty()) {
    Severe(subject, node_ + " has no topic of the type " + type);
  } else if (Of(topic, true).empty()) {
    Severe(subject, "nobody publishes " + topic + " (" + type + ")");
  } else if (arrivals.count == 0) {
    Severe(subject, Of(topic, true).front() + " sends nothing on " + topic);
  }
  return arrivals.count > 0;
}

void Doctor::ExamineMap() {
  if (!options_.use_map) {
    return;
  }
  Arrivals arrivals;
  arrivals.count = map_message_ ? 1 : 0;
  if (!IsSent("map", graph_.map, "nav_msgs/OccupancyGrid", arrivals)) {
    return;
  }
  std::string error;
  map_ = ReadOccupancyGrid(*map_message_, &error);
  if (!map_) {
    Severe("map", graph_.map + " is of no use: " + error);
  } else if (WithoutSlash(map_message_->header.frame_id) != options_.global_frame) {
    Severe("map", graph_.map + " is in frame \"" + map_message_->header.frame_id + "\", and global_frame is \"" +
                      options_.global_frame + "\"");
  } else if (map_->grid.resolution < 0.005 || map_->grid.resolution > 0.5) {
    Slight("map", Format("its cells are %g m wide; 0.005 to 0.5 m are plausible", map_->grid.resolution));
  }
}

void Doctor::ExamineScan() {
  if (!IsSent("scan", graph_.scan, "sensor_msgs/LaserScan", scans_)) {
    return;
  }
  if (scans_.Rate() * options_.scan_timeout < kSlowestMessages - 0.5) {
    Severe("scan", Format("%s comes at %.1f Hz, too slowly for scan_timeout %g s", graph_.scan.c_str(), scans_.Rate(),
                          options_.scan_timeout));
  }
  if (std::abs(scan_age_) > options_.longest_delay) {
    Severe("scan", Format("%s comes %.2f s after its stamp; longest_delay is %g s", graph_.scan.c_str(), scan_age_,
                          options_.longest_delay));
  }
  ExamineScanContent();
  ExamineMount();
}

void Doctor::ExamineScanContent() {
  const auto count = [this](auto is) {
    return static_cast<std::size_t>(std::count_if(scan_->ranges.begin(), scan_->ranges.end(), is));
  };
  const std::size_t numbers = count([](float range) { return !std::isnan(range); });
  if (numbers == 0) {
    Severe("scan", Format("none of the %zu ranges of %s is a number", scan_->ranges.size(), graph_.scan.c_str()));
  }
  if (!(scan_->range_max > scan_->range_min) || scan_->angle_increment == 0.0F) {
    Severe("scan", Format("%s has ranges from %g to %g m and an angle_increment of %g rad", graph_.scan.c_str(),
                          static_cast<double>(scan_->range_min), static_cast<double>(scan_->range_max),
                          static_cast<double>(scan_->angle_increment)));
  }
}

// Where the laser is on the robot.
void Doctor::ExamineMount() {
  std::string error;
  const auto laser = OriginIn(frames_, options_.base_frame, scan_->header.frame_id, ros::Time(), &error);
  if (!laser) {
    Severe("frame",
           "no transform from " + options_.base_frame + " to the laser's \"" + scan_->header.frame_id + "\": " + error);
    return;
  }
  const double distance = std::hypot(laser->position.x, laser->position.y);
  if (distance > kFarthestLaser) {
    Slight("frame", Format("the laser is %.2f m from %s", distance, options_.base_frame.c_str()));
  }
  if (TiltOf(laser->orientation) > kLargestTilt) {
    Slight("frame", Format("the laser is tilted by %.2f rad", TiltOf(laser->orientation)));
  }
  const auto own = std::find_if(scan_->ranges.begin(), scan_->ranges.end(), [&](float range) {
    return range >= scan_->range_min && static_cast<double>(range) + distance < robot_radius_;
  });
  if (own != scan_->ranges.end()) {
    Slight("scan", Format("it sees something at %.2f m, within the robot's radius of %g m", static_cast<double>(*own),
                          robot_radius_));
  }
}

void Doctor::ExaminePose() {
  const bool is_odometry = options_.pose_source == "odometry";
  if (is_odometry && !IsSent("pose", graph_.odometry, "nav_msgs/Odometry", odometry_)) {
    return;
  }
  const std::string frames = options_.global_frame + " to " + options_.base_frame;
  std::string error;
  if (!OriginIn(frames_, options_.global_frame, options_.base_frame, ros::Time(), &error)) {
    Severe("pose", "no transform from " + frames + ": " + error);
    return;
  }
  if (poses_.Rate() * options_.pose_timeout < kSlowestMessages - 0.5) {
    Severe("pose", Format("the transform from %s is renewed at %.1f Hz, too slowly for pose_timeout %g s",
                          frames.c_str(), poses_.Rate(), options_.pose_timeout));
    return;
  }
  if (is_odometry && odometry_frame_ != options_.global_frame) {
    Slight("pose", graph_.odometry + " is in frame \"" + odometry_frame_ +
                       "\", and the node takes it for global_frame \"" + options_.global_frame + "\"");
  }
  const double age = ros::Time::now().toSec() - last_pose_.toSec();
  if (std::abs(age) > options_.longest_delay + options_.pose_timeout) {
    Severe("pose", Format("the transform from %s is %.2f s old", frames.c_str(), age));
    return;
  }
  ExaminePlace();
}

// Where the robot is on the map.
void Doctor::ExaminePlace() {
  std::string error;
  const auto robot = OriginIn(frames_, options_.global_frame, options_.base_frame, ros::Time(), &error);
  if (!map_ || !robot) {
    return;
  }
  const auto cell = map_->grid.IndexAt(robot->position.x, robot->position.y);
  if (!cell) {
    Severe("pose", Format("the robot is at (%.2f, %.2f), off the map", robot->position.x, robot->position.y));
  } else if (map_->bytes[*cell] == kLethal) {
    Severe("pose", Format("the robot is at (%.2f, %.2f), in a wall of the map", robot->position.x, robot->position.y));
  }
  if (!scan_) {
    return;
  }
  const auto laser = OriginIn(frames_, options_.global_frame, scan_->header.frame_id, ros::Time(), &error);
  const double share = laser ? ShareOfHitsOnWalls(*laser) : 1.0;
  if (share < kFewHitsOnWalls) {
    Slight("pose", Format("%.0f %% of what the laser sees is on the map: is the estimated pose right, and the laser "
                          "mounted as /tf says?",
                          100.0 * share));
  }
}

double Doctor::ShareOfHitsOnWalls(const geometry_msgs::Pose& laser) const {
  const double yaw = 2.0 * std::atan2(laser.orientation.z, laser.orientation.w);
  const int reach = static_cast<int>(std::ceil(kWallReach / map_->grid.resolution));
  int hits = 0;
  int on_walls = 0;
  for (std::size_t i = 0; i < scan_->ranges.size(); ++i) {
    const double range = static_cast<double>(scan_->ranges[i]);
    if (!(range >= static_cast<double>(scan_->range_min) && range < static_cast<double>(scan_->range_max))) {
      continue;
    }
    const double angle = yaw + static_cast<double>(scan_->angle_min) +
                         static_cast<double>(i) * static_cast<double>(scan_->angle_increment);
    bool is_on_wall = false;
    for (int dy = -reach; dy <= reach && !is_on_wall; ++dy) {
      for (int dx = -reach; dx <= reach && !is_on_wall; ++dx) {
        const auto cell = map_->grid.IndexAt(laser.position.x + range * std::cos(angle) + dx * map_->grid.resolution,
                                             laser.position.y + range * std::sin(angle) + dy * map_->grid.resolution);
        is_on_wall = cell && map_->bytes[*cell] == kLethal;
      }
    }
    ++hits;
    on_walls += is_on_wall ? 1 : 0;
  }
  return hits < kFewestHits ? 1.0 : static_cast<double>(on_walls) / hits;
}

void Doctor::ExamineBumper() {
  if (Of(graph_.bumper, true).empty()) {
    Slight("bumper", "nobody publishes " + graph_.bumper + " (std_msgs/UInt8): contacts are not felt");
  } else if (options_.bumper_timeout > 0.0 && bumpers_.Rate() * options_.bumper_timeout < kSlowestMessages - 0.5) {
    Severe("bumper", Format("%s comes at %.1f Hz, too slowly for bumper_timeout %g s", graph_.bumper.c_str(),
                            bumpers_.Rate(), options_.bumper_timeout));
  }
}

void Doctor::ExamineCommand() {
  if (Of(graph_.command, false).empty()) {
    Severe("cmd_vel", "nobody listens to " + graph_.command + " (geometry_msgs/Twist): the wheels hear nothing");
  }
  for (const std::string& other : Of(graph_.command, true)) {
    if (other != node_) {
      Slight("cmd_vel", other + " publishes " + graph_.command + " as well");
    }
  }
}

}  // namespace controller_base::robot
