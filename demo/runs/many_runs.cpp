#include "demo/runs/many_runs.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace controller_base::demo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPollMs = 100;
constexpr std::chrono::milliseconds kStopped{500};  // a look at the workers comes later only after Ctrl-Z, or the like

RunResult Failed(std::uint32_t seed, const std::string& reason) {
  RunResult result;
  result.seed = seed;
  result.SetReason(reason);
  return result;
}

RunResult RunOrExplain(const RunFunction& run, std::uint32_t seed) {
  try {
    return run(seed);
  } catch (const std::exception& error) {
    return Failed(seed, error.what());
  }
}

// One end of a connection between two processes, for values that travel as they are.
class Channel {
 public:
  explicit Channel(int descriptor) : descriptor_(descriptor) {}
  ~Channel() { close(descriptor_); }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  int descriptor() const { return descriptor_; }

  // When the other end is closed, nothing happens: Receive will tell.
  template <typename T>
  void Send(const T& value) const {
    static_assert(std::is_trivially_copyable_v<T>, "it is sent as it lies in memory");
    send(descriptor_, &value, sizeof(value), MSG_NOSIGNAL);
  }
  // Waits for it; nothing when the other end is closed.
  template <typename T>
  std::optional<T> Receive() const {
    T value{};
    ssize_t size = 0;
    do {
      size = recv(descriptor_, &value, sizeof(value), 0);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(sizeof(value)) ? std::optional<T>(value) : std::nullopt;
  }

 private:
  int descriptor_;
};

// A child process that runs one seed after another.
class Worker {
 public:
  explicit Worker(const RunFunction& run) {
    int ends[2] = {};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
      throw std::runtime_error(std::string("cannot make a socket: ") + std::strerror(errno));
    }
    const pid_t parent = getpid();
    std::fflush(nullptr);  // or the child would have a copy of what waits to be written
    pid_ = fork();
    if (pid_ == 0) {
      close(ends[0]);
      Work(run, parent, Channel(ends[1]));
    }
    channel_.emplace(ends[0]);
    close(ends[1]);
    if (pid_ < 0) {
      throw std::runtime_error(std::string("cannot start another process: ") + std::strerror(errno));
    }
  }
  ~Worker() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);  // it has nothing to save
      waitpid(pid_, nullptr, 0);
    }
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void Begin(std::uint32_t seed) {
    seed_ = seed;
    beginning_ = Clock::now();
    channel_->Send(seed);
  }
  std::uint32_t seed() const { return seed_; }
  Clock::duration age() const { return Clock::now() - beginning_; }
  // This time does not count.
  void Forgive(Clock::duration time) { beginning_ += time; }
  int descriptor() const { return channel_->descriptor(); }

  // Once the descriptor can be read: the run's result, or how the process ended.
  RunResult Take() {
    const std::optional<RunResult> result = channel_->Receive<RunResult>();
    return result ? *result : Failed(seed_, HowItEnded());
  }
  bool HasEnded() const { return pid_ == 0; }

 private:
  // What the child does until it ends.
  [[noreturn]] static void Work(const RunFunction& run, pid_t parent, const Channel& channel) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
      _exit(EXIT_FAILURE);  // the parent died before its death could be reported
    }
    std::signal(SIGINT, SIG_IGN);  // of the terminal; the parent hears it
    std::signal(SIGHUP, SIG_IGN);  // likewise
    std::signal(SIGTERM, SIG_DFL);
    while (const auto seed = channel.Receive<std::uint32_t>()) {
      channel.Send(RunOrExplain(run, *seed));
    }
    _exit(EXIT_SUCCESS);
  }

  std::string HowItEnded() {
    int status = 0;
    waitpid(std::exchange(pid_, 0), &status, 0);
    return WIFSIGNALED(status) ? "crashed: " + std::string(sigdescr_np(WTERMSIG(status)))
                               : "ended early, exit status " + std::to_string(WEXITSTATUS(status));
  }

  std::optional<Channel> channel_;
  pid_t pid_ = 0;
  std::uint32_t seed_ = 0;
  Clock::time_point beginning_;
};

// Keeps the workers busy, and puts what they answer in order.
class Runner {
 public:
  Runner(const ManyRuns& runs, const RunFunction& run, const std::function<bool(const RunResult&)>& take)
      : runs_(runs), run_(run), take_(take), workers_(std::min(runs.jobs, runs.most_runs)) {}

  void RunAll(const std::function<bool()>& stop) {
    for (std::unique_ptr<Worker>& worker : workers_) {
      BeginNext(&worker);
    }
    while (wants_more_ && given_ < runs_.most_runs) {
      if (stop()) {
        HandOverTheRest();
        return;
      }
      WaitForResults();
      HandOver();
    }
  }

 private:
  std::uint32_t SeedOf(std::size_t run) const { return runs_.first_seed + static_cast<std::uint32_t>(run); }

  void BeginNext(std::unique_ptr<Worker>* worker) {
    if (begun_ == runs_.most_runs) {
      worker->reset();
      return;
    }
    if (*worker == nullptr || (*worker)->HasEnded()) {
      *worker = std::make_unique<Worker>(run_);
    }
    (*worker)->Begin(SeedOf(begun_));
    ++begun_;
  }

  void WaitForResults() {
    std::vector<pollfd> descriptors;
    for (const std::unique_ptr<Worker>& worker : workers_) {
      descriptors.push_back({worker ? worker->descriptor() : -1, POLLIN, 0});
    }
    const Clock::time_point before = Clock::now();
    poll(descriptors.data(), descriptors.size(), kPollMs);
    ForgiveStop(Clock::now() - before);
    for (std::size_t i = 0; i < workers_.size(); ++i) {
      std::unique_ptr<Worker>& worker = workers_[i];
      if (descriptors[i].revents != 0) {
        const RunResult result = worker->Take();
        Keep(result, &worker);
      } else if (worker && worker->age() > runs_.timeout) {
        const RunResult result =
            Failed(worker->seed(), "hung: no result within " + std::to_string(runs_.timeout.count() / 1000) + " s");
        worker.reset();
        Keep(result, &worker);
      }
    }
  }

  // The runs were stopped together with this process when a look at them took so long.
  void ForgiveStop(Clock::duration look) {
    if (look < kStopped) {
      return;
    }
    for (const std::unique_ptr<Worker>& worker : workers_) {
      if (worker) {
        worker->Forgive(look);
      }
    }
  }

  void Keep(const RunResult& result, std::unique_ptr<Worker>* worker) {
    waiting_[result.seed - runs_.first_seed] = result;
    BeginNext(worker);
  }

  // What is next in the order of the seeds.
  void HandOver() {
    while (wants_more_ && !waiting_.empty() && waiting_.begin()->first == given_) {
      GiveFirst();
    }
  }

  void HandOverTheRest() {
    while (wants_more_ && !waiting_.empty()) {
      GiveFirst();
    }
  }

  void GiveFirst() {
    wants_more_ = take_(waiting_.begin()->second);
    waiting_.erase(waiting_.begin());
    ++given_;
  }

  const ManyRuns& runs_;
  const RunFunction& run_;
  const std::function<bool(const RunResult&)>& take_;
  std::vector<std::unique_ptr<Worker>> workers_;  // null: nothing left for it to do
  std::map<std::size_t, RunResult> waiting_;      // for those before them; by their place in the order
  std::size_t begun_ = 0;
  std::size_t given_ = 0;
  bool wants_more_ = true;
};

}  // namespace

void RunAll(const ManyRuns& runs, const RunFunction& run, const std::function<bool(const RunResult&)>& take,
            const std::function<bool()>& stop) {
  Runner(runs, run, take).RunAll(stop);
}

}  // namespace controller_base::demo
