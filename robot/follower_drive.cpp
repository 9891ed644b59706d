#include "robot/follower_drive.h"

#include <dynamic_reconfigure/server.h>
#include <ros/console.h>
#include <ros/publisher.h>
#include <std_msgs/String.h>
#include <visualization_msgs/MarkerArray.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "controller_base/follower/path_follower.h"
#include "robot/follower_config.h"
#include "robot/follower_parameters.h"

namespace controller_base::robot {
namespace {

using follower::Command;
using follower::DetourReport;
using follower::Event;
using follower::FollowerObserver;
using follower::PathFollower;
using follower::VirtualBox;
using nav_controller::CollisionEvent;

constexpr char kLibraryFrame[] = "map";  // the library takes no paths in other frames

constexpr double kBoxSide = 0.1;     // m; as LocalPlanner::CreateBoxObstacle makes them
constexpr double kBoxHeight = 0.05;  // m, of the marker

follower::LocalMapView ToView(const GridBytes& costs, const GridBytes& marks) {
  const Grid& grid = costs.grid;
  return {costs.bytes.data(),
          marks.bytes.data(),
          static_cast<unsigned int>(grid.size_x),
          static_cast<unsigned int>(grid.size_y),
          grid.resolution,
          grid.origin_x,
          grid.origin_y};
}

std::int8_t ContactType(Sectors sectors) {
  constexpr std::int8_t kLeftSide = 1;
  constexpr std::int8_t kRightSide = 2;
  constexpr std::int8_t kBothSides = 3;
  const int ahead = sectors & (kLeft | kRight | kFront);
  return ahead == kLeft ? kLeftSide : ahead == kRight ? kRightSide : kBothSides;
}

std_msgs::String ToMessage(const std::string& text) {
  std_msgs::String message;
  message.data = text;
  return message;
}

// The same path under another name of its frame.
nav_msgs::Path Renamed(nav_msgs::Path path, const std::string& frame) {
  path.header.frame_id = frame;
  for (geometry_msgs::PoseStamped& pose : path.poses) {
    pose.header.frame_id = frame;
  }
  return path;
}

visualization_msgs::MarkerArray BoxMarkers(const std::vector<VirtualBox>& boxes, const std_msgs::Header& header) {
  visualization_msgs::MarkerArray markers;
  markers.markers.emplace_back().action = visualization_msgs::Marker::DELETEALL;
  for (const VirtualBox& box : boxes) {
    visualization_msgs::Marker& marker = markers.markers.emplace_back();
    marker.header = header;
    marker.ns = "boxes";
    marker.id = static_cast<int>(markers.markers.size());
    marker.type = visualization_msgs::Marker::CUBE;
    marker.pose.position = box.center;
    marker.pose.orientation.z = std::sin(0.5 * box.heading);
    marker.pose.orientation.w = std::cos(0.5 * box.heading);
    marker.scale.x = marker.scale.y = kBoxSide;
    marker.scale.z = kBoxHeight;
    marker.color.r = marker.color.a = 1.0F;
  }
  return markers;
}

}  // namespace

class FollowerDrive::Implementation : private FollowerObserver {
 public:
  explicit Implementation(ros::NodeHandle topics)
      : parameters_(ReadFollowerParameters(topics)),
        config_(config_mutex_, topics),
        state_topic_(topics.advertise<std_msgs::String>("state", 1, /*latch=*/true)),
        reason_topic_(topics.advertise<std_msgs::String>("reason", 1, true)),
        events_topic_(topics.advertise<std_msgs::String>("events", 100)),
        path_topic_(topics.advertise<nav_msgs::Path>("path", 1, true)),
        ahead_topic_(topics.advertise<nav_msgs::Path>("ahead", 1)),
        detour_topic_(topics.advertise<nav_msgs::Path>("detour", 1, true)),
        boxes_topic_(topics.advertise<visualization_msgs::MarkerArray>("boxes", 1, true)) {
    config_.setCallback([this](FollowerConfig& config, std::uint32_t /*level*/) { OnConfig(&config); });
    Show("idle", "");
  }

  void Follow(const nav_msgs::Path& path) {
    TakeParameters();
    if (!follower_) {
      const std::lock_guard<std::mutex> lock(mutex_);
      follower_.emplace(static_cast<FollowerObserver*>(this), parameters_);
    }
    frame_ = path.header.frame_id;
    follower_->SetPath(Renamed(path, kLibraryFrame));
    is_idle_ = false;
    path_topic_.publish(path);
  }

  void Stop() {
    is_idle_ = true;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      follower_.reset();
    }
    shown_boxes_ = 0;
    path_topic_.publish(nav_msgs::Path());
    detour_topic_.publish(nav_msgs::Path());
    boxes_topic_.publish(BoxMarkers({}, {}));
    Show("idle", "");
  }

  geometry_msgs::Twist Cycle(const geometry_msgs::PoseStamped& robot, const GridBytes& costs, const GridBytes& marks) {
    geometry_msgs::Twist twist;
    if (is_idle_) {
      return twist;
    }
    TakeParameters();
    geometry_msgs::PoseStamped pose = robot;
    pose.header.frame_id = kLibraryFrame;
    const Command command = follower_->Cycle(pose, ToView(costs, marks));
    if (std::isfinite(command.speed) && std::isfinite(command.turn_rate)) {
      twist.linear.x = command.speed;
      twist.angular.z = command.turn_rate;
    }
    NoticeBlockage(robot.header.stamp);
    Publish(robot.header);
    return twist;
  }

  void Tell(follower::EventKind kind, const std::string& text) {
    events_topic_.publish(ToMessage(std::string(Name(kind)) + ": " + text));
  }

  void Touch(Sectors sectors, const ros::Time& stamp) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (follower_ && (sectors & kBack) != 0) {
      follower_->AddBackContact(stamp);
    }
    if (follower_ && (sectors & (kLeft | kRight | kFront)) != 0) {
      CollisionEvent contact;
      contact.collided = true;
      contact.stamp = stamp;
      contact.type = ContactType(sectors);
      follower_->AddContact(contact);
    }
  }

  DriveState state() const {
    if (is_idle_) {
      return DriveState::kIdle;
    }
    const follower::Outcome& outcome = follower_->outcome();
    if (outcome.state == follower::DriveState::kReached) {
      return DriveState::kReached;
    }
    if (IsOver(outcome.state)) {
      return DriveState::kFailed;
    }
    return blocked_since_ ? DriveState::kBlocked : DriveState::kDriving;
  }

  std::string reason() const { return follower_ && state() != DriveState::kReached ? follower_->outcome().reason : ""; }
  ros::Time blocked_since() const { return blocked_since_.value_or(ros::Time()); }
  std::vector<VirtualBox> boxes() const { return follower_ ? follower_->boxes() : std::vector<VirtualBox>(); }

  void Show(const std::string& state, const std::string& reason) {
    if (state != shown_state_) {
      shown_state_ = state;
      state_topic_.publish(ToMessage(state));
    }
    if (reason != shown_reason_) {
      shown_reason_ = reason;
      reason_topic_.publish(ToMessage(reason));
    }
  }

 private:
  void OnEvent(const Event& event) override { Tell(event.kind, event.text); }
  void OnDetour(const DetourReport& detour) override { detour_topic_.publish(Renamed(detour.detour, frame_)); }

  // The server's thread may be another one than the cycle's.
  void OnConfig(FollowerConfig* config) {
    const std::lock_guard<std::mutex> lock(mutex_);
    try {
      CheckParameters(config->parameters());
      new_parameters_ = config->parameters();
      allowed_config_ = *config;
    } catch (const std::invalid_argument& error) {
      ROS_WARN_NAMED("controller_base", "the parameters stay as they are: %s", error.what());
      *config = allowed_config_;
    }
  }

  void TakeParameters() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (new_parameters_) {
      parameters_ = *std::exchange(new_parameters_, std::nullopt);
      if (follower_) {
        follower_->SetParameters(parameters_);
      }
    }
  }

  void NoticeBlockage(const ros::Time& now) {
    const bool waits = follower_->blockage() != nullptr && follower_->detour() == nullptr;
    if (!waits) {
      blocked_since_.reset();
    } else if (!blocked_since_) {
      blocked_since_ = now;
    }
  }

  void Publish(const std_msgs::Header& header) {
    const follower::Outcome& outcome = follower_->outcome();
    Show(IsOver(outcome.state) ? Name(outcome.state) : follower_->activity(), outcome.reason);
    if (ahead_topic_.getNumSubscribers() > 0) {
      ahead_topic_.publish(Renamed(follower_->ahead(), frame_));
    }
    if (follower_->boxes().size() != shown_boxes_) {
      shown_boxes_ = follower_->boxes().size();
      boxes_topic_.publish(BoxMarkers(follower_->boxes(), header));
    }
  }

  std::mutex mutex_;  // of new_parameters_, allowed_config_ and whether there is a follower
  std::optional<follower::Parameters> new_parameters_;  // until the next cycle
  FollowerConfig allowed_config_;
  follower::Parameters parameters_;
  boost::recursive_mutex config_mutex_;
  dynamic_reconfigure::Server<FollowerConfig> config_;
  ros::Publisher state_topic_;
  ros::Publisher reason_topic_;
  ros::Publisher events_topic_;
  ros::Publisher path_topic_;
  ros::Publisher ahead_topic_;
  ros::Publisher detour_topic_;
  ros::Publisher boxes_topic_;
  std::optional<PathFollower> follower_;
  bool is_idle_ = true;
  std::string frame_;  // of the path, and of all that is published
  std::optional<ros::Time> blocked_since_;
  std::string shown_state_;
  std::string shown_reason_ = "none yet";  // so that the first one is shown
  std::size_t shown_boxes_ = 0;
};

FollowerDrive::FollowerDrive(const ros::NodeHandle& topics)
    : implementation_(std::make_unique<Implementation>(topics)) {}
FollowerDrive::~FollowerDrive() = default;
void FollowerDrive::Follow(const nav_msgs::Path& path) { implementation_->Follow(path); }
void FollowerDrive::Stop() { implementation_->Stop(); }
geometry_msgs::Twist FollowerDrive::Cycle(const geometry_msgs::PoseStamped& robot, const GridBytes& costs,
                                          const GridBytes& marks) {
  return implementation_->Cycle(robot, costs, marks);
}
void FollowerDrive::Show(const std::string& state, const std::string& reason) { implementation_->Show(state, reason); }
void FollowerDrive::Tell(follower::EventKind kind, const std::string& text) { implementation_->Tell(kind, text); }
void FollowerDrive::Touch(Sectors sectors, const ros::Time& stamp) { implementation_->Touch(sectors, stamp); }
DriveState FollowerDrive::state() const { return implementation_->state(); }
std::string FollowerDrive::reason() const { return implementation_->reason(); }
ros::Time FollowerDrive::blocked_since() const { return implementation_->blocked_since(); }
std::vector<follower::VirtualBox> FollowerDrive::boxes() const { return implementation_->boxes(); }

}  // namespace controller_base::robot
