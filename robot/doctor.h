#ifndef CONTROLLER_BASE_ROBOT_DOCTOR_H_
#define CONTROLLER_BASE_ROBOT_DOCTOR_H_

#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Odometry.h>
#include <ros/node_handle.h>
#include <ros/time.h>
#include <sensor_msgs/LaserScan.h>
#include <std_msgs/UInt8.h>
#include <tf2/buffer_core.h>
#include <tf2_msgs/TFMessage.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "robot/grid.h"
#include "robot/node_options.h"

namespace controller_base::robot {

// One thing that is wrong with a running system.
struct Finding {
  bool is_severe;       // the robot cannot drive so; else it can, but less well
  std::string subject;  // one word: scan, pose, map, ...
  std::string text;     // one line
};

// Looks at a running path_follower_node and at what it needs. Needs ros::init, and a master that answers.
class Doctor {
 public:
  // The node's name, such as "/path_follower".
  explicit Doctor(std::string node);

  // Listens for so many seconds of the wall's clock, and then says what is wrong; nothing: all is well.
  std::vector<Finding> Examine(double seconds);

 private:
  // The messages received on a topic.
  struct Arrivals {
    std::size_t count = 0;
    ros::WallTime first;
    ros::WallTime last;
    void Count();
    double Rate() const;  // Hz; 0 for less than two
  };
  // The nodes on the node's topics, as the master lists them.
  struct Graph {
    std::string scan;  // the node's topics, as they are remapped; empty: it has none of that type
    std::string map;
    std::string odometry;  // with pose_source "odometry" alone
    std::string bumper;
    std::string command;
    bool has_node = false;
  };

  void ReadGraph();
  std::vector<std::string> Of(const std::string& topic, bool publishers) const;
  void Listen(double seconds);
  void OnTransforms(const tf2_msgs::TFMessage& message, bool is_static);
  void OnScan(const sensor_msgs::LaserScan& scan);
  void OnOdometry(const nav_msgs::Odometry& odometry);
  void NotePose();
  void Severe(const std::string& subject, const std::string& text) { findings_.push_back({true, subject, text}); }
  void Slight(const std::string& subject, const std::string& text) { findings_.push_back({false, subject, text}); }

  void ExamineParameters();
  void ExamineClock();
  void ExamineMap();
  void ExamineScan();
  void ExamineScanContent();
  void ExaminePose();
  void ExamineMount();
  void ExaminePlace();
  void ExamineBumper();
  void ExamineCommand();
  bool IsSent(const std::string& subject, const std::string& topic, const std::string& type, const Arrivals& arrivals);
  double ShareOfHitsOnWalls(const geometry_msgs::Pose& laser) const;

  std::string node_;
  ros::NodeHandle topics_;
  ros::NodeHandle parameters_;
  NodeOptions options_;
  double robot_radius_ = 0.17;  // m
  Graph graph_;
  std::vector<std::vector<std::string>> publishers_;   // of each topic: its name, and the nodes
  std::vector<std::vector<std::string>> subscribers_;  // likewise
  tf2::BufferCore frames_;
  Arrivals scans_;
  Arrivals poses_;
  Arrivals odometry_;
  Arrivals bumpers_;
  Arrivals clocks_;
  ros::Time last_pose_;
  std::string odometry_frame_;
  std::optional<sensor_msgs::LaserScan> scan_;
  double scan_age_ = 0.0;  // s, of the last one as it came
  std::optional<nav_msgs::OccupancyGrid> map_message_;
  std::optional<GridBytes> map_;
  std::vector<Finding> findings_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_DOCTOR_H_
