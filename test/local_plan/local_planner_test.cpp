#include "controller_base/local_planner.h"

#include <astar/astar.h>
#include <costmap_2d/costmap_2d.h>
#include <gmock/gmock.h>
#include <nav_msgs/Path.h>
#include <visualization_msgs/Marker.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "controller_base/local_path_smoother.h"
#include "controller_base/path_map_filler.h"
#include "test/local_plan/grid_paths.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/received.h"
#include "test/support/ros_graph.h"
#include "test/support/same_message.h"
#include "test/support/sim_time.h"
#include "test/support/stalled_subscriber.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;
using geometry_msgs::PoseStamped;
using nav_controller::LocalPathSmoother;
using nav_controller::LocalPlanner;
using nav_controller::PathMapFiller;
using nav_msgs::Path;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using visualization_msgs::Marker;

constexpr char kPathTopic[] = "/DWB/local_plan";
constexpr char kMarkerTopic[] = "/nav_controller/local_map_obstacles";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr unsigned char kLethalCosts[] = {253, 254};
constexpr unsigned char kCostlyCosts[] = {1, 94, 95, 127, 128, 252, 255};  // on either side of every limit
const std::shared_ptr<PathMapFiller> kNoCorridor;

class LocalPlannerTest : public SimTimeTest {
 protected:
  std::optional<Path> PlanThrough(const Costmap2D& map, const Cell& start, const std::vector<Cell>& path,
                                  bool smooth = false) {
    return planner_.CreatePlan(&map, kNoCorridor, PoseInCell(map, start), PathThrough(map, path), smooth);
  }

  // The cells of the plan; none when there is no plan.
  std::vector<Cell> PlannedCells(const Costmap2D& map, const Cell& start, const std::vector<Cell>& path) {
    const std::optional<Path> plan = PlanThrough(map, start, path);
    return plan ? CellsOf(map, *plan) : std::vector<Cell>();
  }

  Costmap2D free_map_{100, 80, 0.05, -2.0, 1.0};
  LocalPlanner planner_{true};
};

// ---- Topics

TEST_F(LocalPlannerTest, AdvertisesItsPathsAndItsBoxes) {
  EXPECT_THAT(AdvertisedTopics(), ElementsAre(kPathTopic, kMarkerTopic));
  EXPECT_EQ(TypeOfTopic(kPathTopic), "nav_msgs/Path");
  EXPECT_EQ(TypeOfTopic(kMarkerTopic), "visualization_msgs/Marker");
}

TEST(LocalPlanner, WithoutPublishingItAdvertisesItsBoxesOnly) {
  {
    const LocalPlanner planner(false);
    EXPECT_THAT(AdvertisedTopics(), ElementsAre(kMarkerTopic));
  }
  EXPECT_THAT(AdvertisedTopics(), IsEmpty());
}

TEST(LocalPlanner, WithoutPublishingItPlansAndPublishesNothing) {
  SetNow(ros::Time(100, 0));
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  LocalPlanner quiet(false);
  Received<Path> paths(kPathTopic);
  const std::optional<Path> plan =
      quiet.CreatePlan(&map, kNoCorridor, PoseInCell(map, {1, 1}), PathThrough(map, {{9, 9}}), false);
  ASSERT_TRUE(plan);
  EXPECT_EQ(plan->poses.size(), 9U);
  quiet.PublishPath(*plan);

  LocalPlanner talking(true);
  talking.PublishPath(PathOf({{1, 2}}, "sentinel"));
  ASSERT_EQ(paths.AtLeast(1).size(), 1U);
  EXPECT_EQ(paths.AtLeast(1).front().header.frame_id, "sentinel");
}

TEST_F(LocalPlannerTest, PublishesEveryPlanThatItReturns) {
  Received<Path> paths(kPathTopic);
  std::optional<Path> straight = PlanThrough(free_map_, {3, 4}, {{40, 40}, {60, 10}}, false);
  Wait(1.5);
  std::optional<Path> smooth = PlanThrough(free_map_, {3, 4}, {{60, 10}}, true);
  ASSERT_TRUE(straight);
  ASSERT_TRUE(smooth);
  straight->header.seq = 0;  // counted by the transport
  smooth->header.seq = 1;
  EXPECT_THAT(paths.AtLeast(2), ElementsAre(SameMessage(*straight), SameMessage(*smooth)));
}

TEST_F(LocalPlannerTest, PublishPathSendsAnyPathAsItIs) {
  Received<Path> paths(kPathTopic);
  Path path = PathOf({{1, 2}, {kNaN, 4}}, "elsewhere");
  path.header.stamp = ros::Time(3, 4);
  planner_.PublishPath(path);
  EXPECT_THAT(paths.AtLeast(1), ElementsAre(SameMessage(path)));
}

TEST_F(LocalPlannerTest, PlanAloneAndARefusalPublishNothing) {
  Costmap2D map = free_map_;
  map.setCost(5, 5, costmap_2d::LETHAL_OBSTACLE);
  for (unsigned int my = 0; my < map.getSizeInCellsY(); ++my) {
    map.setCost(50, my, costmap_2d::LETHAL_OBSTACLE);
  }
  Received<Path> paths(kPathTopic);
  const LogCapture log;
  planner_.Plan(&map, kNoCorridor, {1, 1}, {9, 9}, false);
  EXPECT_FALSE(PlanThrough(map, {-1, 1}, {{9, 9}}));         // start off the map
  EXPECT_FALSE(PlanThrough(map, {5, 5}, {{9, 9}}));          // start occupied
  EXPECT_FALSE(PlanThrough(map, {1, 1}, {{9, 80}}));         // goal off the map
  EXPECT_FALSE(PlanThrough(map, {1, 1}, {{9, 9}, {5, 5}}));  // other goal too near
  EXPECT_FALSE(PlanThrough(map, {1, 1}, {{5, 5}}));          // goal occupied, no other
  EXPECT_FALSE(PlanThrough(map, {1, 1}, {{60, 9}}));         // no way
  EXPECT_FALSE(PlanThrough(map, {1, 1}, {}));                // empty path
  planner_.PublishPath(PathOf({{1, 2}}, "sentinel"));
  ASSERT_EQ(paths.AtLeast(1).size(), 1U);
  EXPECT_EQ(paths.AtLeast(1).front().header.frame_id, "sentinel");
}

TEST_F(LocalPlannerTest, ALateSubscriberSeesOnlyThePlansThatComeAfterIt) {
  Received<Path> early(kPathTopic);
  planner_.PublishPath(PathOf({{1, 2}}, "first"));
  ASSERT_EQ(early.AtLeast(1).size(), 1U);  // the first path is sent and done with
  Received<Path> late(kPathTopic);
  planner_.PublishPath(PathOf({{1, 2}}, "second"));
  ASSERT_EQ(late.AtLeast(1).size(), 1U);
  EXPECT_EQ(late.AtLeast(1).front().header.frame_id, "second");
}

TEST_F(LocalPlannerTest, OnePathWaitsForASlowSubscriber) {
  StalledSubscriber slow(kPathTopic);
  EXPECT_EQ(slow.ConnectionHeader().at("type"), "nav_msgs/Path");
  EXPECT_EQ(slow.ConnectionHeader().at("latching"), "0");

  Received<Path> prompt(kPathTopic);  // connected after the slow one, hence served after it
  Path large;
  large.poses.resize(kMoreThanAConnectionHolds / sizeof(PoseStamped::_pose_type));
  planner_.PublishPath(large);
  for (int i = 0; i < 5; ++i) {
    planner_.PublishPath(PathOf({{1, 2}}));
  }
  ASSERT_EQ(prompt.AtLeast(6).size(), 6U);
  EXPECT_THAT(slow.DrainSequenceNumbers(5), ElementsAre(0, 5));
}

// ---- Boxes

TEST_F(LocalPlannerTest, CreatingABoxKeepsItAndSaysSo) {
  const LogCapture log;
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 0U);
  planner_.CreateBoxObstacle(PointAt(1.25, -2.5), 0.7);
  planner_.CreateBoxObstacle(PointAt(1.25, -2.5), 0.7);
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 2U);
  EXPECT_TRUE(planner_.GetLocalMapObstacle().IsInObstacle(PointAt(1.25, -2.5)));
  EXPECT_THAT(log.Lines(),
              ElementsAre(Info("Create new box obstacle: (1.250000, -2.500000), heading: 0.700000, nums: 1"),
                          Info("Create new box obstacle: (1.250000, -2.500000), heading: 0.700000, nums: 2")));
}

TEST_F(LocalPlannerTest, ClearingForgetsTheBoxesWithoutALine) {
  const LogCapture log;
  planner_.CreateBoxObstacle(PointAt(0.0, 0.0), 0.0);
  planner_.ClearAllBoxObstacle();
  EXPECT_EQ(planner_.GetLocalMapObstacle().GetObstacleNum(), 0U);
  planner_.CreateBoxObstacle(PointAt(0.0, 0.0), 1.0);
  EXPECT_THAT(log.Lines(),
              ElementsAre(Info("Create new box obstacle: (0.000000, 0.000000), heading: 0.000000, nums: 1"),
                          Info("Create new box obstacle: (0.000000, 0.000000), heading: 1.000000, nums: 1")));
}

TEST_F(LocalPlannerTest, DrawsItsBoxesWhenAskedAndOnlyThen) {
  const LogCapture log;
  Received<Marker> markers(kMarkerTopic);
  planner_.CreateBoxObstacle(PointAt(0.0, 0.0), 0.0);
  planner_.CreateBoxObstacle(PointAt(1.0, 0.0), 0.0);
  planner_.ClearAllBoxObstacle();
  planner_.CreateBoxObstacle(PointAt(2.0, 0.0), 0.0);
  planner_.VisualizeAllObstacles();
  const std::vector<Marker> received = markers.AtLeast(2);
  ASSERT_EQ(received.size(), 2U);
  EXPECT_EQ(received[0].action, Marker::DELETEALL);
  EXPECT_EQ(received[1].action, Marker::ADD);
  EXPECT_EQ(received[1].id, 0);
  ASSERT_EQ(received[1].points.size(), 5U);
  EXPECT_NEAR(received[1].points[0].x, 1.9, 1e-12);
}

TEST_F(LocalPlannerTest, BoxesBlockTheSearchUntilTheyAreCleared) {
  const LogCapture log;
  const Costmap2D map = MapFromText({"#########",  //
                                     ".........",  //
                                     "#########"});
  EXPECT_TRUE(PlanThrough(map, {0, 1}, {{8, 1}}));
  planner_.CreateBoxObstacle(CenterOf(map, 4, 1), 0.0);
  EXPECT_FALSE(PlanThrough(map, {0, 1}, {{8, 1}}));
  EXPECT_FALSE(PlanThrough(map, {0, 1}, {{8, 1}}));
  planner_.ClearAllBoxObstacle();
  EXPECT_TRUE(PlanThrough(map, {0, 1}, {{8, 1}}));
}

TEST_F(LocalPlannerTest, BoxesBlockTheSmoother) {
  const LogCapture log;
  EXPECT_EQ(PlanThrough(free_map_, {10, 40}, {{60, 40}}, true)->poses.size(), 2U);
  planner_.CreateBoxObstacle(CenterOf(free_map_, 35, 40), 0.0);
  EXPECT_GT(PlanThrough(free_map_, {10, 40}, {{60, 40}}, true)->poses.size(), 2U);
}

// ---- What a plan looks like

TEST_F(LocalPlannerTest, APlanIsThePathOfCellCentresInFrameMap) {
  Path expected;
  expected.header.seq = 0;
  expected.header.stamp = ros::Time(1234, 567);
  expected.header.frame_id = "map";
  for (const unsigned int mx : {3U, 4U, 5U, 6U}) {
    PoseStamped pose;  // an empty header and the zero quaternion
    pose.pose.position = CenterOf(free_map_, mx, 7);
    expected.poses.push_back(pose);
  }
  SetNow(ros::Time(1234, 567));
  EXPECT_THAT(planner_.Plan(&free_map_, kNoCorridor, {3, 7}, {6, 7}, false), SameMessage(expected));

  PoseStamped start = PoseAt(-2.0 + 3.9 * 0.05, 1.0 + 7.1 * 0.05, 1.0, "odom");  // anywhere in its cell
  start.header.stamp = ros::Time(5, 6);
  start.pose.position.z = 3.0;
  Path goal = PathOf({{-2.0 + 6.1 * 0.05, 1.0 + 7.9 * 0.05}}, "odom");
  goal.header.seq = 9;
  const std::optional<Path> plan = planner_.CreatePlan(&free_map_, kNoCorridor, start, goal, false);
  ASSERT_TRUE(plan);
  EXPECT_THAT(*plan, SameMessage(expected));
}

TEST_F(LocalPlannerTest, AStartThatIsTheGoalIsAPlanOfOnePose) {
  for (const bool smooth : {false, true}) {
    const std::optional<Path> plan = PlanThrough(free_map_, {3, 7}, {{3, 7}}, smooth);
    ASSERT_TRUE(plan);
    EXPECT_THAT(CellsOf(free_map_, *plan), ElementsAre(Cell(3, 7)));
  }
}

TEST_F(LocalPlannerTest, ASmoothPlanIsTheThinnedOne) {
  Costmap2D map = free_map_;
  for (unsigned int my = 0; my < 60; ++my) {
    map.setCost(50, my, 254);
    map.setCost(49, my, 120);
    map.setCost(51, my, 120);
  }
  const std::optional<Path> plain = PlanThrough(map, {10, 5}, {{90, 5}}, false);
  const std::optional<Path> smooth = PlanThrough(map, {10, 5}, {{90, 5}}, true);
  ASSERT_TRUE(plain);
  ASSERT_TRUE(smooth);
  EXPECT_LT(smooth->poses.size(), plain->poses.size());
  EXPECT_THAT(*smooth, SameMessage(LocalPathSmoother::Process(*plain, &map, planner_.GetLocalMapObstacle())));
  EXPECT_EQ(smooth->header.frame_id, "map");
  EXPECT_THAT(CellsOf(map, *smooth), Contains(Cell(90, 5)));
}

TEST_F(LocalPlannerTest, WithoutAWayPlanReturnsItsHeaderAndNoPoseAndNeverLogs) {
  const Costmap2D map = MapFromText({"..#..",  //
                                     "..#..",  //
                                     "..#.."});
  const LogCapture log;
  Path expected;
  expected.header.stamp = ros::Time(100, 0);
  expected.header.frame_id = "map";
  const std::vector<std::pair<AStar::Vec2, AStar::Vec2>> hopeless = {
      {{0, 0}, {4, 0}},                            // behind the wall
      {{2, 0}, {0, 0}},         {{0, 0}, {2, 0}},  // occupied
      {{5, 0}, {0, 0}},         {{0, 3}, {0, 0}},  // start off the map
      {{0, 0}, {5, 0}},         {{0, 0}, {0, 3}},  // goal off the map
      {{65535, 65535}, {0, 0}}, {{0, 0}, {65535, 65535}}, {{7, 7}, {7, 7}}};
  const auto corridor = std::make_shared<PathMapFiller>(1);
  corridor->prepare(3, &map, PathThrough(map, {{0, 0}, {1, 2}}));
  for (const auto& [start, goal] : hopeless) {
    for (const bool smooth : {false, true}) {
      EXPECT_THAT(planner_.Plan(&map, kNoCorridor, start, goal, smooth), SameMessage(expected));
      EXPECT_THAT(planner_.Plan(&map, corridor, start, goal, smooth), SameMessage(expected));
    }
  }
  planner_.Plan(&map, kNoCorridor, {0, 0}, {1, 2}, true);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(LocalPlannerTest, APlanThatSucceedsLogsNothing) {
  const LogCapture log;
  EXPECT_TRUE(PlanThrough(free_map_, {3, 4}, {{-5, -5}, {60, 10}}, true));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

// ---- Start and goal

TEST_F(LocalPlannerTest, AStartOffTheMapIsRefusedWithOneLine) {
  const LogCapture log;
  const Path path = PathThrough(free_map_, {{9, 9}});
  EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(-2.5, 1.5), path, true));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Start is out map: (-2.500000, 1.500000)")));
}

TEST_F(LocalPlannerTest, AStartOnALethalOrInscribedCellIsRefusedWithOneLine) {
  for (const unsigned char cost : kLethalCosts) {
    Costmap2D map(20, 20, 0.5, 0.0, 0.0);
    map.setCost(5, 6, cost);
    const LogCapture log;
    EXPECT_FALSE(planner_.CreatePlan(&map, kNoCorridor, PoseAt(2.75, 3.125), PathThrough(map, {{9, 9}}), false));
    EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Start is occupied:(2.750000, 3.125000)")));
  }
}

TEST_F(LocalPlannerTest, AGoalOffTheMapIsRefusedWithOneLine) {
  const LogCapture log;
  const Path path = PathOf({{0.0, 2.0}, {3.0, 4.5}});  // the map ends at x = 3, y = 5
  EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(0.0, 2.0), path, false));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Goal is out map: (3.000000, 4.500000)")));
}

TEST_F(LocalPlannerTest, TheStartIsJudgedBeforeTheGoal) {
  Costmap2D map = free_map_;
  map.setCost(5, 5, 254);
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(map, {-1, 0}, {{-1, 0}}));
  EXPECT_FALSE(PlanThrough(map, {5, 5}, {{-1, 0}}));
  EXPECT_FALSE(PlanThrough(map, {5, 5}, {{5, 5}}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Start is out map: (-2.025000, 1.025000)"),
                                       Warn("[LocalPlanner] Start is occupied:(-1.725000, 1.275000)"),
                                       Warn("[LocalPlanner] Start is occupied:(-1.725000, 1.275000)")));
}

TEST_F(LocalPlannerTest, UnknownAndMerelyCostlyCellsMayBeStartWayAndGoal) {
  for (const unsigned char cost : kCostlyCosts) {
    const Costmap2D map(5, 5, 0.05, 0.0, 0.0, cost);
    const LogCapture log;
    EXPECT_TRUE(PlanThrough(map, {2, 2}, {{3, 3}})) << int{cost};
    EXPECT_THAT(log.Lines(), IsEmpty());
  }
}

TEST_F(LocalPlannerTest, AnEmptyPathIsRefusedWithoutALine) {
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(free_map_, {1, 1}, {}));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(LocalPlannerTest, OnlyTheLastPoseOfAPathIsItsGoal) {
  Costmap2D map = free_map_;
  map.setCost(5, 5, 254);
  const std::vector<Cell> cells = PlannedCells(map, {1, 1}, {{-4, -4}, {5, 5}, {70, 70}, {9, 3}});
  ASSERT_FALSE(cells.empty());
  EXPECT_EQ(cells.front(), Cell(1, 1));
  EXPECT_EQ(cells.back(), Cell(9, 3));
}

TEST_F(LocalPlannerTest, AStartInABoxPassesTheChecksAndFailsInTheSearch) {
  const LogCapture log;
  planner_.CreateBoxObstacle(CenterOf(free_map_, 20, 30), 0.0);
  EXPECT_FALSE(PlanThrough(free_map_, {20, 30}, {{50, 31}}));
  EXPECT_THAT(log.Lines(), ElementsAre(testing::_, Warn("[LocalPlanner] Cannot get a path.(20,30), (50,31)")));
}

TEST_F(LocalPlannerTest, AGoalInABoxFailsInTheSearchAndIsNotRepaired) {
  const LogCapture log;
  planner_.CreateBoxObstacle(CenterOf(free_map_, 60, 60), 0.0);
  EXPECT_FALSE(PlanThrough(free_map_, {20, 30}, {{50, 50}, {60, 60}}));
  EXPECT_THAT(log.Lines(), ElementsAre(testing::_, Warn("[LocalPlanner] Cannot get a path.(20,30), (60,60)")));
}

TEST_F(LocalPlannerTest, AStartOrGoalOutsideTheCorridorFailsInTheSearch) {
  const auto corridor = std::make_shared<PathMapFiller>(3);
  corridor->prepare(3, &free_map_, PathThrough(free_map_, {{10, 10}, {50, 10}}));
  const auto plan = [&](const Cell& start, const Cell& goal) {
    return planner_.CreatePlan(&free_map_, corridor, PoseInCell(free_map_, start), PathThrough(free_map_, {goal}),
                               false);
  };
  const LogCapture log;
  EXPECT_TRUE(plan({10, 10}, {50, 10}));
  EXPECT_FALSE(plan({10, 30}, {50, 10}));
  EXPECT_FALSE(plan({10, 10}, {50, 30}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Cannot get a path.(10,30), (50,10)"),
                                       Warn("[LocalPlanner] Cannot get a path.(10,10), (50,30)")));
}

TEST_F(LocalPlannerTest, AStuckRobotGetsOneLineACycle) {
  Costmap2D map = free_map_;
  map.setCost(5, 5, 254);
  const LogCapture log;
  constexpr std::size_t kCycles = 1000;
  for (std::size_t i = 0; i < kCycles; ++i) {
    EXPECT_FALSE(PlanThrough(map, {5, 5}, {{9, 9}}));
  }
  EXPECT_EQ(log.Lines().size(), kCycles);
}

// ---- An occupied goal

class OccupiedGoalTest : public LocalPlannerTest {
 protected:
  void SetUp() override {
    LocalPlannerTest::SetUp();
    map_.setCost(kGoal.first, kGoal.second, costmap_2d::LETHAL_OBSTACLE);
  }

  static constexpr std::pair<unsigned int, unsigned int> kGoal{90, 70};
  static constexpr char kOccupied[] = "[LocalPlanner] Goal is occupied:(90.500000, 70.500000)";
  Costmap2D map_{100, 80, 1.0, 0.0, 0.0};
};

TEST_F(OccupiedGoalTest, AnotherGoalWithin30CellsOfTheStartIsRefusedWithoutAFurtherLine) {
  const Cell start{40, 40};
  for (const Cell& offset :
       {Cell{30, 0}, {-30, 0}, {0, 30}, {0, -30}, {15, 15}, {-15, 15}, {-1, -29}, {0, 0}, {1, 0}}) {
    const LogCapture log;
    EXPECT_FALSE(PlanThrough(map_, start, {{40 + offset.first, 40 + offset.second}, kGoal}));
    EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied))) << offset.first << ", " << offset.second;
  }
}

TEST_F(OccupiedGoalTest, AnotherGoal31CellsFromTheStartIsUsedAndNamed) {
  const Cell start{40, 40};
  for (const Cell& offset : {Cell{31, 0}, {-31, 0}, {0, 31}, {0, -31}, {15, 16}, {-16, 15}, {-1, -30}, {16, -15}}) {
    const Cell other{40 + offset.first, 40 + offset.second};
    const LogCapture log;
    const std::optional<Path> plan = PlanThrough(map_, start, {{2, 2}, other, kGoal});
    ASSERT_TRUE(plan);
    EXPECT_EQ(CellsOf(map_, *plan).front(), start);
    EXPECT_EQ(CellsOf(map_, *plan).back(), other);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Warn(kOccupied), Info("[LocalPlanner] use new vaild goal: (" + std::to_string(other.first) +
                                                  "," + std::to_string(other.second) + ")")));
  }
}

TEST_F(OccupiedGoalTest, TheLastUsablePoseCountsAndNotAFartherOneBeforeIt) {
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(map_, {40, 40}, {{80, 70}, {45, 45}, kGoal}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied)));
}

TEST_F(OccupiedGoalTest, PosesThatAreOccupiedOrOffTheMapArePassedOver) {
  map_.setCost(60, 60, costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  const LogCapture log;
  const std::optional<Path> plan = PlanThrough(map_, {5, 5}, {{50, 20}, {60, 60}, {-1, 3}, {200, 3}, kGoal});
  ASSERT_TRUE(plan);
  EXPECT_EQ(CellsOf(map_, *plan).back(), Cell(50, 20));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied), Info("[LocalPlanner] use new vaild goal: (50,20)")));
}

TEST_F(OccupiedGoalTest, AnInscribedGoalIsOccupiedToo) {
  map_.setCost(kGoal.first, kGoal.second, costmap_2d::INSCRIBED_INFLATED_OBSTACLE);
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(map_, {40, 40}, {{45, 45}, kGoal}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied)));
}

TEST_F(OccupiedGoalTest, WithoutAUsablePoseTheSearchRunsWithTheOccupiedGoal) {
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(map_, {40, 40}, {kGoal}));
  EXPECT_FALSE(PlanThrough(map_, {40, 40}, {{-1, 5}, {100, 5}, kGoal, kGoal}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied), Warn("[LocalPlanner] Cannot get a path.(40,40), (90,70)"),  //
                                       Warn(kOccupied), Warn("[LocalPlanner] Cannot get a path.(40,40), (90,70)")));
}

TEST_F(OccupiedGoalTest, AFailedSearchNamesTheGoalThatWasSearchedFor) {
  for (unsigned int my = 0; my < map_.getSizeInCellsY(); ++my) {
    map_.setCost(50, my, costmap_2d::LETHAL_OBSTACLE);
  }
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(map_, {10, 12}, {{80, 60}, kGoal}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(kOccupied), Info("[LocalPlanner] use new vaild goal: (80,60)"),
                                       Warn("[LocalPlanner] Cannot get a path.(10,12), (80,60)")));
}

TEST_F(OccupiedGoalTest, BoxesAndCorridorDoNotTakePartInTheRepair) {
  const LogCapture log;
  planner_.CreateBoxObstacle(CenterOf(map_, 80, 60), 0.0);
  EXPECT_FALSE(PlanThrough(map_, {10, 12}, {{70, 50}, {80, 60}, kGoal}));
  EXPECT_THAT(log.Lines(), ElementsAre(testing::_, Warn(kOccupied), Info("[LocalPlanner] use new vaild goal: (80,60)"),
                                       Warn("[LocalPlanner] Cannot get a path.(10,12), (80,60)")));
}

TEST_F(OccupiedGoalTest, GetValidGoalIsTheLastPoseOnAFreeCellOfTheMap) {
  const auto goal_of = [&](const std::vector<Cell>& cells) {
    const std::optional<AStar::Vec2> goal = planner_.GetValidGoal(&map_, PathThrough(map_, cells));
    return goal ? Cell(goal->x, goal->y) : Cell(-1, -1);
  };
  const LogCapture log;
  EXPECT_EQ(goal_of({}), Cell(-1, -1));
  EXPECT_EQ(goal_of({kGoal}), Cell(-1, -1));
  EXPECT_EQ(goal_of({{-1, 5}, {100, 5}, {5, 80}}), Cell(-1, -1));
  EXPECT_EQ(goal_of({{3, 4}}), Cell(3, 4));
  EXPECT_EQ(goal_of({{3, 4}, {5, 6}}), Cell(5, 6));
  EXPECT_EQ(goal_of({{3, 4}, {5, 6}, kGoal, {7, -1}}), Cell(5, 6));
  EXPECT_EQ(goal_of({{99, 79}, kGoal}), Cell(99, 79));
  for (const unsigned char cost : kCostlyCosts) {
    map_.setCost(20, 21, cost);
    EXPECT_EQ(goal_of({{3, 4}, {20, 21}}), Cell(20, 21)) << int{cost};
  }
  for (const unsigned char cost : kLethalCosts) {
    map_.setCost(20, 21, cost);
    EXPECT_EQ(goal_of({{3, 4}, {20, 21}}), Cell(3, 4)) << int{cost};
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
  planner_.CreateBoxObstacle(CenterOf(map_, 5, 6), 0.0);
  EXPECT_EQ(goal_of({{3, 4}, {5, 6}}), Cell(5, 6));
}

// ---- Which cells may be entered, and what they cost

TEST_F(LocalPlannerTest, LethalAndInscribedCellsAreGoneAroundWithoutCuttingTheirCorners) {
  const Costmap2D map = MapFromText({"....",  //
                                     ".#i.",  //
                                     "...."});
  const std::vector<Cell> cells = PlannedCells(map, {0, 1}, {{3, 1}});
  ASSERT_EQ(cells.size(), 6U);
  EXPECT_THAT(cells, Not(Contains(Cell(1, 1))));
  EXPECT_THAT(cells, Not(Contains(Cell(2, 1))));
}

TEST_F(LocalPlannerTest, OutsideTheCorridorNoCellIsEntered) {
  const auto corridor = std::make_shared<PathMapFiller>(1);
  corridor->prepare(1, &free_map_, PathThrough(free_map_, {{10, 10}, {10, 50}, {50, 50}, {50, 10}}));
  const PoseStamped start = PoseInCell(free_map_, {10, 10});
  const Path goal = PathThrough(free_map_, {{50, 10}});
  const std::optional<Path> around = planner_.CreatePlan(&free_map_, corridor, start, goal, false);
  ASSERT_TRUE(around);
  EXPECT_GT(around->poses.size(), 100U);
  for (const Cell& cell : CellsOf(free_map_, *around)) {
    EXPECT_FALSE(
        corridor->IsLethalObstacle(static_cast<unsigned int>(cell.first), static_cast<unsigned int>(cell.second)));
  }
  const std::optional<Path> straight = planner_.CreatePlan(&free_map_, kNoCorridor, start, goal, false);
  ASSERT_TRUE(straight);
  EXPECT_EQ(straight->poses.size(), 41U);
}

TEST_F(LocalPlannerTest, TheCorridorIsLeftWithItsOwner) {
  auto corridor = std::make_shared<PathMapFiller>(3);
  corridor->prepare(3, &free_map_, PathThrough(free_map_, {{10, 10}, {50, 10}}));
  planner_.Plan(&free_map_, corridor, {10, 10}, {50, 10}, true);
  EXPECT_EQ(corridor.use_count(), 1);
  planner_.CreatePlan(&free_map_, corridor, PoseInCell(free_map_, {10, 10}), PathThrough(free_map_, {{50, 10}}), false);
  EXPECT_EQ(corridor.use_count(), 1);
  corridor.reset();
  EXPECT_TRUE(PlanThrough(free_map_, {10, 10}, {{50, 50}}));  // no trace of the corridor in the next search
}

TEST_F(LocalPlannerTest, EveryPlanStartsAfresh) {
  const Path first = planner_.Plan(&free_map_, kNoCorridor, {1, 2}, {70, 60}, false);
  const Costmap2D small(5, 4, 0.1, 7.0, 7.0);
  EXPECT_EQ(planner_.Plan(&small, kNoCorridor, {0, 0}, {4, 3}, false).poses.size(), 5U);
  EXPECT_THAT(planner_.Plan(&free_map_, kNoCorridor, {1, 2}, {70, 60}, false), SameMessage(first));
}

enum class Side { kBottom, kTop, kLeft, kRight };

// Two ways of single free cells from a start to a goal in a solid map: along a row of kRow cells, of which the three
// middle ones cost `cost`, on `side` of the map and `margin` cells away from its border; or around by `depth` cells,
// which takes 2 * depth straight steps more.
struct TwoWays {
  static constexpr int kRow = 5;

  Costmap2D map;
  Cell start;
  Cell goal;

  TwoWays(int cost, int depth, Side side, int margin)
      : map(Columns(depth, side, margin), Rows(depth, side, margin), 0.05, 0.0, 0.0, costmap_2d::LETHAL_OBSTACLE) {
    const auto cell_at = [&](int along, int deep) {
      const int a = along + margin;
      const int d = deep + margin;
      const Cell far_corner{static_cast<int>(map.getSizeInCellsX()) - 1, static_cast<int>(map.getSizeInCellsY()) - 1};
      switch (side) {
        case Side::kBottom:
          return Cell{a, d};
        case Side::kTop:
          return Cell{a, far_corner.second - d};
        case Side::kLeft:
          return Cell{d, a};
        default:
          return Cell{far_corner.first - d, a};
      }
    };
    const auto set = [&](int along, int deep, int value) {
      const Cell cell = cell_at(along, deep);
      map.setCost(static_cast<unsigned int>(cell.first), static_cast<unsigned int>(cell.second),
                  static_cast<unsigned char>(value));
    };
    for (int along = 0; along < kRow; ++along) {
      set(along, depth, 0);
    }
    for (int deep = 0; deep <= depth; ++deep) {
      set(0, deep, 0);
      set(kRow - 1, deep, 0);
    }
    for (int along = 1; along < kRow - 1; ++along) {
      set(along, 0, cost);
    }
    start = cell_at(0, 0);
    goal = cell_at(kRow - 1, 0);
  }

 private:
  static unsigned int Columns(int depth, Side side, int margin) {
    return static_cast<unsigned int>((side == Side::kBottom || side == Side::kTop ? kRow : depth + 1) + 2 * margin);
  }
  static unsigned int Rows(int depth, Side side, int margin) {
    return static_cast<unsigned int>((side == Side::kBottom || side == Side::kTop ? depth + 1 : kRow) + 2 * margin);
  }
};

class ExtraCostTest : public LocalPlannerTest {
 protected:
  // Whether the planner stays on the costly row.
  bool Stays(const TwoWays& ways) {
    const std::size_t cells = PlannedCells(ways.map, ways.start, {ways.goal}).size();
    EXPECT_GE(cells, std::size_t{TwoWays::kRow});
    return cells == TwoWays::kRow;
  }
};

TEST_F(ExtraCostTest, GrowsBy20WithEveryCostAbove94WhereAStepCosts10) {
  for (int cost = 95; cost <= 127; ++cost) {
    SCOPED_TRACE(cost);
    const int balance = 3 * (cost - 94);  // three cells of 20 * (cost - 94) weigh as much as this depth, 20 a cell
    EXPECT_TRUE(Stays(TwoWays(cost, balance + 1, Side::kBottom, 1)));
    EXPECT_FALSE(Stays(TwoWays(cost, balance - 1, Side::kBottom, 1)));
  }
}

TEST_F(ExtraCostTest, IsNothingUpTo94AndFrom128) {
  for (int cost = 0; cost <= 255; ++cost) {
    const bool charged = cost >= 95 && cost <= 127;
    const bool lethal = cost == 253 || cost == 254;
    EXPECT_EQ(Stays(TwoWays(cost, 2, Side::kBottom, 1)), !charged && !lethal) << cost;
  }
}

TEST_F(ExtraCostTest, IsNothingOnTheBorderOfTheMapAndChargedOneCellAwayFromIt) {
  for (const Side side : {Side::kBottom, Side::kTop, Side::kLeft, Side::kRight}) {
    SCOPED_TRACE(static_cast<int>(side));
    EXPECT_TRUE(Stays(TwoWays(127, 2, side, 0)));
    EXPECT_FALSE(Stays(TwoWays(127, 98, side, 1)));
    EXPECT_TRUE(Stays(TwoWays(127, 100, side, 1)));
  }
}

TEST_F(LocalPlannerTest, ACostlyStartCostsNothing) {
  const Costmap2D map = MapFromText({".......",  //
                                     ".h.....",  //
                                     "......."});
  EXPECT_EQ(PlannedCells(map, {1, 1}, {{5, 1}}).size(), 5U);
}

// ---- Large maps and odd input

TEST_F(LocalPlannerTest, AMapOf65535CellsASideIsServed) {
  const LogCapture log;
  const Costmap2D wide(65535, 2, 0.05, 0.0, 0.0);
  const std::vector<Cell> along = PlannedCells(wide, {0, 0}, {{65534, 1}});
  ASSERT_EQ(along.size(), 65535U);
  EXPECT_EQ(along.front(), Cell(0, 0));
  EXPECT_EQ(along.back(), Cell(65534, 1));
  const Costmap2D high(1, 65535, 0.05, 0.0, 0.0);
  const std::vector<Cell> up = PlannedCells(high, {0, 65534}, {{0, 0}});
  ASSERT_EQ(up.size(), 65535U);
  EXPECT_EQ(up.front(), Cell(0, 65534));
  EXPECT_EQ(up.back(), Cell(0, 0));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(LocalPlannerTest, OnAMapOfMoreThan65535CellsASideThereIsNoPath) {
  const LogCapture log;
  EXPECT_FALSE(PlanThrough(Costmap2D(65536, 1, 0.05, 0.0, 0.0), {3, 0}, {{9, 0}}));
  EXPECT_FALSE(PlanThrough(Costmap2D(2, 65536, 0.05, 0.0, 0.0), {0, 3}, {{1, 9}}));
  EXPECT_FALSE(PlanThrough(Costmap2D(65546, 2, 0.05, 0.0, 0.0), {3, 1}, {{9, 0}}));
  EXPECT_FALSE(PlanThrough(Costmap2D(1, 65546, 0.05, 0.0, 0.0), {0, 3}, {{0, 9}}));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Cannot get a path.(3,0), (9,0)"),
                                       Warn("[LocalPlanner] Cannot get a path.(0,3), (1,9)"),
                                       Warn("[LocalPlanner] Cannot get a path.(3,1), (9,0)"),
                                       Warn("[LocalPlanner] Cannot get a path.(0,3), (0,9)")));
  EXPECT_THAT(planner_.Plan(&free_map_, kNoCorridor, {3, 0}, {9, 0}, false).poses, testing::SizeIs(7));
}

TEST_F(LocalPlannerTest, ACellBeyondTheReachOfTheSearchIsNeverMistakenForAnother) {
  const LogCapture log;
  const Costmap2D map(65546, 1, 0.05, 0.0, 0.0);
  EXPECT_FALSE(PlanThrough(map, {0, 0}, {{65540, 0}}));  // 65540 would become 4
  EXPECT_FALSE(PlanThrough(map, {65537, 0}, {{4, 0}}));
  EXPECT_EQ(log.Lines().size(), 2U);
}

TEST_F(LocalPlannerTest, AMapOfOneCellHasOnePlan) {
  const Costmap2D map(1, 1, 0.05, 0.0, 0.0, 127);
  EXPECT_THAT(PlannedCells(map, {0, 0}, {{0, 0}}), ElementsAre(Cell(0, 0)));
}

TEST_F(LocalPlannerTest, CoordinatesThatAreNoPlaceAreOffTheMap) {
  const std::vector<std::pair<double, std::string>> odd_values = {
      {kNaN, "nan"}, {kInfinity, "inf"}, {-kInfinity, "-inf"}, {1e15, "1000000000000000.000000"}};
  const Path path = PathThrough(free_map_, {{9, 9}});
  for (const auto& [odd, text] : odd_values) {
    const LogCapture log;
    EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(odd, 1.5), path, true));
    EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(1.5, odd), path, true));
    EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(1.5, 1.5), PathOf({{odd, 1.5}}), true));
    EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(1.5, 1.5), PathOf({{1.5, odd}}), true));
    EXPECT_THAT(log.Lines(), ElementsAre(Warn("[LocalPlanner] Start is out map: (" + text + ", 1.500000)"),
                                         Warn("[LocalPlanner] Start is out map: (1.500000, " + text + ")"),
                                         Warn("[LocalPlanner] Goal is out map: (" + text + ", 1.500000)"),
                                         Warn("[LocalPlanner] Goal is out map: (1.500000, " + text + ")")));
    EXPECT_FALSE(planner_.GetValidGoal(&free_map_, PathOf({{odd, 1.5}, {1.5, odd}})));
  }
}

TEST_F(LocalPlannerTest, HugeCoordinatesAreOffTheMap) {
  const double huge = std::numeric_limits<double>::max();
  const LogCapture log;
  const Path path = PathThrough(free_map_, {{9, 9}});
  EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(huge, -huge), path, true));
  EXPECT_FALSE(planner_.CreatePlan(&free_map_, kNoCorridor, PoseAt(1.5, 1.5), PathOf({{-huge, huge}}), true));
  EXPECT_THAT(log.Lines(), ElementsAre(Warn(testing::StartsWith("[LocalPlanner] Start is out map: (1797693")),
                                       Warn(testing::StartsWith("[LocalPlanner] Goal is out map: (-1797693"))));
}

TEST_F(LocalPlannerTest, TheEdgesOfTheMapFollowItsHalfOpenCells) {
  const Costmap2D map(4, 4, 0.5, 0.0, 0.0);
  const auto plans = [&](const PoseStamped& start, const Xy& goal) {
    return planner_.CreatePlan(&map, kNoCorridor, start, PathOf({goal}), false).has_value();
  };
  const double below_two = std::nextafter(2.0, 0.0);
  const LogCapture log;
  EXPECT_TRUE(plans(PoseAt(0.0, 0.0), {below_two, below_two}));
  EXPECT_TRUE(plans(PoseAt(below_two, below_two), {0.0, 0.0}));
  EXPECT_FALSE(plans(PoseAt(2.0, 1.0), {0.0, 0.0}));
  EXPECT_FALSE(plans(PoseAt(1.0, 2.0), {0.0, 0.0}));
  EXPECT_FALSE(plans(PoseAt(0.0, 0.0), {2.0, 1.0}));
  EXPECT_FALSE(plans(PoseAt(0.0, 0.0), {1.0, std::nextafter(0.0, -1.0)}));
  EXPECT_EQ(log.Lines().size(), 4U);
}

TEST_F(LocalPlannerTest, ABoxThatIsNowhereBlocksNothing) {
  const LogCapture log;
  for (const double odd : {kNaN, kInfinity, -kInfinity}) {
    planner_.CreateBoxObstacle(PointAt(odd, 2.0), 0.0);
    planner_.CreateBoxObstacle(PointAt(0.0, odd), 0.0);
    planner_.CreateBoxObstacle(PointAt(0.0, 2.0), odd);
  }
  planner_.CreateBoxObstacle(PointAt(1e300, 1e300), 0.0);
  EXPECT_EQ(log.Lines().size(), 10U);
  EXPECT_THAT(log.Lines()[2], Info("Create new box obstacle: (0.000000, 2.000000), heading: nan, nums: 3"));
  EXPECT_EQ(PlanThrough(free_map_, {0, 20}, {{90, 20}}, true)->poses.size(), 2U);
}

}  // namespace
}  // namespace controller_base_test
