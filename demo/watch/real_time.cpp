#include "demo/watch/real_time.h"

#include <ros/param.h>
#include <rosgraph_msgs/Clock.h>

#include <cstdint>
#include <thread>

#include "demo/messages/drive_messages.h"

namespace controller_base::demo {
namespace {

constexpr char kUseSimTime[] = "/use_sim_time";
constexpr std::uint32_t kQueueSize = 1;

}  // namespace

SharedClock::SharedClock() : clock_(node_.advertise<rosgraph_msgs::Clock>("/clock", kQueueSize)) {
  ros::param::set(kUseSimTime, true);
}

SharedClock::~SharedClock() { ros::param::del(kUseSimTime); }

void SharedClock::OnCycle(const simulation::CycleReport& cycle) { clock_.publish(ClockMessage(cycle)); }

void RealTime::OnCycle(const simulation::CycleReport& cycle) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLongestDelay{500};
  const auto since_beginning = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(cycle.time));
  if (Clock::now() > beginning_ + since_beginning + kLongestDelay) {
    beginning_ = Clock::now() - since_beginning;
  }
  std::this_thread::sleep_until(beginning_ + since_beginning);
}

}  // namespace controller_base::demo
