#ifndef CONTROLLER_BASE_ROBOT_BUMPER_H_
#define CONTROLLER_BASE_ROBOT_BUMPER_H_

#include <ros/time.h>

#include <cstdint>

namespace controller_base::robot {

// Parts of the bumper, as bits.
using Sectors = std::uint8_t;
constexpr Sectors kLeft = 1;
constexpr Sectors kRight = 2;
constexpr Sectors kFront = 4;
constexpr Sectors kBack = 8;

// The sector of a contact at (x, y) metres from the robot's centre, x ahead and y to the left: front within 30 degrees
// of straight ahead, left or right as far as square to it, back beyond. No sector for what is not a number and for the
// centre itself.
Sectors SectorOfPoint(double x, double y);

// Makes one contact of a press, however many messages tell of it while it lasts.
class BumperPresses {
 public:
  // The sectors of a message, stamped so: those of them that this press has not told before. A press ends with a
  // message without sectors, or when no message came for kLongestSilence: drivers that tell a press only once, or never
  // tell its end, are understood as well.
  Sectors Update(Sectors pressed, const ros::Time& stamp);

  static constexpr double kLongestSilence = 0.5;  // s

 private:
  Sectors told_ = 0;  // since this press began
  ros::Time last_message_;
};

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_BUMPER_H_
