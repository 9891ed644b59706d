#include "simulation/image_size.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace controller_base::simulation {
namespace {

std::optional<ImageSize> SizeOf(const std::string& file) {
  std::istringstream image(file);
  return ReadImageSize(image);
}

std::string Bytes(const char* text, std::size_t size) { return {text, size}; }

class EncodedImage : public testing::TestWithParam<std::tuple<const char*, int>> {};

TEST_P(EncodedImage, TellsItsSize) {
  const auto& [format, type] = GetParam();
  std::vector<unsigned char> bytes;
  ASSERT_TRUE(cv::imencode(format, cv::Mat(70, 300, type, cv::Scalar::all(200)), bytes));
  const std::string file(bytes.begin(), bytes.end());
  const auto size = SizeOf(file);
  ASSERT_TRUE(size);
  EXPECT_EQ(size->width, 300);
  EXPECT_EQ(size->height, 70);
  EXPECT_FALSE(SizeOf(file.substr(0, 3)).has_value());
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodedImage,
                         testing::Values(std::tuple(".png", CV_8UC1), std::tuple(".png", CV_16UC4),
                                         std::tuple(".pbm", CV_8UC1), std::tuple(".pgm", CV_8UC1),
                                         std::tuple(".ppm", CV_8UC3), std::tuple(".bmp", CV_8UC1),
                                         std::tuple(".bmp", CV_8UC3), std::tuple(".jpg", CV_8UC1),
                                         std::tuple(".jpg", CV_8UC3)));

TEST(ImageSize, APnmFileMayHaveComments) {
  const auto size = SizeOf("P5\n# 1 2\n  # drawn by hand\n12\n# height\n34\n255\n");
  ASSERT_TRUE(size);
  EXPECT_EQ(size->width, 12);
  EXPECT_EQ(size->height, 34);
}

TEST(ImageSize, ABmpFileMayStandUpsideDown) {
  const std::string head = "BM" + std::string(12, '\0') + Bytes("\x28\0\0\0", 4);
  const auto size = SizeOf(head + Bytes("\x03\0\0\0\xfb\xff\xff\xff", 8));
  ASSERT_TRUE(size);
  EXPECT_EQ(size->width, 3);
  EXPECT_EQ(size->height, 5);
}

TEST(ImageSize, ALargeClaimIsTakenAsItIs) {
  const auto size = SizeOf(Bytes("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\xff\xff\xff\xff\xff\xff\xff\xfe", 24));
  ASSERT_TRUE(size);
  EXPECT_EQ(size->width, 4294967295);
  EXPECT_EQ(size->height, 4294967294);
}

TEST(ImageSize, WhatIsNoImageHasNone) {
  for (const std::string& file : std::vector<std::string>{"",
                                                          "P",
                                                          "P5",
                                                          "P5 ",
                                                          "P5 3",
                                                          "P5 3 x",
                                                          "P5 -3 4",
                                                          "P9 3 4",
                                                          "P5 99999999999999999999 4",
                                                          "BM",
                                                          "\x89PNG",
                                                          Bytes("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0", 18),
                                                          "\xff\xd8",
                                                          "\xff\xd8\xff",
                                                          Bytes("\xff\xd8\xff\xe0\0\0", 6),
                                                          Bytes("\xff\xd8\xff\xe0\0\x40more", 10),
                                                          Bytes("\xff\xd8\xff\xc0\0\x11\x08\0", 8),
                                                          "II*",
                                                          "GIF89a",
                                                          "text"}) {
    EXPECT_FALSE(SizeOf(file).has_value()) << testing::PrintToString(file);
  }
}

}  // namespace
}  // namespace controller_base::simulation
