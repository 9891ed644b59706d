#include "demo/output/own_file.h"

#include <algorithm>
#include <array>
#include <regex>
#include <system_error>

#include "controller_base/follower/event.h"
#include "demo/output/picture_mark.h"

namespace controller_base::demo {
namespace {

constexpr std::array kFixedNames = {"drive.png",   "events.csv", "marathon.md",   "plots.png",
                                    "result.json", "runs.csv",   "trajectory.csv"};

}  // namespace

std::string EventPictureName(std::size_t index, const std::string& kind) {
  std::string word = kind;
  std::replace(word.begin(), word.end(), ' ', '-');
  const std::string number = std::to_string(index + 1);
  return "event-" + std::string(number.size() < 2 ? 1 : 0, '0') + number + '-' + word + ".png";
}

bool IsEventPicture(const std::string& name) {
  static const std::regex pattern("event-(0[1-9]|[1-9][0-9])-([a-z-]+)\\.png");
  std::smatch parts;
  if (!std::regex_match(name, parts, pattern)) {
    return false;
  }
  std::string kind = parts[2];
  std::replace(kind.begin(), kind.end(), '-', ' ');
  return follower::EventKindOf(kind).has_value();
}

bool IsOwnEventPicture(const std::filesystem::path& file) {
  std::error_code ignored;
  return IsEventPicture(file.filename().string()) &&
         std::filesystem::symlink_status(file, ignored).type() == std::filesystem::file_type::regular &&
         IsMarkedAsOwn(file);
}

bool IsOwnFile(const std::string& name) {
  static const std::regex table_of_a_map("[1-9][0-9]*-.+\\.csv");  // of the marathon
  return std::find(kFixedNames.begin(), kFixedNames.end(), name) != kFixedNames.end() || IsEventPicture(name) ||
         std::regex_match(name, table_of_a_map);
}

}  // namespace controller_base::demo
