#include "demo/replay/bag_recorder.h"

#include <algorithm>

#include "recording/bag_format.h"
#include "simulation/drive_record.h"

namespace controller_base::demo {
namespace {

static_assert(simulation::kStartTime == recording::kFirstStamp);

// Latched topics are recorded as such, so that whoever comes later to a bag that is played still gets them.
bool IsLatched(const std::string& topic) {
  const std::vector<Topic>& topics = DriveTopics();
  return std::any_of(topics.begin(), topics.end(),
                     [&](const Topic& known) { return known.is_latched && kTopicPrefix + known.name == topic; });
}

}  // namespace

BagRecorder::BagRecorder(const std::string& file, const costmap_2d::Costmap2D& map)
    : bag_(file, "/controller_base_demo"), shown_(map, this) {}

void BagRecorder::OnCycle(const simulation::CycleReport& cycle) {
  const rosgraph_msgs::Clock clock = ClockMessage(cycle);
  bag_.BeginCycle(clock.clock);
  Write({{"/clock", clock}, {"/tf", FrameMessage(cycle)}});
  Write(recording::InputMessages(cycle.input));
  Write(outputs_.Next(cycle.output));
  shown_.OnCycle(cycle);
  Write(waiting_);
  waiting_.clear();
}

void BagRecorder::OnEnd(const simulation::DriveRecord& /*drive*/) { bag_.Close(); }

void BagRecorder::Write(const std::vector<TopicMessage>& messages) {
  for (const TopicMessage& message : messages) {
    bag_.Write(message, IsLatched(message.topic));
  }
}

}  // namespace controller_base::demo
