#ifndef CONTROLLER_BASE_SIMULATION_IMAGE_SIZE_H_
#define CONTROLLER_BASE_SIMULATION_IMAGE_SIZE_H_

#include <cstdint>
#include <istream>
#include <optional>

namespace controller_base::simulation {

// Pixels; never negative.
struct ImageSize {
  std::int64_t width;
  std::int64_t height;
};

// The size that the head of an image file tells, in the formats PNG, PNM (PBM, PGM, PPM), BMP and JPEG; none where it
// is in another format or cut off. Decoding an image takes memory for all its pixels, however small its file is; this
// takes none.
std::optional<ImageSize> ReadImageSize(std::istream& image);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_IMAGE_SIZE_H_
