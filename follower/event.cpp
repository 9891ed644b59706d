#include "controller_base/follower/event.h"

#include <algorithm>
#include <array>
#include <utility>

namespace controller_base::follower {
namespace {

// In the order of the enumeration.
constexpr std::array<std::pair<EventKind, const char*>, 21> kNames{{
    {EventKind::kPath, "path"},         {EventKind::kNoPath, "no path"},      {EventKind::kNoBox, "no box"},
    {EventKind::kProgress, "progress"}, {EventKind::kDeviation, "deviation"}, {EventKind::kBlocked, "blocked"},
    {EventKind::kFree, "free"},         {EventKind::kRefused, "refused"},     {EventKind::kCorridor, "corridor"},
    {EventKind::kRepair, "repair"},     {EventKind::kDetour, "detour"},       {EventKind::kRejoined, "rejoined"},
    {EventKind::kContact, "contact"},   {EventKind::kTurn, "turn"},           {EventKind::kBox, "box"},
    {EventKind::kForget, "forget"},     {EventKind::kLost, "lost"},           {EventKind::kPose, "pose"},
    {EventKind::kClock, "clock"},       {EventKind::kArrival, "arrival"},     {EventKind::kStop, "stop"},
}};

}  // namespace

const char* Name(EventKind kind) { return kNames.at(static_cast<std::size_t>(kind)).second; }

std::optional<EventKind> EventKindOf(std::string_view name) {
  const auto known =
      std::find_if(kNames.begin(), kNames.end(), [&](const auto& entry) { return entry.second == name; });
  return known != kNames.end() ? std::optional<EventKind>(known->first) : std::nullopt;
}

std::vector<std::string> EventKindNames() {
  std::vector<std::string> names;
  names.reserve(kNames.size());
  for (const auto& entry : kNames) {
    names.emplace_back(entry.second);
  }
  return names;
}

}  // namespace controller_base::follower
