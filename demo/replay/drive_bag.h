#ifndef CONTROLLER_BASE_DEMO_REPLAY_DRIVE_BAG_H_
#define CONTROLLER_BASE_DEMO_REPLAY_DRIVE_BAG_H_

#include <ros/time.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "demo/messages/message.h"
#include "follower/follower_session.h"

namespace controller_base::demo {

// A file that is no complete bag of a drive; what() is one line that begins with its name.
class BagError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct RecordedCycle {
  double time;  // s since the drive began
  follower::FollowerInput input;
  std::vector<TopicMessage> outputs;  // as recording::OutputMessages makes them
};

// Reads what BagRecorder wrote, cycle by cycle.
class DriveBag {
 public:
  // Reads the first cycle. Throws BagError, and so does Next.
  explicit DriveBag(const std::string& file);
  ~DriveBag();
  DriveBag(const DriveBag&) = delete;
  DriveBag& operator=(const DriveBag&) = delete;

  // The next cycle; nothing after the last one.
  std::optional<RecordedCycle> Next();

 private:
  class Messages;

  std::optional<RecordedCycle> Read();
  // The inputs of the next cycle.
  std::vector<TopicMessage> TakeCycle(std::vector<TopicMessage>* outputs);
  void CheckClock(const ros::Time& clock);

  std::string file_;
  std::unique_ptr<Messages> messages_;
  std::optional<RecordedCycle> first_;  // until it is taken
  bool has_path_ = false;
  ros::Time earliest_clock_ = ros::TIME_MAX;
  ros::Time latest_clock_ = ros::TIME_MIN;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_REPLAY_DRIVE_BAG_H_
