// Writes the picture of the bundled map: draw_apartment maps/apartment.png

#include <cstdio>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>

#include "demo/maps/apartment.h"
#include "demo/programs/program.h"

namespace {

// False also for a name that is no picture's.
bool Write(const std::string& file) {
  try {
    return cv::imwrite(file, controller_base::demo::DrawApartment());
  } catch (const cv::Exception&) {
    return false;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: controller_base_demo_draw_apartment FILE.png\n", stderr);
    return EXIT_FAILURE;
  }
  const auto draw = [&] {
    if (!Write(argv[1])) {
      throw std::runtime_error("cannot write the picture " + std::string(argv[1]));
    }
    return EXIT_SUCCESS;
  };
  return controller_base::demo::RunProgram("controller_base_demo_draw_apartment", draw,
                                           controller_base::demo::DescribeDriveFailure);
}
