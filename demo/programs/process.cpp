#include "demo/programs/process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "demo/programs/exit_status.h"
#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

constexpr rlim_t kOpenFilesWanted = 1024;
constexpr rlim_t kFewestOpenFiles = 64;  // a drive opens about 20, and a few for each node that listens
constexpr std::int64_t kSameRequestNs = 100'000'000;

std::atomic<bool> stop_requested{false};
std::atomic<std::int64_t> requested_at{0};  // ns on the monotonic clock
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<std::int64_t>::is_always_lock_free,
              "a signal handler uses them");

std::int64_t MonotonicNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{1'000'000'000} * now.tv_sec + now.tv_nsec;
}

// Only what a signal handler may call.
void OnStopSignal(int signal) {
  const int saved_errno = errno;
  const std::int64_t now = MonotonicNs();
  if (!stop_requested) {
    requested_at = now;
    stop_requested = true;
  } else if (signal == SIGINT && now - requested_at > kSameRequestNs) {
    _exit(static_cast<int>(ExitStatus::kInterrupted));
  }
  errno = saved_errno;
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void OpenStandardDescriptors() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open takes the lowest descriptor that is free, and those below are open by now.
    if (fcntl(standard, F_GETFD) < 0 && open("/dev/null", O_RDWR) != standard) {
      _exit(static_cast<int>(ExitStatus::kInternalError));  // there is nowhere to complain
    }
  }
}

rlim_t OpenFilesAllowed() {
  rlimit limit{};
  return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 0;
}

void RaiseOpenFiles() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < kOpenFilesWanted) {
    limit.rlim_cur = std::min(limit.rlim_max, kOpenFilesWanted);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

}  // namespace

void PrepareProcess() {
  OpenStandardDescriptors();
  RaiseOpenFiles();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void RequireOpenFiles() {
  const rlim_t allowed = OpenFilesAllowed();
  if (allowed < kFewestOpenFiles) {
    throw std::runtime_error("only " + std::to_string(allowed) + " open files are allowed (ulimit -n); ROS needs " +
                             std::to_string(kFewestOpenFiles));
  }
}

void CatchStopSignals() {
  std::signal(SIGINT, OnStopSignal);
  std::signal(SIGTERM, OnStopSignal);
  if (!IsIgnored(SIGHUP)) {
    std::signal(SIGHUP, OnStopSignal);
  }
}

void EndIfAsked() {
  if (stop_requested) {
    throw simulation::Interrupted();
  }
}

const std::atomic<bool>& StopRequested() { return stop_requested; }

}  // namespace controller_base::demo
