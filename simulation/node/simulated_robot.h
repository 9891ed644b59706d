#ifndef CONTROLLER_BASE_SIMULATION_NODE_SIMULATED_ROBOT_H_
#define CONTROLLER_BASE_SIMULATION_NODE_SIMULATED_ROBOT_H_

#include <geometry_msgs/TransformStamped.h>
#include <geometry_msgs/Twist.h>
#include <nav_msgs/Odometry.h>
#include <ros/time.h>
#include <sensor_msgs/LaserScan.h>
#include <visualization_msgs/MarkerArray.h>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "controller_base/follower/command.h"
#include "costmap_2d/costmap_2d.h"
#include "follower/geometry.h"
#include "simulation/random_source.h"
#include "simulation/robot.h"
#include "simulation/world.h"

namespace controller_base::simulation {

struct SimulatedRobotOptions {
  follower::Pose2d start;
  double laser_range = 6.0;           // m
  double range_noise = 0.01;          // m; standard deviation
  double odometry_scale_error = 0.0;  // share of each distance and each turn that the odometry adds
  double odometry_turn_drift = 0.0;   // rad for each metre driven
  double localisation_period = 1.0;   // s; so often the localisation corrects what the odometry got wrong
  double command_timeout = 0.5;       // s; without commands for longer the wheels stop
  Shapes shapes = Shapes::kCells;
  bool brakes = false;         // its wheels take their time to stop at what it runs into
  double command_delay = 0.0;  // s until a command reaches the wheels
  unsigned int seed = 1;
};

// All that MakeHarsh makes of a drive.
void MakeHarsh(SimulatedRobotOptions* options);

// The robot in its world, as the messages that a real one's drivers send. Time is the robot's own, from 0 on; stamps
// are the caller's.
class SimulatedRobot {
 public:
  // `map` must outlive the robot.
  SimulatedRobot(const costmap_2d::Costmap2D& map, const std::vector<Obstacle>& obstacles,
                 const SimulatedRobotOptions& options);

  // A command with a number that is not finite counts as one to stand still.
  void Take(const geometry_msgs::Twist& command);
  // Somebody lifts the robot to another place. Its odometry does not notice.
  void Place(const follower::Pose2d& pose) { robot_ = Robot(pose, options_.brakes); }
  void Add(const Obstacle& obstacle) { world_.Add(obstacle); }
  void Step(double seconds);

  // A turn of the laser, from straight behind on to the left: infinity where nothing is in range.
  sensor_msgs::LaserScan Scan(const ros::Time& stamp);
  // By the wheels, in frame odom.
  nav_msgs::Odometry Odometry(const ros::Time& stamp) const;
  // Where the robot really is, in frame map.
  nav_msgs::Odometry GroundTruth(const ros::Time& stamp) const;
  // map to odom, odom to base_link, base_link to laser.
  std::vector<geometry_msgs::TransformStamped> Transforms(const ros::Time& stamp) const;
  // Everything that is missing on the map: red, or grey where it is below the laser.
  visualization_msgs::MarkerArray Markers(const ros::Time& stamp) const;

  // The bumper bits of robot.h that were pressed since the last call.
  std::uint8_t TakeBumperBits();
  // What the robot ran into since the last call, one word for each time that it touched something of the kind anew:
  // "seen" when the laser can see it, else "hidden".
  std::vector<std::string> TakeTouches();
  // Metres between the robot's body and what the laser can see; never more than kFarthestClearance.
  double Clearance() const;

  static constexpr double kFarthestClearance = 1.0;

 private:
  void Feel(const std::vector<World::Overlap>& contacts);
  bool IsSeen(const World::Overlap& overlap) const;
  follower::Command DelayedCommand();
  void CountWheels(const follower::Pose2d& before);
  double RangeAlong(double bearing);

  SimulatedRobotOptions options_;
  World world_;
  Robot robot_;
  struct TimedCommand {
    double time;
    follower::Command command;
  };
  std::deque<TimedCommand> commands_;  // those that are on their way to the wheels
  follower::Command command_;          // the last one that has reached them
  double time_ = 0.0;
  double command_time_ = 0.0;
  double localisation_time_ = 0.0;
  follower::Pose2d odometry_;     // in frame odom
  follower::Pose2d odom_in_map_;  // as the localisation estimates it
  bool touches_seen_ = false;     // in the last step
  bool touches_hidden_ = false;   // likewise
  std::uint8_t bumper_bits_ = 0;
  std::vector<std::string> touched_;
  RandomSource random_;
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_NODE_SIMULATED_ROBOT_H_
