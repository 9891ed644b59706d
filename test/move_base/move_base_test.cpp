#include <actionlib/client/simple_action_client.h>
#include <dynamic_reconfigure/Reconfigure.h>
#include <geometry_msgs/PoseWithCovarianceStamped.h>
#include <gmock/gmock.h>
#include <move_base_msgs/MoveBaseAction.h>
#include <nav_msgs/Odometry.h>
#include <nav_msgs/Path.h>
#include <ros/node_handle.h>
#include <ros/service.h>
#include <ros/spinner.h>
#include <std_msgs/String.h>
#include <std_srvs/SetBool.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <string>
#include <vector>

#include "demo/watch/child_process.h"
#include "follower/geometry.h"
#include "follower/path_geometry.h"
#include "simulation/known_map.h"
#include "simulation/map_file.h"
#include "simulation/path_search.h"
#include "test/demo/watch/virtual_screen.h"
#include "test/support/ros_graph.h"
#include "test/support/temporary_folder.h"

// The real move_base with the plugin, the real map server and the simulated robot, in the bundled apartment.
namespace controller_base_test {
namespace {

using actionlib::SimpleClientGoalState;
using controller_base::demo::ChildProcess;
using controller_base::follower::Distance;
using controller_base::simulation::KnownMap;
using nav_core::math::Vec2d;
using Client = actionlib::SimpleActionClient<move_base_msgs::MoveBaseAction>;

constexpr char kMap[] = CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml";
constexpr int kGoals = 20;
constexpr double kRoomForAGoal = 0.5;       // m to the nearest wall
constexpr double kRoomForAnObstacle = 0.6;  // m; the robot gets around a box there
constexpr double kGoalTolerance = 0.25;     // m
constexpr double kHeadingTolerance = 0.25;  // rad; 0.2, and what it turns while it stops
const Vec2d kStart(1.2, 6.9);

// The apartment, and places in it that are far enough from its walls.
class Places {
 public:
  Places() : map_(controller_base::simulation::LoadMap(kMap)), known_(map_) {}

  nav_msgs::Path Search(const Vec2d& from, const Vec2d& to) const {
    return controller_base::simulation::SearchPath(known_, from, to);
  }

  bool HasRoom(const Vec2d& place, double room) const {
    const int reach = static_cast<int>(std::ceil(room / map_.getResolution()));
    unsigned int mx = 0;
    unsigned int my = 0;
    if (!map_.worldToMap(place.x, place.y, mx, my)) {
      return false;
    }
    for (int dy = -reach; dy <= reach; ++dy) {
      for (int dx = -reach; dx <= reach; ++dx) {
        const int x = static_cast<int>(mx) + dx;
        const int y = static_cast<int>(my) + dy;
        if (std::hypot(dx, dy) <= reach && (known_.IsObstacle(x, y) || known_.IsUnknown(x, y))) {
          return false;
        }
      }
    }
    return true;
  }

  // A place with room whose way from `from` is 1.5 to 4 m long.
  Vec2d NextGoal(const Vec2d& from, std::mt19937* random) const {
    std::uniform_real_distribution<> offset(-4.0, 4.0);
    for (;;) {
      const Vec2d goal(from.x + offset(*random), from.y + offset(*random));
      if (HasRoom(goal, kRoomForAGoal) && Distance(from, goal) > 1.2) {
        const nav_msgs::Path path = Search(from, goal);
        const double length = controller_base::follower::PathLength(path);
        if (!path.poses.empty() && length > 1.5 && length < 4.0) {
          return goal;
        }
      }
    }
  }

 private:
  costmap_2d::Costmap2D map_;
  KnownMap known_;
};

struct Tour {
  std::vector<Vec2d> goals;
  std::string obstacles = "[";  // as the launch file takes them
  int seen = 0;
  int hidden = 0;
};

// Goals one after the other, and obstacles of both kinds on every other way between them, where there is room.
Tour MakeTour(const Places& places) {
  std::mt19937 random(4);
  Tour tour;
  Vec2d from = kStart;
  std::vector<Vec2d> things;
  const auto is_clear = [&](const Vec2d& place) {
    return std::all_of(things.begin(), things.end(), [&](const Vec2d& thing) { return Distance(place, thing) > 0.8; });
  };
  while (tour.goals.size() < kGoals) {
    const Vec2d goal = places.NextGoal(from, &random);
    if (!is_clear(goal)) {
      continue;
    }
    const nav_msgs::Path path = places.Search(from, goal);
    const geometry_msgs::Point middle = path.poses[path.poses.size() / 2].pose.position;
    const Vec2d place(middle.x, middle.y);
    const auto is_far = [&](const Vec2d& point) { return Distance(point, place) > 0.7; };
    if (tour.goals.size() % 2 == 1 && places.HasRoom(place, kRoomForAnObstacle) && is_clear(place) && is_far(kStart) &&
        is_far(goal) && std::all_of(tour.goals.begin(), tour.goals.end(), is_far)) {
      const bool is_seen = tour.seen <= tour.hidden;
      char text[128];
      std::snprintf(text, sizeof(text), "%s{x: %.3f, y: %.3f, radius: %.2f, seen: %s}", things.empty() ? "" : ", ",
                    place.x, place.y, is_seen ? 0.15 : 0.08, is_seen ? "true" : "false");
      tour.obstacles += text;
      ++(is_seen ? tour.seen : tour.hidden);
      things.push_back(place);
    }
    tour.goals.push_back(goal);
    from = goal;
  }
  tour.obstacles += "]";
  return tour;
}

class MoveBase : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!std::filesystem::exists(kSetup)) {
      return;
    }
    places_ = new Places();
    tour_ = new Tour(MakeTour(*places_));
    stack_ = new ChildProcess({"bash", "-c",
                               "source " + kSetup +
                                   " && exec roslaunch controller_base move_base_simulation.launch rviz:=false "
                                   "speed:=" CONTROLLER_BASE_SPEED " obstacles:='" +
                                   tour_->obstacles + "'"},
                              {"PATH=/usr/bin:" + std::string(std::getenv("PATH"))}, "move_base_test.log");
    spinner_ = new ros::AsyncSpinner(1);
    spinner_->start();
    ros::NodeHandle handle;
    handle.setParam("/use_sim_time", true);
    truth_ = new ros::Subscriber(handle.subscribe("/ground_truth", 1, &MoveBase::OnTruth));
    touches_ = new ros::Subscriber(handle.subscribe("/touched", 100, &MoveBase::OnTouch));
    client_ = new Client("move_base", false);
    is_up_ = WaitUntil([] { return client_->isServerConnected(); }, 60.0);
  }

  static void OnTruth(const nav_msgs::Odometry::ConstPtr& truth) {
    const std::lock_guard<std::mutex> lock(mutex_);
    where_ = {truth->pose.pose.position.x, truth->pose.pose.position.y};
    yaw_ = 2.0 * std::atan2(truth->pose.pose.orientation.z, truth->pose.pose.orientation.w);
    forward_ = truth->twist.twist.linear.x;
    speed_ = std::abs(truth->twist.twist.linear.x) + std::abs(truth->twist.twist.angular.z);
  }

  static void OnTouch(const std_msgs::String::ConstPtr& touch) {
    ++(touch->data == "seen" ? touched_seen_ : touched_hidden_);
  }

  static void TearDownTestSuite() {
    delete client_;
    delete touches_;
    delete truth_;
    delete stack_;
    delete spinner_;
    delete tour_;
    delete places_;
  }

  void SetUp() override {
    if (stack_ == nullptr) {
      GTEST_SKIP() << "there is no stock navigation stack to run: " << kSetup << " is missing";
    }
    ASSERT_TRUE(is_up_) << "move_base did not come up; see move_base_test.log";
    ASSERT_TRUE(WaitUntil([] { return !IsMoving(); }, 5.0));
  }

  static move_base_msgs::MoveBaseGoal GoalAt(const Vec2d& place) {
    move_base_msgs::MoveBaseGoal goal;
    goal.target_pose.header.frame_id = "map";
    goal.target_pose.pose.position.x = place.x;
    goal.target_pose.pose.position.y = place.y;
    goal.target_pose.pose.orientation.w = 1.0;
    return goal;
  }

  // The state in which the goal ended, or how it is after so many seconds of the wall's clock.
  static SimpleClientGoalState WaitForEnd(double seconds) {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(seconds);
    while (!client_->getState().isDone() && ros::WallTime::now() < deadline) {
      ros::WallDuration(0.02).sleep();
    }
    return client_->getState();
  }

  static bool WaitUntil(const std::function<bool()>& condition, double seconds) {
    const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(seconds);
    while (!condition() && ros::WallTime::now() < deadline) {
      ros::WallDuration(0.02).sleep();
    }
    return condition();
  }

  static Vec2d Where() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return where_;
  }
  static bool IsMoving() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return speed_ > 0.05;
  }

  static double Speed() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return forward_;
  }
  static double Heading() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return yaw_;
  }

  static void SetNumber(const std::string& node, const std::string& name, double value) {
    dynamic_reconfigure::Reconfigure call;
    call.request.config.doubles.resize(1);
    call.request.config.doubles[0].name = name;
    call.request.config.doubles[0].value = value;
    ASSERT_TRUE(ros::service::call(node + "/set_parameters", call));
  }

  // A place to which the robot drives for some seconds.
  static Vec2d FarGoal() {
    std::mt19937 random(9);
    return places_->NextGoal(Where(), &random);
  }

  static std::string Space() {
    const char* space = std::getenv("CONTROLLER_BASE_SPACE");
    return space == nullptr ? "devel" : space;
  }

  static inline const std::string kSetup = CONTROLLER_BASE_WORKSPACE "/" + Space() + "/setup.bash";
  static inline Places* places_ = nullptr;
  static inline Tour* tour_ = nullptr;
  static inline ChildProcess* stack_ = nullptr;
  static inline ros::AsyncSpinner* spinner_ = nullptr;
  static inline ros::Subscriber* truth_ = nullptr;
  static inline ros::Subscriber* touches_ = nullptr;
  static inline Client* client_ = nullptr;
  static inline std::mutex mutex_;
  static inline Vec2d where_;
  static inline double yaw_ = 0.0;
  static inline double forward_ = 0.0;  // m/s
  static inline double speed_ = 0.0;
  static inline bool is_up_ = false;
  static inline std::atomic<int> touched_seen_{0};
  static inline std::atomic<int> touched_hidden_{0};
};

TEST_F(MoveBase, ReachesTwentyGoalsAmongObstaclesOfBothKindsAndTouchesNothingSeen) {
  EXPECT_GE(tour_->seen, 2);
  EXPECT_GE(tour_->hidden, 2);
  for (std::size_t i = 0; i < tour_->goals.size(); ++i) {
    client_->sendGoal(GoalAt(tour_->goals[i]));
    const SimpleClientGoalState state = WaitForEnd(40.0);
    EXPECT_EQ(state, SimpleClientGoalState::SUCCEEDED)
        << "goal " << i << ": " << state.toString() << " " << state.getText();
    EXPECT_LT(Distance(Where(), tour_->goals[i]), kGoalTolerance) << "goal " << i;
    EXPECT_LT(std::abs(controller_base::follower::NormalizeAngle(Heading())), kHeadingTolerance) << "goal " << i;
  }
  EXPECT_EQ(touched_seen_, 0);
  std::printf("%d seen, %d hidden obstacles; hidden ones touched %d times\n", tour_->seen, tour_->hidden,
              touched_hidden_.load());
}

TEST_F(MoveBase, IsCancelledAndStandsStill) {
  client_->sendGoal(GoalAt(FarGoal()));
  ASSERT_TRUE(WaitUntil(IsMoving, 10.0));
  client_->cancelGoal();
  EXPECT_EQ(WaitForEnd(10.0), SimpleClientGoalState::PREEMPTED);
  EXPECT_TRUE(WaitUntil([] { return !IsMoving(); }, 5.0));
}

TEST_F(MoveBase, ANewGoalTakesTheOldOnesPlace) {
  client_->sendGoal(GoalAt(FarGoal()));
  ASSERT_TRUE(WaitUntil(IsMoving, 10.0));
  const Vec2d goal = FarGoal();
  client_->sendGoal(GoalAt(goal));
  EXPECT_EQ(WaitForEnd(40.0), SimpleClientGoalState::SUCCEEDED);
  EXPECT_LT(Distance(Where(), goal), kGoalTolerance);
}

TEST_F(MoveBase, AGoalInAWallIsGivenUpAndTheNextOneIsReached) {
  client_->sendGoal(GoalAt({0.0, 0.0}));  // the corner of the outer walls
  EXPECT_EQ(WaitForEnd(60.0), SimpleClientGoalState::ABORTED);
  const Vec2d goal = FarGoal();
  client_->sendGoal(GoalAt(goal));
  EXPECT_EQ(WaitForEnd(40.0), SimpleClientGoalState::SUCCEEDED);
}

TEST_F(MoveBase, StandsStillWhileTheCostmapGetsNoScansAndDrivesOnAfterwards) {
  client_->sendGoal(GoalAt(FarGoal()));
  ASSERT_TRUE(WaitUntil(IsMoving, 10.0));
  std_srvs::SetBool call;
  call.request.data = false;
  ASSERT_TRUE(ros::service::call("/simulated_robot/scan", call));
  EXPECT_TRUE(WaitUntil([] { return !IsMoving(); }, 5.0));
  call.request.data = true;
  ASSERT_TRUE(ros::service::call("/simulated_robot/scan", call));
  EXPECT_EQ(WaitForEnd(40.0), SimpleClientGoalState::SUCCEEDED);
}

TEST_F(MoveBase, StandsStillWhileTheCostmapIsNotUpdatedAndDrivesOnAfterwards) {
  client_->sendGoal(GoalAt(FarGoal()));
  ASSERT_TRUE(WaitUntil([] { return Speed() > 0.3; }, 20.0));
  SetNumber("/move_base/local_costmap", "update_frequency", 0.1);  // once, and then for ten seconds not
  const Vec2d updated = Where();
  EXPECT_TRUE(WaitUntil([] { return !IsMoving(); }, 1.0));
  EXPECT_FALSE(WaitUntil([] { return IsMoving() || client_->getState().isDone(); }, 1.0));
  EXPECT_LT(Distance(Where(), updated), 0.6);  // it brakes after costmap_timeout
  SetNumber("/move_base/local_costmap", "update_frequency", 10.0);
  EXPECT_EQ(WaitForEnd(40.0), SimpleClientGoalState::SUCCEEDED);
}

TEST_F(MoveBase, AChangedSpeedIsDrivenAtOnce) {
  const std::string planner = "/move_base/FollowerLocalPlanner";
  client_->sendGoal(GoalAt(FarGoal()));
  ASSERT_TRUE(WaitUntil([] { return Speed() > 0.3; }, 20.0));
  SetNumber(planner, "max_vel_x", 0.1);
  EXPECT_TRUE(WaitUntil([] { return Speed() < 0.11; }, 5.0));
  ros::WallDuration(0.5).sleep();  // it stays so
  EXPECT_LT(Speed(), 0.11);
  SetNumber(planner, "max_vel_x", 0.45);
  EXPECT_TRUE(WaitUntil([] { return Speed() > 0.3; }, 20.0));
  EXPECT_EQ(WaitForEnd(40.0), SimpleClientGoalState::SUCCEEDED);
}

TEST_F(MoveBase, ReachesItsGoalAlsoWhenItIsLiftedToAnotherPlace) {
  const Vec2d before = Where();
  const Vec2d goal = FarGoal();
  client_->sendGoal(GoalAt(goal));
  ASSERT_TRUE(WaitUntil([&] { return Distance(Where(), before) > 0.5; }, 20.0));
  ros::NodeHandle handle;
  ros::Publisher places = handle.advertise<geometry_msgs::PoseWithCovarianceStamped>("/initialpose", 1, true);
  geometry_msgs::PoseWithCovarianceStamped place;
  place.pose.pose.position.x = before.x;
  place.pose.pose.position.y = before.y;
  place.pose.pose.orientation.w = 1.0;
  places.publish(place);
  EXPECT_EQ(WaitForEnd(60.0), SimpleClientGoalState::SUCCEEDED);
  EXPECT_LT(Distance(Where(), goal), kGoalTolerance);
}

TEST_F(MoveBase, PublishesWhatRvizCanShow) {
  const std::string name = "/move_base/FollowerLocalPlanner/";
  EXPECT_EQ(TypeOfTopic(name + "path"), "nav_msgs/Path");
  EXPECT_EQ(TypeOfTopic(name + "detour"), "nav_msgs/Path");
  EXPECT_EQ(TypeOfTopic(name + "boxes"), "visualization_msgs/MarkerArray");
  EXPECT_EQ(TypeOfTopic(name + "state"), "std_msgs/String");
}

TEST_F(MoveBase, IsShownInRviz) {
  if (!std::filesystem::exists("/usr/bin/rviz") || !std::filesystem::exists("/usr/bin/Xvfb")) {
    GTEST_SKIP() << "there is no rviz or no Xvfb on this machine; scripts/setup installs them";
  }
  const VirtualScreen screen;
  const TemporaryFolder folder;
  const ChildProcess rviz({"/usr/bin/rviz", "-d", CONTROLLER_BASE_SOURCE "/move_base/rviz/move_base.rviz"},
                          {"DISPLAY=" + screen.display(), "LIBGL_ALWAYS_SOFTWARE=1",
                           "XDG_RUNTIME_DIR=" + folder.path().string(), "HOME=" + folder.path().string()},
                          "move_base_rviz.log");
  ASSERT_TRUE(WaitUntil([&] { return screen.WorldPixels(255, 200, 0) > 100; }, 120.0));  // the scan
  SetNumber("/move_base/FollowerLocalPlanner", "max_vel_x", 0.1);                        // time to look
  client_->sendGoal(GoalAt(FarGoal()));
  EXPECT_TRUE(WaitUntil([&] { return screen.WorldPixels(40, 120, 200) > 50; }, 20.0));  // the path
  EXPECT_TRUE(WaitUntil([&] { return screen.WorldPixels(0, 200, 255) > 50; }, 20.0));   // the stretch ahead
  cv::imwrite("rviz-move-base.png", screen.Picture());                                  // for whoever wants to see it
  client_->cancelGoal();
  SetNumber("/move_base/FollowerLocalPlanner", "max_vel_x", 0.45);
}

}  // namespace
}  // namespace controller_base_test
