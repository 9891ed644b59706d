#ifndef TEST_DEMO_REPLAY_BAG_EDIT_H_
#define TEST_DEMO_REPLAY_BAG_EDIT_H_

#include <ros/serialization.h>
#include <rosbag/bag.h>
#include <rosbag/view.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "simulation/drive_record.h"

namespace controller_base_test {

// A message as bytes, which need not be valid.
struct RawMessage {
  std::string type;
  std::string md5sum;
  std::string definition;
  std::vector<std::uint8_t> bytes;
};

inline RawMessage ToRaw(const rosbag::MessageInstance& instance) {
  RawMessage raw{instance.getDataType(), instance.getMD5Sum(), instance.getMessageDefinition(), {}};
  raw.bytes.resize(instance.size());
  ros::serialization::OStream stream(raw.bytes.data(), static_cast<std::uint32_t>(raw.bytes.size()));
  instance.write(stream);
  return raw;
}

// Deals with a message itself, or returns false.
using MessageFilter = std::function<bool(const rosbag::MessageInstance&, rosbag::Bag*)>;

// Copies a bag, but for the messages that `filter` deals with.
inline std::string CopyBag(const std::string& from, const std::string& to, const MessageFilter& filter,
                           rosbag::CompressionType compression = rosbag::compression::Uncompressed) {
  rosbag::Bag in(from);
  rosbag::Bag out(to, rosbag::bagmode::Write);
  out.setCompression(compression);
  rosbag::View view(in);
  for (const rosbag::MessageInstance& instance : view) {
    if (!filter(instance, &out)) {
      out.write(instance.getTopic(), instance.getTime(), instance);
    }
  }
  out.close();
  return to;
}

// Acts once, on the message on `topic` that was recorded at `time` (s into the drive) or is the next one after that.
template <typename Act>
MessageFilter Once(const std::string& topic, double time, const Act& act) {
  bool is_done = false;
  return [=](const rosbag::MessageInstance& instance, rosbag::Bag* out) mutable {
    if (is_done || instance.getTopic() != topic || controller_base::simulation::DriveTime(instance.getTime()) < time) {
      return false;
    }
    is_done = true;
    act(instance, out);
    return true;
  };
}

// Changes the message.
template <typename Type>
MessageFilter Altering(const std::string& topic, double time, const std::function<void(Type*)>& alter) {
  return Once(topic, time, [=](const rosbag::MessageInstance& instance, rosbag::Bag* out) {
    Type message = *instance.instantiate<Type>();
    alter(&message);
    out->write(topic, instance.getTime(), message);
  });
}

// Changes its bytes.
inline MessageFilter AlteringBytes(const std::string& topic, double time,
                                   const std::function<void(std::vector<std::uint8_t>*)>& alter) {
  return Once(topic, time, [=](const rosbag::MessageInstance& instance, rosbag::Bag* out) {
    RawMessage message = ToRaw(instance);
    alter(&message.bytes);
    out->write(topic, instance.getTime(), message);
  });
}

// Leaves out all messages on `topic` from then on.
inline MessageFilter Without(const std::string& topic, double time) {
  return [=](const rosbag::MessageInstance& instance, rosbag::Bag*) {
    return instance.getTopic() == topic && controller_base::simulation::DriveTime(instance.getTime()) >= time;
  };
}

}  // namespace controller_base_test

// What rosbag asks about a message's type.
namespace ros {
namespace message_traits {
template <>
struct MD5Sum<controller_base_test::RawMessage> {
  static const char* value(const controller_base_test::RawMessage& message) { return message.md5sum.c_str(); }
};
template <>
struct DataType<controller_base_test::RawMessage> {
  static const char* value(const controller_base_test::RawMessage& message) { return message.type.c_str(); }
};
template <>
struct Definition<controller_base_test::RawMessage> {
  static const char* value(const controller_base_test::RawMessage& message) { return message.definition.c_str(); }
};
}  // namespace message_traits

namespace serialization {
template <>
struct Serializer<controller_base_test::RawMessage> {
  template <typename Stream>
  static void write(Stream& stream, const controller_base_test::RawMessage& message) {
    std::memcpy(stream.advance(serializedLength(message)), message.bytes.data(), message.bytes.size());
  }
  static std::uint32_t serializedLength(const controller_base_test::RawMessage& message) {
    return static_cast<std::uint32_t>(message.bytes.size());
  }
};
}  // namespace serialization
}  // namespace ros

#endif  // TEST_DEMO_REPLAY_BAG_EDIT_H_
