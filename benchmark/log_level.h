#ifndef BENCHMARK_LOG_LEVEL_H_
#define BENCHMARK_LOG_LEVEL_H_

#include <ros/console.h>

namespace controller_base_benchmark {

inline void SetLibraryLogLevel(ros::console::Level level) {
  ros::console::set_logger_level("ros.nav_controller", level);
  ros::console::notifyLoggerLevelsChanged();
}

// The library's INFO lines are on while it lives; elsewhere the program keeps them off.
class VerboseLog {
 public:
  VerboseLog() { SetLibraryLogLevel(ros::console::levels::Info); }
  ~VerboseLog() { SetLibraryLogLevel(ros::console::levels::Warn); }
  VerboseLog(const VerboseLog&) = delete;
  VerboseLog& operator=(const VerboseLog&) = delete;
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_LOG_LEVEL_H_
