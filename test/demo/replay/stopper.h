#ifndef TEST_DEMO_REPLAY_STOPPER_H_
#define TEST_DEMO_REPLAY_STOPPER_H_

#include <atomic>

#include "simulation/drive_observer.h"

namespace controller_base_test {

// Ends a drive after so many cycles, as Ctrl-C would.
class Stopper : public controller_base::simulation::DriveObserver {
 public:
  explicit Stopper(int cycles) : cycles_(cycles) {}
  void OnCycle(const controller_base::simulation::CycleReport& /*cycle*/) override { stop = --cycles_ <= 0; }

  std::atomic<bool> stop{false};

 private:
  int cycles_;
};

}  // namespace controller_base_test

#endif  // TEST_DEMO_REPLAY_STOPPER_H_
