#include "simulation/map_file.h"

#include <yaml-cpp/yaml.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <system_error>
#include <utility>

#include "costmap_2d/cost_values.h"
#include "follower/format.h"
#include "simulation/image_size.h"
#include "simulation/wait_for.h"

namespace controller_base::simulation {
namespace {

constexpr double kFarthestOrigin = 1e7;             // m; beyond, cells of 5 mm would be a few roundings wide
constexpr std::uintmax_t kLargestYaml = 1'000'000;  // bytes

struct MapDescription {
  std::string image_file;
  double resolution = 0.0;
  double origin_x = 0.0;
  double origin_y = 0.0;
  double occupied_threshold = 0.0;
  double free_threshold = 0.0;
  bool negate = false;
};

// Reads the values of one YAML file and says in which line a wrong one stands.
class MapYaml {
 public:
  explicit MapYaml(const std::string& file) : file_(file) {
    std::error_code missing;
    if (!std::filesystem::is_regular_file(file, missing)) {
      throw MapError(file + ": no such file");
    }
    if (std::filesystem::file_size(file, missing) > kLargestYaml) {
      throw MapError(file + ": not a map file (more than 1 MB)");
    }
    try {
      root_ = YAML::LoadFile(file);
    } catch (const YAML::BadFile&) {
      throw MapError(file + ": cannot be read");
    } catch (const YAML::Exception& error) {
      throw MapError(Place(error.mark) + "not YAML: " + error.msg);
    }
    if (!root_.IsMap()) {
      throw MapError(file + ": not a map file (no keys)");
    }
  }

  bool Has(const std::string& key) const { return root_[key].IsDefined(); }

  template <typename T>
  T Get(const std::string& key, const std::string& expected) const {
    return As<T>(Required(key), "'" + key + "' must be " + expected);
  }

  double GetFraction(const std::string& key) const {
    const auto value = Get<double>(key, "a number from 0 to 1");
    if (!(value >= 0.0 && value <= 1.0)) {
      Fail(key, "'" + key + "' must be a number from 0 to 1");
    }
    return value;
  }

  bool GetSwitch(const std::string& key) const {
    const int value = Get<int>(key, "0 or 1");
    if (value != 0 && value != 1) {
      Fail(key, "'" + key + "' must be 0 or 1");
    }
    return value == 1;
  }

  double GetOrigin(std::size_t index) const {
    const std::string complaint = "'origin' must be [x, y, yaw] in metres and radians, no farther than 1e7 from zero";
    const YAML::Node origin = Required("origin");
    if (!origin.IsSequence() || origin.size() != 3) {
      Fail("origin", complaint);
    }
    const auto value = As<double>(origin[index], complaint);
    if (!(std::abs(value) <= kFarthestOrigin)) {
      Fail("origin", complaint);
    }
    return value;
  }

  [[noreturn]] void Fail(const std::string& key, const std::string& complaint) const {
    throw MapError(Place(root_[key].Mark()) + complaint);
  }

 private:
  YAML::Node Required(const std::string& key) const {
    if (!Has(key)) {
      throw MapError(file_ + ": the key '" + key + "' is missing");
    }
    return root_[key];
  }

  template <typename T>
  T As(const YAML::Node& node, const std::string& complaint) const {
    try {
      return node.as<T>();
    } catch (const YAML::Exception&) {
      throw MapError(Place(node.Mark()) + complaint);
    }
  }

  std::string Place(const YAML::Mark& mark) const {
    return mark.is_null() ? file_ + ": " : file_ + ":" + std::to_string(mark.line + 1) + ": ";
  }

  std::string file_;
  YAML::Node root_;
};

MapDescription ReadDescription(const std::string& yaml_file) {
  const MapYaml yaml(yaml_file);
  MapDescription map;
  const std::filesystem::path image = yaml.Get<std::string>("image", "the name of an image file");
  map.image_file = (std::filesystem::path(yaml_file).parent_path() / image).string();
  map.resolution = yaml.Get<double>("resolution", "a positive number (metres per pixel)");
  if (!(map.resolution > 0.0) || !std::isfinite(map.resolution)) {
    yaml.Fail("resolution", "'resolution' must be a positive number (metres per pixel)");
  }
  map.origin_x = yaml.GetOrigin(0);
  map.origin_y = yaml.GetOrigin(1);
  if (yaml.GetOrigin(2) != 0.0) {
    yaml.Fail("origin", "a turned map (the third number of 'origin' is not 0) is not supported");
  }
  map.occupied_threshold = yaml.GetFraction("occupied_thresh");
  map.free_threshold = yaml.GetFraction("free_thresh");
  if (map.free_threshold > map.occupied_threshold) {
    yaml.Fail("free_thresh", "'free_thresh' must not exceed 'occupied_thresh'");
  }
  map.negate = yaml.Has("negate") && yaml.GetSwitch("negate");
  if (yaml.Has("mode")) {
    const auto mode = yaml.Get<std::string>("mode", "trinary or scale");
    if (mode != "trinary" && mode != "scale") {
      yaml.Fail("mode", "the mode '" + mode + "' is not supported (trinary and scale are)");
    }
  }
  return map;
}

// While it lives, std::cerr is silent: OpenCV complains there about a broken image, in words of its own.
class QuietErrors {
 public:
  QuietErrors() : buffer_(std::cerr.rdbuf(nullptr)) {}
  ~QuietErrors() { std::cerr.rdbuf(buffer_); }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  std::streambuf* buffer_;
};

std::string SizeText(const ImageSize& size) { return follower::Format("%ld x %ld cells", size.width, size.height); }

// Throws MapError where an image is missing, of an unknown kind, or too large.
ImageSize CheckSize(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    throw MapError(file + ": no such image file");
  }
  std::ifstream image(file, std::ios::binary);
  const std::optional<ImageSize> size = ReadImageSize(image);
  if (!size) {
    throw MapError(file + ": not an image, or a broken one (PNG, PNM, BMP and JPEG are read)");
  }
  const bool fits =
      size->width <= kMostMapSide && size->height <= kMostMapSide && size->width * size->height <= kMostMapCells;
  if (!fits) {
    throw MapError(file + ": " + SizeText(*size) + "; a map has at most " + std::to_string(kMostMapSide) +
                   " cells a side and " + std::to_string(kMostMapCells / 1'000'000) + " million in all");
  }
  return *size;
}

// CV_8UC1, or CV_8UC3 where the image has colours.
cv::Mat Decode(const std::string& file) {
  cv::Mat image;
  try {
    const QuietErrors quiet;
    image = cv::imread(file, cv::IMREAD_ANYCOLOR);
  } catch (const cv::Exception&) {
    image.release();  // reported with every other unreadable image
  }
  if (image.empty()) {
    throw MapError(file + ": not an image, or a broken one");
  }
  return image;
}

cv::Mat ReadImage(const std::string& file, const Progress& progress) {
  const ImageSize size = CheckSize(file);
  return WaitFor(progress, "reading the map, " + SizeText(size), [file] { return Decode(file); });
}

// The cost for every level of grey, and three times as fine for the sum of three colours.
class Costs {
 public:
  explicit Costs(const MapDescription& map) {
    for (std::size_t sum = 0; sum < by_sum_.size(); ++sum) {
      const double grey = static_cast<double>(sum) / 3.0;
      const double occupied = (map.negate ? grey : 255.0 - grey) / 255.0;
      by_sum_[sum] = occupied > map.occupied_threshold ? costmap_2d::LETHAL_OBSTACLE
                     : occupied < map.free_threshold   ? costmap_2d::FREE_SPACE
                                                       : costmap_2d::NO_INFORMATION;
    }
  }

  unsigned char Of(unsigned char grey) const { return by_sum_[3U * grey]; }
  unsigned char Of(const cv::Vec3b& color) const {
    return by_sum_[static_cast<std::size_t>(color[0]) + color[1] + color[2]];
  }

 private:
  std::array<unsigned char, 3 * 255 + 1> by_sum_{};
};

// The image's first row is the map's last.
template <typename Pixel>
void SetCosts(const cv::Mat& image, const Costs& costs, const Progress& progress, costmap_2d::Costmap2D* map) {
  constexpr int kRowsAtATime = 256;
  for (int row = 0; row < image.rows; ++row) {
    if (progress && row % kRowsAtATime == 0) {
      progress(StepText("reading the map", static_cast<double>(row) / image.rows));
    }
    const auto* const pixels = image.ptr<Pixel>(row);
    for (int column = 0; column < image.cols; ++column) {
      map->setCost(static_cast<unsigned int>(column), static_cast<unsigned int>(image.rows - 1 - row),
                   costs.Of(pixels[column]));
    }
  }
}

}  // namespace

costmap_2d::Costmap2D LoadMap(const std::string& yaml_file, const Progress& progress) {
  const MapDescription description = ReadDescription(yaml_file);
  const cv::Mat image = ReadImage(description.image_file, progress);
  costmap_2d::Costmap2D map(static_cast<unsigned int>(image.cols), static_cast<unsigned int>(image.rows),
                            description.resolution, description.origin_x, description.origin_y);
  const Costs costs(description);
  if (image.channels() == 1) {
    SetCosts<unsigned char>(image, costs, progress, &map);
  } else {
    SetCosts<cv::Vec3b>(image, costs, progress, &map);
  }
  return map;
}

}  // namespace controller_base::simulation
