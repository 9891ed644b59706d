#include "demo/watch/drive_publisher.h"

#include <tf2_msgs/TFMessage.h>

#include <cstdint>
#include <type_traits>
#include <variant>

namespace controller_base::demo {
namespace {

constexpr std::uint32_t kFrameQueueSize = 20;  // a second

std::map<std::string, ros::Publisher> Advertise(const std::vector<Topic>& topics) {
  ros::NodeHandle node;
  std::map<std::string, ros::Publisher> publishers;
  for (const Topic& topic : topics) {
    const std::string name = kTopicPrefix + topic.name;
    publishers[name] = std::visit(
        [&](const auto& prototype) {
          return node.advertise<std::decay_t<decltype(prototype)>>(name, topic.queue_size, topic.is_latched);
        },
        topic.prototype);
  }
  return publishers;
}

}  // namespace

DrivePublisher::DrivePublisher(const costmap_2d::Costmap2D& map)
    : publishers_(Advertise(DriveTopics())), messages_(map, this) {}

bool DrivePublisher::IsWatched() const { return Wants(std::string(kTopicPrefix) + "markers"); }

void DrivePublisher::Take(const std::string& topic, const Message& message) {
  std::visit([&](const auto& typed) { publishers_.at(topic).publish(typed); }, message);
}

FramePublisher::FramePublisher() : transforms_(node_.advertise<tf2_msgs::TFMessage>("/tf", kFrameQueueSize)) {}

void FramePublisher::OnCycle(const simulation::CycleReport& cycle) { transforms_.publish(FrameMessage(cycle)); }

}  // namespace controller_base::demo
