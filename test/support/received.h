#ifndef TEST_SUPPORT_RECEIVED_H_
#define TEST_SUPPORT_RECEIVED_H_

#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/subscriber.h>
#include <ros/time.h>

#include <cstddef>
#include <string>
#include <vector>

namespace controller_base_test {

inline constexpr double kMessageTimeout = 10.0;  // seconds of real time that a message may take

// A real subscriber of a topic, and every message that it received, in order.
//
// Messages come one after the other, so what was not sent shows before what was sent last: to see that a call published
// nothing, publish something known after it and expect that alone.
template <typename Message>
class Received {
 public:
  explicit Received(const std::string& topic) {
    handle_.setCallbackQueue(&queue_);
    subscriber_ = handle_.subscribe<Message>(
        topic, kUnlimited, [this](const typename Message::ConstPtr& message) { messages_.push_back(*message); });
  }
  Received(const Received&) = delete;
  Received& operator=(const Received&) = delete;

  // All messages so far, as soon as there are `count` of them; fewer when those do not come in time.
  const std::vector<Message>& AtLeast(std::size_t count) {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(kMessageTimeout);
    while (messages_.size() < count && ros::WallTime::now() < deadline) {
      queue_.callAvailable(ros::WallDuration(kMessageTimeout / 100));
    }
    return messages_;
  }

 private:
  static constexpr std::uint32_t kUnlimited = 0;

  ros::CallbackQueue queue_;
  std::vector<Message> messages_;
  ros::NodeHandle handle_;
  ros::Subscriber subscriber_;  // declared last: ends before what its callback uses
};

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_RECEIVED_H_
