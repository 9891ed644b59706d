// The README's controller, as a reader would paste it: it follows a free path, goes round a wall, says when it cannot,
// and loses no contact that comes from another thread.

#include "readme_controller.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <thread>

#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

constexpr unsigned int kCells = 60;
constexpr double kResolution = 0.05;  // metres per cell
constexpr std::int8_t kLeft = 1;      // types of contacts
constexpr std::int8_t kRight = 2;

class ReadmeController : public SimTimeTest {
 protected:
  ReadmeController() { follower_.NewPath(PathOf({{0.5, 1.5}, {2.5, 1.5}})); }

  nav_msgs::Path Cycle() { return follower_.Cycle(PoseAt(0.5, 1.5), map_, reason_, turn_); }

  // A contact on the left, now.
  void Bump() { Bump(ros::Time::now(), kLeft); }
  void Bump(const ros::Time& stamp, std::int8_t type) {
    nav_controller::CollisionEvent contact;
    contact.stamp = stamp;
    contact.type = type;
    follower_.Bumped(contact);
  }

  void Wall(unsigned int first_row, unsigned int last_row) {
    for (unsigned int my = first_row; my <= last_row; ++my) {
      map_.setCost(30, my, costmap_2d::LETHAL_OBSTACLE);
    }
  }

  nav_controller::LocalMap map_{kCells, kCells, kResolution, 0.0, 0.0};
  Follower follower_;
  std::string reason_;
  double turn_ = 0.0;
};

TEST_F(ReadmeController, FollowsThePathWhileItIsFree) {
  const nav_msgs::Path ahead = Cycle();
  ASSERT_FALSE(ahead.poses.empty());
  EXPECT_DOUBLE_EQ(ahead.poses.front().pose.position.x, 0.5);
  EXPECT_EQ(reason_, "");
}

TEST_F(ReadmeController, GoesRoundAWallWithinTheCorridor) {
  Wall(27, 33);
  const nav_msgs::Path detour = Cycle();
  ASSERT_GE(detour.poses.size(), 2U);
  for (std::size_t i = 1; i < detour.poses.size(); ++i) {
    EXPECT_FALSE(nav_controller::IsBlockingBetweenPoints(&map_, detour.poses[i - 1].pose.position,
                                                         detour.poses[i].pose.position));
  }
}

TEST_F(ReadmeController, SaysThatAClosedWallCannotBePassed) {
  Wall(0, kCells - 1);
  EXPECT_TRUE(Cycle().poses.empty());
  EXPECT_EQ(reason_, "blocked, and no way around inside the corridor");
}

TEST_F(ReadmeController, TurnsAwayFromAContactOnceAndFollowsThenAgain) {
  Bump();
  EXPECT_TRUE(Cycle().poses.empty());
  EXPECT_EQ(reason_, "contact");
  EXPECT_NEAR(turn_, -M_PI / 6, 1e-6);

  EXPECT_FALSE(Cycle().poses.empty());
  EXPECT_EQ(turn_, 0.0);
}

TEST_F(ReadmeController, GivesUpAfterTenContacts) {
  for (int contact = 0; contact < 10; ++contact) {
    Bump();
    Wait(0.5);
  }
  EXPECT_TRUE(Cycle().poses.empty());
  EXPECT_EQ(reason_, "ten contacts");
}

// The first contact, on the left, makes the robot turn right: by 30 degrees after each one on the left, by 90 degrees
// after each one on the right. So no angle is that of the contact before.
TEST_F(ReadmeController, TurnsForEachContactOfAnotherThreadByItsOwnAngle) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::seconds kLongest{5};  // on a busy machine
  constexpr std::chrono::seconds kTimeout{10};
  constexpr int kContacts = 100'000;
  std::atomic<int> answered{0};
  std::atomic<bool> is_over{false};
  bool is_lost = false;
  std::thread bumper([&] {
    const Clock::time_point end = Clock::now() + kLongest;
    for (int contact = 0; contact < kContacts && Clock::now() < end && !is_lost; ++contact) {
      const Clock::time_point sent = Clock::now();
      Bump(ros::Time(1000 + static_cast<std::uint32_t>(contact)), contact % 2 == 0 ? kLeft : kRight);
      while (answered == contact && !is_lost) {
        std::this_thread::yield();
        is_lost = Clock::now() - sent > kTimeout;
      }
    }
    is_over = true;
  });
  int wrong_angles = 0;
  while (!is_over) {
    Cycle();
    if (turn_ != 0.0) {
      wrong_angles += std::abs(turn_ - (answered % 2 == 0 ? -M_PI / 6 : -M_PI / 2)) < 1e-6 ? 0 : 1;
      ++answered;
    }
  }
  bumper.join();
  EXPECT_FALSE(is_lost) << "contact " << answered;
  EXPECT_EQ(wrong_angles, 0) << "of " << answered;
}

}  // namespace
}  // namespace controller_base_test
