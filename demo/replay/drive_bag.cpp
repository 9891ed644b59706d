#include "demo/replay/drive_bag.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <utility>
#include <variant>

#include "demo/replay/bag_file.h"
#include "demo/replay/message_reader.h"
#include "follower/format.h"
#include "recording/bag_format.h"
#include "recording/follower_messages.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestMessage = 8U << 20U;  // bytes; a local map of the finest resolution has 1.4 MB
constexpr std::size_t kLargestCycle = 64U << 20U;   // bytes
constexpr std::size_t kMostMessages = 10'000;       // in a cycle

bool StartsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

// What a bag's reader would leave open.
void CheckFile(const std::string& file) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    throw BagError(file + ": no such file");
  }
  if (!fs::is_regular_file(file, error)) {
    throw BagError(file + ": not a file");
  }
  const std::string wanted = BagFile::kVersionLine;
  const std::string any_version = "#ROSBAG V";
  std::string line(wanted.size(), '\0');
  std::ifstream in(file, std::ios::binary);
  in.read(line.data(), static_cast<std::streamsize>(line.size()));
  if (in.gcount() == 0) {
    throw BagError(file + (in.eof() ? ": an empty file" : ": cannot be read"));
  }
  if (!StartsWith(line, any_version)) {
    throw BagError(file + ": not a bag");
  }
  if (line != wanted) {
    throw BagError(file + ": a bag file of another version than " + wanted.substr(0, wanted.size() - 1));
  }
}

std::string AtTime(double time) { return follower::Format(": at %.2f s: ", time); }

// Tries the types of Message one after the other, from the one with this index on.
template <std::size_t kIndex = 0>
Message Decode(const BagMessage& message) {
  if constexpr (kIndex < std::variant_size_v<Message>) {
    using Type = std::variant_alternative_t<kIndex, Message>;
    const bool is_of_type = message.connection->type == ros::message_traits::DataType<Type>::value() &&
                            message.connection->md5sum == ros::message_traits::MD5Sum<Type>::value();
    return is_of_type ? Message(ReadMessage<Type>(message.data)) : Decode<kIndex + 1>(message);
  }
  throw MessageError("has the unexpected type " + message.connection->type);
}

}  // namespace

// The messages that make a follower's cycles, in the order in which they were recorded. Throws BagError.
class DriveBag::Messages {
 public:
  explicit Messages(const std::string& file) : file_(file), bag_(Open(file)) { Advance(); }

  bool AreLeft() const { return next_.has_value(); }
  const std::string& NextTopic() const { return next_->connection->topic; }
  double NextTime() const { return next_->stamp.toSec() - recording::kFirstStamp; }  // s since the drive began
  std::size_t NextSize() const { return next_->data.size(); }

  TopicMessage Take() {
    try {
      if (next_->data.size() > kLargestMessage) {
        throw MessageError(follower::Format("has %zu bytes; %zu are the most", next_->data.size(), kLargestMessage));
      }
      TopicMessage taken{NextTopic(), Decode(*next_)};
      Advance();
      return taken;
    } catch (const MessageError& error) {
      throw BagError(file_ + AtTime(NextTime()) + NextTopic() + " " + error.what());
    }
  }

 private:
  static BagFile Open(const std::string& file) {
    try {
      return BagFile(file);
    } catch (const BagFileError& error) {
      throw BagError(file + ": " + error.what());
    }
  }

  static bool IsOfInterest(const std::string& topic) {
    return topic == recording::kVersionTopic || StartsWith(topic, recording::kInputPrefix) ||
           StartsWith(topic, recording::kOutputPrefix);
  }

  void Advance() {
    try {
      do {
        next_ = bag_.Next();
      } while (next_ && !IsOfInterest(next_->connection->topic));
    } catch (const BagFileError& error) {
      throw BagError(file_ + ": " + error.what());
    }
  }

  std::string file_;
  BagFile bag_;
  std::optional<BagMessage> next_;
};

DriveBag::DriveBag(const std::string& file) : file_(file) {
  CheckFile(file);
  messages_ = std::make_unique<Messages>(file);
  if (!messages_->AreLeft() || messages_->NextTopic() != recording::kVersionTopic) {
    throw BagError(file + ": not the bag of a drive: it does not begin with " + recording::kVersionTopic);
  }
  const Message message = messages_->Take().message;
  const auto* version = std::get_if<std_msgs::UInt64>(&message);
  if (version == nullptr || version->data == 0 || version->data > recording::kBagVersion) {
    throw BagError(file + ": recorded in version " + (version == nullptr ? "?" : std::to_string(version->data)) +
                   " of the format; this program reads versions up to " + std::to_string(recording::kBagVersion));
  }
  first_ = Read();
  if (!first_) {
    throw BagError(file + ": holds no cycles");
  }
}

DriveBag::~DriveBag() = default;

std::optional<RecordedCycle> DriveBag::Next() { return first_ ? std::exchange(first_, std::nullopt) : Read(); }

std::optional<RecordedCycle> DriveBag::Read() {
  if (!messages_->AreLeft()) {
    return std::nullopt;
  }
  RecordedCycle cycle{};
  cycle.time = messages_->NextTime();
  try {
    cycle.input = recording::ToInput(TakeCycle(&cycle.outputs));
    CheckClock(cycle.input.clock);
    has_path_ = has_path_ || cycle.input.path;
    if (!has_path_) {
      throw recording::InputError("there is no path yet");
    }
  } catch (const recording::InputError& error) {
    throw BagError(file_ + AtTime(cycle.time) + error.what());
  }
  return cycle;
}

// Two times of ROS differ by less than 2^31 s, and the follower adds its pauses to them.
void DriveBag::CheckClock(const ros::Time& clock) {
  constexpr double kLongestSpan = std::numeric_limits<std::int32_t>::max();                  // s
  constexpr std::uint32_t kLatestClock = std::numeric_limits<std::uint32_t>::max() - 86400;  // s
  earliest_clock_ = std::min(earliest_clock_, clock);
  latest_clock_ = std::max(latest_clock_, clock);
  if (latest_clock_.toSec() - earliest_clock_.toSec() > kLongestSpan || clock.sec > kLatestClock) {
    throw recording::InputError(recording::kCycleTopic +
                                follower::Format(" says %u s: a jump that ROS cannot tell", clock.sec));
  }
}

std::vector<TopicMessage> DriveBag::TakeCycle(std::vector<TopicMessage>* outputs) {
  std::vector<TopicMessage> inputs;
  std::size_t bytes = 0;
  do {
    bytes += messages_->NextSize();
    if (bytes > kLargestCycle || inputs.size() + outputs->size() >= kMostMessages) {
      throw recording::InputError(
          follower::Format("a cycle of more than %zu messages or %zu bytes", kMostMessages, kLargestCycle));
    }
    TopicMessage message = messages_->Take();
    (StartsWith(message.topic, recording::kInputPrefix) ? &inputs : outputs)->push_back(std::move(message));
  } while (messages_->AreLeft() && messages_->NextTopic() != recording::kCycleTopic);
  return inputs;
}

}  // namespace controller_base::demo
