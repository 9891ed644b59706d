#ifndef CONTROLLER_BASE_RECORDING_BAG_WRITER_H_
#define CONTROLLER_BASE_RECORDING_BAG_WRITER_H_

#include <ros/time.h>

#include <memory>
#include <string>

#include "recording/active_file.h"
#include "recording/message.h"

namespace rosbag {
class Bag;
}

namespace controller_base::recording {

// Writes a bag that begins with kVersionTopic. The file is called FILE.active until it is complete.
class BagWriter {
 public:
  // `sender` is the node that the messages are recorded as. Throws OutputError where the file cannot be written, and so
  // do the calls below.
  BagWriter(const std::string& file, const std::string& sender);
  // Completes what was recorded; a bag without a single cycle is removed.
  ~BagWriter();
  BagWriter(const BagWriter&) = delete;
  BagWriter& operator=(const BagWriter&) = delete;

  // The messages until the next cycle are recorded a nanosecond apart, from `stamp` on, which must grow.
  void BeginCycle(const ros::Time& stamp);
  // Latched messages are recorded as such, so that whoever comes later to a bag that is played still gets them.
  void Write(const TopicMessage& message, bool is_latched = false);
  // Nothing can be written afterwards.
  void Close();

 private:
  [[noreturn]] void GiveUp(const std::string& why);

  std::string file_;
  std::string sender_;
  ActiveFile active_;
  std::unique_ptr<rosbag::Bag> bag_;  // null once it is complete, or has failed
  bool has_cycles_ = false;           // and with them kVersionTopic
  ros::Time next_stamp_;              // of the next message
};

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_BAG_WRITER_H_
