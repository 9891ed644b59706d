#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_LOG_FOLDER_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_LOG_FOLDER_H_

#include <filesystem>

namespace controller_base::demo {

// A place for ROS's log files, which ros::init looks for in $ROS_LOG_DIR, $ROS_HOME/log or $HOME/.ros/log. Where none
// of them is named and $HOME is no folder that can hold the last one, ros::init would throw; then this is a temporary
// folder, named in $ROS_LOG_DIR for this process and its children, which ends with this object. Construct it before
// ros::init and before other threads.
class LogFolder {
 public:
  // Throws OutputError when there is no place for a temporary folder either.
  LogFolder();
  ~LogFolder();
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;

  // Removes the temporary folder, as the destructor does.
  void Discard() const;

 private:
  std::filesystem::path temporary_;  // empty: none was needed
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_LOG_FOLDER_H_
