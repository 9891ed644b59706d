#include "demo/programs/log_folder.h"

#include <cstdlib>
#include <string>
#include <system_error>

#include "demo/output/output_folder.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

// Whether ros::init finds a place by itself.
bool HasPlace() {
  if (std::getenv("ROS_LOG_DIR") != nullptr || std::getenv("ROS_HOME") != nullptr) {
    return true;
  }
  const char* home = std::getenv("HOME");
  std::error_code error;
  if (home == nullptr || !fs::is_directory(home, error)) {
    return false;
  }
  fs::create_directories(fs::path(home) / ".ros" / "log", error);
  return !error;
}

// Empty when none can be made at `place`.
fs::path TemporaryFolderAt(const fs::path& place) {
  std::string name = (place / "controller_base_log_XXXXXX").string();
  return mkdtemp(name.data()) != nullptr ? fs::path(name) : fs::path();
}

}  // namespace

LogFolder::LogFolder() {
  if (HasPlace()) {
    return;
  }
  std::error_code error;
  const fs::path place = fs::temp_directory_path(error);
  temporary_ = error ? fs::path() : TemporaryFolderAt(place);
  if (temporary_.empty()) {
    temporary_ = TemporaryFolderAt("/tmp");
  }
  if (temporary_.empty()) {
    throw OutputError("no place for log files: neither $HOME nor $TMPDIR nor /tmp is a folder that can be written");
  }
  setenv("ROS_LOG_DIR", temporary_.c_str(), 1);
}

LogFolder::~LogFolder() { Discard(); }

void LogFolder::Discard() const {
  if (!temporary_.empty()) {
    std::error_code ignored;
    fs::remove_all(temporary_, ignored);
  }
}

}  // namespace controller_base::demo
