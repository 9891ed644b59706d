#include "ros_master/ros_master_process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <ros/network.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmlrpcpp/XmlRpc.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <thread>

namespace controller_base::ros_master {
namespace {

constexpr char kLoopback[] = "127.0.0.1";
constexpr double kAnswerTimeout = 2.0;  // s
constexpr std::chrono::seconds kStartTimeout{20};
constexpr std::chrono::milliseconds kStartPoll{50};
constexpr int kStartAttempts = 5;
constexpr int kCannotExecute = 127;  // what a shell reports for a command that it cannot find

// While it lives, the XML-RPC library does not print that a connection was refused: that is an answer here.
class QuietXmlRpc : public XmlRpc::XmlRpcErrorHandler {
 public:
  QuietXmlRpc() : previous_(getErrorHandler()) { setErrorHandler(this); }
  ~QuietXmlRpc() override { setErrorHandler(previous_); }
  QuietXmlRpc(const QuietXmlRpc&) = delete;
  QuietXmlRpc& operator=(const QuietXmlRpc&) = delete;
  void error(const char* /*msg*/) override {}

 private:
  XmlRpc::XmlRpcErrorHandler* previous_;
};

// What the master at host:port answers to a question, `argument` being the text it wants, if any; nothing when none
// answers in time, or says that it cannot.
std::optional<XmlRpc::XmlRpcValue> Ask(const std::string& host, std::uint32_t port, const char* method,
                                       const std::optional<std::string>& argument = {}) {
  using Value = XmlRpc::XmlRpcValue;
  constexpr int kSuccess = 1;
  const QuietXmlRpc quiet;
  XmlRpc::XmlRpcClient client(host.c_str(), static_cast<int>(port), "/");
  Value request;
  request[0] = "/controller_base_demo";
  if (argument) {
    request[1] = *argument;
  }
  Value answer;
  if (!client.executeNonBlock(method, request)) {
    return std::nullopt;
  }
  client._disp.work(kAnswerTimeout);  // in seconds, whatever its header says
  if (!client.executeCheckDone(answer) || client.isFault()) {
    return std::nullopt;
  }
  // A ROS answer is [code, message, value].
  if (answer.getType() != Value::TypeArray || answer.size() != 3 || answer[0].getType() != Value::TypeInt ||
      static_cast<int&>(answer[0]) != kSuccess) {
    return std::nullopt;
  }
  return answer[2];
}

// The process id that the master at host:port gives for itself; nothing when none answers in time.
std::optional<pid_t> MasterPid(const std::string& host, std::uint32_t port) {
  std::optional<XmlRpc::XmlRpcValue> pid = Ask(host, port, "getPid");
  if (!pid || pid->getType() != XmlRpc::XmlRpcValue::TypeInt) {
    return std::nullopt;
  }
  return static_cast<int&>(*pid);
}

// Whether the master knows a publisher of the topic; `topics` as getPublishedTopics answers: [[name, type], ...].
bool IsPublished(XmlRpc::XmlRpcValue* topics, const std::string& topic) {
  using Value = XmlRpc::XmlRpcValue;
  for (int i = 0; topics->getType() == Value::TypeArray && i < topics->size(); ++i) {
    Value& known = (*topics)[i];
    if (known.getType() == Value::TypeArray && known.size() > 0 && known[0] == Value(topic)) {
      return true;
    }
  }
  return false;
}

// A port that was free a moment ago.
int FreeLoopbackPort() {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, kLoopback, &address.sin_addr);
  socklen_t length = sizeof(address);
  const bool bound = descriptor >= 0 && bind(descriptor, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
                     getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0;
  const int error = errno;
  if (descriptor >= 0) {
    close(descriptor);
  }
  if (!bound) {
    throw MasterError(std::string("no free port on ") + kLoopback + ": " + std::strerror(error));
  }
  return ntohs(address.sin_port);
}

// Only this machine can reach a program that takes this for its address.
void StayOnLoopback() {
  setenv("ROS_IP", kLoopback, 1);
  unsetenv("ROS_HOSTNAME");
  unsetenv("ROS_IPV6");
}

[[noreturn]] void FailToAnswer() {
  throw MasterError("rosmaster starts, but does not answer on " + std::string(kLoopback) +
                    ": run `rosmaster --core` to see why");
}

// The rest of the child's life: never returns.
[[noreturn]] void BecomeMaster(int port, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);  // the parent died before its death could be reported
  }
  setpgid(0, 0);  // away from the terminal's Ctrl-C: the owner needs its master until it has shut down
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nowhere, standard);
  }
  StayOnLoopback();
  const std::string port_text = std::to_string(port);
  execlp("rosmaster", "rosmaster", "--core", "-p", port_text.c_str(), "__log:=/dev/null", nullptr);
  _exit(kCannotExecute);
}

}  // namespace

std::string MasterUriFromEnvironment() {
  const char* uri = std::getenv("ROS_MASTER_URI");
  return uri != nullptr && *uri != '\0' ? uri : "http://localhost:11311";
}

bool MasterAnswers(const std::string& uri) {
  std::string host;
  std::uint32_t port = 0;
  return ros::network::splitURI(uri, host, port) && MasterPid(host, port).has_value();
}

bool MasterHasClock(const std::string& uri) {
  std::string host;
  std::uint32_t port = 0;
  if (!ros::network::splitURI(uri, host, port)) {
    return false;
  }
  std::optional<XmlRpc::XmlRpcValue> topics = Ask(host, port, "getPublishedTopics", "");
  return Ask(host, port, "getParam", "/use_sim_time").has_value() || (topics && IsPublished(&*topics, "/clock"));
}

std::unique_ptr<RosMasterProcess> RosMasterProcess::StartOnFreePort(const std::function<void()>& while_waiting) {
  for (int attempt = 0; attempt < kStartAttempts; ++attempt) {  // somebody else may take the port in between
    const int port = FreeLoopbackPort();
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
      BecomeMaster(port, parent);
    }
    if (child < 0) {
      throw MasterError(std::string("cannot start rosmaster: ") + std::strerror(errno));
    }
    std::unique_ptr<RosMasterProcess> master(new RosMasterProcess(child, port));
    if (master->WaitUntilItAnswers(while_waiting)) {
      return master;
    }
  }
  FailToAnswer();
}

RosMasterProcess::~RosMasterProcess() {
  kill(pid_, SIGKILL);  // a master has nothing to save
  waitpid(pid_, nullptr, 0);
}

std::string RosMasterProcess::Uri() const { return std::string("http://") + kLoopback + ":" + std::to_string(port_); }

void RosMasterProcess::ServeThisProcess() const {
  setenv("ROS_MASTER_URI", Uri().c_str(), 1);
  StayOnLoopback();
}

// False when the process ended, or when the port is somebody else's: on another port it may do better. The child is
// left to be waited for.
bool RosMasterProcess::WaitUntilItAnswers(const std::function<void()>& while_waiting) const {
  const auto deadline = std::chrono::steady_clock::now() + kStartTimeout;
  while (std::chrono::steady_clock::now() < deadline) {
    siginfo_t ended{};
    if (waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == pid_) {
      if (ended.si_code == CLD_EXITED && ended.si_status == kCannotExecute) {
        throw MasterError("cannot run rosmaster: is python3-rosmaster installed, and rosmaster on the PATH?");
      }
      return false;
    }
    const std::optional<pid_t> answering = MasterPid(kLoopback, static_cast<std::uint32_t>(port_));
    if (answering) {
      return *answering == pid_;
    }
    while_waiting();
    std::this_thread::sleep_for(kStartPoll);
  }
  FailToAnswer();
}

}  // namespace controller_base::ros_master
