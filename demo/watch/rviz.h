#ifndef CONTROLLER_BASE_DEMO_WATCH_RVIZ_H_
#define CONTROLLER_BASE_DEMO_WATCH_RVIZ_H_

#include <functional>
#include <stdexcept>
#include <string>

#include "demo/watch/child_process.h"

namespace controller_base::demo {

// RViz cannot be started; what() is one line that says why.
class RvizError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// RViz in a window of its own, which closes with this object.
class Rviz {
 public:
  // Throws RvizError when there is no screen to open a window on.
  explicit Rviz(const std::string& config_file);

  // Until `is_ready` says so, asked again and again while RViz loads. Throws RvizError when RViz ends before, or takes
  // more than a minute. Returns early when `stop` says so.
  void WaitUntil(const std::function<bool()>& is_ready, const std::function<bool()>& stop);

  bool IsOpen() { return !process_.Ended(); }

 private:
  ChildProcess process_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_WATCH_RVIZ_H_
