#include <gtest/gtest.h>
#include <nav_msgs/OccupancyGrid.h>
#include <rosbag/bag.h>
#include <rosbag/view.h>
#include <sensor_msgs/LaserScan.h>
#include <std_msgs/UInt8.h>
#include <tf2/buffer_core.h>
#include <tf2_msgs/TFMessage.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "robot/bumper.h"
#include "robot/frames.h"
#include "robot/laser_marks.h"
#include "robot/occupancy_map.h"
#include "test/support/test_names.h"

// The bridges on drives that were recorded in another simulator, against the ground truth: the map of the
// recording and the obstacles that its scenario file names.
namespace controller_base_test {
namespace {

using controller_base::robot::BumperPresses;
using controller_base::robot::Grid;
using controller_base::robot::GridBytes;
using controller_base::robot::kLeft;
using controller_base::robot::kLethal;
using controller_base::robot::kRight;
using controller_base::robot::LaserMarks;
using controller_base::robot::OriginIn;
using controller_base::robot::ReadOccupancyGrid;
using controller_base::robot::SectorOfPoint;
using controller_base::robot::Sectors;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNoise = 0.01;        // m; standard deviation of the recorded ranges
constexpr double kRobotRadius = 0.17;  // m
constexpr std::size_t kScansASecond = 10;

struct Point {
  double x;
  double y;
};

double Distance(const Point& a, const Point& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// Metres from a point to the edge of a box around the origin, inside or outside.
double DistanceToBoxEdge(const Point& point, double half_length, double half_width) {
  const double dx = std::abs(point.x) - half_length;
  const double dy = std::abs(point.y) - half_width;
  return dx <= 0.0 && dy <= 0.0 ? -std::max(dx, dy) : std::hypot(std::max(dx, 0.0), std::max(dy, 0.0));
}

// An obstacle of a scenario file.
class Thing {
 public:
  explicit Thing(const YAML::Node& node) : is_box_(node["box"].IsDefined()), is_low_(!node["seen"].as<bool>(true)) {
    const YAML::Node shape = is_box_ ? node["box"] : node["disc"];
    center_ = {shape["x_m"].as<double>(), shape["y_m"].as<double>()};
    radius_ = shape["radius_m"].as<double>(0.0);
    half_length_ = 0.5 * shape["length_m"].as<double>(0.0);
    half_width_ = 0.5 * shape["width_m"].as<double>(0.0);
    yaw_ = shape["yaw_deg"].as<double>(0.0) * kPi / 180.0;
  }

  bool is_low() const { return is_low_; }

  double DistanceToSurface(const Point& point) const {
    if (!is_box_) {
      return std::abs(Distance(point, center_) - radius_);
    }
    const Point way = {point.x - center_.x, point.y - center_.y};
    return DistanceToBoxEdge(
        {std::cos(yaw_) * way.x + std::sin(yaw_) * way.y, std::cos(yaw_) * way.y - std::sin(yaw_) * way.x},
        half_length_, half_width_);
  }

 private:
  bool is_box_;
  bool is_low_;
  Point center_;
  double radius_;
  double half_length_;
  double half_width_;
  double yaw_;
};

// A recorded drive: its messages in order, and the ground truth.
class Drive {
 public:
  explicit Drive(const std::string& name) {
    const std::string path = std::string(CONTROLLER_BASE_OUTSIDE) + "/" + name;
    for (const auto& node : YAML::LoadFile(path + ".yaml")["obstacles"]) {
      things_.emplace_back(node);
    }
    bag_.open(path + ".bag");
    ReadFrames();
    ForEach<nav_msgs::OccupancyGrid>("/map", [this](const nav_msgs::OccupancyGrid& map) {
      std::string error;
      map_ = ReadOccupancyGrid(map, &error).value();
    });
  }

  const Grid& grid() const { return map_.grid; }

  template <typename Message>
  void ForEach(const std::string& topic, const std::function<void(const Message&, const ros::Time&)>& take) const {
    for (const rosbag::MessageInstance& message : rosbag::View(bag_, rosbag::TopicQuery(topic))) {
      take(*message.instantiate<Message>(), message.getTime());
    }
  }
  template <typename Message>
  void ForEach(const std::string& topic, const std::function<void(const Message&)>& take) const {
    ForEach<Message>(topic, [&](const Message& message, const ros::Time&) { take(message); });
  }

  // Each scan with its laser's pose. The recordings begin with a scan before the first transforms.
  void ForEachScan(const std::function<void(const sensor_msgs::LaserScan&, const geometry_msgs::Pose&)>& take) const {
    ForEach<sensor_msgs::LaserScan>("/scan", [&](const sensor_msgs::LaserScan& scan) {
      if (const auto laser = OriginOf(scan.header.frame_id, scan.header.stamp)) {
        take(scan, *laser);
      }
    });
  }

  std::optional<geometry_msgs::Pose> OriginOf(const std::string& frame, const ros::Time& stamp) const {
    std::string error;
    return OriginIn(buffer_, "map", frame, stamp, &error);
  }

  // Metres to what the laser can see: walls of the map and obstacles that are not low. At most `reach` is looked far.
  double DistanceToSurface(const Point& point, double reach, bool with_low) const {
    double nearest = DistanceToWall(point, reach);
    for (const Thing& thing : things_) {
      if (with_low || !thing.is_low()) {
        nearest = std::min(nearest, thing.DistanceToSurface(point));
      }
    }
    return nearest;
  }

  Point CenterOf(int mx, int my) const {
    return {grid().origin_x + (mx + 0.5) * grid().resolution, grid().origin_y + (my + 0.5) * grid().resolution};
  }

 private:
  void ReadFrames() {
    for (const std::string topic : {"/tf_static", "/tf"}) {
      ForEach<tf2_msgs::TFMessage>(topic, [&](const tf2_msgs::TFMessage& message) {
        for (const geometry_msgs::TransformStamped& transform : message.transforms) {
          buffer_.setTransform(transform, "bag", topic == "/tf_static");
        }
      });
    }
  }

  bool IsWall(int mx, int my) const { return grid().Contains(mx, my) && map_.bytes[grid().Index(mx, my)] == kLethal; }

  // To the nearest side of a cell that has a wall on one side and none on the other.
  double DistanceToWall(const Point& point, double reach) const {
    const double cell = grid().resolution;
    const int cells = static_cast<int>(std::ceil(reach / cell)) + 1;
    const int point_mx = static_cast<int>(std::floor((point.x - grid().origin_x) / cell));
    const int point_my = static_cast<int>(std::floor((point.y - grid().origin_y) / cell));
    double nearest = std::numeric_limits<double>::infinity();
    for (int my = point_my - cells; my <= point_my + cells; ++my) {
      for (int mx = point_mx - cells; mx <= point_mx + cells; ++mx) {
        const Point center = CenterOf(mx, my);
        if (IsWall(mx, my) != IsWall(mx + 1, my)) {
          nearest = std::min(nearest, std::hypot(point.x - (center.x + 0.5 * cell),
                                                 std::max(0.0, std::abs(point.y - center.y) - 0.5 * cell)));
        }
        if (IsWall(mx, my) != IsWall(mx, my + 1)) {
          nearest = std::min(nearest, std::hypot(std::max(0.0, std::abs(point.x - center.x) - 0.5 * cell),
                                                 point.y - (center.y + 0.5 * cell)));
        }
      }
    }
    return nearest;
  }

  std::vector<Thing> things_;
  rosbag::Bag bag_;
  tf2::BufferCore buffer_{ros::Duration(3600.0)};
  GridBytes map_;
};

class OutsideBags : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(std::string(CONTROLLER_BASE_OUTSIDE) + "/" + GetParam() + ".bag")) {
      GTEST_SKIP() << "no recorded drives in " << CONTROLLER_BASE_OUTSIDE;
    }
  }
};

TEST_P(OutsideBags, NoMarkIsFartherFromASurfaceThanACellAndThreeStandardDeviations) {
  const Drive drive(GetParam());
  const Grid& grid = drive.grid();
  LaserMarks marks(grid);
  std::vector<bool> ever_marked(grid.cells(), false);
  drive.ForEachScan([&](const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
    marks.Add(scan, laser);
    for (std::size_t cell = 0; cell < grid.cells(); ++cell) {
      ever_marked[cell] = ever_marked[cell] || marks.marks().bytes[cell] != 0;
    }
  });
  EXPECT_GT(std::count(ever_marked.begin(), ever_marked.end(), true), 500);
  const double farthest = grid.resolution + 3.0 * kNoise;
  for (int my = 0; my < grid.size_y; ++my) {
    for (int mx = 0; mx < grid.size_x; ++mx) {
      if (ever_marked[grid.Index(mx, my)]) {
        EXPECT_LE(drive.DistanceToSurface(drive.CenterOf(mx, my), farthest, /*with_low=*/false), farthest)
            << mx << ", " << my;
      }
    }
  }
}

bool HasMarkNear(const Drive& drive, const LaserMarks& marks, const Point& place) {
  constexpr int kAround = 2;  // cells; farther ones are too far
  const Grid& grid = drive.grid();
  const int place_mx = static_cast<int>(std::floor((place.x - grid.origin_x) / grid.resolution));
  const int place_my = static_cast<int>(std::floor((place.y - grid.origin_y) / grid.resolution));
  for (int my = place_my - kAround; my <= place_my + kAround; ++my) {
    for (int mx = place_mx - kAround; mx <= place_mx + kAround; ++mx) {
      if (grid.Contains(mx, my) && marks.marks().bytes[grid.Index(mx, my)] != 0 &&
          Distance(drive.CenterOf(mx, my), place) <= grid.resolution + 3.0 * kNoise) {
        return true;
      }
    }
  }
  return false;
}

std::vector<Point> HitsOf(const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
  const double yaw = 2.0 * std::atan2(laser.orientation.z, laser.orientation.w);
  std::vector<Point> hits;
  for (std::size_t i = 0; i < scan.ranges.size(); ++i) {
    const double range = double{scan.ranges[i]};
    if (range < double{scan.range_max}) {
      const double bearing = yaw + double{scan.angle_min} + static_cast<double>(i) * double{scan.angle_increment};
      hits.push_back({laser.position.x + range * std::cos(bearing), laser.position.y + range * std::sin(bearing)});
    }
  }
  return hits;
}

// The places that rays hit a second ago and, within a cell, in every scan since.
std::vector<Point> SeenThroughout(const std::deque<std::vector<Point>>& hits_of_scans, double cell) {
  std::vector<Point> seen;
  std::copy_if(
      hits_of_scans.front().begin(), hits_of_scans.front().end(), std::back_inserter(seen), [&](const Point& place) {
        return std::all_of(hits_of_scans.begin(), hits_of_scans.end(), [&](const std::vector<Point>& hits) {
          return std::any_of(hits.begin(), hits.end(), [&](const Point& hit) { return Distance(place, hit) <= cell; });
        });
      });
  return seen;
}

TEST_P(OutsideBags, NoSurfaceIsSeenForASecondWithoutAMark) {
  const Drive drive(GetParam());
  LaserMarks marks(drive.grid());
  std::deque<std::vector<Point>> hits_of_scans;
  int places = 0;
  drive.ForEachScan([&](const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
    if (hits_of_scans.size() == kScansASecond) {  // before the marks are made new by this scan
      for (const Point& place : SeenThroughout(hits_of_scans, drive.grid().resolution)) {
        EXPECT_TRUE(HasMarkNear(drive, marks, place)) << place.x << ", " << place.y << " at " << scan.header.stamp;
        ++places;
      }
      hits_of_scans.pop_front();
    }
    marks.Add(scan, laser);
    hits_of_scans.push_back(HitsOf(scan, laser));
  });
  EXPECT_GT(places, 10000);
}

// One contact for each time that the bumper was pressed anew, on the side of what the robot stood against.
TEST_P(OutsideBags, APressIsOneContact) {
  const Drive drive(GetParam());
  BumperPresses presses;
  int times_pressed = 0;
  int contacts = 0;
  std::uint8_t before = 0;
  drive.ForEach<std_msgs::UInt8>("/bumper", [&](const std_msgs::UInt8& message, const ros::Time& time) {
    times_pressed += message.data != 0 && before == 0 ? 1 : 0;
    before = message.data;
    contacts += presses.Update(message.data, time) != 0 ? 1 : 0;
  });
  EXPECT_EQ(contacts, times_pressed);
}

// Marks of what stands still come and stay.
TEST_P(OutsideBags, MarksDoNotFlicker) {
  const Drive drive(GetParam());
  LaserMarks marks(drive.grid());
  std::vector<int> times_marked(drive.grid().cells(), 0);
  std::vector<std::uint8_t> before(drive.grid().cells(), 0);
  drive.ForEachScan([&](const sensor_msgs::LaserScan& scan, const geometry_msgs::Pose& laser) {
    marks.Add(scan, laser);
    for (std::size_t cell = 0; cell < before.size(); ++cell) {
      const std::uint8_t now = marks.marks().bytes[cell];
      times_marked[cell] += now != 0 && before[cell] == 0 ? 1 : 0;
      before[cell] = now;
    }
  });
  const auto cells = std::count_if(times_marked.begin(), times_marked.end(), [](int times) { return times > 0; });
  const int sum = std::accumulate(times_marked.begin(), times_marked.end(), 0);
  EXPECT_GT(cells, 500);
  EXPECT_LE(sum, 2 * cells);
}

// The bearing, from the robot's heading, of the point of its rim that is nearest to something, rad.
double BearingOfNearest(const Drive& drive, const geometry_msgs::Pose& robot) {
  const double yaw = 2.0 * std::atan2(robot.orientation.z, robot.orientation.w);
  double nearest = std::numeric_limits<double>::infinity();
  double bearing_of_nearest = 0.0;
  for (int degree = -180; degree < 180; ++degree) {
    const double bearing = degree * kPi / 180.0;
    const Point rim = {robot.position.x + kRobotRadius * std::cos(yaw + bearing),
                       robot.position.y + kRobotRadius * std::sin(yaw + bearing)};
    const double distance = drive.DistanceToSurface(rim, 1.0, /*with_low=*/true);
    if (distance < nearest) {
      nearest = distance;
      bearing_of_nearest = bearing;
    }
  }
  return bearing_of_nearest;
}

TEST_P(OutsideBags, TheBumperTellsTheSideOfThePointThatTouches) {
  const Drive drive(GetParam());
  BumperPresses presses;
  drive.ForEach<std_msgs::UInt8>("/bumper", [&](const std_msgs::UInt8& message, const ros::Time& time) {
    if (const Sectors told = presses.Update(message.data, time)) {
      const double bearing = BearingOfNearest(drive, drive.OriginOf("base_link", time).value());
      // The bumper decides where front ends and a side begins.
      EXPECT_TRUE(told == SectorOfPoint(std::cos(bearing), std::sin(bearing)) || told == (bearing > 0 ? kLeft : kRight))
          << int{told} << " at " << bearing;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Kitchen, OutsideBags, testing::Values("kitchen-4", "kitchen-5", "kitchen-12", "kitchen-13"),
                         WithoutHyphens);

}  // namespace
}  // namespace controller_base_test
