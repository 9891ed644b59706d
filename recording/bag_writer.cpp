#include "recording/bag_writer.h"

#include <rosbag/bag.h>

#include <exception>
#include <type_traits>
#include <variant>
#include <vector>

#include "recording/bag_format.h"
#include "recording/output_error.h"

namespace controller_base::recording {
namespace {

[[noreturn]] void Fail(const std::string& file, const std::string& why) {
  throw OutputError("cannot write the bag " + file + ": " + why);
}

std::unique_ptr<rosbag::Bag> Open(const std::string& file, const ActiveFile& active) {
  try {
    auto bag = std::make_unique<rosbag::Bag>(active.name(), rosbag::bagmode::Write);
    bag->setCompression(rosbag::compression::LZ4);
    return bag;
  } catch (const std::exception& error) {  // rosbag's own, and those of the plug-ins that it loads
    active.Remove();
    Fail(file, error.what());
  }
}

template <typename Type>
boost::shared_ptr<ros::M_string> ConnectionHeader(const std::string& sender, bool is_latched) {
  auto header = boost::make_shared<ros::M_string>();
  (*header)["callerid"] = sender;
  (*header)["latching"] = is_latched ? "1" : "0";
  (*header)["md5sum"] = ros::message_traits::MD5Sum<Type>::value();
  (*header)["message_definition"] = ros::message_traits::Definition<Type>::value();
  (*header)["type"] = ros::message_traits::DataType<Type>::value();
  return header;
}

}  // namespace

BagWriter::BagWriter(const std::string& file, const std::string& sender)
    : file_(file), sender_(sender), active_(file), bag_(Open(file, active_)) {}

BagWriter::~BagWriter() {
  if (bag_ == nullptr) {
    return;
  }
  try {
    Close();
  } catch (const OutputError&) {
    // Something else ended the drive, and is told already; FILE.active keeps what could be written.
  }
}

void BagWriter::BeginCycle(const ros::Time& stamp) {
  next_stamp_ = stamp;
  if (!has_cycles_) {
    Write({kVersionTopic, DataMessage<std_msgs::UInt64>(kBagVersion)});
    has_cycles_ = true;
  }
}

void BagWriter::Write(const TopicMessage& message, bool is_latched) {
  const auto write = [&](const auto& typed) {
    using Type = std::decay_t<decltype(typed)>;
    bag_->write(message.topic, next_stamp_, typed, ConnectionHeader<Type>(sender_, is_latched));
  };
  try {
    std::visit(write, message.message);
  } catch (const rosbag::BagException& error) {
    GiveUp(error.what());
  }
  next_stamp_ += ros::Duration().fromNSec(1);
}

void BagWriter::Close() {
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
void BagWriter::GiveUp(const std::string& why) {
  static auto& abandoned = *new std::vector<rosbag::Bag*>;
  abandoned.push_back(bag_.release());
  Fail(file_, why);
}

}  // namespace controller_base::recording
