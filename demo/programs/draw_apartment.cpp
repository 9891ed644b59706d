// Writes the picture of the bundled map: draw_apartment maps/apartment.png

#include <cstdio>
#include <cstdlib>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>

#include "demo/maps/apartment.h"
#include "demo/programs/program.h"

namespace controller_base::demo {
namespace {

// False also for a name that is no picture's.
bool Write(const std::string& file) {
  try {
    return cv::imwrite(file, DrawApartment());
  } catch (const cv::Exception&) {
    return false;
  }
}

int Main(const Arguments& arguments) {
  if (arguments.size() != 1) {
    std::fputs("usage: controller_base_demo_draw_apartment FILE.png\n", stderr);
    return EXIT_FAILURE;
  }
  if (!Write(arguments[0])) {
    throw std::runtime_error("cannot write the picture " + arguments[0]);
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) {
  using namespace controller_base::demo;  // NOLINT(google-build-using-namespace): this is its main program
  return RunProgram("controller_base_demo_draw_apartment", argc, argv, Main, DescribeDriveFailure);
}
