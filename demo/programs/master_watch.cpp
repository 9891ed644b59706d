#include "demo/programs/master_watch.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <utility>

#include "demo/programs/process.h"
#include "demo/terminal/say.h"
#include "ros_master/ros_master_process.h"

namespace controller_base::demo {
namespace {

constexpr std::chrono::milliseconds kTick{100};
constexpr int kTicksPerSecond = 10;

}  // namespace

MasterWatch::MasterWatch(std::string program, std::function<void()> clean_up)
    : program_(std::move(program)), clean_up_(std::move(clean_up)), thread_([this] { Watch(); }) {}

MasterWatch::~MasterWatch() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    is_over_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void MasterWatch::Pause() {
  const std::lock_guard<std::mutex> lock(mutex_);
  is_calling_ = false;
}

void MasterWatch::Resume() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    is_calling_ = true;
    waited_ = waited_when_asked_ = 0;
  }
  changed_.notify_one();
}

void MasterWatch::ResumeForShutdown(int status) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    status_ = status;
  }
  Resume();
}

void MasterWatch::Watch() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!is_over_) {
    if (!is_calling_) {
      changed_.wait(lock);
    } else if (changed_.wait_for(lock, kTick) == std::cv_status::timeout) {
      ++waited_;
      waited_when_asked_ += StopRequested() ? 1 : 0;
      if (waited_ > kTimeout * kTicksPerSecond || waited_when_asked_ > kTimeoutWhenAsked * kTicksPerSecond) {
        GiveUp();
      }
    }
  }
}

// Holds the mutex for good: the thread that is waited for goes no farther than its next call here.
void MasterWatch::GiveUp() const {
  clean_up_();
  Say(stderr, program_ + ": " + (StopRequested() ? "interrupted; " : "") + "the ROS master at " +
                  ros_master::MasterUriFromEnvironment() + " does not answer");
  _exit(StopRequested() ? static_cast<int>(ExitStatus::kInterrupted) : status_);
}

}  // namespace controller_base::demo
