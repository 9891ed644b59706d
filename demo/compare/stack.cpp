#include "demo/compare/stack.h"

#include <actionlib_msgs/GoalStatusArray.h>
#include <geometry_msgs/PoseStamped.h>
#include <nav_msgs/Odometry.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/param.h>
#include <std_msgs/Float64.h>
#include <std_msgs/String.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>

#include "demo/watch/child_process.h"
#include "follower/format.h"
#include "follower/path_geometry.h"
#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;
using actionlib_msgs::GoalStatus;

constexpr double kStartTimeout = 60.0;   // s of the wall's clock
constexpr double kLeastTime = 60.0;      // s
constexpr double kTimePerMetre = 6.0;    // s
constexpr double kGoalTolerance = 0.25;  // m
constexpr double kPoll = 0.02;           // s of the wall's clock

std::string ProgramOf(const std::string& package, const std::string& name) {
  const char* prefixes = std::getenv("CMAKE_PREFIX_PATH");
  std::istringstream list(prefixes == nullptr ? "" : prefixes);
  for (std::string prefix; std::getline(list, prefix, ':');) {
    const fs::path program = fs::path(prefix) / "lib" / package / name;
    if (fs::exists(program)) {
      return program.string();
    }
  }
  throw StackError(name + " of the package " + package + " is in none of the workspaces of $CMAKE_PREFIX_PATH");
}

XmlRpc::XmlRpcValue ToParameter(const std::vector<simulation::Obstacle>& obstacles) {
  XmlRpc::XmlRpcValue list;
  list.setSize(static_cast<int>(obstacles.size()));
  for (int i = 0; i < list.size(); ++i) {
    const simulation::Obstacle& obstacle = obstacles[static_cast<std::size_t>(i)];
    list[i]["x"] = obstacle.center.x;
    list[i]["y"] = obstacle.center.y;
    list[i]["yaw"] = obstacle.yaw;
    list[i]["length"] = obstacle.length;
    list[i]["width"] = obstacle.width;
    list[i]["radius"] = obstacle.radius;
    list[i]["seen"] = !obstacle.low;
  }
  return list;
}

void SetRobotParameters(const Scene& scene, const StackOptions& options) {
  const simulation::DriveSetup& setup = scene.world.setup;
  ros::param::del("/simulated_robot");
  ros::param::set("/simulated_robot/map_file", fs::absolute(setup.map_file).string());
  ros::param::set("/simulated_robot/start_x", setup.start.x);
  ros::param::set("/simulated_robot/start_y", setup.start.y);
  ros::param::set("/simulated_robot/start_yaw", setup.start.yaw);
  ros::param::set("/simulated_robot/obstacles", ToParameter(setup.obstacles));
  ros::param::set("/simulated_robot/seed", static_cast<int>(setup.seed));
  ros::param::set("/simulated_robot/harsh", true);
  ros::param::set("/simulated_robot/publish_map", true);
  ros::param::set("/simulated_robot/publish_clock", true);
  ros::param::set("/simulated_robot/speed", options.speed);
}

void LoadPlannerParameters(const std::string& planner, const StackOptions& options) {
  ros::param::del("/move_base");
  std::vector<std::string> files{"costmaps", "move_base"};
  if (planner == "dwa") {
    files.emplace_back("dwa");
  }
  for (const std::string& name : files) {
    const std::string file = options.configuration + "/" + name + ".yaml";
    if (ChildProcess({"rosparam", "load", file, "/move_base"}, {}, options.logs + "/rosparam.log").WaitForEnd() != 0) {
      throw StackError("rosparam cannot load " + file + "; see " + options.logs + "/rosparam.log");
    }
  }
}

// Of a process that runs.
double ProcessorSeconds(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  std::getline(file, text);
  std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
  constexpr int kBeforeUserTime = 11;  // fields after the name
  std::string skipped;
  for (int i = 0; i < kBeforeUserTime; ++i) {
    fields >> skipped;
  }
  double user = 0.0;
  double system = 0.0;
  fields >> user >> system;
  return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

int LateCycles(const std::string& log) {
  std::ifstream file(log);
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    count += line.find("Control loop missed") != std::string::npos ? 1 : 0;
  }
  return count;
}

// What the topics of robot and move_base tell.
class Listener {
 public:
  Listener() {
    node_.setCallbackQueue(&queue_);
    goals_ = node_.advertise<geometry_msgs::PoseStamped>("/move_base_simple/goal", 1);
    subscribers_ = {node_.subscribe("/ground_truth", 100, &Listener::OnTruth, this),
                    node_.subscribe("/touched", 100, &Listener::OnTouch, this),
                    node_.subscribe("/clearance", 100, &Listener::OnClearance, this),
                    node_.subscribe("/move_base/status", 100, &Listener::OnStatus, this)};
  }

  void Spin() { queue_.callAvailable(ros::WallDuration(kPoll)); }

  bool IsReady() const { return is_up_ && time_ > 0.0 && goals_.getNumSubscribers() > 0; }

  void SendGoal(const follower::Pose2d& goal) {
    geometry_msgs::PoseStamped message;
    message.header.frame_id = "map";
    message.pose.position.x = goal.x;
    message.pose.position.y = goal.y;
    message.pose.orientation.z = std::sin(0.5 * goal.yaw);
    message.pose.orientation.w = std::cos(0.5 * goal.yaw);
    began_ = time_;
    goals_.publish(message);
  }

  double Elapsed() const { return time_ - began_; }
  // Once the goal is over.
  const std::optional<GoalStatus>& end() const { return end_; }
  const nav_core::math::Vec2d& place() const { return place_; }

  void Tell(ComparedDrive* drive) const {
    drive->time = Elapsed();
    drive->driven = driven_;
    drive->touched_seen = touched_seen_;
    drive->touched_hidden = touched_hidden_;
    drive->closest = closest_;
  }

 private:
  void OnTruth(const nav_msgs::Odometry& truth) {
    const nav_core::math::Vec2d place(truth.pose.pose.position.x, truth.pose.pose.position.y);
    driven_ += time_ > 0.0 ? follower::Distance(place_, place) : 0.0;
    place_ = place;
    time_ = truth.header.stamp.toSec();
  }
  void OnTouch(const std_msgs::String& touch) { ++(touch.data == "seen" ? touched_seen_ : touched_hidden_); }
  void OnClearance(const std_msgs::Float64& clearance) { closest_ = std::min(closest_, clearance.data); }
  void OnStatus(const actionlib_msgs::GoalStatusArray& statuses) {
    is_up_ = true;
    for (const GoalStatus& status : statuses.status_list) {
      if (status.status != GoalStatus::PENDING && status.status != GoalStatus::ACTIVE) {
        end_ = status;
      }
    }
  }

  ros::CallbackQueue queue_;
  ros::NodeHandle node_;
  ros::Publisher goals_;
  std::vector<ros::Subscriber> subscribers_;
  bool is_up_ = false;
  double time_ = 0.0;   // s, of the simulated clock
  double began_ = 0.0;  // s
  nav_core::math::Vec2d place_;
  double driven_ = 0.0;
  int touched_seen_ = 0;
  int touched_hidden_ = 0;
  double closest_ = std::numeric_limits<double>::infinity();
  std::optional<GoalStatus> end_;
};

// Robot and move_base, while they run.
class Stack {
 public:
  Stack(const Scene& scene, const std::string& planner, const StackOptions& options, const std::function<bool()>& stop)
      : log_(options.logs + "/" + scene.name.Map() + "-" + std::to_string(scene.name.seed) + "-" + planner + ".log"),
        stop_(stop),
        robot_({ProgramOf("controller_base", "simulated_robot_node"), "__name:=simulated_robot"}, {},
               options.logs + "/simulated_robot.log"),
        move_base_({ProgramOf("move_base", "move_base"), "__name:=move_base"}, {}, log_) {}

  double ProcessorSecondsOfPlanner() const { return ProcessorSeconds(move_base_.pid()); }
  const std::string& log() const { return log_; }

  // Until `is_done`, while both run; whether it came to that.
  template <typename Done>
  bool SpinUntil(Listener* listener, const Done& is_done) {
    while (!is_done()) {
      if (stop_()) {
        throw simulation::Interrupted();
      }
      if (robot_.Ended() || move_base_.Ended()) {
        return false;
      }
      listener->Spin();
    }
    return true;
  }

 private:
  std::string log_;
  const std::function<bool()>& stop_;
  ChildProcess robot_;
  ChildProcess move_base_;
};

bool ComesUp(Stack* stack, Listener* listener) {
  const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(kStartTimeout);
  return stack->SpinUntil(listener, [&] { return listener->IsReady() || ros::WallTime::now() > deadline; }) &&
         listener->IsReady();
}

void JudgeEnd(const Listener& listener, const Scene& scene, ComparedDrive* drive) {
  const double distance = follower::Distance(listener.place(), nav_core::math::Vec2d(scene.goal.x, scene.goal.y));
  const std::string where = follower::Format("%.2f m from the goal", distance);
  if (!listener.end()) {
    drive->outcome = "timeout";
    drive->reason = "still " + where;
  } else if (listener.end()->status != GoalStatus::SUCCEEDED) {
    drive->outcome = "aborted";
    drive->reason = where + ": " + listener.end()->text;
  } else if (distance > kGoalTolerance) {
    drive->outcome = "failed";
    drive->reason = "says that it is there, " + where;
  } else {
    drive->outcome = "reached";
  }
}

}  // namespace

ComparedDrive DriveWithStack(const Scene& scene, const std::string& planner, const StackOptions& options,
                             const std::function<bool()>& stop) {
  ComparedDrive drive;
  drive.map = scene.name.Map();
  drive.seed = scene.name.seed;
  drive.planner = planner;
  drive.outcome = "failed";
  drive.path = follower::PathLength(scene.world.path);
  drive.speed = options.speed;
  ros::param::set("/use_sim_time", true);
  SetRobotParameters(scene, options);
  LoadPlannerParameters(planner, options);
  Listener listener;
  Stack stack(scene, planner, options, stop);
  if (!ComesUp(&stack, &listener)) {
    drive.reason = "move_base or the simulated robot did not come up; see " + stack.log();
    return drive;
  }
  const double before = stack.ProcessorSecondsOfPlanner();
  listener.SendGoal(scene.goal);
  const double longest = kLeastTime + kTimePerMetre * drive.path;
  if (!stack.SpinUntil(&listener, [&] { return listener.end() || listener.Elapsed() > longest; })) {
    drive.reason = "move_base or the simulated robot ended; see " + stack.log();
    return drive;
  }
  drive.processor_seconds = stack.ProcessorSecondsOfPlanner() - before;
  listener.Tell(&drive);
  drive.late_cycles = LateCycles(stack.log());
  JudgeEnd(listener, scene, &drive);
  return drive;
}

}  // namespace controller_base::demo
