#include "controller_base/local_map_obstacle.h"

#include <gmock/gmock.h>
#include <nav_core/math/box2d.h>
#include <rapidcheck.h>
#include <ros/node_handle.h>
#include <ros/time.h>
#include <visualization_msgs/Marker.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "test/support/log_capture.h"
#include "test/support/paths.h"
#include "test/support/received.h"
#include "test/support/ros_graph.h"
#include "test/support/same_message.h"
#include "test/support/sim_time.h"
#include "test/support/stalled_subscriber.h"

namespace controller_base_test {
namespace {

using nav_controller::LocalMapObstacle;
using nav_core::math::Box2d;
using nav_core::math::Vec2d;
using testing::ElementsAre;
using testing::IsEmpty;
using visualization_msgs::Marker;

constexpr char kTopic[] = "/nav_controller/local_map_obstacles";
constexpr double kHalfLength = 0.1;  // metres, along the heading
constexpr double kHalfWidth = 0.05;  // metres, across the heading
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The markers as the text of the topic has them, field by field; the transport counts header.seq from 0.
Marker ExpectedDeleteAll(std::uint32_t seq, const ros::Time& stamp) {
  Marker marker;
  marker.header.seq = seq;
  marker.header.stamp = stamp;
  marker.header.frame_id = "map";
  marker.ns = "obstacles";
  marker.action = 3;
  return marker;
}

Marker ExpectedOutline(std::uint32_t seq, const ros::Time& stamp, int id, const Box2d& box) {
  Marker marker;
  marker.header.seq = seq;
  marker.header.stamp = stamp;
  marker.header.frame_id = "map";
  marker.ns = "obstacles";
  marker.id = id;
  marker.type = 4;
  marker.action = 0;
  marker.pose.orientation.w = 1.0;
  marker.scale.x = 0.01;
  marker.color.r = 1.0F;
  marker.color.a = 1.0F;
  marker.lifetime = ros::Duration(10, 0);
  for (const Vec2d& corner : box.GetAllCorners()) {
    marker.points.push_back(PointAt(corner.x, corner.y));
  }
  marker.points.push_back(PointAt(box.GetAllCorners().front().x, box.GetAllCorners().front().y));
  return marker;
}

std::vector<int> IdsOf(const std::vector<Marker>& markers) {
  std::vector<int> ids;
  for (const Marker& marker : markers) {
    ids.push_back(marker.id);
  }
  return ids;
}

class LocalMapObstacleTest : public SimTimeTest {
 protected:
  // The point `along` metres from `center` in the direction of `heading` and `across` metres to the left of it.
  static geometry_msgs::Point PointInBoxFrame(const geometry_msgs::Point& center, double heading, double along,
                                              double across) {
    return PointAt(center.x + along * std::cos(heading) - across * std::sin(heading),
                   center.y + along * std::sin(heading) + across * std::cos(heading));
  }

  LocalMapObstacle obstacles_;
};

TEST_F(LocalMapObstacleTest, StartsWithoutAnyBox) {
  EXPECT_EQ(obstacles_.GetObstacleNum(), 0U);
  for (const double x : {0.0, 1e300, -1e300, kNaN, kInfinity}) {
    EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(x, 0.0)));
    EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(0.0, x)));
  }
}

TEST_F(LocalMapObstacleTest, ABoxIsTwentyCentimetresAlongItsHeadingAndTenAcross) {
  const geometry_msgs::Point center = PointAt(1.0, -2.0);
  for (const double heading : {0.0, 0.3, M_PI_2, 2.5, -1.0, M_PI, 7.0}) {
    SCOPED_TRACE(heading);
    obstacles_.Reset();
    obstacles_.CreateNewBox(center, heading);
    const auto contains = [&](double along, double across) {
      return obstacles_.IsInObstacle(PointInBoxFrame(center, heading, along, across));
    };
    EXPECT_TRUE(contains(0.0, 0.0));
    for (const double side : {-1.0, 1.0}) {
      EXPECT_TRUE(contains(side * (kHalfLength - 1e-6), 0.0));
      EXPECT_FALSE(contains(side * (kHalfLength + 1e-6), 0.0));
      EXPECT_FALSE(contains(side * 0.11, 0.0));
      EXPECT_TRUE(contains(0.0, side * (kHalfWidth - 1e-6)));
      EXPECT_FALSE(contains(0.0, side * (kHalfWidth + 1e-6)));
      EXPECT_FALSE(contains(0.0, side * 0.06));
      EXPECT_TRUE(contains(side * (kHalfLength - 1e-6), -side * (kHalfWidth - 1e-6)));
    }
  }
}

TEST_F(LocalMapObstacleTest, WithAHeadingOfAQuarterTurnTheLongSideLiesAlongY) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), M_PI_2);
  EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(0.0, 0.09)));
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(0.09, 0.0)));
}

TEST_F(LocalMapObstacleTest, HeightNeverMatters) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0, 5.0), 0.0);
  EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(0.0, 0.0, -7.0)));
  EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(0.0, 0.0, kNaN)));
}

TEST_F(LocalMapObstacleTest, APointInAnyOfTheBoxesIsInAnObstacle) {
  for (const double x : {0.0, 1.0, 2.0}) {
    obstacles_.CreateNewBox(PointAt(x, 0.0), 0.0);
  }
  for (const double x : {0.0, 1.0, 2.0}) {
    EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(x, 0.0)));
    EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(x + 0.5, 0.0)));
  }
}

TEST_F(LocalMapObstacleTest, OfBoxesThatOverlapEachCounts) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), M_PI_2);
  EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(0.09, 0.0)));
  EXPECT_TRUE(obstacles_.IsInObstacle(PointAt(0.0, 0.09)));
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(0.09, 0.09)));
}

TEST_F(LocalMapObstacleTest, AnswersLikeALookAtEveryBoxWhereverTheyAre) {
  EXPECT_TRUE(rc::check([this] {
    obstacles_.Reset();
    std::vector<Box2d> boxes;
    const double middle = *rc::gen::element(0.0, 3.5, -1234.5, 1e6, -1e9, 2e9, 1e15, -1e300);
    for (int i = *rc::gen::inRange(0, 12); i > 0; --i) {
      const Vec2d center(middle + 0.05 * *rc::gen::inRange(-30, 30), 0.05 * *rc::gen::inRange(-30, 30));
      const double heading = M_PI / 12 * *rc::gen::inRange(-30, 30);
      obstacles_.CreateNewBox(PointAt(center.x, center.y), heading);
      boxes.emplace_back(center, heading, 0.2, 0.1);
    }
    std::vector<Vec2d> points;
    for (int i = 0; i < 30; ++i) {
      points.emplace_back(middle + 0.025 * *rc::gen::inRange(-70, 70), 0.025 * *rc::gen::inRange(-70, 70));
    }
    for (const Box2d& box : boxes) {
      for (const Vec2d& corner : box.GetAllCorners()) {
        for (const double off_x : {-5e-10, 0.0, 5e-10}) {  // within the edge's tolerance, where it can be told
          points.emplace_back(corner.x + off_x, corner.y - 5e-10);
          points.emplace_back(corner.x + off_x, corner.y + 5e-10);
        }
      }
    }
    for (const Vec2d& point : points) {
      const bool in_a_box =
          std::any_of(boxes.begin(), boxes.end(), [&](const Box2d& box) { return box.IsPointIn(point); });
      RC_ASSERT(obstacles_.IsInObstacle(PointAt(point.x, point.y)) == in_a_box);
    }
  }));
}

TEST_F(LocalMapObstacleTest, EveryCallAddsABoxWithoutLimitAndWithoutATestForDuplicates) {
  for (std::size_t i = 0; i < 1000; ++i) {
    ASSERT_EQ(obstacles_.GetObstacleNum(), i);
    obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  }
  EXPECT_EQ(obstacles_.GetObstacleNum(), 1000U);
}

TEST_F(LocalMapObstacleTest, ResetForgetsEveryBox) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  obstacles_.CreateNewBox(PointAt(1.0, 0.0), 0.0);
  obstacles_.Reset();
  EXPECT_EQ(obstacles_.GetObstacleNum(), 0U);
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(0.0, 0.0)));
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(1.0, 0.0)));
}

TEST_F(LocalMapObstacleTest, ABoxThatIsNowhereContainsNothing) {
  for (const double odd : {kNaN, kInfinity, -kInfinity}) {
    obstacles_.CreateNewBox(PointAt(odd, 0.0), 0.0);
    obstacles_.CreateNewBox(PointAt(0.0, odd), 0.0);
    obstacles_.CreateNewBox(PointAt(0.0, 0.0), odd);
  }
  obstacles_.CreateNewBox(PointAt(1e300, -1e300), 1e300);
  EXPECT_EQ(obstacles_.GetObstacleNum(), 10U);
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(0.0, 0.0)));
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(kNaN, kNaN)));
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(kInfinity, kInfinity)));

  Received<Marker> markers(kTopic);
  obstacles_.VisualizeAllObstacles();
  EXPECT_EQ(markers.AtLeast(11).size(), 11U);
}

TEST_F(LocalMapObstacleTest, AdvertisesMarkersOnOneAbsoluteTopicForAsLongAsItLives) {
  {
    const std::optional<LocalMapObstacle> second(std::in_place);
    EXPECT_THAT(AdvertisedTopics(), ElementsAre(kTopic));
  }
  EXPECT_THAT(AdvertisedTopics(), ElementsAre(kTopic));
  EXPECT_EQ(TypeOfTopic(kTopic), "visualization_msgs/Marker");
}

TEST(LocalMapObstacle, LeavesNoTopicBehind) {
  { const LocalMapObstacle obstacles; }
  EXPECT_THAT(AdvertisedTopics(), IsEmpty());
}

TEST_F(LocalMapObstacleTest, WithoutBoxesDrawingOnlyDeletesWhatIsShown) {
  Received<Marker> markers(kTopic);
  obstacles_.VisualizeAllObstacles();
  Wait(0.25);
  obstacles_.VisualizeAllObstacles();  // shows that the first call sent nothing else
  EXPECT_THAT(markers.AtLeast(2), ElementsAre(SameMessage(ExpectedDeleteAll(0, ros::Time(100, 0))),
                                              SameMessage(ExpectedDeleteAll(1, ros::Time(100, 250000000)))));
}

TEST_F(LocalMapObstacleTest, DrawsTheOutlinesInOrderOfCreationAfterTheDeleteAll) {
  Received<Marker> markers(kTopic);
  obstacles_.CreateNewBox(PointAt(1.0, 2.0, 9.0), 0.3);
  obstacles_.CreateNewBox(PointAt(-3.5, 0.7), -2.0);
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), M_PI_2);
  SetNow(ros::Time(1234, 567));
  obstacles_.VisualizeAllObstacles();
  const ros::Time now(1234, 567);
  EXPECT_THAT(markers.AtLeast(4),
              ElementsAre(SameMessage(ExpectedDeleteAll(0, now)),
                          SameMessage(ExpectedOutline(1, now, 0, Box2d(Vec2d(1.0, 2.0), 0.3, 0.2, 0.1))),
                          SameMessage(ExpectedOutline(2, now, 1, Box2d(Vec2d(-3.5, 0.7), -2.0, 0.2, 0.1))),
                          SameMessage(ExpectedOutline(3, now, 2, Box2d(Vec2d(0.0, 0.0), M_PI_2, 0.2, 0.1)))));
}

TEST_F(LocalMapObstacleTest, AnOutlineIsTheFourCornersAndTheFirstOneAgain) {
  Received<Marker> markers(kTopic);
  obstacles_.PublishBox2dMarker(Box2d(Vec2d(1.0, 2.0), 0.0, 0.2, 0.1), 0);
  const std::vector<Marker> received = markers.AtLeast(1);
  ASSERT_EQ(received.size(), 1U);
  const auto& points = received[0].points;
  ASSERT_EQ(points.size(), 5U);
  EXPECT_THAT(points.back(), SameMessage(points.front()));
  for (std::size_t i = 0; i < 4; ++i) {
    const bool along_x = points[i].y == points[i + 1].y;  // the sides take turns: the outline does not cross itself
    EXPECT_EQ(along_x, points[(i + 1) % 4].y != points[(i + 1) % 4 + 1].y);
    EXPECT_NEAR(std::abs(points[i].x - 1.0), kHalfLength, 1e-12);
    EXPECT_NEAR(std::abs(points[i].y - 2.0), kHalfWidth, 1e-12);
    EXPECT_EQ(points[i].z, 0.0);
  }
}

TEST_F(LocalMapObstacleTest, DrawsAnyBoxUnderAnyIdWithoutKeepingIt) {
  Received<Marker> markers(kTopic);
  const Box2d box(Vec2d(5.0, 6.0), 1.0, 3.0, 2.0);
  obstacles_.PublishBox2dMarker(box, -7);
  obstacles_.PublishBox2dMarker(box, std::numeric_limits<int>::max());
  EXPECT_THAT(markers.AtLeast(2),
              ElementsAre(SameMessage(ExpectedOutline(0, ros::Time(100, 0), -7, box)),
                          SameMessage(ExpectedOutline(1, ros::Time(100, 0), std::numeric_limits<int>::max(), box))));
  EXPECT_EQ(obstacles_.GetObstacleNum(), 0U);
  EXPECT_FALSE(obstacles_.IsInObstacle(PointAt(5.0, 6.0)));
}

TEST_F(LocalMapObstacleTest, DrawsADuplicateUnderAnIdOfItsOwn) {
  Received<Marker> markers(kTopic);
  obstacles_.CreateNewBox(PointAt(1.0, 1.0), 0.5);
  obstacles_.CreateNewBox(PointAt(1.0, 1.0), 0.5);
  EXPECT_EQ(obstacles_.GetObstacleNum(), 2U);
  obstacles_.VisualizeAllObstacles();
  const Box2d box(Vec2d(1.0, 1.0), 0.5, 0.2, 0.1);
  EXPECT_THAT(markers.AtLeast(3), ElementsAre(SameMessage(ExpectedDeleteAll(0, ros::Time(100, 0))),
                                              SameMessage(ExpectedOutline(1, ros::Time(100, 0), 0, box)),
                                              SameMessage(ExpectedOutline(2, ros::Time(100, 0), 1, box))));
}

TEST_F(LocalMapObstacleTest, OnlyDrawingPublishes) {
  Received<Marker> markers(kTopic);
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  obstacles_.IsInObstacle(PointAt(0.0, 0.0));
  obstacles_.GetObstacleNum();
  obstacles_.Reset();
  obstacles_.PublishBox2dMarker(Box2d(Vec2d(), 0.0, 0.2, 0.1), 99);
  EXPECT_THAT(IdsOf(markers.AtLeast(1)), ElementsAre(99));
}

TEST_F(LocalMapObstacleTest, AfterAResetDrawingSendsTheDeleteAllAlone) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  obstacles_.CreateNewBox(PointAt(1.0, 0.0), 0.0);
  obstacles_.Reset();
  Received<Marker> markers(kTopic);
  obstacles_.VisualizeAllObstacles();
  obstacles_.PublishBox2dMarker(Box2d(Vec2d(), 0.0, 0.2, 0.1), 99);
  EXPECT_THAT(IdsOf(markers.AtLeast(2)), ElementsAre(0, 99));
  EXPECT_EQ(markers.AtLeast(2).front().action, Marker::DELETEALL);
}

TEST_F(LocalMapObstacleTest, IdsBeginAnewAfterAReset) {
  obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  obstacles_.CreateNewBox(PointAt(1.0, 0.0), 0.0);
  obstacles_.Reset();
  obstacles_.CreateNewBox(PointAt(2.0, 0.0), 0.0);
  Received<Marker> markers(kTopic);
  obstacles_.VisualizeAllObstacles();
  EXPECT_THAT(
      markers.AtLeast(2),
      ElementsAre(SameMessage(ExpectedDeleteAll(0, ros::Time(100, 0))),
                  SameMessage(ExpectedOutline(1, ros::Time(100, 0), 0, Box2d(Vec2d(2.0, 0.0), 0.0, 0.2, 0.1)))));
}

TEST_F(LocalMapObstacleTest, ALateSubscriberSeesOnlyWhatComesAfterIt) {
  const Box2d box(Vec2d(), 0.0, 0.2, 0.1);
  Received<Marker> early(kTopic);
  obstacles_.PublishBox2dMarker(box, 1);
  ASSERT_EQ(early.AtLeast(1).size(), 1U);  // the first marker is sent and done with
  Received<Marker> late(kTopic);
  obstacles_.PublishBox2dMarker(box, 2);
  EXPECT_THAT(IdsOf(late.AtLeast(1)), ElementsAre(2));
}

TEST_F(LocalMapObstacleTest, TenMarkersWaitForASlowSubscriber) {
  StalledSubscriber slow(kTopic);
  EXPECT_EQ(slow.ConnectionHeader().at("type"), "visualization_msgs/Marker");
  EXPECT_EQ(slow.ConnectionHeader().at("latching"), "0");

  Received<Marker> prompt(kTopic);  // connected after the slow one, hence served after it
  Marker large;
  large.text.resize(kMoreThanAConnectionHolds);
  ros::NodeHandle().advertise<Marker>(kTopic, 1).publish(large);
  constexpr std::uint32_t kBoxes = 30;
  for (std::uint32_t i = 0; i < kBoxes; ++i) {
    obstacles_.CreateNewBox(PointAt(0.0, 0.0), 0.0);
  }
  obstacles_.VisualizeAllObstacles();
  ASSERT_EQ(prompt.AtLeast(2 + kBoxes).size(), 2 + kBoxes);  // the large one, the delete-all, the outlines
  EXPECT_THAT(slow.DrainSequenceNumbers(31), ElementsAre(0, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31));
}

TEST_F(LocalMapObstacleTest, LogsNothing) {
  const LogCapture log;
  obstacles_.CreateNewBox(PointAt(kNaN, 0.0), kNaN);
  obstacles_.IsInObstacle(PointAt(kNaN, 0.0));
  obstacles_.VisualizeAllObstacles();
  obstacles_.Reset();
  EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
}  // namespace controller_base_test
