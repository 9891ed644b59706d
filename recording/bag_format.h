#ifndef CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_
#define CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_

#include <cstdint>

namespace controller_base::recording {

// What a drive's bag begins with: UInt64, kBagVersion. It grows when older programs would misread newer bags.
constexpr char kVersionTopic[] = "/controller_base_demo/bag_version";
constexpr std::uint64_t kBagVersion = 1;

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_BAG_FORMAT_H_
