// The doctor with the real node and the simulated robot, with one fault at a time.
#include <nav_msgs/OccupancyGrid.h>
#include <rosgraph_msgs/Clock.h>
#include <tf2_msgs/TFMessage.h>

#include "test/robot/node_fixture.h"

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;
using testing::HasSubstr;
using testing::Not;

class DoctorTest : public NodeFixture {
 protected:
  struct Verdict {
    int status;
    std::string text;
  };

  Verdict Examine(const std::vector<std::string>& arguments = {"/path_follower", "1"}) const {
    std::vector<std::string> command = {CONTROLLER_BASE_DOCTOR};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const std::string log = (folder_.path() / "doctor.log").string();
    ChildProcess doctor(command, {}, log);
    Eventually([&] { return doctor.Ended().has_value(); }, 20.0);
    return {doctor.WaitForEnd(), ReadFile(log)};
  }

  void ExpectFailing(const std::string& line) const {
    const Verdict verdict = Examine();
    EXPECT_EQ(verdict.status, 1);
    EXPECT_THAT(verdict.text, HasSubstr("FAILS    " + line));
    EXPECT_THAT(verdict.text, HasSubstr("\nNOT fit to drive: "));
  }
  void ExpectWarning(const std::string& line) const {
    const Verdict verdict = Examine();
    EXPECT_EQ(verdict.status, 0) << verdict.text;
    EXPECT_THAT(verdict.text, HasSubstr("warning  " + line));
  }
};

TEST_F(DoctorTest, FindsNothingWhereAllIsWell) {
  Start();
  const Verdict verdict = Examine();
  EXPECT_EQ(verdict.status, 0);
  EXPECT_EQ(verdict.text, "fit to drive: 0 failing, 0 warnings\n");
}

TEST_F(DoctorTest, TellsWhatIsNotThere) {
  ExpectFailing("node: no node /path_follower runs at this master");
  StartNode();
  Listen(0.5);
  const Verdict verdict = Examine();
  EXPECT_THAT(verdict.text, HasSubstr("scan: nobody publishes /scan (sensor_msgs/LaserScan)"));
  EXPECT_THAT(verdict.text, HasSubstr("pose: no transform from map to base_link"));
  EXPECT_THAT(verdict.text, HasSubstr("warning  bumper: nobody publishes /bumper"));
}

TEST_F(DoctorTest, TellsWhatIsSilent) {
  Start();
  Switch("scan", false);
  ExpectFailing("scan: /simulated_robot sends nothing on /scan");
  Switch("scan", true);
  Switch("tf", false);
  Listen(0.5);
  ExpectFailing("pose: no transform from map to base_link");
}

TEST_F(DoctorTest, TellsWhatIsTooSlowOrTooOld) {
  node_.setParam("scan_timeout", 0.05);
  node_.setParam("bumper_timeout", 0.01);
  Start();
  ExpectFailing("scan: /scan comes at ");
  ExpectFailing("bumper: /bumper comes at ");
  ros::Publisher scans = handle_.advertise<sensor_msgs::LaserScan>("scan", 1);
  Switch("scan", false);
  Hear<nav_msgs::Odometry>("odom", [&](const nav_msgs::Odometry& odometry) {
    sensor_msgs::LaserScan scan;
    scan.header.stamp = odometry.header.stamp - ros::Duration(5.0);
    scan.header.frame_id = "laser";
    scan.angle_increment = 0.1F;
    scan.range_max = 6.0F;
    scan.ranges.assign(60, 1.0F);
    scans.publish(scan);
  });
  ExpectFailing("scan: /scan comes 5.");
}

TEST_F(DoctorTest, TellsWhatIsWrongWithTheMap) {
  StartRobot();
  StartNode();
  ExpectFailing("map: /controller_base_test");  // which has the topic and sends nothing
  nav_msgs::OccupancyGrid map = TwoRooms();
  map.header.frame_id = "house";
  map_.publish(map);
  ExpectFailing("map: /map is in frame \"house\", and global_frame is \"map\"");
  map = TwoRooms();
  map.data.pop_back();
  map_.publish(map);
  ExpectFailing("map: /map is of no use: the map brings 9599 cells");
}

TEST_F(DoctorTest, TellsThatTheEstimatedPoseIsWrong) {
  map_.publish(TwoRooms());
  robot_.setParam("start_x", 1.0);
  StartRobot();
  StartNode();
  nav_msgs::OccupancyGrid moved = TwoRooms();
  moved.info.origin.position.x = -30.0;
  map_.publish(moved);
  ExpectFailing("pose: the robot is at (1.0");
  moved.info.origin.position.x = -0.8;
  moved.info.origin.position.y = -0.5;
  map_.publish(moved);
  ExpectWarning("pose: ");
}

TEST_F(DoctorTest, LooksAtTheOdometryWhereThatIsThePose) {
  node_.setParam("pose_source", "odometry");
  Start();
  const Verdict verdict = Examine();
  EXPECT_THAT(verdict.text,
              HasSubstr("warning  pose: /odom is in frame \"odom\", and the node takes it for global_frame \"map\""));
  EXPECT_THAT(verdict.text, HasSubstr("FAILS    pose: the robot is at (0.00, 0.00), in a wall of the map"));
  Switch("odom", false);
  Listen(0.5);
  ExpectFailing("pose: /simulated_robot sends nothing on /odom");
}

TEST_F(DoctorTest, TellsThatTheLaserIsTiltedOrFarFromTheRobot) {
  Start();
  Switch("scan", false);
  ros::Publisher scans = handle_.advertise<sensor_msgs::LaserScan>("scan", 1);
  ros::Publisher frames = handle_.advertise<tf2_msgs::TFMessage>("/tf_static", 1, /*latch=*/true);
  tf2_msgs::TFMessage mount;
  mount.transforms.resize(1);
  mount.transforms[0].header.frame_id = "base_link";
  mount.transforms[0].child_frame_id = "tilted";
  mount.transforms[0].transform.translation.x = 1.5;
  mount.transforms[0].transform.rotation.y = std::sin(0.15);
  mount.transforms[0].transform.rotation.w = std::cos(0.15);
  frames.publish(mount);
  Hear<nav_msgs::Odometry>("odom", [&](const nav_msgs::Odometry& odometry) {
    sensor_msgs::LaserScan scan;
    scan.header.stamp = odometry.header.stamp;
    scan.header.frame_id = "tilted";
    scan.angle_increment = 0.1F;
    scan.range_max = 6.0F;
    scan.ranges.assign(60, 1.0F);
    scans.publish(scan);
  });
  ExpectWarning("frame: the laser is tilted by 0.30 rad");
  ExpectWarning("frame: the laser is 1.50 m from base_link");
}

TEST_F(DoctorTest, TellsThatCellsAreImplausiblyWide) {
  StartRobot();
  StartNode();
  nav_msgs::OccupancyGrid map = TwoRooms();
  map.info.resolution = 0.6F;
  map_.publish(map);
  EXPECT_THAT(Examine().text, HasSubstr("warning  map: its cells are 0.6 m wide; 0.005 to 0.5 m are plausible"));
}

TEST_F(DoctorTest, TellsWhatIsWrongWithParametersAndClock) {
  Start();
  node_.setParam("robot_radios", 0.2);
  ExpectWarning("parameter: /path_follower/robot_radios is none that the node reads");
  node_.setParam("scan_timeout", -1.0);
  ExpectFailing("parameter: the parameter /path_follower/scan_timeout is -1, and not 0.01 to 10 s");
  node_.deleteParam("scan_timeout");
  ros::param::set("use_sim_time", true);
  ExpectFailing("clock: /use_sim_time is set, and nobody publishes /clock");
}

TEST_F(DoctorTest, TellsWhoElseDrivesAndThatNobodyListens) {
  ros::Publisher other = handle_.advertise<geometry_msgs::Twist>("cmd_vel", 1);
  Start();
  ExpectWarning("cmd_vel: /controller_base_test");
}

TEST_F(DoctorTest, TellsThatTheLaserSeesTheRobotItself) {
  node_.setParam("robot_radius", 1.5);
  Start();
  ExpectWarning("scan: it sees something at ");
}

TEST_F(DoctorTest, RefusesWrongArguments) {
  EXPECT_EQ(Examine({"/path_follower", "soon"}).status, 2);
  EXPECT_EQ(Examine({"no name!"}).status, 2);
  EXPECT_THAT(Examine({"--help"}).text, HasSubstr("usage: doctor"));
}

}  // namespace
}  // namespace controller_base_test
