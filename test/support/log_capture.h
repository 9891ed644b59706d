#ifndef TEST_SUPPORT_LOG_CAPTURE_H_
#define TEST_SUPPORT_LOG_CAPTURE_H_

#include <gmock/gmock.h>
#include <ros/console.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace controller_base_test {

inline constexpr char kNavControllerLogger[] = "ros.nav_controller";

struct LogLine {
  ros::console::Level level;
  std::string logger;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// Collects the rosconsole lines of all loggers while it lives. Lines of the logger "ros.nav_controller" are collected
// from `lowest` up and kept off the terminal; other loggers keep their own level and their terminal.
//
//   LogCapture log;
//   analyzer.UpdateIndex(far_away);
//   EXPECT_THAT(log.Lines(), ElementsAre(Warn("Robot has deviated from path! Distance: 0.50m")));
//
// One capture at a time. Lines may come from several threads at once.
class LogCapture {
 public:
  explicit LogCapture(ros::console::Level lowest = ros::console::levels::Debug);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<LogLine> Lines() const;
  void Clear();

  // Calls `hook` with each further line, on the thread that logs it and while it does; the hook must not log.
  void OnLine(std::function<void(const LogLine&)> hook);

 private:
  class Appender;
  class LoggerState;

  std::shared_ptr<Appender> appender_;
  std::unique_ptr<LoggerState> state_before_;
};

// Matches a line of the logger "ros.nav_controller" with this level and text; `text` may be a matcher.
testing::Matcher<const LogLine&> Logged(ros::console::Level level, const testing::Matcher<const std::string&>& text);
testing::Matcher<const LogLine&> Debug(const testing::Matcher<const std::string&>& text);
testing::Matcher<const LogLine&> Info(const testing::Matcher<const std::string&>& text);
testing::Matcher<const LogLine&> Warn(const testing::Matcher<const std::string&>& text);
testing::Matcher<const LogLine&> Error(const testing::Matcher<const std::string&>& text);

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_LOG_CAPTURE_H_
