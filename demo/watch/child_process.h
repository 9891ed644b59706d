#ifndef CONTROLLER_BASE_DEMO_WATCH_CHILD_PROCESS_H_
#define CONTROLLER_BASE_DEMO_WATCH_CHILD_PROCESS_H_

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace controller_base::demo {

// Another program, run beside this one. It ends with this object, or with the thread that started it, however that
// ends (a crash and a SIGKILL included).
class ChildProcess {
 public:
  // `command` is the program, looked for on the PATH, and its arguments; `environment` adds to this process's own, as
  // "NAME=value". What it writes to its standard output and error goes to `log_file`, or, where that is empty, where
  // this process writes. Throws std::runtime_error when there can be no more processes; a program that is not found
  // ends at once with kNotFound.
  explicit ChildProcess(const std::vector<std::string>& command, const std::vector<std::string>& environment = {},
                        const std::string& log_file = "");
  // Asks it to end, and after two seconds makes it.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }

  // Its exit status once it has ended, 128 and the signal's number when a signal ended it. Returns at once.
  std::optional<int> Ended();
  // Likewise, after waiting for it.
  int WaitForEnd();

  static constexpr int kNotFound = 127;  // as a shell has it

 private:
  pid_t pid_;
  std::optional<int> ended_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_CHILD_PROCESS_H_
