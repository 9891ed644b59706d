#ifndef CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_
#define CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_

#include <cstdint>

namespace controller_base::recording {

// What a drive's bag begins with: UInt64, kBagVersion. It grows when older programs would misread newer bags. Since 2 the
// follower's parameters, fresh followers and contacts at the back are recorded; bags of version 1 have none of them.
constexpr char kVersionTopic[] = "/controller_base_demo/bag_version";
constexpr std::uint64_t kBagVersion = 2;

// When a bag's first cycle is recorded, s: bags have a time of their own, which only grows.
constexpr double kFirstStamp = 100.0;

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_
