#include "demo/watch/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace controller_base::demo {
namespace {

constexpr std::chrono::milliseconds kTimeout{2000};
constexpr std::chrono::milliseconds kPoll{20};

// For execvpe; points into `texts`.
std::vector<char*> PointersTo(std::vector<std::string>* texts) {
  std::vector<char*> pointers;
  for (std::string& text : *texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// This process's environment, `changes` over it.
std::vector<std::string> Environment(const std::vector<std::string>& changes) {
  std::vector<std::string> environment = changes;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::string beginning = text.substr(0, text.find('=') + 1);
    const auto is_changed = [&](const std::string& change) { return change.rfind(beginning, 0) == 0; };
    if (std::none_of(changes.begin(), changes.end(), is_changed)) {
      environment.push_back(text);
    }
  }
  return environment;
}

int ExitStatusOf(int wait_status) {
  return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                           const std::string& log_file) {
  std::vector<std::string> arguments = command;
  std::vector<std::string> variables = Environment(environment);
  const std::vector<char*> argv = PointersTo(&arguments);
  const std::vector<char*> envp = PointersTo(&variables);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ < 0) {
    throw std::runtime_error("cannot start " + command.front() + ": " + std::strerror(errno));
  }
  if (pid_ > 0) {
    return;
  }
  // The child: only system calls from here on, since other threads of the parent may have held locks.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);  // the parent died before its death could be reported
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (!log_file.empty()) {
    const int log = open(log_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
  }
  execvpe(argv[0], argv.data(), envp.data());
  _exit(kNotFound);
}

ChildProcess::~ChildProcess() {
  if (!Ended()) {
    kill(pid_, SIGTERM);
  }
  const auto deadline = std::chrono::steady_clock::now() + kTimeout;
  while (!Ended() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(kPoll);
  }
  if (!Ended()) {
    kill(pid_, SIGKILL);
    WaitForEnd();
  }
}

std::optional<int> ChildProcess::Ended() {
  int status = 0;
  if (!ended_ && waitpid(pid_, &status, WNOHANG) == pid_) {
    ended_ = ExitStatusOf(status);
  }
  return ended_;
}

int ChildProcess::WaitForEnd() {
  int status = 0;
  if (!ended_) {
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    ended_ = ExitStatusOf(status);
  }
  return *ended_;
}

}  // namespace controller_base::demo
