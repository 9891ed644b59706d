#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_MASTER_WATCH_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_MASTER_WATCH_H_

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "demo/programs/exit_status.h"

namespace controller_base::demo {

// Ends the process when calls to the ROS master do not return. roscpp waits without end for a master that takes the
// connection and does not answer; neither a signal nor a timeout ends that wait, so another thread has to.
//
//   MasterWatch watch("controller_base_demo", [&] { RemoveWhatIsHalfDone(); });
//   ...                                         // calls to the master
//   watch.Pause();
//   ...                                         // work without such calls
//   watch.Resume(status);
//   ...                                         // the last calls
class MasterWatch {
 public:
  static constexpr int kTimeout = 10;          // s, for all calls between two pauses
  static constexpr int kTimeoutWhenAsked = 5;  // s, once a signal has asked to end (StopRequested)

  // Calls may follow. When they take too long, `clean_up` is called on another thread, one line on standard error says
  // what happened, and the process exits as one without a ROS master, or as interrupted.
  MasterWatch(std::string program, std::function<void()> clean_up);
  ~MasterWatch();
  MasterWatch(const MasterWatch&) = delete;
  MasterWatch& operator=(const MasterWatch&) = delete;

  // All calls have returned.
  void Pause();
  // More calls may follow.
  void Resume();
  // The program unregisters at the master next; if that takes too long, the process exits with `status`.
  void ResumeForShutdown(int status);

 private:
  void Watch();
  [[noreturn]] void GiveUp() const;

  std::string program_;
  std::function<void()> clean_up_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool is_over_ = false;  // this and the following under mutex_
  bool is_calling_ = true;
  int waited_ = 0;             // ticks since the calls began; a process that was stopped meanwhile has not waited
  int waited_when_asked_ = 0;  // of these, since StopRequested
  int status_ = static_cast<int>(ExitStatus::kNoMaster);
  std::thread thread_;  // after all that it uses
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_MASTER_WATCH_H_
