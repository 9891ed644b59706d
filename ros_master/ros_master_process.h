#ifndef CONTROLLER_BASE_ROS_MASTER_ROS_MASTER_PROCESS_H_
#define CONTROLLER_BASE_ROS_MASTER_ROS_MASTER_PROCESS_H_

#include <sys/types.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace controller_base::ros_master {

// The address that ROS programs of this environment would use: $ROS_MASTER_URI, or http://localhost:11311.
std::string MasterUriFromEnvironment();

// Whether a ROS master answers at `uri` (such as "http://localhost:11311"). Waits at most two seconds once the host's
// name is resolved; false for anything that is no master, and for text that is no such address.
bool MasterAnswers(const std::string& uri);

// Whether the master at `uri` serves programs that take their time from /clock: it has the parameter /use_sim_time, or
// somebody publishes on /clock. False where no master answers.
bool MasterHasClock(const std::string& uri);

// A master that cannot be started; what() is one line that says why.
class MasterError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A ROS master of one's own: a `rosmaster` process on a free port of the loopback address, which no other machine can
// reach. It writes no log files, hears no Ctrl-C of the terminal, and ends with this object, or with the thread that
// started it, however that ends (a crash and a SIGKILL included). So start it on the main thread, before ros::init:
//
//   const auto master = RosMasterProcess::StartOnFreePort();
//   master->ServeThisProcess();
//   ros::init(argc, argv, "my_node");
class RosMasterProcess {
 public:
  // Returns once the master answers. Throws MasterError. `while_waiting`, called again and again until then, may throw
  // to end that.
  static std::unique_ptr<RosMasterProcess> StartOnFreePort(const std::function<void()>& while_waiting = [] {});

  ~RosMasterProcess();
  RosMasterProcess(const RosMasterProcess&) = delete;
  RosMasterProcess& operator=(const RosMasterProcess&) = delete;

  // "http://127.0.0.1:PORT"
  std::string Uri() const;
  pid_t Pid() const { return pid_; }

  // Points this process's ROS environment at this master, and keeps the process's own ROS traffic on the loopback
  // address as well. Processes started afterwards inherit it.
  void ServeThisProcess() const;

 private:
  RosMasterProcess(pid_t pid, int port) : pid_(pid), port_(port) {}
  bool WaitUntilItAnswers(const std::function<void()>& while_waiting) const;

  pid_t pid_;
  int port_;
};

}  // namespace controller_base::ros_master

#endif  // CONTROLLER_BASE_ROS_MASTER_ROS_MASTER_PROCESS_H_
