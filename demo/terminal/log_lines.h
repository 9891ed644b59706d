#ifndef CONTROLLER_BASE_DEMO_TERMINAL_LOG_LINES_H_
#define CONTROLLER_BASE_DEMO_TERMINAL_LOG_LINES_H_

namespace controller_base::demo {

// From now on, what ROS logs in this process is printable (printable.h) and of a bounded length, in whatever format:
// other nodes put texts of theirs into roscpp's messages. After ros::init, and after the format is set.
void MakeLogLinesPrintable();

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_TERMINAL_LOG_LINES_H_
