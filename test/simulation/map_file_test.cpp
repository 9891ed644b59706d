#include "simulation/map_file.h"

#include <costmap_2d/cost_values.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "demo/maps/apartment.h"
#include "test/support/temporary_folder.h"

namespace controller_base::simulation {
namespace {

using controller_base_test::TemporaryFolder;
using costmap_2d::FREE_SPACE;
using costmap_2d::LETHAL_OBSTACLE;
using costmap_2d::NO_INFORMATION;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// Black, grey, white over white, black, black: two rows, the first is the map's upper one.
const char kPgm[] = "P5\n3 2\n255\n\x00\x80\xff\xff\x00\x00";

std::string Yaml(const std::string& changed_line = "", const std::string& changed_key = "") {
  std::string yaml;
  for (const std::string line : {"image: map.pgm", "resolution: 0.1", "origin: [-1.0, 2.0, 0.0]", "negate: 0",
                                 "occupied_thresh: 0.65", "free_thresh: 0.196"}) {
    const bool is_changed = !changed_key.empty() && line.rfind(changed_key + ":", 0) == 0;
    yaml += (is_changed ? changed_line : line) + "\n";
  }
  return yaml;
}

class MapFile : public testing::Test {
 protected:
  MapFile() { folder_.Write("map.pgm", std::string(kPgm, sizeof(kPgm) - 1)); }

  costmap_2d::Costmap2D Load(const std::string& yaml) { return LoadMap(folder_.Write("map.yaml", yaml)); }

  // The complaint about a map file; it is one line that names the file.
  std::string Complaint(const std::string& yaml) {
    try {
      Load(yaml);
    } catch (const MapError& error) {
      EXPECT_THAT(error.what(), AllOf(HasSubstr(folder_.path().string()), Not(HasSubstr("\n"))));
      return error.what();
    }
    ADD_FAILURE() << "loaded: " << yaml;
    return "";
  }

  TemporaryFolder folder_;
};

TEST_F(MapFile, ItsTopRowIsTheLargestY) {
  const costmap_2d::Costmap2D map = Load(Yaml());
  ASSERT_EQ(map.getSizeInCellsX(), 3u);
  ASSERT_EQ(map.getSizeInCellsY(), 2u);
  EXPECT_DOUBLE_EQ(map.getResolution(), 0.1);
  EXPECT_DOUBLE_EQ(map.getOriginX(), -1.0);
  EXPECT_DOUBLE_EQ(map.getOriginY(), 2.0);
  EXPECT_EQ(map.getCost(0, 1), LETHAL_OBSTACLE);
  EXPECT_EQ(map.getCost(1, 1), NO_INFORMATION);
  EXPECT_EQ(map.getCost(2, 1), FREE_SPACE);
  EXPECT_EQ(map.getCost(0, 0), FREE_SPACE);
  EXPECT_EQ(map.getCost(1, 0), LETHAL_OBSTACLE);
}

TEST_F(MapFile, NegatedMapsAreFreeWhereTheyAreBlack) {
  const costmap_2d::Costmap2D map = Load(Yaml("negate: 1", "negate"));
  EXPECT_EQ(map.getCost(0, 1), FREE_SPACE);
  EXPECT_EQ(map.getCost(2, 1), LETHAL_OBSTACLE);
}

TEST_F(MapFile, ThresholdsAreStrict) {
  // Grey 204 is occupied by exactly 51 / 255 = 0.2: neither more than a threshold of 0.2, nor less.
  folder_.Write("map.pgm", "P5\n3 1\n255\n\xcb\xcc\xcd");
  const costmap_2d::Costmap2D map =
      Load("image: map.pgm\nresolution: 1\norigin: [0, 0, 0]\noccupied_thresh: 0.2\nfree_thresh: 0.2\n");  // negate: 0
  EXPECT_EQ(map.getCost(0, 0), LETHAL_OBSTACLE);
  EXPECT_EQ(map.getCost(1, 0), NO_INFORMATION);
  EXPECT_EQ(map.getCost(2, 0), FREE_SPACE);
}

TEST_F(MapFile, ColoursCountWithTheirMean) {
  cv::imwrite((folder_.path() / "map.png").string(), cv::Mat(1, 1, CV_8UC3, cv::Scalar(255, 255, 0)));
  const costmap_2d::Costmap2D map = Load(Yaml("image: map.png", "image"));
  EXPECT_EQ(map.getCost(0, 0), NO_INFORMATION);  // 170: occupied by a third
}

TEST_F(MapFile, ComplaintsNameTheLineAndTheKey) {
  EXPECT_THAT(Complaint(Yaml("resolution: -0.05", "resolution")), HasSubstr("map.yaml:2: 'resolution'"));
  EXPECT_THAT(Complaint(Yaml("resolution: .nan", "resolution")), HasSubstr("map.yaml:2: 'resolution'"));
  EXPECT_THAT(Complaint(Yaml("resolution: coarse", "resolution")), HasSubstr("map.yaml:2: 'resolution'"));
  EXPECT_THAT(Complaint(Yaml("origin: [1, 2]", "origin")), HasSubstr("map.yaml:3: 'origin'"));
  EXPECT_THAT(Complaint(Yaml("origin: [1, x, 0]", "origin")), HasSubstr("map.yaml:3: 'origin'"));
  EXPECT_THAT(Complaint(Yaml("origin: [0, 0, 0.1]", "origin")), HasSubstr("turned map"));
  EXPECT_THAT(Complaint(Yaml("origin: [1, -1.1e7, 0]", "origin")), HasSubstr("no farther than 1e7 from zero"));
  EXPECT_THAT(Complaint(Yaml("negate: -1", "negate")), HasSubstr("map.yaml:4: 'negate' must be 0 or 1"));
  EXPECT_THAT(Complaint(Yaml("negate: maybe", "negate")), HasSubstr("map.yaml:4: 'negate'"));
  EXPECT_THAT(Complaint(Yaml("occupied_thresh: 1.5", "occupied_thresh")), HasSubstr("map.yaml:5: 'occupied_thresh'"));
  EXPECT_THAT(Complaint(Yaml("free_thresh: 0.9", "free_thresh")), HasSubstr("'free_thresh' must not exceed"));
  EXPECT_THAT(Complaint(Yaml() + "mode: raw\n"), HasSubstr("map.yaml:7: the mode 'raw'"));
}

TEST_F(MapFile, MissingKeysAreNamed) {
  for (const std::string key : {"image", "resolution", "origin", "occupied_thresh", "free_thresh"}) {
    EXPECT_THAT(Complaint(Yaml("", key)), HasSubstr("the key '" + key + "' is missing"));
  }
}

TEST_F(MapFile, WhatIsNoMapIsRefused) {
  EXPECT_THAT(Complaint(""), HasSubstr("not a map file"));
  EXPECT_THAT(Complaint("just words"), HasSubstr("not a map file"));
  EXPECT_THAT(Complaint("image: [unclosed\n"), HasSubstr("not YAML"));
  EXPECT_THROW(LoadMap((folder_.path() / "absent.yaml").string()), MapError);
  EXPECT_THROW(LoadMap(folder_.path().string()), MapError);
}

TEST_F(MapFile, BrokenImagesAreRefused) {
  EXPECT_THAT(Complaint(Yaml("image: absent.pgm", "image")), HasSubstr("absent.pgm: no such image"));
  folder_.Write("map.pgm", "");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("map.pgm: not an image"));
  folder_.Write("map.pgm", "P5\n300 200\n255\nshort");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("map.pgm: not an image"));
}

TEST_F(MapFile, EveryKindOfPngIsRead) {
  const cv::Mat grey = (cv::Mat_<unsigned char>(1, 3) << 0, 205, 255);
  cv::Mat grey16;
  grey.convertTo(grey16, CV_16UC1, 257.0);
  const cv::Mat colours[] = {cv::Mat(1, 3, CV_8UC3), cv::Mat(1, 3, CV_8UC4), cv::Mat(1, 3, CV_16UC3)};
  std::vector<cv::Mat> images{grey, grey16};
  for (cv::Mat image : colours) {
    for (int column = 0; column < 3; ++column) {
      const double value = grey.at<unsigned char>(0, column) * (image.depth() == CV_16U ? 257.0 : 1.0);
      image.col(column).setTo(cv::Scalar(value, value, value, 255.0));
    }
    images.push_back(image);
  }
  for (const cv::Mat& image : images) {
    cv::imwrite((folder_.path() / "map.png").string(), image);
    const costmap_2d::Costmap2D map = Load(Yaml("image: map.png", "image"));
    EXPECT_EQ(map.getCost(0, 0), LETHAL_OBSTACLE) << image.type();
    EXPECT_EQ(map.getCost(1, 0), NO_INFORMATION) << image.type();
    EXPECT_EQ(map.getCost(2, 0), FREE_SPACE) << image.type();
  }
}

TEST_F(MapFile, AMapThatIsTooLargeIsRefusedBeforeItTakesMemory) {
  folder_.Write("map.pgm", "P5\n65536 1\n255\n");
  EXPECT_THAT(Complaint(Yaml()),
              HasSubstr("map.pgm: 65536 x 1 cells; a map has at most 65535 cells a side and 100 million"));
  folder_.Write("map.pgm", "P5\n10001 10000\n255\n");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("10001 x 10000 cells; a map has at most"));
  folder_.Write("map.pgm", "P5\n1000000000000 1000000000000\n255\n");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("a map has at most"));
  folder_.Write("map.pgm", "P5\n10000 10000\n255\nno pixels");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("not an image, or a broken one"));
}

TEST_F(MapFile, OtherKindsOfImagesAreRefused) {
  folder_.Write("map.pgm", "GIF89a");
  EXPECT_THAT(Complaint(Yaml()), HasSubstr("map.pgm: not an image, or a broken one (PNG, PNM, BMP and JPEG are read)"));
}

TEST_F(MapFile, WhatIsTooLargeForAMapFileIsNotParsed) {
  EXPECT_THAT(Complaint(std::string(1'000'001, ' ')), HasSubstr("map.yaml: not a map file (more than 1 MB)"));
}

TEST_F(MapFile, NamesThatAreTooLongAreNoFiles) {
  EXPECT_THAT(Complaint(Yaml("image: " + std::string(100'000, 'x'), "image")), HasSubstr("no such image file"));
  EXPECT_THROW(LoadMap(std::string(100'000, 'x')), MapError);
}

TEST_F(MapFile, ItsReaderHearsHowFarItIsAndMayEndIt) {
  folder_.Write("map.pgm", "P5\n3000 3000\n255\n" + std::string(9'000'000, '\xff'));
  const std::string yaml = folder_.Write("map.yaml", Yaml());
  std::vector<std::string> steps;
  LoadMap(yaml, [&](const std::string& step) { steps.push_back(step); });
  EXPECT_THAT(steps, testing::IsSupersetOf({"reading the map: 0 %", "reading the map: 59 %"}));
  const auto interrupt = [](const std::string&) { throw Interrupted(); };
  EXPECT_THROW(LoadMap(yaml, interrupt), Interrupted);
}

TEST(BundledMap, IsWhatTheDrawingToolDraws) {
  const std::string file = std::string(CONTROLLER_BASE_DEMO_MAPS) + "/apartment.png";
  const cv::Mat committed = cv::imread(file, cv::IMREAD_UNCHANGED);
  const cv::Mat drawn = demo::DrawApartment();
  ASSERT_EQ(committed.size(), drawn.size());
  EXPECT_EQ(cv::countNonZero(committed != drawn), 0);
}

}  // namespace
}  // namespace controller_base::simulation
