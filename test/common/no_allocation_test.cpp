// What a controller asks in every cycle takes no memory while DEBUG lines are off.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "controller_base/collision_history.h"
#include "controller_base/controller_progress_checker.h"
#include "controller_base/obstacle_blocking_analyzer.h"
#include "controller_base/trajectory_analyzer.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace {

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> releases{0};

void* Counted(void* memory) {
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  ++allocations;
  return memory;
}

void Release(void* memory) noexcept {
  releases += memory != nullptr ? 1 : 0;
  std::free(memory);
}

}  // namespace

// This program's and its libraries'; the other forms end in these.
void* operator new(std::size_t bytes) { return Counted(std::malloc(bytes == 0 ? 1 : bytes)); }
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(boundary, (bytes / boundary + 1) * boundary));
}
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Release(memory); }

namespace controller_base_test {
namespace {

using nav_controller::CollisionEvent;
using nav_controller::CollisionHistory;
using nav_controller::ControllerProgressChecker;
using nav_controller::IsBlockingBetweenPoints;
using nav_controller::IsBlockingLaserBetweenPoints;
using nav_controller::IsBlockingPathInflateObstacle;
using nav_controller::IsBlockingPathLaserObstacle;
using nav_controller::TrajectoryAnalyzer;

constexpr std::size_t kMapSide = 200;  // cells: a line across the map has more digits than a short string holds

// How often `ask` takes and gives back memory. It is done once before: the first log line of a place in the code
// registers that place.
template <typename Ask>
std::size_t AllocationsOf(Ask&& ask) {
  ask();
  const std::size_t before = allocations + releases;
  ask();
  return allocations + releases - before;
}

costmap_2d::Costmap2D MapOf(char cell) {
  return MapFromText(std::vector<std::string>(kMapSide, std::string(kMapSide, cell)));
}

// From the left border to the right one, a pose every cell.
nav_msgs::Path PathAcross(const costmap_2d::Costmap2D& map) {
  std::vector<Xy> points;
  for (unsigned int mx = 0; mx < kMapSide; ++mx) {
    const geometry_msgs::Point center = CenterOf(map, mx, kMapSide / 2);
    points.push_back({center.x, center.y});
  }
  return PathOf(points);
}

class NoAllocation : public SimTimeTest {
 protected:
  // Maps on which the questions end after the first cell, and after the last: free, lethal without and with the laser's
  // mark.
  const costmap_2d::Costmap2D free_ = MapOf('.');
  const costmap_2d::Costmap2D lethal_ = MapOf('#');
  const costmap_2d::Costmap2D marked_ = MapOf('X');
  const nav_msgs::Path path_ = PathAcross(free_);
  const geometry_msgs::Point& start_ = path_.poses.front().pose.position;
  const geometry_msgs::Point& end_ = path_.poses.back().pose.position;
  LogCapture log_{ros::console::levels::Info};
};

TEST_F(NoAllocation, TheCounterSeesWhatTheLibraryTakes) {
  const TrajectoryAnalyzer analyzer(path_);
  EXPECT_GT(AllocationsOf([&] { analyzer.PathTransformToLocalMap(&free_); }), 0u);
}

TEST_F(NoAllocation, UpdateIndexTakesNothing) {
  TrajectoryAnalyzer analyzer(path_);
  geometry_msgs::PoseStamped robot = path_.poses.front();
  EXPECT_EQ(AllocationsOf([&] {
              robot.pose.position.x += 0.3;
              analyzer.UpdateIndex(robot);
            }),
            0u);
  EXPECT_GT(analyzer.GetCurrentIndex(), 0u);
}

TEST_F(NoAllocation, UpdateIndexTakesNothingWhileTheRobotStaysAway) {
  TrajectoryAnalyzer analyzer(path_);
  geometry_msgs::PoseStamped robot = path_.poses.front();
  robot.pose.position.y += 1.0;
  analyzer.UpdateIndex(robot);  // warns
  EXPECT_EQ(AllocationsOf([&] { analyzer.UpdateIndex(robot); }), 0u);
}

TEST_F(NoAllocation, IsRobotMovedEnoughTakesNothing) {
  ControllerProgressChecker checker;
  checker.ResetBaselinePose(path_.poses.front());
  EXPECT_EQ(AllocationsOf([&] {
              EXPECT_FALSE(checker.IsRobotMovedEnough(path_.poses.front()));
              EXPECT_TRUE(checker.IsRobotMovedEnough(path_.poses.back()));
            }),
            0u);
}

TEST_F(NoAllocation, IsBlockingPathInflateObstacleTakesNothing) {
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(IsBlockingPathInflateObstacle(&free_, path_)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(IsBlockingPathInflateObstacle(&lethal_, path_)); }), 0u);
}

TEST_F(NoAllocation, IsBlockingPathLaserObstacleTakesNothing) {
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(IsBlockingPathLaserObstacle(&free_, path_)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(IsBlockingPathLaserObstacle(&lethal_, path_)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(IsBlockingPathLaserObstacle(&marked_, path_)); }), 0u);
}

TEST_F(NoAllocation, IsBlockingBetweenPointsTakesNothing) {
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(IsBlockingBetweenPoints(&free_, start_, end_)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(IsBlockingBetweenPoints(&lethal_, start_, end_)); }), 0u);
}

TEST_F(NoAllocation, IsBlockingLaserBetweenPointsMakesNoText) {
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(IsBlockingLaserBetweenPoints(&lethal_, start_, end_)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(IsBlockingLaserBetweenPoints(&marked_, start_, end_)); }), 0u);
}

// Without this the tests above might pass because nothing is ever made.
TEST(NoAllocationWithDebug, IsBlockingLaserBetweenPointsMakesItsText) {
  const LogCapture log(ros::console::levels::Debug);
  const costmap_2d::Costmap2D lethal = MapOf('#');
  const nav_msgs::Path path = PathAcross(lethal);
  EXPECT_GT(AllocationsOf([&] {
              IsBlockingLaserBetweenPoints(&lethal, path.poses.front().pose.position, path.poses.back().pose.position);
            }),
            0u);
}

TEST_F(NoAllocation, TheCollisionQueriesTakeNothing) {
  CollisionHistory history;
  CollisionEvent event;
  event.collided = true;
  event.type = 1;
  event.stamp = ros::Time::now();
  history.Add(event);
  EXPECT_EQ(AllocationsOf([&] {
              int count = 0;
              double angle = 0.0;
              history.FetchCollision();
              EXPECT_EQ(history.GetLastCollision().type, 1);
              history.IsTriggerEvent();
              history.GetEventDirection();
              EXPECT_TRUE(history.IsLeft());
              EXPECT_FALSE(history.ShouldAbort());
              history.ProcessNewEvent(angle);
              history.ProcessNewCollision(count);
              EXPECT_EQ(count, -1);
            }),
            0u);
}

TEST_F(NoAllocation, TakingAContactOutTakesNothing) {
  CollisionHistory history;
  CollisionEvent event;
  for (int contact = 0; contact < 2; ++contact) {
    event.stamp = ros::Time::now();
    history.Add(event);
    Wait(1.0);
  }
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(history.TryPopCollisionEvent(event)); }), 0u);
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(history.TryPopCollisionEvent(event)); }), 0u);
}

}  // namespace
}  // namespace controller_base_test
