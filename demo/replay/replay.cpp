#include "demo/replay/replay.h"

#include <ros/message_operations.h>
#include <ros/serialization.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <sstream>
#include <utility>
#include <variant>

#include "demo/messages/follower_messages.h"
#include "follower/follower_session.h"

namespace controller_base_demo {
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

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Spaces before it.
std::size_t Depth(const std::string& line) { return std::min(line.find_first_not_of(' '), line.size()); }

// "pose." for "  pose: "; nothing for "  poses[]", whose elements bring their array's name.
std::string Prefix(const std::string& line) {
  const std::size_t end = line.rfind(':');
  return end == std::string::npos ? "" : line.substr(Depth(line), end - Depth(line)) + '.';
}

// A line for each of its fields, with all of its name: "poses[1].pose.position.x: 0.5". ROS prints trees: what belongs
// to a line stands below it, farther to the right.
std::vector<std::string> Fields(const Message& message) {
  const std::vector<std::string> lines = Lines(Text(message));
  std::vector<std::string> fields;
  std::vector<std::pair<std::size_t, std::string>> above;  // depth and whole prefix
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::size_t depth = Depth(lines[i]);
    while (!above.empty() && above.back().first >= depth) {
      above.pop_back();
    }
    const std::string prefix = above.empty() ? "" : above.back().second;
    if (i + 1 < lines.size() && Depth(lines[i + 1]) > depth) {
      above.emplace_back(depth, prefix + Prefix(lines[i]));
    } else {
      fields.push_back(prefix + lines[i].substr(depth));
    }
  }
  return fields;
}

// Its first fields.
std::string Summary(const Message& message) {
  constexpr std::size_t kEnough = 80;  // letters
  std::string summary;
  for (const std::string& field : Fields(message)) {
    if (summary.size() + field.size() > kEnough) {
      return summary + " ...";
    }
    summary += (summary.empty() ? "" : ", ") + field;
  }
  return summary;
}

Difference Differing(const TopicMessage& recorded, const TopicMessage& replayed) {
  const std::vector<std::string> a = Fields(recorded.message);
  const std::vector<std::string> b = Fields(replayed.message);
  const auto [in_a, in_b] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return {recorded.topic, in_a == a.end() ? kNothing : *in_a, in_b == b.end() ? kNothing : *in_b};
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

ReplayReport Replay(DriveBag* bag) {
  FollowerSession follower(nullptr);
  OutputMessages outputs;
  ReplayReport report;
  while (const std::optional<RecordedCycle> cycle = bag->Next()) {
    report.time = cycle->time;
    report.difference = FirstDifference(cycle->outputs, outputs.Next(follower.Cycle(cycle->input)));
    if (report.difference) {
      return report;
    }
    ++report.cycles;
    report.outputs += cycle->outputs.size();
  }
  return report;
}

}  // namespace controller_base_demo
