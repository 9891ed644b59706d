#include "recording/follower_messages.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "follower/format.h"
#include "follower/local_map.h"
#include "follower/path_geometry.h"
#include "recording/empty_grid.h"

namespace controller_base::recording {
namespace {

constexpr std::int8_t kMarked = 100;  // of the laser's marks; the others are 0
// What a follower can have been given, and its replay can stand.
constexpr double kFarthest = 1e7;            // m from the origin; a double still tells 2 nm apart there
constexpr double kLongestPath = 1e5;         // m
constexpr std::uint32_t kMostCells = 65535;  // of a local map's side; what the grid search can address
constexpr double kFinestCells = 0.005;       // m; of a local map
constexpr double kCoarsestCells = 0.5;       // m

// Bags know four outcomes: what the robot waits for is among its events.
const char* NameOf(follower::DriveState state) {
  switch (state) {
    case follower::DriveState::kIdle:
    case follower::DriveState::kDriving:
    case follower::DriveState::kBlocked:
    case follower::DriveState::kLost:
      return "driving";
    case follower::DriveState::kReached:
      return "reached";
    case follower::DriveState::kStalled:
    case follower::DriveState::kOverBudget:
    case follower::DriveState::kClockStopped:
    case follower::DriveState::kCancelled:
      return "no progress";
    case follower::DriveState::kAborted:
      return "aborted";
  }
  return "unknown";
}

// Why the drive ended; empty while it goes on.
std::string EndOf(const follower::Outcome& outcome) { return IsOver(outcome.state) ? outcome.reason : ""; }

// ---- To messages ----

std::vector<double> Numbers(double value) { return {value}; }
std::vector<double> Numbers(const std::vector<double>& values) { return values; }
std::vector<double> Numbers(bool flag) { return {flag ? 1.0 : 0.0}; }

// Gathers the messages of topics with one prefix.
class Messages {
 public:
  void Put(const std::string& topic, Message message) { messages_.push_back({topic, std::move(message)}); }
  template <typename Type, typename Value>
  void PutData(const std::string& topic, const Value& value) {
    Put(topic, DataMessage<Type>(value));
  }
  std::vector<TopicMessage> Take() { return std::move(messages_); }

 private:
  std::vector<TopicMessage> messages_;
};

void PutMap(const std::string& topic, const costmap_2d::Costmap2D& map, Messages* messages) {
  nav_msgs::OccupancyGrid costs = EmptyGrid(map);
  nav_msgs::OccupancyGrid laser = costs;
  for (std::size_t i = 0; i < costs.data.size(); ++i) {
    const auto mx = static_cast<unsigned int>(i % costs.info.width);
    const auto my = static_cast<unsigned int>(i / costs.info.width);
    costs.data[i] = static_cast<std::int8_t>(map.getCost(mx, my));
    laser.data[i] = map.IsLaserObstacle(mx, my) ? kMarked : std::int8_t{0};
  }
  messages->Put(topic + "/costs", costs);
  messages->Put(topic + "/laser", laser);
  messages->PutData<std_msgs::Float64>(topic + "/resolution", map.getResolution());
}

sensor_msgs::Joy ContactMessage(const nav_controller::CollisionEvent& contact) {
  sensor_msgs::Joy message;
  message.header.stamp = contact.stamp;
  message.buttons = {contact.collided ? 1 : 0, contact.type};
  return message;
}

std_msgs::Float64MultiArray ParametersMessage(const follower::Parameters& parameters) {
  std_msgs::Float64MultiArray message;
  for (const follower::ParameterField& field : follower::ParameterFields()) {
    const std::vector<double> values =
        std::visit([&](auto member) { return Numbers(parameters.*member); }, field.value);
    std_msgs::MultiArrayDimension& dimension = message.layout.dim.emplace_back();
    dimension.label = field.name;
    dimension.size = static_cast<std::uint32_t>(values.size());
    message.data.insert(message.data.end(), values.begin(), values.end());
  }
  return message;
}

geometry_msgs::Twist CommandMessage(const follower::Command& command) {
  geometry_msgs::Twist message;
  message.linear.x = command.speed;
  message.angular.z = command.turn_rate;
  return message;
}

std_msgs::Float64MultiArray BoxesMessage(const std::vector<follower::VirtualBox>& boxes) {
  std_msgs::Float64MultiArray message;
  for (const follower::VirtualBox& box : boxes) {
    message.data.insert(message.data.end(), {box.center.x, box.center.y, box.center.z, box.heading});
  }
  return message;
}

std_msgs::Float64MultiArray ProgressMessage(const nav_controller::ControlProgress& progress) {
  return DataMessage<std_msgs::Float64MultiArray>(std::vector<double>{progress.moved_distance, progress.total_distance,
                                                                      progress.distance_ratio, progress.elapsed_time,
                                                                      progress.total_time, progress.time_ratio});
}

visualization_msgs::Marker EventMessage(const follower::Event& event) {
  visualization_msgs::Marker message;
  message.header.stamp = event.stamp;
  message.header.frame_id = kMapFrame;
  message.ns = Name(event.kind);
  message.type = visualization_msgs::Marker::TEXT_VIEW_FACING;
  message.pose.position = event.position;
  message.pose.orientation.w = 1.0;
  message.scale.z = 0.1;  // m
  message.color.a = 1.0F;
  message.text = event.text;
  return message;
}

nav_msgs::Path PathThrough(const std::vector<geometry_msgs::Point>& points) {
  nav_msgs::Path path;
  path.header.frame_id = kMapFrame;
  for (const geometry_msgs::Point& point : points) {
    path.poses.emplace_back();
    path.poses.back().pose.position = point;
  }
  return path;
}

void PutBlockage(const std::string& topic, const follower::Blockage& blockage, Messages* messages) {
  messages->Put(topic + "/run", blockage.run);
  messages->Put(topic + "/sides", PathThrough({blockage.left, blockage.right}));
  messages->PutData<std_msgs::Bool>(topic + "/is_bilateral", blockage.is_bilateral);
}

void PutDetour(const std::string& topic, const follower::DetourReport& detour, Messages* messages) {
  geometry_msgs::Pose2D robot;
  robot.x = detour.robot.x;
  robot.y = detour.robot.y;
  robot.theta = detour.robot.yaw;
  messages->PutData<std_msgs::Time>(topic + "/stamp", detour.stamp);
  messages->Put(topic + "/robot", robot);
  PutMap(topic + "/map", ToCostmap(detour.map.View()), messages);
  messages->Put(topic + "/corridor", detour.corridor);
  messages->Put(topic + "/boxes", BoxesMessage(detour.boxes));
  messages->Put(topic + "/path", detour.path);
  messages->Put(topic + "/blocked", detour.blocked);
  messages->Put(topic + "/way", detour.detour);
  messages->PutData<std_msgs::Bool>(topic + "/is_repaired", detour.goal_repaired);
  messages->PutData<std_msgs::Bool>(topic + "/is_smoothed", detour.smoothed);
}

// ---- From messages ----

// The messages on a topic below kInputPrefix, in their order.
template <typename Type>
std::vector<Type> All(const std::vector<TopicMessage>& messages, const std::string& name) {
  std::vector<Type> found;
  for (const TopicMessage& message : messages) {
    if (message.topic == kInputPrefix + name) {
      const Type* typed = std::get_if<Type>(&message.message);
      if (typed == nullptr) {
        throw InputError(message.topic + " has another type than it should");
      }
      found.push_back(*typed);
    }
  }
  return found;
}

template <typename Type>
Type The(const std::vector<TopicMessage>& messages, const std::string& name) {
  const std::vector<Type> found = All<Type>(messages, name);
  if (found.size() != 1) {
    throw InputError(kInputPrefix + name + (found.empty() ? " is missing" : " is there more than once"));
  }
  return found.front();
}

bool IsNear(const geometry_msgs::Point& point) {
  return std::abs(point.x) <= kFarthest && std::abs(point.y) <= kFarthest;  // false for NaN
}

bool IsFinite(const geometry_msgs::Quaternion& heading) {
  return std::isfinite(heading.x) && std::isfinite(heading.y) && std::isfinite(heading.z) && std::isfinite(heading.w);
}

// A map that a follower can have been given.
void CheckMap(const nav_msgs::OccupancyGrid& grid, double resolution, const std::string& name) {
  const std::string is_no_map = kInputPrefix + name + " is no map: ";
  if (!(resolution >= kFinestCells && resolution <= kCoarsestCells)) {
    throw InputError(is_no_map + follower::Format("its cells are %g m wide; %g m to %g m are possible", resolution,
                                                  kFinestCells, kCoarsestCells));
  }
  if (grid.info.width == 0 || grid.info.height == 0 || std::max(grid.info.width, grid.info.height) > kMostCells) {
    throw InputError(is_no_map + follower::Format("%u x %u cells; 1 to %u a side are possible", grid.info.width,
                                                  grid.info.height, kMostCells));
  }
  if (!IsNear(grid.info.origin.position)) {
    throw InputError(is_no_map + follower::Format("it lies farther than %g m from the origin", kFarthest));
  }
}

costmap_2d::Costmap2D ToMap(const std::vector<TopicMessage>& messages, const std::string& name) {
  const auto costs = The<nav_msgs::OccupancyGrid>(messages, name + "/costs");
  const auto laser = The<nav_msgs::OccupancyGrid>(messages, name + "/laser");
  const auto resolution = The<std_msgs::Float64>(messages, name + "/resolution").data;
  const std::size_t cells = static_cast<std::size_t>(costs.info.width) * costs.info.height;
  if (costs.data.size() != cells || laser.data.size() != cells) {
    throw InputError(kInputPrefix + name + " does not have as many cells as its width and height say");
  }
  CheckMap(costs, resolution, name);
  const geometry_msgs::Point& origin = costs.info.origin.position;
  costmap_2d::Costmap2D map(costs.info.width, costs.info.height, resolution, origin.x, origin.y);
  for (std::size_t i = 0; i < cells; ++i) {
    const auto mx = static_cast<unsigned int>(i % costs.info.width);
    const auto my = static_cast<unsigned int>(i / costs.info.width);
    map.setCost(mx, my, static_cast<unsigned char>(costs.data[i]));
    map.SetLaserObstacle(mx, my, laser.data[i] == kMarked);
  }
  return map;
}

using Values = std::vector<double>;

void SetParameter(const Values& values, double* value) { *value = values.size() == 1 ? values[0] : std::nan(""); }
void SetParameter(const Values& values, Values* list) { *list = values; }
void SetParameter(const Values& values, bool* flag) { *flag = !values.empty() && values[0] != 0.0; }

// The parameters that CheckParameters allows; those that the message does not have keep their defaults.
follower::Parameters ToParameters(const std_msgs::Float64MultiArray& message) {
  const std::string topic = std::string(kInputPrefix) + "parameters";
  follower::Parameters parameters;
  std::size_t begin = 0;
  for (const std_msgs::MultiArrayDimension& dimension : message.layout.dim) {
    const auto& fields = follower::ParameterFields();
    const auto field =
        std::find_if(fields.begin(), fields.end(), [&](const auto& f) { return dimension.label == f.name; });
    if (field == fields.end() || dimension.size > message.data.size() - begin) {
      throw InputError(topic + " has what the follower has not, or fewer values than it says");
    }
    const auto first = message.data.begin() + static_cast<std::ptrdiff_t>(begin);
    const Values values(first, first + static_cast<std::ptrdiff_t>(dimension.size));
    std::visit([&](auto member) { SetParameter(values, &(parameters.*member)); }, field->value);
    begin += dimension.size;
  }
  try {
    CheckParameters(parameters);
  } catch (const std::invalid_argument& error) {
    throw InputError(topic + ": " + error.what());
  }
  return parameters;
}

nav_controller::CollisionEvent ToContact(const sensor_msgs::Joy& message) {
  const std::string topic = std::string(kInputPrefix) + "contacts";
  if (message.buttons.size() != 2) {
    throw InputError(topic + " does not have two buttons");
  }
  nav_controller::CollisionEvent contact;
  contact.collided = message.buttons[0] != 0;
  contact.stamp = message.header.stamp;
  contact.type = static_cast<std::int8_t>(message.buttons[1]);
  if (contact.type != message.buttons[1]) {
    throw InputError(topic + " has a type that is no byte");
  }
  return contact;
}

nav_msgs::Path ToPath(const nav_msgs::Path& path) {
  const std::string topic = std::string(kInputPrefix) + "path";
  if (path.poses.empty()) {
    throw InputError(topic + " has no poses");
  }
  for (std::size_t i = 0; i < path.poses.size(); ++i) {
    const geometry_msgs::Pose& pose = path.poses[i].pose;
    if (!IsNear(pose.position) || !IsFinite(pose.orientation)) {
      throw InputError(topic + follower::Format(" has an impossible pose, number %zu", i));
    }
  }
  if (follower::PathLength(path) > kLongestPath) {
    throw InputError(topic +
                     follower::Format(" is %g m long; %g m are the most", follower::PathLength(path), kLongestPath));
  }
  return path;
}

geometry_msgs::PoseStamped ToRobot(const geometry_msgs::PoseStamped& robot, const costmap_2d::Costmap2D& map) {
  const std::string topic = std::string(kInputPrefix) + "robot";
  if (!map.IsInmap(robot.pose.position.x, robot.pose.position.y)) {
    throw InputError(topic + " does not stand on the local map");
  }
  if (!IsFinite(robot.pose.orientation)) {
    throw InputError(topic + " has no heading");
  }
  return robot;
}

}  // namespace

std::vector<TopicMessage> InputMessages(const follower::FollowerInput& input) {
  const std::string prefix = kInputPrefix;
  Messages messages;
  messages.PutData<std_msgs::Time>(kCycleTopic, input.clock);
  if (input.parameters) {
    messages.Put(prefix + "parameters", ParametersMessage(*input.parameters));
  }
  if (input.is_fresh) {
    messages.PutData<std_msgs::Bool>(prefix + "is_fresh", true);
  }
  if (input.path) {
    messages.Put(prefix + "path", *input.path);
  }
  for (const nav_controller::CollisionEvent& contact : input.contacts) {
    messages.Put(prefix + "contacts", ContactMessage(contact));
  }
  for (const ros::Time& stamp : input.back_contacts) {
    messages.PutData<std_msgs::Time>(prefix + "back_contacts", stamp);
  }
  messages.Put(prefix + "robot", input.robot);
  PutMap(prefix + "local_map", ToCostmap(input.map.View()), &messages);
  return messages.Take();
}

std::vector<TopicMessage> OutputMessages::Next(const follower::FollowerOutput& output) {
  const std::string prefix = kOutputPrefix;
  Messages messages;
  messages.PutData<std_msgs::UInt64>(prefix + "index", output.index);
  messages.PutData<std_msgs::Float64>(prefix + "deviation", output.deviation);
  messages.Put(prefix + "progress", ProgressMessage(output.progress));
  messages.Put(prefix + "ahead", output.ahead);
  messages.PutData<std_msgs::Bool>(prefix + "is_blocked", output.blockage != nullptr);
  if (std::exchange(blockage_, output.blockage) != output.blockage && output.blockage) {
    PutBlockage(prefix + "blockage", *output.blockage, &messages);
  }
  for (const follower::DetourReport& detour : output.detours) {
    PutDetour(prefix + "new_detours", detour, &messages);
  }
  messages.PutData<std_msgs::Bool>(prefix + "is_on_detour", output.detour != nullptr);
  if (std::exchange(detour_, output.detour) != output.detour && output.detour) {
    PutDetour(prefix + "detour", *output.detour, &messages);
  }
  messages.Put(prefix + "boxes", BoxesMessage(output.boxes));
  for (const follower::Event& event : output.events) {
    messages.Put(prefix + "events", EventMessage(event));
  }
  messages.PutData<std_msgs::String>(prefix + "state", output.state);
  messages.PutData<std_msgs::String>(prefix + "outcome", NameOf(output.outcome.state));
  messages.PutData<std_msgs::String>(prefix + "reason", EndOf(output.outcome));
  messages.Put(prefix + "command", CommandMessage(output.command));
  return messages.Take();
}

follower::FollowerInput ToInput(const std::vector<TopicMessage>& messages) {
  follower::FollowerInput input;
  input.clock = The<std_msgs::Time>(messages, "clock").data;
  if (!All<std_msgs::Float64MultiArray>(messages, "parameters").empty()) {
    input.parameters = ToParameters(The<std_msgs::Float64MultiArray>(messages, "parameters"));
  }
  input.is_fresh = !All<std_msgs::Bool>(messages, "is_fresh").empty();
  const std::vector<nav_msgs::Path> paths = All<nav_msgs::Path>(messages, "path");
  if (!paths.empty()) {
    input.path = ToPath(The<nav_msgs::Path>(messages, "path"));
  }
  for (const sensor_msgs::Joy& contact : All<sensor_msgs::Joy>(messages, "contacts")) {
    input.contacts.push_back(ToContact(contact));
  }
  for (const std_msgs::Time& stamp : All<std_msgs::Time>(messages, "back_contacts")) {
    input.back_contacts.push_back(stamp.data);
  }
  const costmap_2d::Costmap2D map = ToMap(messages, "local_map");
  input.map = follower::ToLocalMapData(map);
  input.robot = ToRobot(The<geometry_msgs::PoseStamped>(messages, "robot"), map);
  return input;
}

}  // namespace controller_base::recording
