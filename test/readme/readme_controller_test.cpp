// The README's controller, as a reader would paste it: it follows a free path, goes round a wall and says when it
// cannot.

#include "readme_controller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "test/support/paths.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

constexpr unsigned int kCells = 60;
constexpr double kResolution = 0.05;  // metres per cell

class ReadmeController : public SimTimeTest {
 protected:
  ReadmeController() { follower_.NewPath(PathOf({{0.5, 1.5}, {2.5, 1.5}})); }

  nav_msgs::Path Cycle() { return follower_.Cycle(PoseAt(0.5, 1.5), map_, reason_, turn_); }

  // A contact on the left, now.
  void Bump() {
    nav_controller::CollisionEvent contact;
    contact.stamp = ros::Time::now();
    contact.type = 1;
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

}  // namespace
}  // namespace controller_base_test
