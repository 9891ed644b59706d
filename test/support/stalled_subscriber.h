#ifndef TEST_SUPPORT_STALLED_SUBSCRIBER_H_
#define TEST_SUPPORT_STALLED_SUBSCRIBER_H_

#include <ros/datatypes.h>
#include <ros/serialization.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace controller_base_test {

// A message of so many bytes clogs the connection to a subscriber that does not read.
inline constexpr std::size_t kMoreThanAConnectionHolds = 16'000'000;

// A subscriber of one of this process's own topics over a real TCP connection, as another process would have it, that
// reads nothing until it is told to. Once a large message clogs the connection, what follows waits in the publisher's
// queue or is dropped there: what arrives in the end tells how long that queue is.
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

  // The header.seq of the messages that wait and still come, up to the one numbered `last`. Stamped messages only.
  // Without `last` at the end when that does not come.
  std::vector<std::uint32_t> DrainSequenceNumbers(std::uint32_t last);

 private:
  void Connect(const std::string& host, int port);
  void ShakeHands(const std::string& topic);
  void AwaitRegistration(const std::string& topic, std::size_t subscribers_before) const;
  std::optional<std::vector<std::uint8_t>> ReadBlock();  // a length-prefixed block; nothing when none comes
  bool ReadExactly(std::uint8_t* to, std::size_t bytes);

  int descriptor_ = -1;
  ros::M_string connection_header_;
};

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_STALLED_SUBSCRIBER_H_
