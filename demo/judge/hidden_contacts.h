#ifndef CONTROLLER_BASE_DEMO_JUDGE_HIDDEN_CONTACTS_H_
#define CONTROLLER_BASE_DEMO_JUDGE_HIDDEN_CONTACTS_H_

#include <vector>

#include "simulation/drive_observer.h"

namespace controller_base::demo {

// Counts how often each obstacle that only the bumper feels is run into.
class HiddenContacts : public simulation::DriveObserver {
 public:
  void OnCycle(const simulation::CycleReport& cycle) override;

  int contacts() const;  // with all of them, each counted anew when the robot was free of it in between
  int touched() const;   // so many of them were run into at least once

 private:
  std::vector<int> contacts_;  // of each obstacle of the world
  std::vector<bool> is_touched_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_HIDDEN_CONTACTS_H_
