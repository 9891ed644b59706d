#ifndef TEST_SUPPORT_SAME_MESSAGE_H_
#define TEST_SUPPORT_SAME_MESSAGE_H_

#include <gmock/gmock.h>
#include <ros/serialization.h>

#include <cstdint>
#include <vector>

namespace controller_base_test {

template <typename Message>
std::vector<std::uint8_t> BytesOf(const Message& message) {
  std::vector<std::uint8_t> bytes(ros::serialization::serializationLength(message));
  ros::serialization::OStream stream(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  ros::serialization::serialize(stream, message);
  return bytes;
}

// Matches a ROS message that equals `expected` in every field, bit for bit.
MATCHER_P(SameMessage, expected, "is the same message") { return BytesOf(arg) == BytesOf(expected); }

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_SAME_MESSAGE_H_
