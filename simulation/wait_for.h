#ifndef CONTROLLER_BASE_SIMULATION_WAIT_FOR_H_
#define CONTROLLER_BASE_SIMULATION_WAIT_FOR_H_

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <utility>

#include "simulation/progress.h"

namespace controller_base::simulation {

// What `calculate` returns or throws: for a calculation of a library that cannot be asked to stop. It runs on a thread
// of its own, and `progress` is told `step` again and again meanwhile. When `progress` throws, the thread goes on alone
// and its result is dropped: so `calculate` owns what it works on, and the process should not return from main() then,
// but end at once. Where nobody listens, it runs on this thread.
template <typename Calculate>
auto WaitFor(const Progress& progress, const std::string& step, Calculate calculate) {
  constexpr std::chrono::milliseconds kPause{50};
  if (!progress) {
    return calculate();
  }
  progress(step);
  std::packaged_task<decltype(calculate())()> task(std::move(calculate));
  auto result = task.get_future();
  std::thread thread(std::move(task));
  try {
    while (result.wait_for(kPause) != std::future_status::ready) {
      progress(step);
    }
  } catch (...) {
    thread.detach();
    throw;
  }
  thread.join();
  return result.get();
}

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_WAIT_FOR_H_
