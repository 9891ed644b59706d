#include "demo/pictures/story.h"

#include <gtest/gtest.h>

#include <string>

#include "demo/pictures/pictures.h"
#include "follower/local_map.h"

namespace controller_base::demo {
namespace {

follower::Event Happening(const std::string& kind) {
  return {ros::Time(101.0), follower::EventKindOf(kind).value(), geometry_msgs::Point(), "text of " + kind};
}

// A short drive on an empty map, and the story that it tells.
class ToldDrive : public testing::Test {
 protected:
  ToldDrive() : map_(120, 120, 0.05, 0.0, 0.0), world_(map_, {}) {
    drive_.path.poses.resize(2);
    drive_.path.poses[0].pose.position.x = 1.0;
    drive_.path.poses[1].pose.position.x = 5.0;
    story_.OnPath(drive_.path);
  }

  void Cycle(const std::vector<std::string>& kinds) {
    for (const std::string& kind : kinds) {
      story_.OnEvent(Happening(kind));
      drive_.events.push_back(Happening(kind));
    }
    const double time = 0.05 * static_cast<double>(drive_.trajectory.size());
    const follower::Pose2d pose{1.0 + time, 3.0, 0.0};
    follower::FollowerInput input;
    input.map = follower::ToLocalMapData(map_);
    input.robot.pose.position.x = pose.x;
    input.robot.pose.position.y = pose.y;
    input.robot.pose.orientation.w = 1.0;
    follower::FollowerOutput output;
    output.ahead = drive_.path;
    drive_.trajectory.push_back({time, pose, {0.4, 0.0}, 0, 0.0, "path", 0.0, 0.0});
    story_.OnCycle({time, pose, input, output, {0.4, 0.0}, laser_, 0, touched_, drive_.path, world_});
  }

  costmap_2d::Costmap2D map_;
  simulation::World world_;
  std::vector<nav_core::math::Vec2d> laser_;
  std::vector<simulation::World::Overlap> touched_;
  simulation::DriveRecord drive_;
  Story story_;
};

TEST_F(ToldDrive, AMomentHoldsAllThatHappenedInItsCycle) {
  Cycle({"path"});
  Cycle({});
  Cycle({"blocked", "corridor", "detour"});
  ASSERT_EQ(story_.moments().size(), 2u);
  EXPECT_EQ(story_.moments()[0].time, 0.0);
  ASSERT_EQ(story_.moments()[1].events.size(), 3u);
  EXPECT_EQ(story_.moments()[1].events[2].kind, follower::EventKind::kDetour);
  EXPECT_NEAR(story_.moments()[1].time, 0.1, 1e-12);
  EXPECT_EQ(story_.moments()[1].sample, 2u);
  EXPECT_EQ(story_.paths().size(), 1u);
}

TEST_F(ToldDrive, ProgressIsNoEvent) {
  Cycle({"progress"});
  EXPECT_TRUE(story_.moments().empty());
  EXPECT_EQ(story_.left_out(), 0u);
}

TEST_F(ToldDrive, WhatIsTooMuchForPicturesIsCounted) {
  for (std::size_t i = 0; i < Story::kMostMoments + 3; ++i) {
    Cycle({"contact", "turn"});
  }
  EXPECT_EQ(story_.moments().size(), Story::kMostMoments);
  EXPECT_EQ(story_.left_out(), 6u);
}

TEST_F(ToldDrive, EveryPictureGrowsWithItsText) {
  const auto rows_after = [&](int contacts) {
    for (int i = 0; i < contacts; ++i) {
      Cycle({"contact"});
    }
    return DrawDrive(map_, drive_, story_).rows;
  };
  const int some = rows_after(25);  // taller than the map by then
  EXPECT_EQ(rows_after(30), some + 30 * 20);
  const cv::Mat moment = DrawMoment(drive_, story_, 0);
  EXPECT_GE(moment.rows, 840);  // 6 m at 140 pixels
  EXPECT_GT(moment.cols, 840);
  EXPECT_EQ(DrawPlots(drive_, story_).cols, 1200);
}

}  // namespace
}  // namespace controller_base::demo
