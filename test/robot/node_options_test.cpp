#include "robot/node_options.h"

#include <gmock/gmock.h>
#include <ros/node_handle.h>
#include <ros/param.h>

#include <stdexcept>
#include <string>

namespace controller_base_test {
namespace {

using controller_base::robot::NodeOptions;
using controller_base::robot::ParameterTable;
using controller_base::robot::ReadNodeOptions;
using testing::HasSubstr;

class Options : public testing::Test {
 protected:
  ~Options() override { ros::param::del("some_node"); }

  void ExpectRefused(const std::string& text) const {
    try {
      ReadNodeOptions(handle_);
      FAIL() << "taken";
    } catch (const std::invalid_argument& error) {
      EXPECT_THAT(error.what(), HasSubstr(text));
    }
  }

  ros::NodeHandle handle_{"some_node"};
};

TEST_F(Options, KeepTheirDefaults) {
  const NodeOptions options = ReadNodeOptions(handle_);
  EXPECT_EQ(options.global_frame, "map");
  EXPECT_EQ(options.scan_timeout, 0.2);
  EXPECT_TRUE(options.use_map);
}

TEST_F(Options, TakeWhatIsSet) {
  handle_.setParam("global_frame", "/odom");
  handle_.setParam("use_map", false);
  handle_.setParam("controller_frequency", 10);  // without a point
  const NodeOptions options = ReadNodeOptions(handle_);
  EXPECT_EQ(options.global_frame, "odom");
  EXPECT_FALSE(options.use_map);
  EXPECT_EQ(options.controller_frequency, 10.0);
}

TEST_F(Options, RefuseWhatCannotBe) {
  handle_.setParam("scan_timeout", "soon");
  ExpectRefused("/some_node/scan_timeout is no number");
  handle_.setParam("scan_timeout", 0.0);
  ExpectRefused("/some_node/scan_timeout is 0, and not 0.01 to 10 s");
  handle_.setParam("scan_timeout", 10.0);
  EXPECT_EQ(ReadNodeOptions(handle_).scan_timeout, 10.0);
  handle_.setParam("pose_source", "stars");
  ExpectRefused("\"stars\", and not \"tf\" or \"odometry\"");
}

TEST_F(Options, AreListed) {
  EXPECT_THAT(ParameterTable(), HasSubstr("\nscan_timeout s 0.01 10 0.2\n"));
  EXPECT_THAT(ParameterTable(), HasSubstr("\nrobot_radius m 0.01 5 0.17\n"));
}

}  // namespace
}  // namespace controller_base_test
