#ifndef TEST_FOLLOWER_RECORDER_H_
#define TEST_FOLLOWER_RECORDER_H_

#include <string>
#include <vector>

#include "controller_base/follower/report.h"

namespace controller_base_test {

// Keeps the events and detours that a follower, or a part of it, reports.
class Recorder : public controller_base::follower::FollowerObserver {
 public:
  void OnEvent(const controller_base::follower::Event& event) override { events.push_back(event); }
  void OnDetour(const controller_base::follower::DetourReport& detour) override { detours.push_back(detour); }

  // The texts of all events of a kind.
  std::vector<std::string> Told(const std::string& kind) const {
    std::vector<std::string> texts;
    for (const controller_base::follower::Event& event : events) {
      if (Name(event.kind) == kind) {
        texts.push_back(event.text);
      }
    }
    return texts;
  }

  std::vector<controller_base::follower::Event> events;
  std::vector<controller_base::follower::DetourReport> detours;
};

}  // namespace controller_base_test

#endif  // TEST_FOLLOWER_RECORDER_H_
