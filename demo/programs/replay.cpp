// The replay program: replay_usage.txt is its manual.

#include "demo/replay/replay.h"

#include <ros/ros.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "demo/programs/command_line.h"
#include "demo/programs/log_folder.h"
#include "demo/programs/master_watch.h"
#include "demo/programs/process.h"
#include "demo/programs/program.h"
#include "demo/programs/replay_usage.h"
#include "demo/replay/drive_bag.h"
#include "demo/terminal/log_lines.h"
#include "demo/terminal/say.h"
#include "follower/format.h"
#include "ros_master/loopback_calls.h"
#include "ros_master/ros_master_process.h"
#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

constexpr char kProgram[] = "controller_base_replay";

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

// ROS for this process alone. The library's log lines belong to the recorded drive, which has told them.
std::unique_ptr<ros_master::RosMasterProcess> StartRos() {
  std::unique_ptr<ros_master::RosMasterProcess> master = ros_master::RosMasterProcess::StartOnFreePort(EndIfAsked);
  master->ServeThisProcess();
  ros::init(ros::M_string(), kProgram, ros::init_options::NoSigintHandler);
  ros::console::set_logger_level("ros.nav_controller", ros::console::levels::Fatal);
  MakeLogLinesPrintable();
  return master;
}

int Tell(const ReplayReport& report) {
  if (report.difference) {
    Say(stdout, follower::Format("different at %.2f s, after %zu identical cycles: ", report.time, report.cycles) +
                    report.difference->output + ": recorded '" + report.difference->recorded + "', replayed '" +
                    report.difference->replayed + "'");
    return kDifferent;
  }
  std::printf("identical: %zu cycles, %.2f s, %zu outputs\n", report.cycles, report.time, report.outputs);
  return kIdentical;
}

int ReplayFile(const std::string& file) {
  const LogFolder logs;
  DriveBag bag(file);
  const std::unique_ptr<ros_master::RosMasterProcess> master = StartRos();
  MasterWatch watch(kProgram, [&] { logs.Discard(); });
  const ros::NodeHandle node;  // ROS ends with its last handle
  ros_master::TakeCallsOnLoopbackAlone();
  const ReplayReport report = Replay(&bag, [&] {
    watch.Resume();  // no call waits
    return StopRequested().load();
  });
  const int status = StopRequested() ? Complain(kProgram, {kInterrupted, "interrupted"}) : Tell(report);
  watch.ResumeForShutdown(status);
  return status;
}

int Main(const Arguments& arguments) {
  if (arguments.size() != 1) {
    throw OptionError("one bag is wanted; --help shows how");
  }
  if (AsksForHelp(arguments[0])) {
    std::fputs(kUsage, stdout);
    return kIdentical;
  }
  if (arguments[0].compare(0, 1, "-") == 0) {
    throw OptionError("unknown option '" + arguments[0] + "'; --help shows how");
  }
  RequireOpenFiles();
  return ReplayFile(arguments[0]);
}

// The exception that is being handled.
Complaint DescribeFailure() {
  try {
    throw;
  } catch (const OptionError& error) {
    return {kBadArguments, error.what()};
  } catch (const BagError& error) {
    return {kBadBag, error.what()};
  } catch (const ros_master::MasterError& error) {
    return {kNoMaster, error.what()};
  } catch (const simulation::Interrupted& interrupted) {
    return {kInterrupted, interrupted.what()};
  } catch (const std::exception& error) {
    return {kInternalError, error.what()};
  }
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) {
  using namespace controller_base::demo;  // NOLINT(google-build-using-namespace): this is its main program
  return RunProgram(kProgram, argc, argv, Main, DescribeFailure);
}
