#include "demo/terminal/status_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace controller_base::demo {
namespace {

using testing::HasSubstr;

nav_msgs::Path StraightPath(double length) {
  nav_msgs::Path path;
  path.poses.resize(2);
  path.poses[1].pose.position.x = length;
  return path;
}

follower::Event Happening(const std::string& text) {
  return {ros::Time(101.5), follower::EventKind::kContact, geometry_msgs::Point(), text};
}

// A cycle of a drive along `path` on an empty map.
class Cycle {
 public:
  explicit Cycle(const nav_msgs::Path& path) : path_(path), map_(10, 10, 0.05, 0.0, 0.0), world_(map_, {}) {}

  simulation::CycleReport Report(double time, std::uint64_t index, double speed) {
    output_.index = index;
    output_.state = "path";
    return {time, pose_, input_, output_, {speed, 0.0}, laser_, 0, touched_, path_, world_};
  }

 private:
  const nav_msgs::Path& path_;
  costmap_2d::Costmap2D map_;
  simulation::World world_;
  follower::Pose2d pose_;
  follower::FollowerInput input_;
  follower::FollowerOutput output_;
  std::vector<nav_core::math::Vec2d> laser_;
  std::vector<simulation::World::Overlap> touched_;
};

// The bytes written to a terminal whose other end is closed. They arrive in pieces.
std::string ReadAll(int terminal) {
  std::string text;
  char piece[4096];
  ssize_t size = 0;
  while ((size = read(terminal, piece, sizeof(piece))) > 0) {
    text.append(piece, static_cast<std::size_t>(size));
  }
  close(terminal);
  return text;
}

TEST(StatusText, TellsTimeWayStateAndSpeed) {
  EXPECT_EQ(StatusText(12.45, 8.42, 16.84, "detour", 0.45),
            "  12.45 s     8.42 m left  detour     0.45 m/s  [############............]");
  EXPECT_EQ(StatusText(0.0, 5.0, 5.0, "path", 0.0).substr(48), "[........................]");
  EXPECT_EQ(StatusText(9.0, 0.0, 5.0, "path", 0.0).substr(48), "[########################]");
}

TEST(StatusLine, IsOnlyEventsWhereThereIsNoTerminal) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* out = open_memstream(&text, &size);
  {
    const nav_msgs::Path path = StraightPath(2.0);
    Cycle cycle(path);
    StatusLine status(out);
    status.OnPath(path);
    status.OnCycle(cycle.Report(0.05, 10, 0.4));
    status.OnEvent(Happening("bumper: left"));
    status.OnCycle(cycle.Report(0.10, 10, 0.4));
  }
  std::fclose(out);
  EXPECT_EQ(std::string(text, size), "   1.50 s  contact   (  0.00,   0.00)  bumper: left\n");
  std::free(text);
}

TEST(StatusLine, StaysBelowTheEventsInATerminal) {
  int terminal = -1;
  int program = -1;
  const winsize size{25, 100, 0, 0};
  ASSERT_EQ(openpty(&terminal, &program, nullptr, nullptr, &size), 0);
  std::FILE* out = fdopen(program, "w");
  {
    const nav_msgs::Path path = StraightPath(2.0);
    Cycle cycle(path);
    StatusLine status(out);
    status.OnPath(path);
    status.OnCycle(cycle.Report(3.0, 20, 0.4));  // a path of 2 m has 40 or so poses of 0.05 m
    status.OnEvent(Happening("bumper: left"));
  }
  std::fclose(out);
  const std::string written = ReadAll(terminal);
  const std::size_t line = written.find("   3.00 s  ");
  const std::size_t event = written.find("bumper: left\r\n");  // the terminal adds the \r
  EXPECT_NE(line, std::string::npos) << written;
  EXPECT_NE(written.find("m left  path       0.40 m/s"), std::string::npos) << written;
  EXPECT_LT(line, event);
  EXPECT_GT(written.find("   3.00 s  ", event), event);  // again, below the event
  EXPECT_EQ(written.substr(written.size() - 4), LiveLine::kEraseLine);
}

// What is written of a cycle at this index of a path of 2 m, which is resampled to 42 poses.
std::string WrittenAt(std::uint64_t index) {
  int terminal = -1;
  int program = -1;
  EXPECT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
  std::FILE* out = fdopen(program, "w");
  {
    const nav_msgs::Path path = StraightPath(2.0);
    Cycle cycle(path);
    StatusLine status(out);
    status.OnPath(path);
    status.OnCycle(cycle.Report(3.0, index, 0.4));
  }
  std::fclose(out);
  return ReadAll(terminal);
}

TEST(StatusLine, CountsTheWayLeftFromTheIndex) {
  EXPECT_THAT(WrittenAt(0), HasSubstr(" 2.00 m left"));
  EXPECT_THAT(WrittenAt(21), HasSubstr(" 0.98 m left"));  // 20 steps of 2 m / 41
  EXPECT_THAT(WrittenAt(41), HasSubstr(" 0.00 m left"));
}

}  // namespace
}  // namespace controller_base::demo
