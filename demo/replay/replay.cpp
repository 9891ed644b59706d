#include "demo/replay/replay.h"

#include <ros/message_operations.h>
#include <ros/serialization.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>
#include <variant>

#include "follower/follower_session.h"
#include "recording/follower_messages.h"

namespace controller_base::demo {
namespace {

constexpr char kNothing[] = "nothing";

std::vector<std::uint8_t> Bytes(const Message& message) {
  return std::visit(
      [](const auto& typed) {
        std::vector<std::uint8_t> bytes(ros::serialization::serializationLength(typed));
        ros::serialization::OStream stream(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        ros::serialization::serialize(stream, typed);
        return bytes;
      },
      message);
}

std::string Text(const Message& message) {
  std::ostringstream text;
  text.precision(std::numeric_limits<double>::max_digits10);
  std::visit(
      [&](const auto& typed) {
        ros::message_operations::Printer<std::decay_t<decltype(typed)>>::stream(text, "", typed);
      },
      message);
  return text.str();
}

// Spaces before it.
std::size_t Depth(std::string_view line) { return std::min(line.find_first_not_of(' '), line.size()); }

// "pose." for "  pose: "; nothing for "  poses[]", whose elements bring their array's name.
std::string Prefix(std::string_view line) {
  const std::size_t end = line.rfind(':');
  return end == std::string_view::npos ? "" : std::string(line.substr(Depth(line), end - Depth(line))) + '.';
}

// The fields of a message one after the other, each with all of its name: "poses[1].pose.position.x: 0.5". ROS prints
// trees: what belongs to a line stands below it, farther to the right.
class Fields {
 public:
  explicit Fields(const Message& message) : text_(Text(message)), rest_(text_), line_(TakeLine()) {}
  Fields(const Fields&) = delete;
  Fields& operator=(const Fields&) = delete;

  // Nothing after the last one.
  std::optional<std::string> Next() {
    while (line_) {
      const std::string_view line = *std::exchange(line_, TakeLine());
      const std::size_t depth = Depth(line);
      while (!above_.empty() && above_.back().first >= depth) {
        above_.pop_back();
      }
      const std::string prefix = above_.empty() ? "" : above_.back().second;
      if (!line_ || Depth(*line_) <= depth) {
        return prefix + std::string(line.substr(depth));
      }
      above_.emplace_back(depth, prefix + Prefix(line));
    }
    return std::nullopt;
  }

 private:
  std::optional<std::string_view> TakeLine() {
    if (rest_.empty()) {
      return std::nullopt;
    }
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return line;
  }

  const std::string text_;
  std::string_view rest_;
  std::optional<std::string_view> line_;                    // the next one
  std::vector<std::pair<std::size_t, std::string>> above_;  // depth and whole prefix
};

// Its first fields.
std::string Summary(const Message& message) {
  constexpr std::size_t kEnough = 80;  // letters
  Fields fields(message);
  std::string summary;
  while (const std::optional<std::string> field = fields.Next()) {
    if (summary.size() + field->size() > kEnough) {
      return summary + " ...";
    }
    summary += (summary.empty() ? "" : ", ") + *field;
  }
  return summary;
}

std::string Shortened(const std::string& value) {
  constexpr std::size_t kLongest = 200;  // letters
  return value.size() > kLongest ? value.substr(0, kLongest) + " ..." : value;
}

Difference Differing(const TopicMessage& recorded, const TopicMessage& replayed) {
  Fields recorded_fields(recorded.message);
  Fields replayed_fields(replayed.message);
  std::optional<std::string> a;
  std::optional<std::string> b;
  do {
    a = recorded_fields.Next();
    b = replayed_fields.Next();
  } while (a && a == b);
  return {recorded.topic, Shortened(a.value_or(kNothing)), Shortened(b.value_or(kNothing))};
}

bool Has(const std::vector<TopicMessage>& messages, std::size_t from, const std::string& topic) {
  return std::any_of(messages.begin() + static_cast<std::ptrdiff_t>(from), messages.end(),
                     [&](const TopicMessage& message) { return message.topic == topic; });
}

}  // namespace

std::optional<Difference> FirstDifference(const std::vector<TopicMessage>& recorded,
                                          const std::vector<TopicMessage>& replayed) {
  for (std::size_t i = 0; i < std::max(recorded.size(), replayed.size()); ++i) {
    if (i >= recorded.size() ||
        (i < replayed.size() && Has(replayed, i, recorded[i].topic) && recorded[i].topic != replayed[i].topic)) {
      return Difference{replayed[i].topic, kNothing, Summary(replayed[i].message)};
    }
    if (i >= replayed.size() || recorded[i].topic != replayed[i].topic) {
      return Difference{recorded[i].topic, Summary(recorded[i].message), kNothing};
    }
    if (recorded[i].message.index() != replayed[i].message.index() ||
        Bytes(recorded[i].message) != Bytes(replayed[i].message)) {
      return Differing(recorded[i], replayed[i]);
    }
  }
  return std::nullopt;
}

ReplayReport Replay(DriveBag* bag, const std::function<bool()>& stop) {
  follower::FollowerSession follower(nullptr);
  recording::OutputMessages outputs;
  ReplayReport report;
  while (!stop()) {
    const std::optional<RecordedCycle> cycle = bag->Next();
    if (!cycle) {
      return report;
    }
    report.time = cycle->time;
    ros::Time::setNow(cycle->input.clock);
    report.difference = FirstDifference(cycle->outputs, outputs.Next(follower.Cycle(cycle->input)));
    if (report.difference) {
      return report;
    }
    ++report.cycles;
    report.outputs += cycle->outputs.size();
  }
  return report;
}

}  // namespace controller_base::demo
