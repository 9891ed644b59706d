#include <algorithm>
#include <limits>

#include "test/robot/node_fixture.h"

namespace controller_base_test {
namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST_F(NodeFixture, ReachesItsGoalAndThenLeavesTheWheelsToOthers) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  GoTo(2.0, 2.0);
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ": " << reason_;
  EXPECT_TRUE(IsAt(2.0, 2.0));
  EXPECT_EQ(touches_, 0);
  Listen(0.2);
  EXPECT_TRUE(commands_.back().IsToStand());
  const std::size_t commands = commands_.size();
  Listen(0.5);
  EXPECT_EQ(commands_.size(), commands);
}

TEST_F(NodeFixture, FollowsAPathAndPublishesItWhereRvizShowsIt) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  nav_msgs::Path path;
  path.header.frame_id = "odom";  // where that lies on the map, the frames say
  for (const double x : {0.0, 0.5, 1.0}) {
    path.poses.push_back(PoseAt(x, 0.0));
    path.poses.back().header.frame_id = "odom";
  }
  Listen(0.5);
  plans_.publish(path);
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 20.0)) << state_ << ": " << reason_;
  ASSERT_FALSE(paths_.empty());
  EXPECT_EQ(paths_.back().header.frame_id, "map");
  const auto& odom_origin = paths_.back().poses.front().pose.position;
  EXPECT_TRUE(IsAt(odom_origin.x + 1.0, odom_origin.y));
}

TEST_F(NodeFixture, PlansAroundWhatStaysInItsWay) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  GoTo(5.0, 0.9);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
  ros::Publisher clicks = handle_.advertise<geometry_msgs::PointStamped>("clicked_point", 10);
  ASSERT_TRUE(Eventually([&] { return clicks.getNumSubscribers() > 0; }));
  for (const double y : {0.65, 0.9, 1.15}) {  // the lower passage is closed
    geometry_msgs::PointStamped click;
    click.point.x = 3.0;
    click.point.y = y;
    clicks.publish(click);
  }
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 55.0)) << state_ << ": " << reason_;
  EXPECT_TRUE(IsAt(5.0, 0.9));
  EXPECT_EQ(touches_, 0);
  const auto leads_above = [](const nav_msgs::Path& path) {
    return std::any_of(path.poses.begin(), path.poses.end(),
                       [](const geometry_msgs::PoseStamped& pose) { return pose.pose.position.y > 2.5; });
  };
  EXPECT_FALSE(leads_above(paths_.front()));
  EXPECT_TRUE(leads_above(paths_.back()));
}

TEST_F(NodeFixture, SaysThatThereIsNoMap) {
  StartRobot();
  StartNode();
  GoTo(2.0, 2.0);
  ASSERT_TRUE(Eventually([this] { return ErrorOf("map") == "map: none yet"; }));
  ASSERT_TRUE(Eventually([this] { return state_ == "waiting"; }));
  map_.publish(TwoRooms());
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ": " << reason_;
}

TEST_F(NodeFixture, StandsOnACancelAndTakesTheNextGoal) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  GoTo(5.0, 0.9);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
  Call("cancel");
  ASSERT_TRUE(Eventually([this] { return state_ == "idle" && commands_.back().IsToStand(); }, 1.0));
  EXPECT_TRUE(Eventually([this] { return IsStanding(); }, 1.0));
  GoTo(1.0, 2.0);
  ASSERT_TRUE(Eventually([this] { return state_ == "reached"; }, 30.0)) << state_ << ": " << reason_;
  EXPECT_TRUE(IsAt(1.0, 2.0));
}

TEST_F(NodeFixture, ForgetsWhatItSawOnAReset) {
  Start();
  nav_msgs::OccupancyGrid local;
  Hear<nav_msgs::OccupancyGrid>("path_follower/local_map", [&](const nav_msgs::OccupancyGrid& map) { local = map; });
  const auto obstacles = [&] { return std::count(local.data.begin(), local.data.end(), std::int8_t{100}); };
  ros::Publisher clicks = handle_.advertise<geometry_msgs::PointStamped>("clicked_point", 10);
  ASSERT_TRUE(Eventually([&] { return clicks.getNumSubscribers() > 0 && obstacles() > 0; }));
  const auto walls = obstacles();
  geometry_msgs::PointStamped click;
  click.point.x = 2.0;
  click.point.y = 2.0;
  clicks.publish(click);
  ASSERT_TRUE(Eventually([&] { return obstacles() > walls + 2; }));
  GoTo(5.0, 0.9);
  ASSERT_TRUE(Eventually([this] { return IsMoving(); }));
  Call("reset");
  ASSERT_TRUE(Eventually([this] { return state_ == "idle" && commands_.back().IsToStand(); }, 1.0));
  ASSERT_FALSE(paths_.empty());
  EXPECT_TRUE(Eventually([this] { return paths_.back().poses.empty(); }));
}

TEST_F(NodeFixture, IgnoresGoalsAndPathsOfNoUse) {
  Start();
  ASSERT_TRUE(Eventually([this] { return scans_ > 0; }));
  Listen(0.5);
  const auto is_told = [this](const std::string& what) {
    return Eventually([&] { return testing::Value(events_, Contains(HasSubstr(what))); });
  };
  goals_.publish(PoseAt(kNan, 1.0));
  EXPECT_TRUE(is_told("a goal is ignored: it holds a number that is not finite"));
  geometry_msgs::PoseStamped elsewhere = PoseAt(1.0, 1.0);
  elsewhere.header.frame_id = "moon";
  goals_.publish(elsewhere);
  EXPECT_TRUE(is_told("moon"));
  plans_.publish(nav_msgs::Path());
  EXPECT_TRUE(is_told("a path is ignored: it has no poses"));
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.poses = {PoseAt(1.0, 0.9), PoseAt(1.0, kNan)};
  plans_.publish(path);
  EXPECT_TRUE(Eventually([this] {
    return std::count_if(events_.begin(), events_.end(), [](const std::string& event) {
             return event.find("a path is ignored") != std::string::npos;
           }) == 2;
  }));
  EXPECT_EQ(state_, "idle");
  GoTo(-3.0, 50.0);
  EXPECT_TRUE(Eventually([this] { return state_ == "no path"; }));
  EXPECT_TRUE(commands_.empty() || commands_.back().IsToStand());
}

}  // namespace
}  // namespace controller_base_test
