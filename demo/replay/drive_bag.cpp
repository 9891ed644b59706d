#include "demo/replay/drive_bag.h"

#include <console_bridge/console.h>
#include <rosbag/bag.h>
#include <rosbag/view.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>
#include <variant>

#include "demo/messages/follower_messages.h"
#include "demo/replay/bag_format.h"
#include "simulation/closed_loop.h"

namespace controller_base_demo {
namespace {

namespace fs = std::filesystem;

constexpr char kBagFileVersion[] = "#ROSBAG V2.0";  // its first line

bool StartsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

// What rosbag's own words would leave open.
void CheckFile(const std::string& file) {
  if (!fs::exists(file)) {
    throw BagError(file + ": no such file");
  }
  if (!fs::is_regular_file(file)) {
    throw BagError(file + ": not a file");
  }
  std::ifstream in(file, std::ios::binary);
  std::string line;
  if (!std::getline(in, line)) {
    throw BagError(file + (in.eof() ? ": an empty file" : ": cannot be read"));
  }
  if (!StartsWith(line, "#ROSBAG V")) {
    throw BagError(file + ": not a bag");
  }
  if (line != kBagFileVersion) {
    throw BagError(file + ": a bag file of another version than " + kBagFileVersion);
  }
}

// rosbag and its compression throw exceptions of many types.
template <typename Read>
auto ReadFrom(const std::string& file, const Read& read) {
  try {
    return read();
  } catch (const BagError&) {
    throw;
  } catch (const rosbag::BagUnindexedException&) {
    throw BagError(file + ": the recording was cut off: it has no index");
  } catch (const std::exception& error) {
    throw BagError(file + ": cut off or damaged: " + error.what());
  }
}

// Tries the types of Message one after the other, from the one with this index on.
template <std::size_t kIndex = 0>
std::optional<Message> Decode(const rosbag::MessageInstance& instance) {
  if constexpr (kIndex < std::variant_size_v<Message>) {
    using Type = std::variant_alternative_t<kIndex, Message>;
    const auto message = instance.instantiate<Type>();
    return message != nullptr ? std::optional<Message>(*message) : Decode<kIndex + 1>(instance);
  }
  return std::nullopt;
}

std::string AtTime(double time) {
  char text[48];
  std::snprintf(text, sizeof(text), ": at %.2f s: ", time);
  return text;
}

}  // namespace

// The messages that make a follower's cycles, in the order in which they were recorded.
class DriveBag::Messages {
 public:
  struct Recorded {
    ros::Time stamp;
    TopicMessage message;
  };

  explicit Messages(const std::string& file)
      : file_(file), bag_(file), view_(bag_, &Messages::IsOfInterest), next_(view_.begin()) {}

  bool AreLeft() { return next_ != view_.end(); }
  std::string NextTopic() const { return next_->getTopic(); }

  Recorded Take() {
    const rosbag::MessageInstance& instance = *next_;
    const std::optional<Message> message = Decode(instance);
    if (!message) {
      throw BagError(file_ + ": " + instance.getTopic() + " has the unexpected type " + instance.getDataType());
    }
    Recorded recorded{instance.getTime(), {instance.getTopic(), *message}};
    ++next_;
    return recorded;
  }

 private:
  static bool IsOfInterest(const rosbag::ConnectionInfo* connection) {
    return connection->topic == kVersionTopic || StartsWith(connection->topic, kInputPrefix) ||
           StartsWith(connection->topic, kOutputPrefix);
  }

  std::string file_;
  rosbag::Bag bag_;
  rosbag::View view_;
  rosbag::View::iterator next_;
};

DriveBag::DriveBag(const std::string& file) : file_(file) {
  console_bridge::setLogLevel(console_bridge::CONSOLE_BRIDGE_LOG_NONE);  // what it would add to the exceptions
  CheckFile(file);
  ReadFrom(file, [&] {
    messages_ = std::make_unique<Messages>(file);
    if (!messages_->AreLeft() || messages_->NextTopic() != kVersionTopic) {
      throw BagError(file + ": not the bag of a drive: it does not begin with " + kVersionTopic);
    }
    const Message message = messages_->Take().message.message;
    const auto* version = std::get_if<std_msgs::UInt64>(&message);
    if (version == nullptr || version->data != kBagVersion) {
      throw BagError(file + ": recorded in version " + (version == nullptr ? "?" : std::to_string(version->data)) +
                     " of the format; this program reads version " + std::to_string(kBagVersion));
    }
    if (!messages_->AreLeft()) {
      throw BagError(file + ": holds no cycles");
    }
  });
}

DriveBag::~DriveBag() = default;

std::optional<RecordedCycle> DriveBag::Next() {
  return ReadFrom(file_, [&]() -> std::optional<RecordedCycle> {
    if (!messages_->AreLeft()) {
      return std::nullopt;
    }
    std::vector<TopicMessage> inputs;
    RecordedCycle cycle{};
    do {
      auto [stamp, message] = messages_->Take();
      if (inputs.empty()) {
        cycle.time = DriveTime(stamp);
      }
      (StartsWith(message.topic, kInputPrefix) ? inputs : cycle.outputs).push_back(std::move(message));
    } while (messages_->AreLeft() && messages_->NextTopic() != kCycleTopic);
    try {
      cycle.input = ToInput(inputs);
    } catch (const InputError& error) {
      throw BagError(file_ + AtTime(cycle.time) + error.what());
    }
    has_path_ = has_path_ || cycle.input.path;
    if (!has_path_) {
      throw BagError(file_ + AtTime(cycle.time) + "there is no path yet");
    }
    return cycle;
  });
}

}  // namespace controller_base_demo
