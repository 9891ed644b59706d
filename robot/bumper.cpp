#include "robot/bumper.h"

#include <cmath>

namespace controller_base::robot {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFrontHalfWidth = kPi / 6.0;  // rad to each side of straight ahead
constexpr double kSideEnd = kPi / 2.0;         // rad

}  // namespace

Sectors SectorOfPoint(double x, double y) {
  if (!std::isfinite(x) || !std::isfinite(y) || (x == 0.0 && y == 0.0)) {
    return 0;
  }
  const double bearing = std::atan2(y, x);
  if (std::abs(bearing) <= kFrontHalfWidth) {
    return kFront;
  }
  if (std::abs(bearing) > kSideEnd) {
    return kBack;
  }
  return bearing > 0.0 ? kLeft : kRight;
}

Sectors BumperPresses::Update(Sectors pressed, const ros::Time& stamp) {
  const double silence = std::abs(stamp.toSec() - last_message_.toSec());  // a clock set back ends a press, too
  if (pressed == 0 || silence > kLongestSilence) {
    told_ = 0;
  }
  const auto fresh = static_cast<Sectors>(pressed & ~told_);
  told_ = static_cast<Sectors>(told_ | pressed);
  last_message_ = stamp;
  return fresh;
}

}  // namespace controller_base::robot
