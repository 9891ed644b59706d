#include "demo/programs/program.h"

#include <xmlrpcpp/XmlRpcException.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "demo/output/output_folder.h"
#include "demo/programs/command_line.h"
#include "demo/programs/exit_status.h"
#include "demo/programs/process.h"
#include "demo/scenario/scenario_file.h"
#include "demo/terminal/say.h"
#include "demo/watch/rviz.h"
#include "ros_master/ros_master_process.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

Complaint With(ExitStatus status, const std::string& text) { return {static_cast<int>(status), text}; }

int StatusOfBody(const std::string& name, int (*body)(const Arguments&), const Arguments& arguments,
                 Complaint (*describe)()) {
  try {
    return body(arguments);
  } catch (...) {
    return Complain(name, describe());
  }
}

}  // namespace

int Complain(const std::string& name, const Complaint& complaint) {
  Say(stderr, name + ": " + complaint.text);
  return complaint.status;
}

int RunProgram(const std::string& name, int argc, char** argv, int (*body)(const Arguments&), Complaint (*describe)()) {
  PrepareProcess();
  CatchStopSignals();
  const int status = StatusOfBody(name, body, {argv + 1, argv + argc}, describe);
  if (status == static_cast<int>(ExitStatus::kInterrupted)) {
    std::fflush(nullptr);
    std::_Exit(status);  // a thread may still be at a calculation that is not needed any more
  }
  return status;
}

Complaint DescribeDriveFailure() {
  try {
    throw;
  } catch (const OptionError& error) {
    return With(ExitStatus::kBadArguments, error.what());
  } catch (const ScenarioError& error) {
    return With(ExitStatus::kBadArguments, error.what());
  } catch (const simulation::MapError& error) {
    return With(ExitStatus::kBadMap, error.what());
  } catch (const OutputError& error) {
    return With(ExitStatus::kUnwritable, error.what());
  } catch (const RvizError& error) {
    return With(ExitStatus::kNoRviz, error.what());
  } catch (const XmlRpc::XmlRpcException& error) {
    return With(ExitStatus::kNoMaster, "the ROS master at " + ros_master::MasterUriFromEnvironment() +
                                           " gives an answer that is none: " + error.getMessage());
  } catch (const ros_master::MasterError& error) {
    return With(ExitStatus::kNoMaster, error.what());
  } catch (const simulation::DriveError& error) {
    return With(StatusOf(error.problem()), error.what());
  } catch (const simulation::Interrupted& interrupted) {
    return With(ExitStatus::kInterrupted, interrupted.what());
  } catch (const std::exception& error) {
    return With(ExitStatus::kInternalError, error.what());
  }
}

}  // namespace controller_base::demo
