// The captures that other tests rely on: every line arrives with its level, logger and text.
#include "test/support/log_capture.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace controller_base_test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr char kOtherLogger[] = "ros.another_package";

// One location for each, as in the library: whether it logs must follow the logger's level at every call.
void LogDebug() { ROS_LOG(ros::console::levels::Debug, kNavControllerLogger, "fine %d", 1); }
void LogInfo() { ROS_LOG(ros::console::levels::Info, kNavControllerLogger, "told %d", 2); }
void LogWarn() { ROS_LOG(ros::console::levels::Warn, kNavControllerLogger, "warned %d", 3); }
void LogError() { ROS_LOG(ros::console::levels::Error, kNavControllerLogger, "failed %d", 4); }

void LogAll() {
  LogDebug();
  LogInfo();
  LogWarn();
  LogError();
}

TEST(LogCapture, KeepsLevelLoggerAndTextInOrder) {
  LogCapture log;
  LogAll();
  EXPECT_THAT(log.Lines(), ElementsAre(Debug("fine 1"), Info("told 2"), Warn("warned 3"), Error("failed 4")));
}

TEST(LogCapture, CollectsFromTheGivenLevelUp) {
  {
    LogCapture log(ros::console::levels::Info);
    LogAll();
    EXPECT_THAT(log.Lines(), ElementsAre(Info("told 2"), Warn("warned 3"), Error("failed 4")));
  }
  LogCapture log(ros::console::levels::Error);
  LogAll();
  EXPECT_THAT(log.Lines(), ElementsAre(Error("failed 4")));
}

TEST(LogCapture, PutsTheLevelBack) {
  { const LogCapture log(ros::console::levels::Debug); }
  ROSCONSOLE_DEFINE_LOCATION(true, ros::console::levels::Debug, kNavControllerLogger);
  EXPECT_FALSE(__rosconsole_define_location__enabled);
}

TEST(LogCapture, TellsOtherLoggersApart) {
  LogCapture log;
  ROS_LOG(ros::console::levels::Warn, kOtherLogger, "from elsewhere");
  EXPECT_THAT(log.Lines(), ElementsAre(AllOf(Field(&LogLine::logger, kOtherLogger), Not(Warn("from elsewhere")))));
}

TEST(LogCapture, ForgetsWhenCleared) {
  LogCapture log;
  LogWarn();
  log.Clear();
  EXPECT_THAT(log.Lines(), IsEmpty());
  LogWarn();
  EXPECT_THAT(log.Lines(), SizeIs(1));
}

TEST(LogCapture, CallsItsHookWhileALineIsLogged) {
  LogCapture log;
  std::vector<std::string> texts;
  log.OnLine([&](const LogLine& line) { texts.push_back(line.text); });
  LogWarn();
  EXPECT_THAT(texts, ElementsAre("warned 3"));
  EXPECT_THAT(log.Lines(), SizeIs(1));
}

TEST(LogCapture, TakesLinesFromSeveralThreads) {
  LogCapture log;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int k = 0; k < 250; ++k) {
        LogInfo();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(log.Lines(), SizeIs(1000));
}

}  // namespace
}  // namespace controller_base_test
