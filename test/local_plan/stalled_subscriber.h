#ifndef TEST_LOCAL_PLAN_STALLED_SUBSCRIBER_H_
#define TEST_LOCAL_PLAN_STALLED_SUBSCRIBER_H_

#include <ros/datatypes.h>
#include <ros/serialization.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace controller_base_test {

// A subscriber of one of this process's own topics over a real TCP connection, as another process would have it, that
// reads nothing until it is told to. Whatever the connection cannot take waits in the publisher's queue or is dropped
// there, so what arrives in the end tells how long that queue is.
//
// Speaks TCPROS by hand, because a subscriber of the ROS library inside the publisher's process is served without a
// connection and without a queue.
class StalledSubscriber {
 public:
  // Returns once the publisher knows this subscriber. Throws std::runtime_error when that does not happen.
  explicit StalledSubscriber(const std::string& topic);
  ~StalledSubscriber();
  StalledSubscriber(const StalledSubscriber&) = delete;
  StalledSubscriber& operator=(const StalledSubscriber&) = delete;

  // What the publisher said of itself: "type", "latching" ("0" or "1") and so on.
  const ros::M_string& ConnectionHeader() const { return connection_header_; }

  // The header.seq of all messages that wait, and of those that still come until none did for a while; `Message` must
  // begin with a std_msgs/Header.
  std::vector<std::uint32_t> DrainSequenceNumbers();

 private:
  void Connect(const std::string& host, int port);
  void ShakeHands(const std::string& topic);
  void AwaitRegistration(const std::string& topic, std::size_t subscribers_before) const;
  std::optional<std::vector<std::uint8_t>> ReadBlock();  // a length-prefixed block; nothing when none comes
  bool ReadExactly(std::uint8_t* to, std::size_t bytes);

  int descriptor_ = -1;
  ros::M_string connection_header_;
};

// How many numbers at the end of `sequence` follow each other without a gap; 0 when there is no gap at all.
std::size_t LengthAfterLastGap(const std::vector<std::uint32_t>& sequence);

}  // namespace controller_base_test

#endif  // TEST_LOCAL_PLAN_STALLED_SUBSCRIBER_H_
