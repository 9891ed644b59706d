#ifndef TEST_SUPPORT_SIM_TIME_H_
#define TEST_SUPPORT_SIM_TIME_H_

#include <gtest/gtest.h>
#include <ros/duration.h>
#include <ros/time.h>

namespace controller_base_test {

// The clock that ros::Time::now() reads, moved by hand: no test waits for real time.
inline void SetNow(const ros::Time& now) {
  ros::Time::init();  // without it setNow has no effect
  ros::Time::setNow(now);
}

inline void Wait(double seconds) { ros::Time::setNow(ros::Time::now() + ros::Duration(seconds)); }

// A test that starts at 100 s.
class SimTimeTest : public testing::Test {
 protected:
  void SetUp() override { SetNow(ros::Time(100, 0)); }
};

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_SIM_TIME_H_
