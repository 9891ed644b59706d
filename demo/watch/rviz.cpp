#include "demo/watch/rviz.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace controller_base::demo {
namespace {

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

std::vector<std::string> Command(const std::string& config_file) {
  if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY")) {
    throw RvizError("RViz needs a screen: neither DISPLAY nor WAYLAND_DISPLAY is set");
  }
  return {"rviz", "-d", config_file};
}

}  // namespace

Rviz::Rviz(const std::string& config_file) : process_(Command(config_file)) {}

void Rviz::WaitUntil(const std::function<bool()>& is_ready, const std::function<bool()>& stop) {
  constexpr std::chrono::seconds kLongestLoad{60};
  constexpr std::chrono::milliseconds kPoll{50};
  const auto deadline = std::chrono::steady_clock::now() + kLongestLoad;
  while (!is_ready() && !stop()) {
    if (const auto status = process_.Ended()) {
      throw RvizError(*status == ChildProcess::kNotFound
                          ? "cannot run rviz: is it installed (scripts/setup), and on the PATH?"
                          : "RViz ended with status " + std::to_string(*status) + " before it was ready");
    }
    if (std::chrono::steady_clock::now() > deadline) {
      throw RvizError("RViz is not ready after a minute");
    }
    std::this_thread::sleep_for(kPoll);
  }
}

}  // namespace controller_base::demo
