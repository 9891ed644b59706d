#ifndef CONTROLLER_BASE_PLATFORM_COST_VALUES_H_
#define CONTROLLER_BASE_PLATFORM_COST_VALUES_H_

namespace costmap_2d {
inline namespace controller_base_platform {

inline constexpr unsigned char FREE_SPACE = 0;
inline constexpr unsigned char INSCRIBED_INFLATED_OBSTACLE = 253;  // the robot's centre here means contact for certain
inline constexpr unsigned char LETHAL_OBSTACLE = 254;
inline constexpr unsigned char NO_INFORMATION = 255;

}  // namespace controller_base_platform
}  // namespace costmap_2d

#endif  // CONTROLLER_BASE_PLATFORM_COST_VALUES_H_
