#include "test/support/log_capture.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <mutex>
#include <utility>

namespace controller_base_test {
namespace {

using ros::console::Level;

constexpr char kRosLogger[] = "ros";  // the parent of every rosconsole logger; the terminal's appender sits here

log4cxx::LevelPtr ToLog4cxx(Level level) { return ros::console::g_level_lookup[level]; }

Level FromLog4cxx(const log4cxx::LevelPtr& level) {
  int i = ros::console::levels::Debug;
  while (i + 1 < ros::console::levels::Count && level->isGreaterOrEqual(ros::console::g_level_lookup[i + 1])) {
    ++i;
  }
  return static_cast<Level>(i);
}

std::string NameOf(Level level) {
  switch (level) {
    case ros::console::levels::Debug:
      return "DEBUG";
    case ros::console::levels::Info:
      return "INFO";
    case ros::console::levels::Warn:
      return "WARN";
    case ros::console::levels::Error:
      return "ERROR";
    default:
      return "FATAL";
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << NameOf(line.level) << " [" << line.logger << "] " << testing::PrintToString(line.text);
}

class LogCapture::Appender : public log4cxx::AppenderSkeleton {
 public:
  void close() override {}
  bool requiresLayout() const override { return false; }

  std::vector<LogLine> Lines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

  void Clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
  }

  void OnLine(std::function<void(const LogLine&)> hook) {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook_ = std::move(hook);
  }

 protected:
  void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
    const LogLine line{FromLog4cxx(event->getLevel()), event->getLoggerName(), event->getMessage()};
    if (const auto hook = Store(line)) {
      hook(line);
    }
  }

 private:
  std::function<void(const LogLine&)> Store(const LogLine& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back(line);
    return hook_;
  }

  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
  std::function<void(const LogLine&)> hook_;
};

// What a capture changes of the library's logger, to be put back.
class LogCapture::LoggerState {
 public:
  explicit LoggerState(log4cxx::LoggerPtr logger)
      : logger_(std::move(logger)), level_(logger_->getLevel()), additivity_(logger_->getAdditivity()) {}

  void Restore() const {
    logger_->setLevel(level_);
    logger_->setAdditivity(additivity_);
  }

 private:
  log4cxx::LoggerPtr logger_;
  log4cxx::LevelPtr level_;
  bool additivity_;
};

LogCapture::LogCapture(Level lowest) : appender_(std::make_shared<Appender>()) {
  ros::console::initialize();
  const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger(kNavControllerLogger);
  state_before_ = std::make_unique<LoggerState>(logger);
  log4cxx::Logger::getLogger(kRosLogger)->addAppender(appender_);
  logger->addAppender(appender_);
  logger->setAdditivity(false);
  logger->setLevel(ToLog4cxx(lowest));
  ros::console::notifyLoggerLevelsChanged();
}

LogCapture::~LogCapture() {
  log4cxx::Logger::getLogger(kNavControllerLogger)->removeAppender(appender_);
  log4cxx::Logger::getLogger(kRosLogger)->removeAppender(appender_);
  state_before_->Restore();
  ros::console::notifyLoggerLevelsChanged();
}

std::vector<LogLine> LogCapture::Lines() const { return appender_->Lines(); }

void LogCapture::Clear() { appender_->Clear(); }

void LogCapture::OnLine(std::function<void(const LogLine&)> hook) { appender_->OnLine(std::move(hook)); }

testing::Matcher<const LogLine&> Logged(Level level, const testing::Matcher<const std::string&>& text) {
  return testing::AllOf(testing::Field("level", &LogLine::level, level),
                        testing::Field("logger", &LogLine::logger, std::string(kNavControllerLogger)),
                        testing::Field("text", &LogLine::text, text));
}

testing::Matcher<const LogLine&> Debug(const testing::Matcher<const std::string&>& text) {
  return Logged(ros::console::levels::Debug, text);
}

testing::Matcher<const LogLine&> Info(const testing::Matcher<const std::string&>& text) {
  return Logged(ros::console::levels::Info, text);
}

testing::Matcher<const LogLine&> Warn(const testing::Matcher<const std::string&>& text) {
  return Logged(ros::console::levels::Warn, text);
}

testing::Matcher<const LogLine&> Error(const testing::Matcher<const std::string&>& text) {
  return Logged(ros::console::levels::Error, text);
}

}  // namespace controller_base_test
