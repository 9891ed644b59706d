#include "demo/replay/bag_recorder.h"

#include <rosbag/bag.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <variant>

#include "demo/output/output_folder.h"
#include "recording/bag_format.h"

namespace controller_base::demo {
namespace {

[[noreturn]] void Fail(const std::string& file, const std::string& why) {
  throw OutputError("cannot write the bag " + file + ": " + why);
}

std::unique_ptr<rosbag::Bag> Open(const std::string& file, const recording::ActiveFile& active) {
  try {
    auto bag = std::make_unique<rosbag::Bag>(active.name(), rosbag::bagmode::Write);
    bag->setCompression(rosbag::compression::LZ4);
    return bag;
  } catch (const std::exception& error) {  // rosbag's own, and those of the plug-ins that it loads
    active.Remove();
    Fail(file, error.what());
  }
}

// Latched topics are recorded as such, so that whoever comes later to a bag that is played still gets them.
bool IsLatched(const std::string& topic) {
  const std::vector<Topic>& topics = DriveTopics();
  return std::any_of(topics.begin(), topics.end(),
                     [&](const Topic& known) { return known.is_latched && kTopicPrefix + known.name == topic; });
}

template <typename Type>
boost::shared_ptr<ros::M_string> ConnectionHeader(const std::string& topic) {
  auto header = boost::make_shared<ros::M_string>();
  (*header)["callerid"] = "/controller_base_demo";
  (*header)["latching"] = IsLatched(topic) ? "1" : "0";
  (*header)["md5sum"] = ros::message_traits::MD5Sum<Type>::value();
  (*header)["message_definition"] = ros::message_traits::Definition<Type>::value();
  (*header)["type"] = ros::message_traits::DataType<Type>::value();
  return header;
}

}  // namespace

BagRecorder::BagRecorder(const std::string& file, const costmap_2d::Costmap2D& map)
    : file_(file), active_(file), bag_(Open(file, active_)), shown_(map, this) {}

BagRecorder::~BagRecorder() {
  if (bag_ == nullptr) {
    return;
  }
  try {
    Close();
  } catch (const OutputError&) {
    // Something else ended the drive, and is told already; FILE.active keeps what could be written.
  }
}

void BagRecorder::OnCycle(const simulation::CycleReport& cycle) {
  next_stamp_ = ClockMessage(cycle).clock;
  if (!has_cycles_) {
    Write({recording::kVersionTopic, DataMessage<std_msgs::UInt64>(recording::kBagVersion)});
    has_cycles_ = true;
  }
  Write({"/clock", ClockMessage(cycle)});
  Write({"/tf", FrameMessage(cycle)});
  Write(recording::InputMessages(cycle.input));
  Write(outputs_.Next(cycle.output));
  shown_.OnCycle(cycle);
  Write(waiting_);
  waiting_.clear();
}

void BagRecorder::OnEnd(const simulation::DriveRecord& /*drive*/) { Close(); }

void BagRecorder::Write(const std::vector<TopicMessage>& messages) {
  for (const TopicMessage& message : messages) {
    Write(message);
  }
}

void BagRecorder::Write(const TopicMessage& message) {
  const auto write = [&](const auto& typed) {
    using Type = std::decay_t<decltype(typed)>;
    bag_->write(message.topic, next_stamp_, typed, ConnectionHeader<Type>(message.topic));
  };
  try {
    std::visit(write, message.message);
  } catch (const rosbag::BagException& error) {
    GiveUp(error.what());
  }
  next_stamp_ += ros::Duration().fromNSec(1);
}

void BagRecorder::Close() {
  try {
    bag_->close();
  } catch (const rosbag::BagException& exception) {
    GiveUp(exception.what());
  }
  bag_.reset();
  if (has_cycles_) {
    active_.Complete();
  } else {
    active_.Remove();
  }
}

// A bag that failed to write tries again when it is destroyed, and ends the program when it fails again: so it never
// is.
void BagRecorder::GiveUp(const std::string& why) {
  static auto& abandoned = *new std::vector<rosbag::Bag*>;
  abandoned.push_back(bag_.release());
  Fail(file_, why);
}

}  // namespace controller_base::demo
