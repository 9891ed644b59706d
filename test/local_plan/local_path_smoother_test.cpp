#include "controller_base/local_path_smoother.h"

#include <costmap_2d/costmap_2d.h>
#include <gmock/gmock.h>
#include <nav_msgs/Path.h>
#include <rapidcheck.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "controller_base/local_map_obstacle.h"
#include "test/local_plan/grid_paths.h"
#include "test/local_plan/random_worlds.h"
#include "test/support/log_capture.h"
#include "test/support/maps.h"
#include "test/support/paths.h"
#include "test/support/same_message.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using costmap_2d::Costmap2D;
using geometry_msgs::PoseStamped;
using nav_controller::LocalMapObstacle;
using nav_controller::LocalPathSmoother;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The cells of the line between two cells by the plain integer rule, both ends included, in order.
std::vector<Cell> PlainLine(Cell from, Cell to) {
  const int dx = std::abs(to.first - from.first);
  const int dy = std::abs(to.second - from.second);
  const int sx = from.first < to.first ? 1 : -1;
  const int sy = from.second < to.second ? 1 : -1;
  int err = dx - dy;
  Cell cell = from;
  std::vector<Cell> line = {cell};
  while (cell != to) {
    const int e2 = 2 * err;
    if (e2 >= -dy) {
      err -= dy;
      cell.first += sx;
    }
    if (e2 <= dx) {
      err += dx;
      cell.second += sy;
    }
    line.push_back(cell);
  }
  return line;
}

bool PlainLineIsFree(const Costmap2D& map, const LocalMapObstacle& obstacles, const PoseStamped& from,
                     const PoseStamped& to) {
  unsigned int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
  if (!map.worldToMap(from.pose.position.x, from.pose.position.y, x0, y0) ||
      !map.worldToMap(to.pose.position.x, to.pose.position.y, x1, y1)) {
    return false;
  }
  for (const Cell& cell :
       PlainLine({static_cast<int>(x0), static_cast<int>(y0)}, {static_cast<int>(x1), static_cast<int>(y1)})) {
    const auto mx = static_cast<unsigned int>(cell.first);
    const auto my = static_cast<unsigned int>(cell.second);
    const int cost = map.getCost(mx, my);
    if (cost >= 94 && cost <= 127) {
      return false;
    }
    if (obstacles.IsInObstacle(CenterOf(map, mx, my))) {
      return false;
    }
  }
  return true;
}

nav_msgs::Path PlainProcess(const nav_msgs::Path& path, const Costmap2D& map, const LocalMapObstacle& obstacles) {
  if (path.poses.size() <= 1) {
    return path;
  }
  nav_msgs::Path result;
  result.header = path.header;
  const std::size_t n = path.poses.size();
  std::size_t i = 0;
  while (i < n - 1) {
    result.poses.push_back(path.poses[i]);
    std::size_t j = n - 1;
    if (j <= i + 1) {
      break;
    }
    while (j > i + 1 && !PlainLineIsFree(map, obstacles, path.poses[i], path.poses[j])) {
      --j;
    }
    if (j == n - 1) {
      break;
    }
    i = j;
  }
  result.poses.push_back(path.poses[n - 1]);
  return result;
}

// Gives every pose of the path, and the path, distinct values in every field, so that a copy shows its origin.
void MakeEveryPoseUnique(nav_msgs::Path& path) {
  path.header.seq = 77;
  path.header.stamp = ros::Time(7, 8);
  path.header.frame_id = "somewhere";
  for (std::size_t i = 0; i < path.poses.size(); ++i) {
    PoseStamped& pose = path.poses[i];
    const auto number = static_cast<std::uint32_t>(i);
    pose.header.seq = number;
    pose.header.stamp = ros::Time(number + 1, number + 2);
    pose.header.frame_id = "pose " + std::to_string(i);
    pose.pose.position.z = static_cast<double>(i) + 0.5;
    pose.pose.orientation = QuaternionOf(0.1, 0.2, 0.3, static_cast<double>(i));
  }
}

nav_msgs::Path UniquePathThrough(const Costmap2D& map, const std::vector<Cell>& cells) {
  nav_msgs::Path path = PathThrough(map, cells);
  MakeEveryPoseUnique(path);
  return path;
}

class LocalPathSmootherTest : public SimTimeTest {
 protected:
  // The indices of the poses that are kept; checks that each is a whole copy and that the header is the path's.
  std::vector<std::size_t> Kept(const nav_msgs::Path& path, const Costmap2D& map) const {
    const nav_msgs::Path thinned = LocalPathSmoother::Process(path, &map, obstacles_);
    EXPECT_THAT(thinned.header, SameMessage(path.header));
    std::vector<std::size_t> kept;
    for (const PoseStamped& pose : thinned.poses) {
      kept.push_back(pose.header.seq);
      EXPECT_THAT(pose, SameMessage(path.poses.at(pose.header.seq)));
    }
    return kept;
  }

  bool IsFree(const Costmap2D& map, Cell from, Cell to) const {
    return LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, PoseInCell(map, from), PoseInCell(map, to));
  }

  LocalMapObstacle obstacles_;
};

TEST_F(LocalPathSmootherTest, AnEmptyPathComesBackUnchanged) {
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0);
  nav_msgs::Path path;
  MakeEveryPoseUnique(path);
  EXPECT_THAT(LocalPathSmoother::Process(path, &map, obstacles_), SameMessage(path));
}

TEST_F(LocalPathSmootherTest, APathOfOnePoseComesBackUnchanged) {
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0, 94);
  for (const Cell& cell : {Cell{2, 2}, Cell{-3, 90}}) {
    const nav_msgs::Path path = UniquePathThrough(map, {cell});
    EXPECT_THAT(LocalPathSmoother::Process(path, &map, obstacles_), SameMessage(path));
  }
}

TEST_F(LocalPathSmootherTest, APathOfTwoPosesComesBackUnchangedWhateverLiesBetween) {
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0, 94);
  for (const auto& cells : {std::vector<Cell>{{0, 0}, {4, 4}}, {{-1, 0}, {4, 4}}, {{0, 0}, {0, 9}}, {{2, 2}, {2, 2}}}) {
    const nav_msgs::Path path = UniquePathThrough(map, cells);
    EXPECT_THAT(LocalPathSmoother::Process(path, &map, obstacles_), SameMessage(path));
  }
}

TEST_F(LocalPathSmootherTest, UpToTwoPosesNeedNoMap) {
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0);
  obstacles_.CreateNewBox(CenterOf(map, 2, 2), 0.0);
  for (const auto& cells : {std::vector<Cell>{}, {{0, 0}}, {{0, 0}, {4, 4}}}) {
    const nav_msgs::Path path = UniquePathThrough(map, cells);
    EXPECT_THAT(LocalPathSmoother::Process(path, nullptr, obstacles_), SameMessage(path));
  }
}

TEST_F(LocalPathSmootherTest, AStraightPathOverFreeCellsIsItsEnds) {
  const Costmap2D map(20, 5, 0.05, 0.0, 0.0);
  EXPECT_THAT(Kept(UniquePathThrough(map, {{1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 2}, {18, 2}}), map), ElementsAre(0, 5));
  EXPECT_THAT(Kept(UniquePathThrough(map, {{1, 2}, {2, 2}, {3, 2}}), map), ElementsAre(0, 2));
}

TEST_F(LocalPathSmootherTest, AStaircaseOverFreeCellsIsItsEnds) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  EXPECT_THAT(Kept(UniquePathThrough(map, {{0, 0}, {0, 1}, {1, 1}, {1, 2}, {2, 2}, {2, 3}, {3, 3}}), map),
              ElementsAre(0, 6));
}

TEST_F(LocalPathSmootherTest, KeepsTheCornerThatTheLastPoseIsSeenFrom) {
  const Costmap2D map = MapFromText({"......",  //
                                     ".aaaa.",  //
                                     ".a..a.",  //
                                     ".a..a."});
  const nav_msgs::Path around = UniquePathThrough(
      map, {{0, 0}, {0, 1}, {0, 2}, {0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {5, 2}, {5, 1}, {5, 0}});
  EXPECT_THAT(Kept(around, map), ElementsAre(0, 3, 8, 11));
}

TEST_F(LocalPathSmootherTest, TakesTheFarthestVisiblePoseEvenWhenNearerOnesAreHidden) {
  // From (0, 0) the poses 1 and 2 behind the wall are hidden, pose 3 is not: it is tried first.
  const Costmap2D map = MapFromText({".....",  //
                                     "..aa.",  //
                                     "....."});
  EXPECT_THAT(Kept(UniquePathThrough(map, {{0, 1}, {2, 2}, {3, 2}, {4, 0}}), map), ElementsAre(0, 3));
}

TEST_F(LocalPathSmootherTest, ABoxOnTheDirectSegmentLeavesACornerBesideIt) {
  const Costmap2D map(20, 20, 0.05, 0.0, 0.0);
  const nav_msgs::Path around =
      UniquePathThrough(map, {{2, 5}, {4, 6}, {6, 8}, {8, 10}, {10, 10}, {12, 10}, {14, 8}, {16, 6}, {18, 5}});
  EXPECT_THAT(Kept(around, map), ElementsAre(0, 8));
  obstacles_.CreateNewBox(CenterOf(map, 10, 5), 0.0);
  const std::vector<std::size_t> kept = Kept(around, map);
  ASSERT_EQ(kept.size(), 3U);
  for (std::size_t i = 1; i < kept.size(); ++i) {
    EXPECT_TRUE(PlainLineIsFree(map, obstacles_, around.poses[kept[i - 1]], around.poses[kept[i]]));
  }
  obstacles_.Reset();
  EXPECT_THAT(Kept(around, map), ElementsAre(0, 8));
}

TEST_F(LocalPathSmootherTest, WhereNothingIsFreeEveryPoseIsKept) {
  const Costmap2D map(10, 10, 0.05, 0.0, 0.0, 94);
  EXPECT_THAT(Kept(UniquePathThrough(map, {{0, 0}, {1, 0}, {2, 1}, {3, 3}, {9, 9}}), map), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(LocalPathSmootherTest, TheNextPoseIsTakenWithoutATest) {
  const Costmap2D map = MapFromText({"..a.."});
  EXPECT_THAT(Kept(UniquePathThrough(map, {{0, 0}, {1, 0}, {3, 0}, {4, 0}}), map), ElementsAre(0, 1, 2, 3));
}

TEST_F(LocalPathSmootherTest, AnEndOffTheMapIsReachedFromItsNeighbourOnly) {
  const Costmap2D map(10, 10, 0.05, 0.0, 0.0);
  EXPECT_THAT(Kept(UniquePathThrough(map, {{1, 1}, {3, 1}, {5, 1}, {7, 1}, {10, 1}}), map), ElementsAre(0, 3, 4));
  EXPECT_THAT(Kept(UniquePathThrough(map, {{-1, 1}, {3, 1}, {5, 1}, {7, 1}, {9, 1}}), map), ElementsAre(0, 1, 4));
  EXPECT_THAT(Kept(UniquePathThrough(map, {{-1, 1}, {3, 1}, {10, 1}}), map), ElementsAre(0, 1, 2));
}

TEST_F(LocalPathSmootherTest, APoseOffTheMapInTheMiddleIsJumpedOver) {
  const Costmap2D map(10, 10, 0.05, 0.0, 0.0);
  EXPECT_THAT(Kept(UniquePathThrough(map, {{1, 1}, {3, 1}, {12, 1}, {7, 1}, {9, 1}}), map), ElementsAre(0, 4));
  const nav_msgs::Path all_off = UniquePathThrough(map, {{-1, 1}, {-3, 1}, {12, 1}, {17, 1}});
  EXPECT_THAT(Kept(all_off, map), ElementsAre(0, 1, 2, 3));
}

TEST_F(LocalPathSmootherTest, DuplicatesCollapseOverFreeCellsAndStayOverBlockedOnes) {
  Costmap2D map(10, 10, 0.05, 0.0, 0.0);
  const nav_msgs::Path path = UniquePathThrough(map, {{4, 4}, {4, 4}, {4, 4}, {4, 4}});
  EXPECT_THAT(Kept(path, map), ElementsAre(0, 3));
  map.setCost(4, 4, 94);
  EXPECT_THAT(Kept(path, map), ElementsAre(0, 1, 2, 3));
}

TEST_F(LocalPathSmootherTest, CoordinatesThatAreNoPlaceAreOffTheMap) {
  const Costmap2D map(10, 10, 0.05, 0.0, 0.0);
  for (const double odd : {kNaN, kInfinity, -kInfinity, 1e300, -1e300}) {
    SCOPED_TRACE(odd);
    nav_msgs::Path path = UniquePathThrough(map, {{1, 1}, {3, 1}, {5, 1}, {9, 1}});
    path.poses[1].pose.position.x = odd;
    EXPECT_THAT(Kept(path, map), ElementsAre(0, 3));
    path.poses[3].pose.position.y = odd;
    EXPECT_THAT(Kept(path, map), ElementsAre(0, 2, 3));
    path.poses[0].pose.position.x = odd;
    EXPECT_THAT(Kept(path, map), ElementsAre(0, 1, 2, 3));
    EXPECT_FALSE(LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, path.poses[0], path.poses[2]));
    EXPECT_FALSE(LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, path.poses[2], path.poses[0]));
  }
}

TEST_F(LocalPathSmootherTest, TheEdgesOfTheMapFollowItsHalfOpenCells) {
  const Costmap2D map(4, 4, 0.5, 0.0, 0.0);
  const PoseStamped inside = PoseAt(1.0, 1.0);
  const auto sees = [&](double x, double y) {
    return LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, inside, PoseAt(x, y));
  };
  EXPECT_TRUE(sees(0.0, 0.0));
  EXPECT_TRUE(sees(std::nextafter(2.0, 0.0), 1.0));
  EXPECT_FALSE(sees(2.0, 1.0));
  EXPECT_FALSE(sees(1.0, 2.0));
  EXPECT_FALSE(sees(std::nextafter(0.0, -1.0), 1.0));
  EXPECT_FALSE(sees(1.0, std::nextafter(0.0, -1.0)));
}

TEST_F(LocalPathSmootherTest, ACostFrom94To127BlocksASegmentAndNoOtherDoes) {
  for (int cost = 0; cost <= 255; ++cost) {
    Costmap2D map(5, 1, 0.05, 0.0, 0.0);
    map.setCost(2, 0, static_cast<unsigned char>(cost));
    const bool blocks = cost >= 94 && cost <= 127;
    EXPECT_EQ(IsFree(map, {0, 0}, {4, 0}), !blocks) << "crossing cost " << cost;
    EXPECT_EQ(IsFree(map, {2, 0}, {4, 0}), !blocks) << "starting on cost " << cost;
    EXPECT_EQ(IsFree(map, {0, 0}, {2, 0}), !blocks) << "ending on cost " << cost;
    EXPECT_EQ(IsFree(map, {2, 0}, {2, 0}), !blocks) << "staying on cost " << cost;
    EXPECT_TRUE(IsFree(map, {3, 0}, {4, 0}));
  }
}

TEST_F(LocalPathSmootherTest, ABoxBlocksTheCellsWhoseCentresItHolds) {
  const Costmap2D map(11, 11, 0.05, 0.0, 0.0);
  obstacles_.CreateNewBox(CenterOf(map, 5, 5), 0.0);  // reaches columns 3 to 7 and rows 4 to 6, edges included
  for (int row = 0; row < 11; ++row) {
    EXPECT_EQ(IsFree(map, {0, row}, {10, row}), row < 4 || row > 6) << "row " << row;
    EXPECT_EQ(IsFree(map, {row, 0}, {row, 10}), row < 3 || row > 7) << "column " << row;
  }
  EXPECT_FALSE(IsFree(map, {3, 4}, {0, 4}));
  EXPECT_FALSE(IsFree(map, {0, 4}, {3, 4}));
  EXPECT_TRUE(IsFree(map, {0, 4}, {2, 4}));
}

TEST_F(LocalPathSmootherTest, ABoxBetweenTheCentresOfCellsBlocksNothing) {
  const Costmap2D map(5, 5, 1.0, 0.0, 0.0);
  obstacles_.CreateNewBox(PointAt(2.5, 2.2), 0.0);
  EXPECT_TRUE(IsFree(map, {0, 2}, {4, 2}));
  EXPECT_TRUE(IsFree(map, {2, 0}, {2, 4}));
}

TEST_F(LocalPathSmootherTest, OnlyThePlanePositionOfAPoseCounts) {
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0);
  PoseStamped from = PoseAt(0.01, 0.01);
  from.header.frame_id = "odom";
  from.pose.position.z = kNaN;
  from.pose.orientation = QuaternionOf(kNaN, 0, 0, 0);
  EXPECT_TRUE(LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, from, PoseAt(0.2, 0.2)));
}

TEST_F(LocalPathSmootherTest, EveryLineOfASmallMapCrossesExactlyTheCellsOfThePlainRule) {
  constexpr int kSide = 9;
  Costmap2D map(kSide, kSide, 1.0, 0.0, 0.0);
  for (int from = 0; from < kSide * kSide; ++from) {
    for (int to = 0; to < kSide * kSide; ++to) {
      const Cell start{from % kSide, from / kSide};
      const Cell end{to % kSide, to / kSide};
      std::vector<bool> crossed(kSide * kSide, false);
      for (const Cell& cell : PlainLine(start, end)) {
        crossed[static_cast<std::size_t>(cell.second * kSide + cell.first)] = true;
      }
      const nav_msgs::Path ends =
          PathOf({{start.first + 0.5, start.second + 0.5}, {end.first + 0.5, end.second + 0.5}});
      for (unsigned int blocked = 0; blocked < kSide * kSide; ++blocked) {
        map.setCost(blocked % kSide, blocked / kSide, 94);
        ASSERT_EQ(LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, ends.poses[0], ends.poses[1]),
                  !crossed[blocked])
            << start.first << "," << start.second << " -> " << end.first << "," << end.second << ", cell " << blocked;
        map.setCost(blocked % kSide, blocked / kSide, 0);
      }
    }
  }
}

TEST_F(LocalPathSmootherTest, TheLineOfTheExampleDiffersFromItsReverse) {
  const Costmap2D map = MapFromText({"...",  //
                                     "a..",  //
                                     "..."});
  EXPECT_TRUE(IsFree(map, {0, 0}, {1, 2}));
  EXPECT_FALSE(IsFree(map, {1, 2}, {0, 0}));
}

TEST_F(LocalPathSmootherTest, ASegmentMayBeAsLongAsTheMapIsWide) {
  Costmap2D map(65535, 2, 0.05, 0.0, 0.0);
  EXPECT_TRUE(IsFree(map, {0, 0}, {65534, 1}));
  EXPECT_THAT(Kept(UniquePathThrough(map, {{0, 0}, {30000, 0}, {30000, 1}, {65534, 1}}), map), ElementsAre(0, 3));
  map.setCost(60000, 1, 94);
  EXPECT_FALSE(IsFree(map, {0, 0}, {65534, 1}));
}

TEST_F(LocalPathSmootherTest, ThinsEveryPathLikeThePlainRule) {
  EXPECT_TRUE(rc::check([this] {
    const Costmap2D map = RandomMap(*rc::gen::inRange(1, 25), *rc::gen::inRange(1, 25));
    obstacles_.Reset();
    for (const RandomBox& box : RandomBoxes(map, 3)) {
      obstacles_.CreateNewBox(box.center, box.heading);
    }
    nav_msgs::Path path;
    path.poses.resize(*rc::gen::inRange<std::size_t>(0, 30));
    for (PoseStamped& pose : path.poses) {
      pose.pose.position = RandomPointAround(map, 1);
      if (*rc::gen::inRange(0, 20) == 0) {
        pose.pose.position.x = *rc::gen::element(kNaN, kInfinity, 1e300);
      }
    }
    MakeEveryPoseUnique(path);

    const nav_msgs::Path thinned = LocalPathSmoother::Process(path, &map, obstacles_);
    RC_ASSERT(BytesOf(thinned) == BytesOf(PlainProcess(path, map, obstacles_)));

    for (std::size_t i = 1; i < thinned.poses.size(); ++i) {
      const std::uint32_t from = thinned.poses[i - 1].header.seq;
      const std::uint32_t to = thinned.poses[i].header.seq;
      RC_ASSERT(from < to);
      RC_ASSERT(to == from + 1 || PlainLineIsFree(map, obstacles_, path.poses[from], path.poses[to]));
    }
    for (std::size_t i = 1; i < path.poses.size(); ++i) {
      RC_ASSERT(LocalPathSmoother::IsLineExtraObstacleFree(&map, obstacles_, path.poses[i - 1], path.poses[i]) ==
                PlainLineIsFree(map, obstacles_, path.poses[i - 1], path.poses[i]));
    }
  }));
}

TEST_F(LocalPathSmootherTest, LogsNothing) {
  const LogCapture log;
  const Costmap2D map(5, 5, 0.05, 0.0, 0.0, 94);
  LocalPathSmoother::Process(PathOf({{0.1, 0.1}, {kNaN, 0.1}, {9.0, 9.0}, {0.2, 0.2}}), &map, obstacles_);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
}  // namespace controller_base_test
