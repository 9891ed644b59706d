// Writes the picture of the bundled map: draw_apartment maps/apartment.png

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <opencv2/imgcodecs.hpp>

#include "demo/maps/apartment.h"
#include "demo/programs/process.h"

int main(int argc, char** argv) {
  controller_base::demo::PrepareProcess();
  if (argc != 2) {
    std::fputs("usage: controller_base_demo_draw_apartment FILE.png\n", stderr);
    return EXIT_FAILURE;
  }
  try {
    if (cv::imwrite(argv[1], controller_base::demo::DrawApartment())) {
      return EXIT_SUCCESS;
    }
  } catch (const std::exception&) {  // of a name that is no picture's
  }
  std::fprintf(stderr, "controller_base_demo_draw_apartment: cannot write the picture %s\n", argv[1]);
  return EXIT_FAILURE;
}
