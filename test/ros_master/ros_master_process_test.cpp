#include "ros_master/ros_master_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "test/ros_master/fake_master.h"
#include "test/ros_master/listening.h"
#include "test/support/temporary_folder.h"

namespace controller_base::ros_master {
namespace {

// A process that has ended and was not waited for yet counts as gone.
bool IsRunning(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string id;
  std::string name;
  std::string state;
  return static_cast<bool>(stat >> id >> name >> state) && state != "Z" && state != "X";
}

bool EndsSoon(pid_t pid) {
  for (int tries = 0; tries < 200 && IsRunning(pid); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }
  return !IsRunning(pid);
}

int PortOf(const std::string& uri) { return std::stoi(uri.substr(uri.rfind(':') + 1)); }

TEST(RosMasterProcess, ItAnswersOnTheLoopbackAddressAloneAndEndsWithItsOwner) {
  pid_t pid = 0;
  std::string uri;
  {
    const auto master = RosMasterProcess::StartOnFreePort();
    pid = master->Pid();
    uri = master->Uri();
    EXPECT_TRUE(MasterAnswers(uri));
    EXPECT_TRUE(IsRunning(pid));
    EXPECT_EQ(controller_base_test::ListeningAddresses(PortOf(uri)),
              std::vector<std::string>{controller_base_test::kLoopbackAddress});
  }
  EXPECT_FALSE(MasterAnswers(uri));
  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), -1);  // waited for already
  EXPECT_EQ(errno, ECHILD);
}

TEST(RosMasterProcess, TwoOfThemDoNotMeet) {
  const auto one = RosMasterProcess::StartOnFreePort();
  const auto other = RosMasterProcess::StartOnFreePort();
  EXPECT_NE(one->Uri(), other->Uri());
  EXPECT_TRUE(MasterAnswers(one->Uri()));
  EXPECT_TRUE(MasterAnswers(other->Uri()));
}

// The owner dies without a word; only the kernel is left to tell the master.
TEST(RosMasterProcess, ItEndsWithAnOwnerThatIsKilled) {
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const pid_t owner = fork();
  ASSERT_GE(owner, 0);
  if (owner == 0) {
    const auto master = RosMasterProcess::StartOnFreePort();
    const pid_t pid = master->Pid();
    if (write(pipe_ends[1], &pid, sizeof(pid)) != sizeof(pid)) {
      _exit(EXIT_FAILURE);
    }
    pause();
    _exit(EXIT_SUCCESS);
  }
  pid_t master = 0;
  ASSERT_EQ(read(pipe_ends[0], &master, sizeof(master)), static_cast<ssize_t>(sizeof(master)));
  EXPECT_TRUE(IsRunning(master));
  kill(owner, SIGKILL);
  waitpid(owner, nullptr, 0);
  EXPECT_TRUE(EndsSoon(master));
  close(pipe_ends[0]);
  close(pipe_ends[1]);
}

TEST(RosMasterProcess, AMissingProgramIsNamed) {
  const std::string path = std::getenv("PATH");
  setenv("PATH", "/nowhere", 1);
  try {
    RosMasterProcess::StartOnFreePort();
    ADD_FAILURE() << "started";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("cannot run rosmaster"), std::string::npos) << error.what();
  }
  setenv("PATH", path.c_str(), 1);
}

TEST(MasterAnswers, NotWhereThereIsNone) {
  EXPECT_FALSE(MasterAnswers("http://127.0.0.1:9"));
  EXPECT_FALSE(MasterAnswers("no address"));
  EXPECT_FALSE(MasterAnswers(""));
}

TEST(MasterAnswers, NotWhereSomebodyIsSilent) {
  const controller_base_test::FakeMaster silent({});
  const auto beginning = std::chrono::steady_clock::now();
  EXPECT_FALSE(MasterAnswers(silent.Uri()));
  EXPECT_LT(std::chrono::steady_clock::now() - beginning, std::chrono::seconds(20));  // two on a quiet machine
}

TEST(MasterHasClock, NotWhereAnswersAreNonsense) {
  XmlRpc::XmlRpcValue no_lists;
  no_lists[0] = 3;
  XmlRpc::XmlRpcValue no_names;
  no_names[0][0] = 3;
  for (const XmlRpc::XmlRpcValue& topics : {XmlRpc::XmlRpcValue(3), no_lists, no_names}) {
    const controller_base_test::FakeMaster strange({{"getPid", 1}, {"getPublishedTopics", topics}});
    EXPECT_FALSE(MasterHasClock(strange.Uri()));
  }
}

// Tried once, not on one port after the other.
TEST(RosMasterProcess, OneThatNeverAnswersIsNamed) {
  const controller_base_test::TemporaryFolder folder;
  const std::string program = folder.Write("rosmaster", "#!/bin/sh\nexec sleep 1000\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const std::string path = std::getenv("PATH");
  setenv("PATH", (folder.path().string() + ":" + path).c_str(), 1);
  const auto beginning = std::chrono::steady_clock::now();
  try {
    RosMasterProcess::StartOnFreePort();
    ADD_FAILURE() << "started";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("rosmaster starts, but does not answer"), std::string::npos)
        << error.what();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - beginning, std::chrono::seconds(40));  // 20 on a quiet machine
  setenv("PATH", path.c_str(), 1);
}

TEST(MasterUriFromEnvironment, IsTheUsualOneWhenNothingIsSet) {
  unsetenv("ROS_MASTER_URI");
  EXPECT_EQ(MasterUriFromEnvironment(), "http://localhost:11311");
  setenv("ROS_MASTER_URI", "http://robot:1", 1);
  EXPECT_EQ(MasterUriFromEnvironment(), "http://robot:1");
}

}  // namespace
}  // namespace controller_base::ros_master
