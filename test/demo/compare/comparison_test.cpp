// What scripts/compare draws, writes, reads again and sums up; no stack runs here.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "demo/compare/compared_drive.h"
#include "demo/compare/comparison_page.h"
#include "demo/compare/scene.h"

namespace controller_base::demo {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

TEST(SceneNames, TakeTheMapsInTurnAndCountTheSeedsUp) {
  const std::vector<SceneName> names = SceneNames({"/a/hall.yaml", "barn.yaml"}, 3, 7);
  ASSERT_THAT(names, SizeIs(3));
  EXPECT_EQ(names[0].Map(), "hall");
  EXPECT_EQ(names[0].seed, 7u);
  EXPECT_EQ(names[1].Map(), "barn");
  EXPECT_EQ(names[1].seed, 7u);
  EXPECT_EQ(names[2].Map(), "hall");
  EXPECT_EQ(names[2].seed, 8u);
}

TEST(DrawScene, IsHarshAndEndsWhereThePathLeads) {
  const Scene scene = DrawScene({CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml", 7});
  EXPECT_EQ(scene.world.setup.shapes, simulation::Shapes::kTrue);
  const std::vector<geometry_msgs::PoseStamped>& poses = scene.world.path.poses;
  const geometry_msgs::Point& end = poses.back().pose.position;
  const geometry_msgs::Point& before = poses[poses.size() - 2].pose.position;
  EXPECT_EQ(scene.goal.x, end.x);
  EXPECT_EQ(scene.goal.y, end.y);
  EXPECT_NEAR(before.x + std::hypot(end.x - before.x, end.y - before.y) * std::cos(scene.goal.yaw), end.x, 1e-9);
}

ComparedDrive ADrive(const std::string& map, std::uint32_t seed, const std::string& planner,
                     const std::string& outcome) {
  ComparedDrive drive;
  drive.map = map;
  drive.seed = seed;
  drive.planner = planner;
  drive.outcome = outcome;
  drive.path = 8.5;
  drive.time = planner == "plugin" ? 20.0 : 40.0;
  drive.driven = 9.25;
  drive.touched_seen = 1;
  drive.touched_hidden = 2;
  drive.closest = 0.125;
  drive.processor_seconds = planner == "plugin" ? 3.0 : 12.0;
  drive.late_cycles = 4;
  drive.speed = 2.0;
  return drive;
}

std::string TableOf(const std::vector<ComparedDrive>& drives) {
  std::ostringstream table;
  WriteComparedHeader(table);
  for (const ComparedDrive& drive : drives) {
    WriteCompared(drive, table);
  }
  return table.str();
}

std::vector<ComparedDrive> Read(const std::string& table) {
  std::istringstream in(table);
  return ReadCompared(in);
}

TEST(ComparedDrives, AreReadAsTheyWereWritten) {
  ComparedDrive drive = ADrive("hall", 7, "dwa", "aborted");
  drive.reason = "no \"valid\" command, none";
  const std::string table = TableOf({drive, ADrive("barn", 4000000000, "plugin", "reached")});
  const std::vector<ComparedDrive> drives = Read(table);
  ASSERT_THAT(drives, SizeIs(2));
  EXPECT_EQ(drives[0].reason, drive.reason);
  EXPECT_EQ(drives[1].seed, 4000000000u);
  EXPECT_EQ(drives[1].touched_hidden, 2);
  EXPECT_EQ(drives[1].late_cycles, 4);
  EXPECT_EQ(TableOf(drives), table);
}

TEST(ComparedDrives, ALineThatWasCutOffIsLeftOut) {
  const std::string table = TableOf({ADrive("hall", 7, "dwa", "reached"), ADrive("hall", 7, "plugin", "reached")});
  EXPECT_THAT(Read(table.substr(0, table.size() - 1)), SizeIs(1));
  EXPECT_THAT(Read(table.substr(0, table.size() - 20)), SizeIs(1));
}

TEST(ComparedDrives, AnotherTableIsRefused) {
  EXPECT_THROW(Read("seed,outcome\n1,reached\n"), ComparedDrivesError);
  EXPECT_THROW(Read(""), ComparedDrivesError);
  EXPECT_THROW(Read(TableOf({}) + "hall,7\n"), ComparedDrivesError);
  EXPECT_THROW(Read(TableOf({}) + "hall,seven,dwa,reached,1,1,1,1,1,1,1,1,1,\"\"\n"), ComparedDrivesError);
}

const std::vector<ComparedDrive>& SomeDrives() {
  static const std::vector<ComparedDrive> drives{
      ADrive("hall", 1, "plugin", "reached"), ADrive("hall", 1, "dwa", "reached"),
      ADrive("barn", 1, "plugin", "aborted"), ADrive("barn", 1, "dwa", "reached"),
      ADrive("barn", 2, "plugin", "reached"), ADrive("barn", 2, "dwa", "timeout"),
      ADrive("barn", 3, "plugin", "reached")};  // not yet with the other one
  return drives;
}

TEST(Comparison, CountsScenesThatBothHaveDriven) {
  const Comparison comparison = Compare(SomeDrives());
  EXPECT_EQ(comparison.scenes, 3);
  EXPECT_EQ(comparison.both_reached, 1);
  EXPECT_EQ(comparison.plugin.reached, 2);
  EXPECT_EQ(comparison.dwa.reached, 2);
  EXPECT_EQ(comparison.plugin.time, 60.0);
  EXPECT_EQ(comparison.plugin.time_of_both, 20.0);
  EXPECT_EQ(comparison.dwa.processor_of_both, 12.0);
  EXPECT_EQ(comparison.dwa.touched_seen, 3);
  EXPECT_EQ(comparison.plugin.closest, 0.125);
  ASSERT_THAT(comparison.lost, SizeIs(1));
  EXPECT_EQ(comparison.lost[0].map, "barn");
}

TEST(Comparison, ItsPageHasRowsRatiosAndWhatWasNotReached) {
  const std::string page = ComparisonPage(SomeDrives());
  EXPECT_THAT(page, HasSubstr("\n| all | plugin | 3 | 2 | 28 | 60 | 3 | 6 | 0.125 | 9 | 15.0 | 12 |\n"));
  EXPECT_THAT(page, HasSubstr("| hall | dwa | 1 | 1 |"));
  EXPECT_THAT(page, HasSubstr("the plugin needs 0.50 of the time and 0.25 of the processor time of dwa"));
  EXPECT_THAT(page, HasSubstr("The plugin lost 1 scenes that dwa reached."));
  EXPECT_THAT(page, HasSubstr("\n| barn | 1 | plugin | aborted | 20.0 | 1 | 2 |"));
  EXPECT_THAT(page, HasSubstr("\n| barn | 2 | dwa | timeout |"));
  EXPECT_THAT(ComparisonPage({}), Not(HasSubstr("reason")));
}

}  // namespace
}  // namespace controller_base::demo
