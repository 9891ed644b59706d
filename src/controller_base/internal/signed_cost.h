#ifndef CONTROLLER_BASE_INTERNAL_SIGNED_COST_H_
#define CONTROLLER_BASE_INTERNAL_SIGNED_COST_H_

#include <cstdint>

namespace nav_controller::internal {

// Cost bytes compare as signed: 128..255 turn negative and stay under every threshold. Lethal cells therefore
// pass such a test; to stop at them, ask IsLethalObstacle as well.
constexpr int SignedCost(unsigned char cost) { return static_cast<std::int8_t>(cost); }

static_assert(SignedCost(127) == 127 && SignedCost(128) == -128 && SignedCost(254) == -2);

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_INTERNAL_SIGNED_COST_H_
