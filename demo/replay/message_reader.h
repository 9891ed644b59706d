#ifndef CONTROLLER_BASE_DEMO_REPLAY_MESSAGE_READER_H_
#define CONTROLLER_BASE_DEMO_REPLAY_MESSAGE_READER_H_

#include <ros/serialization.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace controller_base::demo {

// Bytes that are no message of the type; what() is a part of a line.
class MessageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A stream for ros::serialization that makes room for as many elements as the message has bytes for. roscpp's own one
// makes room for as many as the message claims.
class MessageStream : public ros::serialization::Stream {
 public:
  static constexpr ros::serialization::StreamType
      stream_type =  // NOLINT(readability-identifier-naming): roscpp asks for it
      ros::serialization::stream_types::Input;

  MessageStream(std::uint8_t* data, std::uint32_t length) : Stream(data, length) {}

  template <typename Type>
  void next(Type& value) {
    ros::serialization::deserialize(*this, value);
  }
  template <typename Type, typename Allocator>
  void next(std::vector<Type, Allocator>& elements) {
    CheckCount(ros::serialization::serializationLength(Type()));
    ros::serialization::deserialize(*this, elements);
  }

 private:
  // `smallest`: bytes of an element whose own texts and lists are empty.
  void CheckCount(std::uint32_t smallest) {
    MessageStream count_only = *this;
    std::uint32_t count = 0;
    count_only.next(count);
    if (std::uint64_t{count} * smallest > count_only.getLength()) {
      throw MessageError("claims " + std::to_string(count) + " elements in " + std::to_string(count_only.getLength()) +
                         " bytes");
    }
  }
};

// The message that `bytes` are, to the last one. Throws MessageError.
template <typename Type>
Type ReadMessage(std::string_view bytes) {
  // The stream's type is the same for reading and writing; this one is only read from.
  auto* const data = reinterpret_cast<std::uint8_t*>(const_cast<char*>(bytes.data()));
  MessageStream stream(data, static_cast<std::uint32_t>(bytes.size()));
  Type message;
  try {
    stream.next(message);
  } catch (const ros::serialization::StreamOverrunException&) {
    throw MessageError("is shorter than it claims");
  }
  if (stream.getLength() > 0) {
    throw MessageError("is longer than it claims");
  }
  return message;
}

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_REPLAY_MESSAGE_READER_H_
