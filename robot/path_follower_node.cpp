#include "robot/path_follower_node.h"

#include <geometry_msgs/Twist.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Odometry.h>
#include <ros/console.h>
#include <ros/init.h>
#include <ros/this_node.h>
#include <sensor_msgs/LaserScan.h>

#include <algorithm>
#include <cstdint>

#include "recording/output_error.h"
#include "robot/follower_parameters.h"
#include "robot/frames.h"
#include "robot/occupancy_map.h"

namespace controller_base::robot {
namespace {

using follower::EventKind;

constexpr double kLongestWait = 0.01;     // s of the wall's clock, for messages
constexpr double kDiagnosisPeriod = 1.0;  // s of the wall's clock
constexpr double kLocalMapPeriod = 0.2;   // s of the wall's clock
constexpr std::uint32_t kScanQueue = 10;  // scans that come while a path is planned

// Cost bytes in the numbers that map displays colour as costs: 100 obstacle, 99 where the robot's centre cannot be, 98
// to 1 growing with the bytes 127 to 1, -1 unknown.
std::int8_t ShownCost(std::uint8_t cost) {
  constexpr int kHighestCost = 127;
  constexpr int kHighestShown = 98;
  if (cost <= kHighestCost) {
    return static_cast<std::int8_t>((cost * kHighestShown + kHighestCost - 1) / kHighestCost);
  }
  return static_cast<std::int8_t>(cost == kUnknown ? -1 : cost == kLethal ? 100 : 99);
}

nav_msgs::OccupancyGrid ToMessage(const GridBytes& costs, const std_msgs::Header& header) {
  nav_msgs::OccupancyGrid message;
  message.header = header;
  message.info.resolution = static_cast<float>(costs.grid.resolution);
  message.info.width = static_cast<std::uint32_t>(costs.grid.size_x);
  message.info.height = static_cast<std::uint32_t>(costs.grid.size_y);
  message.info.origin.position.x = costs.grid.origin_x;
  message.info.origin.position.y = costs.grid.origin_y;
  message.info.origin.orientation.w = 1.0;
  message.data.resize(costs.bytes.size());
  std::transform(costs.bytes.begin(), costs.bytes.end(), message.data.begin(), ShownCost);
  return message;
}

}  // namespace

PathFollowerNode::PathFollowerNode()
    : options_(ReadNodeOptions(private_)),
      inputs_(options_, ReadFollowerParameters(private_).robot_radius),
      drive_(private_),
      goal_drive_(&drive_, {options_.blocked_timeout, options_.replan_pause}) {
  Record();
  Advertise();
  Subscribe();
}

// A robot that cannot be recorded drives nevertheless.
void PathFollowerNode::Record() {
  if (options_.record.empty()) {
    return;
  }
  try {
    recorder_.emplace(options_.record);
    drive_.SetObserver(&*recorder_);
  } catch (const recording::OutputError& error) {
    ROS_ERROR("nothing is recorded: %s", error.what());
  }
}

void PathFollowerNode::Advertise() {
  command_ = topics_.advertise<geometry_msgs::Twist>("cmd_vel", 1);
  local_map_ = private_.advertise<nav_msgs::OccupancyGrid>("local_map", 1);
  using Trigger = std_srvs::Trigger;
  services_.push_back(private_.advertiseService<Trigger::Request, Trigger::Response>(
      "cancel", [this](const Trigger::Request&, Trigger::Response& response) { return Cancel(&response); }));
  services_.push_back(private_.advertiseService<Trigger::Request, Trigger::Response>(
      "reset", [this](const Trigger::Request&, Trigger::Response& response) { return Reset(&response); }));
  diagnostics_.setHardwareID("none");
  for (const char* input : {"clock", "map", "pose", "scan", "bumper"}) {
    diagnostics_.add(input,
                     [this, input](diagnostic_updater::DiagnosticStatusWrapper& status) { Report(input, &status); });
  }
  diagnostics_.add("drive", [this](diagnostic_updater::DiagnosticStatusWrapper& status) {
    const bool failed = drive_.state() == DriveState::kFailed;
    status.summary(failed ? status.WARN : status.OK, failed ? drive_.reason() : "");
    status.add("on its way", goal_drive_.IsActive());
  });
}

void PathFollowerNode::Subscribe() {
  listener_ = std::make_unique<tf2_ros::TransformListener>(*inputs_.frames(), topics_, /*spin_thread=*/false);
  subscribers_.push_back(topics_.subscribe<nav_msgs::OccupancyGrid>(
      "map", 1, [this](const nav_msgs::OccupancyGrid::ConstPtr& map) { inputs_.OnMap(*map); }));
  subscribers_.push_back(topics_.subscribe<sensor_msgs::LaserScan>(
      "scan", kScanQueue, [this](const sensor_msgs::LaserScan::ConstPtr& scan) { inputs_.OnScan(*scan); }));
  subscribers_.push_back(topics_.subscribe<std_msgs::UInt8>(
      "bumper", 10, [this](const std_msgs::UInt8::ConstPtr& bumper) { OnBumper(*bumper); }));
  subscribers_.push_back(topics_.subscribe<geometry_msgs::PointStamped>(
      "contact_point", 10, [this](const geometry_msgs::PointStamped::ConstPtr& point) { OnContactPoint(*point); }));
  subscribers_.push_back(topics_.subscribe<geometry_msgs::PoseStamped>(
      "move_base_simple/goal", 1, [this](const geometry_msgs::PoseStamped::ConstPtr& goal) { OnGoal(*goal); }));
  subscribers_.push_back(
      topics_.subscribe<nav_msgs::Path>("plan", 1, [this](const nav_msgs::Path::ConstPtr& plan) { OnPlan(*plan); }));
  if (options_.pose_source == "odometry") {
    subscribers_.push_back(topics_.subscribe<nav_msgs::Odometry>(
        "odom", 10, [this](const nav_msgs::Odometry::ConstPtr& odometry) { inputs_.OnOdometry(*odometry); }));
  }
}

void PathFollowerNode::OnGoal(const geometry_msgs::PoseStamped& goal) {
  std::string error;
  const auto here = PoseIn(*inputs_.frames(), options_.global_frame, goal, &error);
  if (!here) {
    drive_.Tell(EventKind::kNoPath, "a goal is ignored: " + error);
    return;
  }
  goal_drive_.GoTo(*here);
}

void PathFollowerNode::OnPlan(const nav_msgs::Path& plan) {
  std::string error;
  const auto here = PathIn(*inputs_.frames(), options_.global_frame, plan, &error);
  if (!here) {
    drive_.Tell(EventKind::kNoPath, "a path is ignored: " + error);
    return;
  }
  goal_drive_.Follow(*here);
}

void PathFollowerNode::OnBumper(const std_msgs::UInt8& bumper) {
  const ros::Time now = ros::Time::now();
  inputs_.OnBumper(now);
  drive_.Touch(presses_.Update(bumper.data, now), now);
}

void PathFollowerNode::OnContactPoint(const geometry_msgs::PointStamped& point) {
  const ros::Time now = ros::Time::now();
  geometry_msgs::PoseStamped contact;
  contact.header = point.header;
  contact.pose.position = point.point;
  contact.pose.orientation.w = 1.0;
  std::string error;
  const auto on_robot = PoseIn(*inputs_.frames(), options_.base_frame, contact, &error);
  if (!on_robot) {
    drive_.Tell(EventKind::kContact, "a contact point is ignored: " + error);
    return;
  }
  inputs_.OnBumper(now);
  const geometry_msgs::Point& place = on_robot->pose.position;
  drive_.Touch(point_presses_.Update(SectorOfPoint(place.x, place.y), now), now);
}

bool PathFollowerNode::Cancel(std_srvs::Trigger::Response* response) {
  response->success = 1;
  response->message = goal_drive_.IsActive() ? "cancelled" : "the robot was not on its way";
  Stand();
  goal_drive_.Stop();
  return true;
}

bool PathFollowerNode::Reset(std_srvs::Trigger::Response* response) {
  Cancel(response);
  inputs_.Forget();
  presses_ = BumperPresses();
  point_presses_ = BumperPresses();
  response->message = "everything but the map is forgotten";
  return true;
}

void PathFollowerNode::Run() {
  while (ros::ok()) {
    TickRecorder();
    ros::getGlobalCallbackQueue()->callAvailable(ros::WallDuration(kLongestWait));
    TickRecorder();
    const ros::Time now = ros::Time::now();
    inputs_.Update(now, ros::SteadyTime::now());
    const bool is_in_danger = may_move_ && !inputs_.Problem().empty();
    if (IsCycleDue(now) || is_in_danger) {
      Cycle(now);
    }
  }
}

void PathFollowerNode::TickRecorder() const {
  if (recorder_) {
    recorder_->Tick();
  }
}

bool PathFollowerNode::IsCycleDue(const ros::Time& now) {
  const ros::WallTime wall = ros::WallTime::now();
  const double period = 1.0 / options_.controller_frequency;
  const double since = now.toSec() - last_cycle_.toSec();
  if (since >= 0.0 && since < period && (wall - last_wall_cycle_).toSec() < period) {
    return false;
  }
  last_cycle_ = now;
  last_wall_cycle_ = wall;
  return true;
}

void PathFollowerNode::Cycle(const ros::Time& now) {
  const std::string problem = inputs_.Problem();
  const bool is_news = problem.empty() != problem_.empty();
  problem_ = problem;
  if (!problem_.empty()) {
    Stand();
    if (goal_drive_.IsActive()) {
      drive_.Show("waiting", problem_);
    }
  } else if (goal_drive_.IsActive()) {
    Drive(now);
  }
  const ros::WallTime wall = ros::WallTime::now();
  if (is_news || wall >= next_diagnosis_) {
    next_diagnosis_ = wall + ros::WallDuration(kDiagnosisPeriod);
    diagnostics_.force_update();
  }
  if (wall >= next_map_) {
    next_map_ = wall + ros::WallDuration(kLocalMapPeriod);
    PublishMap();
  }
}

void PathFollowerNode::Drive(const ros::Time& now) {
  if (goal_drive_.WantsPlan(now)) {
    Stand();
    goal_drive_.Plan(inputs_.robot(), *inputs_.map(), now);
    return;  // the inputs have aged while the path was planned
  }
  const geometry_msgs::Twist command = goal_drive_.Cycle(inputs_.robot(), inputs_.map());
  may_move_ = goal_drive_.IsActive();
  command_.publish(command);
}

// Tells the wheels to stand once more after the last command to move, and as long as the robot is on its way; then
// somebody else may drive it.
void PathFollowerNode::Stand() {
  if (may_move_ || goal_drive_.IsActive()) {
    command_.publish(geometry_msgs::Twist());
  }
  may_move_ = false;
}

void PathFollowerNode::PublishMap() {
  if (local_map_.getNumSubscribers() > 0 && inputs_.map() != nullptr && problem_.empty()) {
    const geometry_msgs::PoseStamped& robot = inputs_.robot();
    local_map_.publish(
        ToMessage(inputs_.map()->LocalAround(robot.pose.position.x, robot.pose.position.y).costs, robot.header));
  }
}

void PathFollowerNode::Report(const std::string& input, diagnostic_updater::DiagnosticStatusWrapper* status) const {
  const auto& health = inputs_.health();
  const auto found =
      std::find_if(health.begin(), health.end(), [&](const NodeInputs::Health& one) { return one.input == input; });
  if (found == health.end()) {
    status->summary(status->OK, "not watched");
  } else if (found->problem.empty()) {
    status->summary(status->OK, "it comes");
  } else {
    status->summary(status->ERROR, found->problem);
  }
}

}  // namespace controller_base::robot
