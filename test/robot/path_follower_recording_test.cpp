#include <dynamic_reconfigure/Reconfigure.h>

#include <filesystem>
#include <string>

#include "test/robot/node_fixture.h"

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;
using testing::HasSubstr;

class Recorded : public NodeFixture {
 protected:
  void Drive(double x, double y) {
    state_.clear();
    GoTo(x, y);
    ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ": " << reason_;
  }

  static void SetSpeed(double speed) {
    dynamic_reconfigure::Reconfigure call;
    call.request.config.doubles.resize(1);
    call.request.config.doubles[0].name = "max_vel_x";
    call.request.config.doubles[0].value = speed;
    ASSERT_TRUE(ros::service::call("path_follower/set_parameters", call));
  }

  std::string Path(const std::string& name) const { return (folder_.path() / name).string(); }
};

TEST_F(Recorded, WhatItRecordsIsReplayedTheSame) {
  node_.setParam("record", Path("drive.bag"));
  node_.setParam("robot_radius", 0.18);  // a replay that did not know of it would differ
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  GoTo(2.0, 2.0);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
  SetSpeed(0.3);
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ": " << reason_;
  Call("reset");
  Drive(1.0, 0.9);
  programs_.clear();
  ASSERT_TRUE(std::filesystem::exists(Path("drive.bag")));
  const int status =
      ChildProcess({CONTROLLER_BASE_REPLAY_PROGRAM, Path("drive.bag")}, {}, Path("replay.log")).WaitForEnd();
  const std::string told = ReadFile(Path("replay.log"));
  EXPECT_EQ(status, 0) << told;
  EXPECT_THAT(told, HasSubstr("identical: "));
}

TEST_F(Recorded, ABagThatCannotBeWrittenDoesNotStopTheRobot) {
  node_.setParam("record", Path("missing/drive.bag"));
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  Drive(1.5, 0.9);
}

}  // namespace
}  // namespace controller_base_test
