// The replay program: replay_usage.txt is its manual.

#include "demo/replay/replay.h"

#include <ros/ros.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "demo/programs/log_folder.h"
#include "demo/programs/master_watch.h"
#include "demo/programs/process.h"
#include "demo/programs/replay_usage.h"
#include "demo/replay/drive_bag.h"
#include "follower/printable.h"
#include "ros_master/ros_master_process.h"

namespace controller_base::demo {
namespace {

// What the program leaves to the shell; replay_usage.txt says the same to the user.
enum ReplayStatus : int {
  kIdentical = 0,
  kDifferent = 1,
  kBadArguments = 2,
  kBadBag = 3,
  kInternalError = 4,
  kNoMaster = 8,
  kInterrupted = 130,
};

int Complain(ReplayStatus status, const std::string& what) {
  std::fprintf(stderr, "controller_base_replay: %s\n", follower::Printable(what).c_str());
  return status;
}

// ROS for this process alone. The library's log lines belong to the recorded drive, which has told them.
std::unique_ptr<ros_master::RosMasterProcess> StartRos() {
  std::unique_ptr<ros_master::RosMasterProcess> master = ros_master::RosMasterProcess::StartOnFreePort();
  master->ServeThisProcess();
  ros::init(ros::M_string(), "controller_base_replay", ros::init_options::NoSigintHandler);
  ros::console::set_logger_level("ros.nav_controller", ros::console::levels::Fatal);
  return master;
}

int Tell(const ReplayReport& report) {
  if (report.difference) {
    std::printf("different at %.2f s, after %zu identical cycles: %s: recorded '%s', replayed '%s'\n", report.time,
                report.cycles, report.difference->output.c_str(),
                follower::Printable(report.difference->recorded).c_str(),
                follower::Printable(report.difference->replayed).c_str());
    return kDifferent;
  }
  std::printf("identical: %zu cycles, %.2f s, %zu outputs\n", report.cycles, report.time, report.outputs);
  return kIdentical;
}

int ReplayFile(const std::string& file) {
  const LogFolder logs;
  DriveBag bag(file);
  std::unique_ptr<ros_master::RosMasterProcess> master;
  try {
    master = StartRos();
  } catch (const std::runtime_error& error) {
    return Complain(kNoMaster, error.what());
  }
  MasterWatch watch("controller_base_replay", [&] { logs.Discard(); });
  const ros::NodeHandle node;  // ROS ends with its last handle
  const ReplayReport report = Replay(&bag, [&] {
    watch.Resume();  // no call waits
    return StopRequested().load();
  });
  const int status = StopRequested() ? Complain(kInterrupted, "interrupted") : Tell(report);
  watch.ResumeForGoodbye(status);
  return status;
}

int Main(const std::vector<std::string>& arguments) {
  PrepareProcess();
  CatchStopSignals();
  try {
    if (arguments.size() != 1) {
      return Complain(kBadArguments, "one bag is wanted; --help shows how");
    }
    if (arguments[0] == "--help" || arguments[0] == "-h") {
      std::fputs(kUsage, stdout);
      return kIdentical;
    }
    if (arguments[0].compare(0, 1, "-") == 0) {
      return Complain(kBadArguments, "unknown option '" + arguments[0] + "'; --help shows how");
    }
    RequireOpenFiles();
    return ReplayFile(arguments[0]);
  } catch (const BagError& error) {
    return Complain(kBadBag, error.what());
  } catch (const std::exception& error) {
    return Complain(kInternalError, error.what());
  }
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) { return controller_base::demo::Main({argv + 1, argv + argc}); }
