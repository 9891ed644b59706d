#ifndef TEST_FOLLOWER_RECORDER_H_
#define TEST_FOLLOWER_RECORDER_H_

#include <string>
#include <vector>

#include "follower/follower_report.h"

namespace controller_base_test {

// Keeps what a follower, or a part of it, tells.
class Recorder : public controller_base_demo::FollowerObserver {
 public:
  void OnEvent(const controller_base_demo::Event& event) override { events.push_back(event); }
  void OnDetour(const controller_base_demo::DetourReport& detour) override { detours.push_back(detour); }

  // The texts of all events of a kind.
  std::vector<std::string> Told(const std::string& kind) const {
    std::vector<std::string> texts;
    for (const controller_base_demo::Event& event : events) {
      if (event.kind == kind) {
        texts.push_back(event.text);
      }
    }
    return texts;
  }

  std::vector<controller_base_demo::Event> events;
  std::vector<controller_base_demo::DetourReport> detours;
};

}  // namespace controller_base_test

#endif  // TEST_FOLLOWER_RECORDER_H_
