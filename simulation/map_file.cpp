#include "simulation/map_file.h"

#include <yaml-cpp/yaml.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "costmap_2d/cost_values.h"

namespace controller_base_demo {
namespace {

constexpr int kMaxSide = 65535;  // what the grid search can address

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
    if (!std::filesystem::is_regular_file(file)) {
      throw MapError(file + ": no such file");
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

  double GetOrigin(std::size_t index) const {
    const std::string complaint = "'origin' must be [x, y, yaw] in metres and radians";
    const YAML::Node origin = Required("origin");
    if (!origin.IsSequence() || origin.size() != 3) {
      Fail("origin", complaint);
    }
    const auto value = As<double>(origin[index], complaint);
    if (!std::isfinite(value)) {
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
  map.negate = yaml.Has("negate") && yaml.Get<int>("negate", "0 or 1") != 0;
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

cv::Mat ReadImage(const std::string& file) {
  if (!std::filesystem::is_regular_file(file)) {
    throw MapError(file + ": no such image file");
  }
  cv::Mat image;
  try {
    const QuietErrors quiet;
    image = cv::imread(file, cv::IMREAD_COLOR);
  } catch (const cv::Exception&) {
    image.release();  // reported with every other unreadable image
  }
  if (image.empty()) {
    throw MapError(file + ": not an image, or a broken one");
  }
  if (image.cols > kMaxSide || image.rows > kMaxSide) {
    throw MapError(file + ": more than " + std::to_string(kMaxSide) + " pixels a side");
  }
  return image;
}

unsigned char CostOf(const cv::Vec3b& pixel, const MapDescription& map) {
  const double grey = (pixel[0] + pixel[1] + pixel[2]) / 3.0;
  const double occupied = (map.negate ? grey : 255.0 - grey) / 255.0;
  if (occupied > map.occupied_threshold) {
    return costmap_2d::LETHAL_OBSTACLE;
  }
  return occupied < map.free_threshold ? costmap_2d::FREE_SPACE : costmap_2d::NO_INFORMATION;
}

}  // namespace

costmap_2d::Costmap2D LoadMap(const std::string& yaml_file) {
  const MapDescription description = ReadDescription(yaml_file);
  const cv::Mat image = ReadImage(description.image_file);
  costmap_2d::Costmap2D map(static_cast<unsigned int>(image.cols), static_cast<unsigned int>(image.rows),
                            description.resolution, description.origin_x, description.origin_y);
  for (int row = 0; row < image.rows; ++row) {
    const auto my = static_cast<unsigned int>(image.rows - 1 - row);
    for (int column = 0; column < image.cols; ++column) {
      map.setCost(static_cast<unsigned int>(column), my, CostOf(image.at<cv::Vec3b>(row, column), description));
    }
  }
  return map;
}

}  // namespace controller_base_demo
