#include "test/demo/programs/program_run.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <thread>

namespace controller_base_test {

namespace fs = std::filesystem;
using controller_base::demo::ChildProcess;

bool Until(const std::function<bool()>& is_so) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!is_so()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

ChildProcess ProgramRun::Start(const std::string& line, const Environment& environment) const {
  Environment variables{"ROS_MASTER_URI=http://127.0.0.1:9",      "DEMO=" CONTROLLER_BASE_DEMO_PROGRAM,
                        "REPLAY=" CONTROLLER_BASE_REPLAY_PROGRAM, "MARATHON=" CONTROLLER_BASE_MARATHON_PROGRAM,
                        "DRAW=" CONTROLLER_BASE_DRAW_PROGRAM,     "WAY=--start=1.2,6.9,0 --goal=3.0,6.9"};
  variables.insert(variables.end(), environment.begin(), environment.end());  // of one name, the last one holds
  fs::remove(logs_.path() / "log");
  return ChildProcess({"bash", "-c", "cd '" + folder_.path().string() + "' || exit 99; " + line}, variables,
                      (logs_.path() / "log").string());
}

Finished ProgramRun::Wait(ChildProcess* child) const {
  const auto deadline = std::chrono::steady_clock::now() + kLongestRun;
  while (!child->Ended() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (!child->Ended()) {
    ADD_FAILURE() << "still running";
    kill(child->pid(), SIGKILL);
  }
  Finished finished{child->WaitForEnd(), ReadFile(logs_.path() / "log"), ""};
  const std::string text = finished.output.substr(0, finished.output.find_last_not_of('\n') + 1);
  finished.last_line = text.substr(text.rfind('\n') + 1);
  return finished;
}

Finished ProgramRun::Run(const std::string& line, const Environment& environment) const {
  ChildProcess child = Start(line, environment);
  return Wait(&child);
}

bool ProgramRun::Prints(const std::string& text) const {
  return Until([&] { return ReadFile(logs_.path() / "log").find(text) != std::string::npos; });
}

std::vector<std::string> ProgramRun::Names(const std::string& folder) const {
  std::vector<std::string> names;
  if (fs::exists(Path(folder))) {
    for (const fs::directory_entry& entry : fs::directory_iterator(Path(folder))) {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

void ExpectOneLine(const Finished& finished, int status, const std::string& part) {
  EXPECT_EQ(finished.status, status) << finished.output;
  EXPECT_THAT(finished.output, testing::HasSubstr(part));
  EXPECT_EQ(std::count(finished.output.begin(), finished.output.end(), '\n'), 1) << finished.output;
}

}  // namespace controller_base_test
