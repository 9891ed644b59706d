#include "watch/drive_publisher.h"

#include <nav_msgs/GridCells.h>
#include <nav_msgs/OccupancyGrid.h>
#include <nav_msgs/Path.h>
#include <std_msgs/Float64.h>
#include <std_msgs/String.h>
#include <std_msgs/UInt64.h>
#include <tf2_msgs/TFMessage.h>
#include <visualization_msgs/MarkerArray.h>

#include <cstdint>
#include <sstream>

#include "drive.h"
#include "inflation.h"
#include "watch/messages.h"

namespace controller_base_demo {
namespace {

constexpr std::uint32_t kQueueSize = 20;  // a second
constexpr bool kLatched = true;
constexpr double kTrailSpacing = 0.05;      // m
constexpr double kVisibleError = 0.02;      // m between where the robot is and where it believes to be
constexpr std::size_t kLineOfLetters = 44;  // of the reason

// Heights in layers, 1 cm and more apart, so that what matters more lies on top.
const MarkerLook kObstacleLook{Rgb(0.96, 0.59, 0.16), 0.02, 0.05};
const MarkerLook kLowObstacleLook{Rgb(0.59, 0.51, 0.75), 0.02, 0.05};
const MarkerLook kLaserLook{Rgb(1.0, 0.85, 0.0), 0.05, 0.07};
const MarkerLook kTrailLook{Rgb(0.16, 0.55, 0.24), 0.03, 0.08};
const MarkerLook kBodyLook{Rgb(0.16, 0.55, 0.24, 0.8), 0.1, 0.1};
const MarkerLook kNoseLook{Rgb(1.0, 1.0, 1.0), 0.06, 0.2};
const MarkerLook kTrueBodyLook{Rgb(0.2, 0.2, 0.2), 0.015, 0.16};
const MarkerLook kBlockedLook{Rgb(0.86, 0.12, 0.12), 0.07, 0.12};
const MarkerLook kSidePointLook{Rgb(0.86, 0.12, 0.12), 0.09, 0.13};
const MarkerLook kBoxLook{Rgb(1.0, 0.24, 0.24), 0.02, 0.14};
const MarkerLook kContactLook{Rgb(0.55, 0.0, 0.0), 0.12, 0.15};
const MarkerLook kGoalLook{Rgb(0.12, 0.12, 0.12), 0.16, 0.12};
const MarkerLook kReasonLook{Rgb(0.08, 0.08, 0.08), 0.2, 0.6};

Points ToPoints(const nav_msgs::Path& path) {
  Points points;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    points.push_back(pose.pose.position);
  }
  return points;
}

ros::Time StampOf(const CycleReport& cycle) { return ros::Time(kStartTime) + ros::Duration(cycle.time); }

template <typename Message, typename Value>
void Publish(const ros::Publisher& publisher, const Value& value) {
  Message message;
  message.data = value;
  publisher.publish(message);
}

// The text in lines of a readable length.
std::string Wrapped(const std::string& text) {
  std::istringstream words(text);
  std::string wrapped;
  std::string word;
  std::size_t length = 0;
  while (words >> word) {
    if (length > 0 && length + 1 + word.size() > kLineOfLetters) {
      wrapped += '\n';
      length = 0;
    } else if (length > 0) {
      wrapped += ' ';
      ++length;
    }
    wrapped += word;
    length += word.size();
  }
  return wrapped;
}

// Told again and again, or together with something that says more.
bool IsReason(const Event& event) { return event.kind != "progress" && event.kind != "corridor"; }

}  // namespace

DrivePublisher::DrivePublisher(const costmap_2d::Costmap2D& map)
    : map_(node_.advertise<nav_msgs::OccupancyGrid>("map", 1, kLatched)),
      local_map_(node_.advertise<nav_msgs::OccupancyGrid>("local_map", 1)),
      path_(node_.advertise<nav_msgs::Path>("path", 1, kLatched)),
      ahead_(node_.advertise<nav_msgs::Path>("ahead", 1)),
      detour_(node_.advertise<nav_msgs::Path>("detour", 1, kLatched)),
      corridor_(node_.advertise<nav_msgs::GridCells>("corridor", 1, kLatched)),
      markers_(node_.advertise<visualization_msgs::MarkerArray>("markers", kQueueSize)),
      index_(node_.advertise<std_msgs::UInt64>("index", kQueueSize)),
      deviation_(node_.advertise<std_msgs::Float64>("deviation", kQueueSize)),
      speed_(node_.advertise<std_msgs::Float64>("speed", kQueueSize)),
      distance_ratio_(node_.advertise<std_msgs::Float64>("distance_ratio", kQueueSize)),
      time_ratio_(node_.advertise<std_msgs::Float64>("time_ratio", kQueueSize)),
      state_(node_.advertise<std_msgs::String>("state", kQueueSize, kLatched)),
      reason_(node_.advertise<std_msgs::String>("reason", kQueueSize, kLatched)) {
  map_.publish(CostGrid(map, ros::Time(kStartTime)));
}

void DrivePublisher::OnPath(const nav_msgs::Path& path) { path_.publish(WithHeadings(path)); }

void DrivePublisher::OnEvent(const Event& event) {
  if (IsReason(event)) {
    last_reason_ = event.text;
    Publish<std_msgs::String>(reason_, event.text);
  }
  if (event.kind == "contact") {
    contacts_.push_back(event.position);
  }
}

void DrivePublisher::OnCycle(const CycleReport& cycle) {
  const ros::Time stamp = StampOf(cycle);
  PublishNumbers(cycle);
  PublishDetour(cycle, stamp);
  GrowTrail(cycle.true_pose);
  if (ahead_.getNumSubscribers() > 0) {
    ahead_.publish(WithHeadings(cycle.output.ahead));
  }
  if (local_map_.getNumSubscribers() > 0) {
    local_map_.publish(CostGrid(cycle.input.map, stamp));
  }
  if (IsWatched()) {
    PublishMarkers(cycle, stamp);
  }
}

void DrivePublisher::PublishNumbers(const CycleReport& cycle) {
  Publish<std_msgs::UInt64>(index_, cycle.output.index);
  Publish<std_msgs::Float64>(deviation_, cycle.output.deviation);
  Publish<std_msgs::Float64>(speed_, cycle.motion.speed);
  Publish<std_msgs::Float64>(distance_ratio_, cycle.output.progress.distance_ratio);
  Publish<std_msgs::Float64>(time_ratio_, cycle.output.progress.time_ratio);
  if (cycle.output.state != shown_state_) {
    shown_state_ = cycle.output.state;
    Publish<std_msgs::String>(state_, shown_state_);
  }
}

void DrivePublisher::PublishDetour(const CycleReport& cycle, const ros::Time& stamp) {
  if (cycle.output.detour == shown_detour_) {
    return;
  }
  shown_detour_ = cycle.output.detour;
  nav_msgs::Path none;
  none.header.frame_id = kMapFrame;
  none.header.stamp = stamp;
  nav_msgs::GridCells no_cells = CorridorCells({});
  no_cells.header = none.header;
  detour_.publish(shown_detour_ ? WithHeadings(shown_detour_->detour) : none);
  corridor_.publish(shown_detour_ ? CorridorCells(shown_detour_->corridor) : no_cells);
}

void DrivePublisher::PublishMarkers(const CycleReport& cycle, const ros::Time& stamp) {
  const FollowerOutput& output = cycle.output;
  visualization_msgs::MarkerArray array;
  const auto add = [&](const visualization_msgs::Marker& marker) { array.markers.push_back(marker); };
  add(BodyMarker(kBodyLook, stamp));
  add(NoseMarker(kNoseLook, stamp));
  const bool is_lost = Distance(cycle.true_pose, cycle.input.robot.pose.position) > kVisibleError;
  add(CircleMarker("where the robot really is", cycle.true_pose, is_lost ? kRobotRadius : 0.0, kTrueBodyLook, stamp));
  add(LineMarker("trail", trail_, kTrailLook, stamp));
  add(DotsMarker("laser", ToPoints(cycle.laser), kLaserLook, stamp));
  add(ObstaclesMarker("obstacles", cycle.world.obstacles(), cycle.time, false, kObstacleLook, stamp));
  add(ObstaclesMarker("obstacles the laser cannot see", cycle.world.obstacles(), cycle.time, true, kLowObstacleLook,
                      stamp));
  add(DotsMarker("goal", {cycle.path.poses.back().pose.position}, kGoalLook, stamp));
  add(LineMarker("blocked run", output.blockage ? ToPoints(output.blockage->run) : Points(), kBlockedLook, stamp));
  add(DotsMarker("side points", output.blockage ? Points{output.blockage->left, output.blockage->right} : Points(),
                 kSidePointLook, stamp));
  add(BoxesMarker("boxes", output.boxes, kBoxLook, stamp));
  add(DotsMarker("contacts", contacts_, kContactLook, stamp));
  geometry_msgs::Point above = cycle.input.robot.pose.position;
  above.y += 0.8;
  add(TextMarker("reason", above, output.state + ": " + Wrapped(last_reason_), kReasonLook, stamp));
  markers_.publish(array);
}

void DrivePublisher::GrowTrail(const Pose2d& pose) {
  if (trail_.empty() || Distance(trail_.back(), pose) >= kTrailSpacing) {
    trail_.push_back(ToPoint({pose.x, pose.y}));
  }
}

FramePublisher::FramePublisher() : transforms_(node_.advertise<tf2_msgs::TFMessage>("/tf", kQueueSize)) {}

void FramePublisher::OnCycle(const CycleReport& cycle) {
  geometry_msgs::PoseStamped robot = cycle.input.robot;
  robot.header.stamp = StampOf(cycle);
  transforms_.publish(RobotTransform(robot));
}

}  // namespace controller_base_demo
