#include "demo/messages/drive_messages.h"

#include <sstream>

#include "demo/messages/conversions.h"
#include "follower/inflation.h"
#include "follower/local_map.h"
#include "simulation/drive_record.h"

namespace controller_base::demo {
namespace {

// Of queues.
constexpr std::uint32_t kSecond = 20;
constexpr std::uint32_t kNewest = 1;

constexpr bool kLatched = true;
constexpr double kTrailSpacing = 0.05;      // m
constexpr double kVisibleError = 0.02;      // m between the true pose and the estimated one
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

ros::Time StampOf(const simulation::CycleReport& cycle) {
  return ros::Time(simulation::kStartTime) + ros::Duration(cycle.time);
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

// Not for what is told repeatedly, or together with something that says more.
bool IsReason(const follower::Event& event) {
  return event.kind != follower::EventKind::kProgress && event.kind != follower::EventKind::kCorridor;
}

}  // namespace

const std::vector<Topic>& DriveTopics() {
  static const std::vector<Topic> topics{
      {"map", nav_msgs::OccupancyGrid(), kNewest, kLatched},
      {"local_map", nav_msgs::OccupancyGrid(), kNewest, !kLatched},
      {"path", nav_msgs::Path(), kNewest, kLatched},
      {"ahead", nav_msgs::Path(), kNewest, !kLatched},
      {"detour", nav_msgs::Path(), kNewest, kLatched},
      {"corridor", nav_msgs::GridCells(), kNewest, kLatched},
      {"markers", visualization_msgs::MarkerArray(), kSecond, !kLatched},
      {"index", std_msgs::UInt64(), kSecond, !kLatched},
      {"deviation", std_msgs::Float64(), kSecond, !kLatched},
      {"speed", std_msgs::Float64(), kSecond, !kLatched},
      {"distance_ratio", std_msgs::Float64(), kSecond, !kLatched},
      {"time_ratio", std_msgs::Float64(), kSecond, !kLatched},
      {"state", std_msgs::String(), kSecond, kLatched},
      {"reason", std_msgs::String(), kSecond, kLatched},
  };
  return topics;
}

DriveMessages::DriveMessages(const costmap_2d::Costmap2D& map, MessageSink* sink) : sink_(sink) {
  Put("map", CostGrid(map, ros::Time(simulation::kStartTime)));
}

void DriveMessages::OnPath(const nav_msgs::Path& path) { Put("path", WithHeadings(path)); }

void DriveMessages::OnEvent(const follower::Event& event) {
  if (IsReason(event)) {
    last_reason_ = event.text;
    Put("reason", DataMessage<std_msgs::String>(event.text));
  }
  if (event.kind == follower::EventKind::kContact) {
    contacts_.push_back(event.position);
  }
}

void DriveMessages::OnCycle(const simulation::CycleReport& cycle) {
  PutNumbers(cycle);
  PutDetour(cycle);
  GrowTrail(cycle.true_pose);
  if (IsWanted("ahead")) {
    Put("ahead", WithHeadings(cycle.output.ahead));
  }
  if (IsWanted("local_map")) {
    Put("local_map", CostGrid(ToCostmap(cycle.input.map.View()), StampOf(cycle)));
  }
  if (IsWanted("markers")) {
    Put("markers", Markers(cycle));
  }
}

void DriveMessages::Put(const std::string& name, const Message& message) { sink_->Take(kTopicPrefix + name, message); }

bool DriveMessages::IsWanted(const std::string& name) const { return sink_->Wants(kTopicPrefix + name); }

void DriveMessages::PutNumbers(const simulation::CycleReport& cycle) {
  Put("index", DataMessage<std_msgs::UInt64>(cycle.output.index));
  Put("deviation", DataMessage<std_msgs::Float64>(cycle.output.deviation));
  Put("speed", DataMessage<std_msgs::Float64>(cycle.motion.speed));
  Put("distance_ratio", DataMessage<std_msgs::Float64>(cycle.output.progress.distance_ratio));
  Put("time_ratio", DataMessage<std_msgs::Float64>(cycle.output.progress.time_ratio));
  if (cycle.output.state != shown_state_) {
    shown_state_ = cycle.output.state;
    Put("state", DataMessage<std_msgs::String>(shown_state_));
  }
}

void DriveMessages::PutDetour(const simulation::CycleReport& cycle) {
  if (cycle.output.detour == shown_detour_) {
    return;
  }
  shown_detour_ = cycle.output.detour;
  nav_msgs::Path none;
  none.header.frame_id = kMapFrame;
  none.header.stamp = StampOf(cycle);
  nav_msgs::OccupancyGrid no_corridor;
  no_corridor.header = none.header;
  no_corridor.info.resolution = static_cast<float>(cycle.input.map.resolution);  // viewers refuse cells without size
  Put("detour", shown_detour_ ? WithHeadings(shown_detour_->detour) : none);
  Put("corridor", CorridorCells(shown_detour_ ? shown_detour_->corridor : no_corridor));
}

visualization_msgs::MarkerArray DriveMessages::Markers(const simulation::CycleReport& cycle) const {
  const ros::Time stamp = StampOf(cycle);
  const follower::FollowerOutput& output = cycle.output;
  visualization_msgs::MarkerArray array;
  const auto add = [&](const visualization_msgs::Marker& marker) { array.markers.push_back(marker); };
  add(BodyMarker(kBodyLook, stamp));
  add(NoseMarker(kNoseLook, stamp));
  const bool is_lost = Distance(cycle.true_pose, cycle.input.robot.pose.position) > kVisibleError;
  add(CircleMarker("where the robot really is", cycle.true_pose, is_lost ? follower::kRobotRadius : 0.0, kTrueBodyLook,
                   stamp));
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
  return array;
}

void DriveMessages::GrowTrail(const follower::Pose2d& pose) {
  if (trail_.empty() || Distance(trail_.back(), pose) >= kTrailSpacing) {
    trail_.push_back(ToPoint({pose.x, pose.y}));
  }
}

rosgraph_msgs::Clock ClockMessage(const simulation::CycleReport& cycle) {
  rosgraph_msgs::Clock message;
  message.clock = StampOf(cycle);
  return message;
}

tf2_msgs::TFMessage FrameMessage(const simulation::CycleReport& cycle) {
  geometry_msgs::PoseStamped robot = cycle.input.robot;
  robot.header.stamp = StampOf(cycle);
  return RobotTransform(robot);
}

}  // namespace controller_base::demo
