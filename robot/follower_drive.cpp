#include "robot/follower_drive.h"

#include <dynamic_reconfigure/server.h>
#include <ros/console.h>
#include <ros/publisher.h>
#include <std_msgs/String.h>
#include <visualization_msgs/MarkerArray.h>

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "follower/follower_session.h"
#include "robot/follower_config.h"
#include "robot/follower_parameters.h"

namespace controller_base::robot {
namespace {

using follower::DetourReport;
using follower::Event;
using follower::FollowerInput;
using follower::FollowerObserver;
using follower::FollowerOutput;
using follower::FollowerSession;
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

constexpr std::size_t kMostWaiting = 10;  // contacts; older ones are of no use once a cycle comes

template <typename Contact>
void AddToLast(const Contact& contact, std::vector<Contact>* contacts) {
  if (contacts->size() >= kMostWaiting) {
    contacts->erase(contacts->begin());
  }
  contacts->push_back(contact);
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
        follower_(static_cast<FollowerObserver*>(this), parameters_),
        state_topic_(topics.advertise<std_msgs::String>("state", 1, /*latch=*/true)),
        reason_topic_(topics.advertise<std_msgs::String>("reason", 1, true)),
        events_topic_(topics.advertise<std_msgs::String>("events", 100)),
        path_topic_(topics.advertise<nav_msgs::Path>("path", 1, true)),
        ahead_topic_(topics.advertise<nav_msgs::Path>("ahead", 1)),
        detour_topic_(topics.advertise<nav_msgs::Path>("detour", 1, true)),
        boxes_topic_(topics.advertise<visualization_msgs::MarkerArray>("boxes", 1, true)) {
    config_.setCallback([this](FollowerConfig& config, std::uint32_t /*level*/) { OnConfig(&config); });
    Forget();
    Show("idle", "");
  }

  void SetObserver(CycleObserver* observer) { observer_ = observer; }

  void Follow(const nav_msgs::Path& path) {
    frame_ = path.header.frame_id;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      next_.path = Renamed(path, kLibraryFrame);
      is_idle_ = false;
    }
    path_topic_.publish(path);
  }

  void Stop() {
    Forget();
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
    const FollowerInput input = TakeInput(robot, costs, marks);
    output_ = follower_.Cycle(input);
    if (observer_ != nullptr) {
      observer_->OnCycle(input, output_);
    }
    if (std::isfinite(output_.command.speed) && std::isfinite(output_.command.turn_rate)) {
      twist.linear.x = output_.command.speed;
      twist.angular.z = output_.command.turn_rate;
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
    if (is_idle_) {
      return;
    }
    if ((sectors & kBack) != 0) {
      AddToLast(stamp, &next_.back_contacts);
    }
    if ((sectors & (kLeft | kRight | kFront)) != 0) {
      CollisionEvent contact;
      contact.collided = true;
      contact.stamp = stamp;
      contact.type = ContactType(sectors);
      AddToLast(contact, &next_.contacts);
    }
  }

  DriveState state() const {
    if (is_idle_) {
      return DriveState::kIdle;
    }
    const follower::DriveState state = output_.outcome.state;
    if (IsOver(state) && !next_.path) {
      return state == follower::DriveState::kReached ? DriveState::kReached : DriveState::kFailed;
    }
    return blocked_since_ ? DriveState::kBlocked : DriveState::kDriving;
  }

  std::string reason() const { return is_idle_ || state() == DriveState::kReached ? "" : output_.outcome.reason; }
  ros::Time blocked_since() const { return blocked_since_.value_or(ros::Time()); }
  std::vector<VirtualBox> boxes() const { return output_.boxes; }

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
      parameters_ = config->parameters();
      next_.parameters = parameters_;
    } catch (const std::invalid_argument& error) {
      ROS_WARN_NAMED("controller_base", "the parameters stay as they are: %s", error.what());
      *config = FollowerConfig(parameters_);
    }
  }

  // The next path is followed by a follower that knows nothing of those before.
  void Forget() {
    const std::lock_guard<std::mutex> lock(mutex_);
    is_idle_ = true;
    next_ = FollowerInput();
    next_.is_fresh = true;
    next_.parameters = parameters_;
    output_ = FollowerOutput();
    blocked_since_.reset();
  }

  FollowerInput TakeInput(const geometry_msgs::PoseStamped& robot, const GridBytes& costs, const GridBytes& marks) {
    FollowerInput input;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      std::swap(input, next_);
    }
    input.clock = ros::Time::now();
    input.robot = robot;
    input.robot.header.frame_id = kLibraryFrame;
    input.map = follower::LocalMapData(ToView(costs, marks));
    return input;
  }

  void NoticeBlockage(const ros::Time& now) {
    const bool waits = output_.blockage != nullptr && output_.detour == nullptr;
    if (!waits) {
      blocked_since_.reset();
    } else if (!blocked_since_) {
      blocked_since_ = now;
    }
  }

  void Publish(const std_msgs::Header& header) {
    const follower::Outcome& outcome = output_.outcome;
    Show(IsOver(outcome.state) ? Name(outcome.state) : output_.state, outcome.reason);
    if (ahead_topic_.getNumSubscribers() > 0) {
      ahead_topic_.publish(Renamed(output_.ahead, frame_));
    }
    if (output_.boxes.size() != shown_boxes_) {
      shown_boxes_ = output_.boxes.size();
      boxes_topic_.publish(BoxMarkers(output_.boxes, header));
    }
  }

  std::mutex mutex_;    // of what follows, which is told by other threads than the cycle's
  FollowerInput next_;  // for the next cycle
  std::atomic<bool> is_idle_{true};
  follower::Parameters parameters_;
  boost::recursive_mutex config_mutex_;
  dynamic_reconfigure::Server<FollowerConfig> config_;
  CycleObserver* observer_ = nullptr;
  FollowerSession follower_;
  FollowerOutput output_;  // of the last cycle
  ros::Publisher state_topic_;
  ros::Publisher reason_topic_;
  ros::Publisher events_topic_;
  ros::Publisher path_topic_;
  ros::Publisher ahead_topic_;
  ros::Publisher detour_topic_;
  ros::Publisher boxes_topic_;
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
void FollowerDrive::SetObserver(CycleObserver* observer) { implementation_->SetObserver(observer); }
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
