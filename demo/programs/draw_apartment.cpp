// Writes the picture of the bundled map: draw_apartment maps/apartment.png

#include <cstdio>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>

#include "demo/maps/apartment.h"

int main(int argc, char** argv) {
  if (argc != 2 || !cv::imwrite(argv[1], controller_base_demo::DrawApartment())) {
    std::fputs("usage: controller_base_demo_draw_apartment FILE.png\n", stderr);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
