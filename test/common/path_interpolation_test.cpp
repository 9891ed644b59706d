// Densifying a path: how many poses are added, where, and what they carry.
#include "controller_base/path_interpolation.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "test/support/generators.h"
#include "test/support/paths.h"

namespace controller_base_test {
namespace {

using geometry_msgs::PoseStamped;
using geometry_msgs::Quaternion;
using nav_core::math::InterpolateOrientation;
using nav_core::math::LinearInterpolation;

static_assert(std::is_same_v<decltype(&LinearInterpolation), nav_msgs::Path (*)(const nav_msgs::Path&, double)>);
static_assert(
    std::is_same_v<decltype(&InterpolateOrientation), Quaternion (*)(const Quaternion&, const Quaternion&, double)>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

void ExpectNear(const Quaternion& q, double x, double y, double z, double w, double tolerance = 1e-12) {
  EXPECT_NEAR(q.x, x, tolerance);
  EXPECT_NEAR(q.y, y, tolerance);
  EXPECT_NEAR(q.z, z, tolerance);
  EXPECT_NEAR(q.w, w, tolerance);
}

// A path whose header and poses all differ in every field.
nav_msgs::Path Labelled(const std::vector<Xy>& points) {
  nav_msgs::Path path = PathOf(points);
  path.header.seq = 77;
  path.header.stamp = ros::Time(50, 60);
  path.header.frame_id = "somewhere";
  for (std::size_t i = 0; i < path.poses.size(); ++i) {
    PoseStamped& pose = path.poses[i];
    const auto label = static_cast<std::uint32_t>(i);
    pose.header.seq = 100 + label;
    pose.header.stamp = ros::Time(200 + label, 300 + label);
    pose.header.frame_id = "frame " + std::to_string(i);
    pose.pose.position.z = 0.5 * label;
    pose.pose.orientation = QuaternionOf(0.1 * label, 0.2, -0.3 * label, 2.0);
  }
  return path;
}

std::size_t PoseCount(double length, double spacing) {
  return LinearInterpolation(PathOf({{0, 0}, {length, 0}}), spacing).poses.size();
}

TEST(InterpolateOrientation, BlendsHalfWayAndNormalises) {
  const Quaternion q = InterpolateOrientation(QuaternionOf(0, 0, 0, 1), QuaternionOf(0, 0, 1, 0), 0.5);
  ExpectNear(q, 0, 0, std::sqrt(0.5), std::sqrt(0.5));
}

TEST(InterpolateOrientation, BlendsEachComponentByItself) {
  const Quaternion q = InterpolateOrientation(QuaternionOf(1, 2, 3, 4), QuaternionOf(-3, 6, 5, -8), 0.25);
  const double norm = std::sqrt(0.0 * 0.0 + 3.0 * 3.0 + 3.5 * 3.5 + 1.0 * 1.0);
  ExpectNear(q, 0.0, 3.0 / norm, 3.5 / norm, 1.0 / norm);
}

TEST(InterpolateOrientation, IsNotSpherical) {
  const Quaternion q = InterpolateOrientation(QuaternionOf(0, 0, 0, 1), QuaternionOf(0, 0, 1, 0), 0.25);
  const double norm = std::sqrt(0.75 * 0.75 + 0.25 * 0.25);
  ExpectNear(q, 0, 0, 0.25 / norm, 0.75 / norm);
}

TEST(InterpolateOrientation, GivesTheNormalisedEndsAtZeroAndOne) {
  const Quaternion q0 = QuaternionOf(0, 0, 3, 4);
  const Quaternion q1 = QuaternionOf(2, 0, 0, 0);
  ExpectNear(InterpolateOrientation(q0, q1, 0.0), 0, 0, 0.6, 0.8);
  ExpectNear(InterpolateOrientation(q0, q1, 1.0), 1, 0, 0, 0);
}

TEST(InterpolateOrientation, DoesNotClampT) {
  const Quaternion q0 = QuaternionOf(0, 0, 0, 1);
  const Quaternion q1 = QuaternionOf(0, 0, 1, 0);
  ExpectNear(InterpolateOrientation(q0, q1, 2.0), 0, 0, 2 / std::sqrt(5.0), -1 / std::sqrt(5.0));
  ExpectNear(InterpolateOrientation(q0, q1, -1.0), 0, 0, -1 / std::sqrt(5.0), 2 / std::sqrt(5.0));
}

TEST(InterpolateOrientation, KeepsTheZeroQuaternion) {
  const Quaternion opposite_ends = InterpolateOrientation(QuaternionOf(0, 0, 0, 1), QuaternionOf(0, 0, 0, -1), 0.5);
  EXPECT_EQ(opposite_ends, Quaternion());
  EXPECT_EQ(InterpolateOrientation(Quaternion(), Quaternion(), 0.3), Quaternion());
}

TEST(InterpolateOrientation, BlendsOppositeSignsOfNearlyOneRotationThroughAnArbitraryOne) {
  const double small = 0.01;
  const Quaternion almost_minus_identity = QuaternionOf(0, 0, std::sin(small), -std::cos(small));
  const Quaternion q = InterpolateOrientation(QuaternionOf(0, 0, 0, 1), almost_minus_identity, 0.5);
  EXPECT_NEAR(q.z, 1.0, 1e-4);  // half a turn away from both ends
  EXPECT_NEAR(q.w, small / 2, 1e-4);
}

TEST(InterpolateOrientation, NormalisesHoweverShortTheBlendIs) {
  const Quaternion q = QuaternionOf(0, 0, 3e-100, 4e-100);
  ExpectNear(InterpolateOrientation(q, q, 0.5), 0, 0, 0.6, 0.8);
}

TEST(InterpolateOrientation, LeavesABlendWithoutAPositiveLengthAsItIs) {
  const Quaternion nan = InterpolateOrientation(QuaternionOf(kNan, 0, 0, 2), QuaternionOf(0, 0, 0, 2), 0.5);
  EXPECT_TRUE(std::isnan(nan.x));
  EXPECT_EQ(nan.w, 2.0);
  const Quaternion tiny = QuaternionOf(0, 0, 0, 1e-200);  // its square is 0
  EXPECT_EQ(InterpolateOrientation(tiny, tiny, 0.0), tiny);
}

RC_GTEST_PROP(InterpolateOrientationProperty, GivesAUnitQuaternionUnlessTheBlendIsZero, ()) {
  const auto component = Multiples(-4, 4, 0.25);
  const auto quaternion = rc::gen::apply(&QuaternionOf, component, component, component, component);
  const Quaternion q0 = *quaternion.as("q0");
  const Quaternion q1 = *quaternion.as("q1");
  const double t = *Multiples(-8, 16, 0.125).as("t");
  const Quaternion q = InterpolateOrientation(q0, q1, t);
  const double norm = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  RC_ASSERT(q == Quaternion() || std::abs(norm - 1.0) < 1e-12);
  // The same direction as the blend: no component changed its sign or its share.
  const double blend_z = (1 - t) * q0.z + t * q1.z;
  const double blend_w = (1 - t) * q0.w + t * q1.w;
  RC_ASSERT(std::abs(blend_z * q.w - blend_w * q.z) < 1e-12);
  RC_ASSERT(blend_w * q.w >= 0.0);
}

TEST(LinearInterpolation, ReturnsAnEmptyPathUnchanged) {
  const nav_msgs::Path path = Labelled({});
  EXPECT_EQ(LinearInterpolation(path, 0.05), path);
}

TEST(LinearInterpolation, ReturnsAOnePosePathUnchanged) {
  const nav_msgs::Path path = Labelled({{1, 2}});
  EXPECT_EQ(LinearInterpolation(path, 0.05), path);
}

TEST(LinearInterpolation, AddsNothingToALengthBelowTheSpacing) {
  const nav_msgs::Path path = Labelled({{0, 0}, {0.04, 0}});
  EXPECT_EQ(LinearInterpolation(path, 0.05), path);
  EXPECT_EQ(PoseCount(std::nextafter(0.05, 0.0), 0.05), 2u);
}

TEST(LinearInterpolation, SplitsALengthOfExactlyOneSpacing) {
  const nav_msgs::Path dense = LinearInterpolation(PathOf({{0, 0}, {0.05, 0}}), 0.05);
  ASSERT_EQ(dense.poses.size(), 3u);
  EXPECT_DOUBLE_EQ(dense.poses[1].pose.position.x, 0.025);
}

TEST(LinearInterpolation, SpreadsTheNewPosesEvenly) {
  const nav_msgs::Path dense = LinearInterpolation(PathOf({{0, 0}, {0.12, 0}}), 0.05);
  ASSERT_EQ(dense.poses.size(), 4u);
  EXPECT_NEAR(dense.poses[1].pose.position.x, 0.04, 1e-15);
  EXPECT_NEAR(dense.poses[2].pose.position.x, 0.08, 1e-15);
}

TEST(LinearInterpolation, ALengthOfExactlyTwoSpacingsGetsTwoNewPoses) {
  const nav_msgs::Path dense = LinearInterpolation(PathOf({{0, 0}, {0.10, 0}}), 0.05);
  ASSERT_EQ(dense.poses.size(), 4u);  // floor(length / spacing) new poses, so 4 and not 3
  EXPECT_NEAR(dense.poses[1].pose.position.x, 0.10 / 3, 1e-15);
  EXPECT_NEAR(dense.poses[2].pose.position.x, 0.20 / 3, 1e-15);
  EXPECT_EQ(PoseCount(std::nextafter(0.10, 0.0), 0.05), 3u);
}

TEST(LinearInterpolation, CountsWithTheQuotientAsADouble) {
  EXPECT_EQ(PoseCount(0.15, 0.05), 4u);  // 0.15 / 0.05 is just below 3: the poses stay a whole spacing apart
  EXPECT_EQ(PoseCount(0.20, 0.05), 6u);  // 0.20 / 0.05 is 4
}

TEST(LinearInterpolation, MeasuresInThePlane) {
  EXPECT_EQ(LinearInterpolation(PathOf({{0, 0}, {0.03, 0.04}}), 0.05).poses.size(), 3u);
  EXPECT_EQ(LinearInterpolation(PathOf({{0, 0}, {-0.03, -0.04}}), 0.05).poses.size(), 3u);
  EXPECT_EQ(LinearInterpolation(PathOf({{0, 0}, {0.03, 0.039}}), 0.05).poses.size(), 2u);
}

TEST(LinearInterpolation, AddsNothingToASegmentThatOnlyClimbs) {
  nav_msgs::Path path = PathOf({{1, 2}, {1, 2}});
  path.poses[1].pose.position.z = 10.0;
  EXPECT_EQ(LinearInterpolation(path, 0.05), path);
}

TEST(LinearInterpolation, KeepsDuplicates) {
  for (const nav_msgs::Path& path : {Labelled({{1, 2}, {1, 2}, {1, 2}}), PathOf({{1, 2}, {1, 2}, {1, 2}})}) {
    EXPECT_EQ(LinearInterpolation(path, 0.05), path);
  }
}

TEST(LinearInterpolation, InterpolatesZ) {
  nav_msgs::Path path = PathOf({{0, 0}, {1, 0}});
  path.poses[0].pose.position.z = 4.0;
  path.poses[1].pose.position.z = 7.0;
  const nav_msgs::Path dense = LinearInterpolation(path, 0.5);
  ASSERT_EQ(dense.poses.size(), 4u);
  EXPECT_NEAR(dense.poses[1].pose.position.z, 5.0, 1e-12);
  EXPECT_NEAR(dense.poses[2].pose.position.z, 6.0, 1e-12);
}

TEST(LinearInterpolation, NewPosesCarryTheHeaderOfThePoseBefore) {
  const nav_msgs::Path path = Labelled({{0, 0}, {1, 0}, {1, 1}});
  const nav_msgs::Path dense = LinearInterpolation(path, 0.4);
  ASSERT_EQ(dense.poses.size(), 7u);
  EXPECT_EQ(dense.header, path.header);
  const std::vector<std::size_t> owners = {0, 0, 0, 1, 1, 1, 2};
  for (std::size_t i = 0; i < owners.size(); ++i) {
    EXPECT_EQ(dense.poses[i].header, path.poses[owners[i]].header) << "pose " << i;
  }
}

TEST(LinearInterpolation, NewPosesBlendTheOrientationsOfBothEnds) {
  nav_msgs::Path path = PathOf({{0, 0}, {0.05, 0}});
  path.poses[1].pose.orientation = QuaternionOf(0, 0, 1, 0);
  const nav_msgs::Path dense = LinearInterpolation(path, 0.05);
  ASSERT_EQ(dense.poses.size(), 3u);
  ExpectNear(dense.poses[1].pose.orientation, 0, 0, std::sqrt(0.5), std::sqrt(0.5));
}

TEST(LinearInterpolation, DoesNotNormaliseTheInputsOwnOrientations) {
  const nav_msgs::Path path = Labelled({{0, 0}, {1, 0}});
  const nav_msgs::Path dense = LinearInterpolation(path, 0.4);
  EXPECT_EQ(dense.poses.front(), path.poses.front());
  EXPECT_EQ(dense.poses.back(), path.poses.back());
}

TEST(LinearInterpolation, ASpacingThatIsNotPositiveAndFiniteLeavesThePathAlone) {
  const nav_msgs::Path path = Labelled({{0, 0}, {1, 0}, {1, 1}});
  for (const double spacing : {0.0, -0.0, -0.05, kNan, kInfinity, -kInfinity}) {
    EXPECT_EQ(LinearInterpolation(path, spacing), path) << spacing;
  }
}

TEST(LinearInterpolation, ACountBeyond32BitsInsertsNothingThere) {
  constexpr double kCountEnd = 2147483648.0;
  for (const double length : {kCountEnd, 2 * kCountEnd, 1e18, 1e300, kInfinity}) {
    EXPECT_EQ(PoseCount(length, 1.0), 2u) << length;
  }
  EXPECT_EQ(PoseCount(1.0, std::numeric_limits<double>::denorm_min()), 2u);
  EXPECT_EQ(PoseCount(1.0, 1e-12), 2u);
}

TEST(LinearInterpolation, OtherSegmentsGetTheirPosesBesideOneThatIsTooLong) {
  const nav_msgs::Path path = Labelled({{0, 0}, {2, 0}, {1e12, 0}, {1e12, 2}});
  const nav_msgs::Path dense = LinearInterpolation(path, 1.0);
  ASSERT_EQ(dense.poses.size(), 8u);
  EXPECT_EQ(dense.poses[3], path.poses[1]);
  EXPECT_EQ(dense.poses[4], path.poses[2]);
  EXPECT_EQ(dense.poses[7], path.poses[3]);
}

TEST(LinearInterpolation, CoordinatesThatAreNotFiniteGetNoCompany) {
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    for (const Xy& bad_point : {Xy{bad, 0}, Xy{0, bad}, Xy{bad, bad}}) {
      const nav_msgs::Path dense = LinearInterpolation(PathOf({{0, 0}, bad_point, {0, 0}, {0.05, 0}}), 0.05);
      ASSERT_EQ(dense.poses.size(), 5u);
      EXPECT_DOUBLE_EQ(dense.poses[3].pose.position.x, 0.025);
    }
  }
}

RC_GTEST_PROP(LinearInterpolationProperty, KeepsEveryInputPoseAndFillsEveryGapEvenly, ()) {
  constexpr double kMillimetre = 0.001;
  const nav_msgs::Path path = Labelled(*PointLists(0, 12, 300, kMillimetre).as("points"));
  const double spacing = *Multiples(1, 400, kMillimetre).as("spacing");
  const nav_msgs::Path dense = LinearInterpolation(path, spacing);

  RC_ASSERT(dense.header == path.header);
  std::size_t next = 0;  // of `dense`
  for (std::size_t k = 0; k < path.poses.size(); ++k) {
    RC_ASSERT(next < dense.poses.size());
    RC_ASSERT(dense.poses[next++] == path.poses[k]);
    if (k + 1 == path.poses.size()) {
      break;
    }
    const geometry_msgs::Pose& a = path.poses[k].pose;
    const geometry_msgs::Pose& b = path.poses[k + 1].pose;
    const double dx = b.position.x - a.position.x;
    const double dy = b.position.y - a.position.y;
    const double length = std::sqrt(dx * dx + dy * dy);
    const auto count = static_cast<std::size_t>(std::floor(length / spacing));
    RC_ASSERT(next + count < dense.poses.size());
    for (std::size_t j = 1; j <= count; ++j, ++next) {
      const double t = static_cast<double>(j) / static_cast<double>(count + 1);
      const PoseStamped& added = dense.poses[next];
      RC_ASSERT(added.header == path.poses[k].header);
      RC_ASSERT(std::abs(added.pose.position.x - (a.position.x + t * dx)) < 1e-12);
      RC_ASSERT(std::abs(added.pose.position.y - (a.position.y + t * dy)) < 1e-12);
      RC_ASSERT(std::abs(added.pose.position.z - (a.position.z + t * (b.position.z - a.position.z))) < 1e-12);
      RC_ASSERT(added.pose.orientation == InterpolateOrientation(a.orientation, b.orientation, t));
    }
    for (std::size_t i = next - count; count > 0 && i <= next; ++i) {
      const geometry_msgs::Point& p = dense.poses[i - 1].pose.position;
      const geometry_msgs::Point& q = dense.poses[i].pose.position;
      // Strictly below the spacing; equal to it only where a whole quotient came out just too small, as in 0.15 / 0.05.
      const double gap = std::hypot(q.x - p.x, q.y - p.y);
      RC_ASSERT(gap < spacing || (gap < spacing + 1e-12 && length / spacing > static_cast<double>(count) + 1 - 1e-9));
    }
  }
  RC_ASSERT(next == dense.poses.size());
}

}  // namespace
}  // namespace controller_base_test
