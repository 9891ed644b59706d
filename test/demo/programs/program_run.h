#ifndef TEST_DEMO_PROGRAMS_PROGRAM_RUN_H_
#define TEST_DEMO_PROGRAMS_PROGRAM_RUN_H_

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "test/support/temporary_folder.h"

namespace controller_base_test {

struct Finished {
  int status;          // 128 and the signal's number when a signal ended it
  std::string output;  // of both streams
  std::string last_line;
};

// Polls the condition; false when it does not hold within a minute.
bool Until(const std::function<bool()>& is_so);

// Programs as users start them, in a folder of the test's own, with no ROS master unless a test brings one.
class ProgramRun : public testing::Test {
 protected:
  using Environment = std::vector<std::string>;

  static constexpr std::chrono::seconds kLongestRun{60};

  // Starts a line for the shell, which knows the programs as $DEMO, $REPLAY, $MARATHON and $DRAW, and a drive of 1.8 m
  // as $WAY. A program after `exec` has the shell's process number.
  controller_base::demo::ChildProcess Start(const std::string& line, const Environment& environment = {}) const;
  // Fails the test and ends what takes longer than kLongestRun.
  Finished Wait(controller_base::demo::ChildProcess* child) const;
  Finished Run(const std::string& line, const Environment& environment = {}) const;

  // Waits until what was started last has written this.
  bool Prints(const std::string& text) const;

  std::filesystem::path Path(const std::string& name) const { return folder_.path() / name; }
  std::string Read(const std::string& name) const { return ReadFile(Path(name)); }
  void Write(const std::string& name, const std::string& content) const { folder_.Write(name, content); }
  // The names in a folder below the test's, sorted; empty when there is no such folder.
  std::vector<std::string> Names(const std::string& folder) const;

  TemporaryFolder folder_;

 private:
  TemporaryFolder logs_;
};

// The output is one line that contains `part`, and the status is this.
void ExpectOneLine(const Finished& finished, int status, const std::string& part);

}  // namespace controller_base_test

#endif  // TEST_DEMO_PROGRAMS_PROGRAM_RUN_H_
