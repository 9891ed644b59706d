#include "pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "canvas.h"
#include "costmap_2d/cost_values.h"
#include "inflation.h"
#include "nav_core/math/box2d.h"

namespace controller_base_demo {
namespace {

using nav_core::math::Box2d;
using nav_core::math::Vec2d;
using Key = Canvas::Key;

// Blue, green, red.
const cv::Scalar kWall(70, 70, 70);
const cv::Scalar kUnknown(205, 210, 205);
const cv::Scalar kFree(255, 255, 255);
const cv::Scalar kPathColor(200, 120, 40);
const cv::Scalar kTrail(60, 140, 40);
const cv::Scalar kDetourColor(170, 40, 190);
const cv::Scalar kContactColor(30, 30, 220);
const cv::Scalar kBoxColor(60, 60, 235);
const cv::Scalar kObstacleColor(40, 150, 245);
const cv::Scalar kSillColor(190, 130, 150);
const cv::Scalar kGoalColor(30, 30, 30);
const cv::Scalar kNumberColor(90, 60, 30);
const cv::Scalar kInscribed(150, 150, 225);
const cv::Scalar kRing(130, 200, 250);
const cv::Scalar kNearby(190, 240, 255);
const cv::Scalar kBlockedColor(30, 30, 220);
const cv::Scalar kCorridorColor(150, 110, 30);
const cv::Scalar kLaserColor(140, 60, 20);

constexpr double kDetourScale = 140;   // pixels per metre
constexpr int kPanelWidth = 430;       // pixels
constexpr int kDriveWidth = 1100;      // pixels of the larger side of the drive's map, at most
constexpr double kDriveMaxScale = 90;  // pixels per metre
constexpr double kSurroundings = 1.5;  // m around the path, on a map that is much larger

template <typename... Args>
std::string Format(const char* format, Args... args) {
  char text[256];
  std::snprintf(text, sizeof(text), format, args...);
  return text;
}

Vec2d ToVec2d(const geometry_msgs::Point& point) { return {point.x, point.y}; }

Canvas::Points ToPoints(const nav_msgs::Path& path) {
  Canvas::Points points;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    points.push_back(ToVec2d(pose.pose.position));
  }
  return points;
}

void DrawRobot(const Pose2d& robot, Canvas* canvas) {
  const Vec2d nose(robot.x + kRobotRadius * std::cos(robot.yaw), robot.y + kRobotRadius * std::sin(robot.yaw));
  canvas->Circle({robot.x, robot.y}, kRobotRadius, kTrail, 2);
  canvas->Line({{robot.x, robot.y}, nose}, kTrail, 2);
}

void DrawBox(const VirtualBox& box, Canvas* canvas) {
  canvas->Polygon(Box2d(ToVec2d(box.center), box.heading, 0.2, 0.1).GetAllCorners(), kBoxColor, 1);
}

// ---- The whole drive ----

Canvas::Area MapArea(const costmap_2d::Costmap2D& map) {
  return {map.getOriginX(), map.getOriginY(), map.getOriginX() + map.getSizeInCellsX() * map.getResolution(),
          map.getOriginY() + map.getSizeInCellsY() * map.getResolution()};
}

// The part of the map that the path needs, with its surroundings.
Canvas::Area DriveArea(const costmap_2d::Costmap2D& map, const DriveRecord& drive) {
  const Canvas::Area whole = MapArea(map);
  Canvas::Area area{whole.max_x, whole.max_y, whole.min_x, whole.min_y};
  const auto include = [&](double x, double y) {
    area = {std::min(area.min_x, x - kSurroundings), std::min(area.min_y, y - kSurroundings),
            std::max(area.max_x, x + kSurroundings), std::max(area.max_y, y + kSurroundings)};
  };
  for (const geometry_msgs::PoseStamped& pose : drive.path.poses) {
    include(pose.pose.position.x, pose.pose.position.y);
  }
  for (const TrajectorySample& sample : drive.trajectory) {
    include(sample.pose.x, sample.pose.y);
  }
  const bool is_most = (area.max_x - area.min_x) * (area.max_y - area.min_y) >
                       0.4 * (whole.max_x - whole.min_x) * (whole.max_y - whole.min_y);
  if (is_most) {
    return whole;
  }
  return {std::max(area.min_x, whole.min_x), std::max(area.min_y, whole.min_y), std::min(area.max_x, whole.max_x),
          std::min(area.max_y, whole.max_y)};
}

// `color_of(mx, my)` for every cell of the map, the highest y on top.
template <typename ColorOf>
cv::Mat CellColors(const costmap_2d::Costmap2D& map, const ColorOf& color_of) {
  cv::Mat colors(static_cast<int>(map.getSizeInCellsY()), static_cast<int>(map.getSizeInCellsX()), CV_8UC3);
  for (int row = 0; row < colors.rows; ++row) {
    for (int column = 0; column < colors.cols; ++column) {
      const cv::Scalar color =
          color_of(static_cast<unsigned int>(column), static_cast<unsigned int>(colors.rows - 1 - row));
      colors.at<cv::Vec3b>(row, column) =
          cv::Vec3b(cv::saturate_cast<unsigned char>(color[0]), cv::saturate_cast<unsigned char>(color[1]),
                    cv::saturate_cast<unsigned char>(color[2]));
    }
  }
  return colors;
}

void DrawMap(const costmap_2d::Costmap2D& map, Canvas* canvas) {
  const auto color_of = [&](unsigned int mx, unsigned int my) {
    const unsigned char cost = map.getCost(mx, my);
    return cost == costmap_2d::LETHAL_OBSTACLE ? kWall : cost == costmap_2d::NO_INFORMATION ? kUnknown : kFree;
  };
  canvas->Cells(CellColors(map, color_of), MapArea(map));
}

bool IsNumbered(const Event& event) {
  static constexpr const char* kKinds[] = {"detour", "repair", "contact", "refused", "arrival", "stop"};
  return std::any_of(std::begin(kKinds), std::end(kKinds), [&](const char* kind) { return event.kind == kind; });
}

void DrawNumberedEvents(const DriveRecord& drive, Canvas* canvas) {
  int number = 0;
  for (const Event& event : drive.events) {
    if (IsNumbered(event)) {
      ++number;
      const cv::Scalar& color = event.kind == "contact" ? kContactColor : kNumberColor;
      canvas->Number(ToVec2d(event.position), number, color);
      canvas->NumberedText(number, color, Format("%.1f s  %s", DriveTime(event.stamp), event.text.c_str()));
    }
  }
}

void DrawDriveLegend(const Scenario& scenario, Canvas* canvas) {
  canvas->Legend(Key::kSquare, kWall, "wall or furniture on the map");
  if (!scenario.obstacles.empty()) {
    canvas->Legend(Key::kSquare, kObstacleColor, "not on the map, seen by the laser");
    canvas->Legend(Key::kSquare, kSillColor, "not on the map, too low for the laser");
  }
  canvas->Legend(Key::kDashes, kPathColor, "planned path");
  canvas->Legend(Key::kLine, kTrail, "way driven, robot at its end");
  canvas->Legend(Key::kLine, kDetourColor, "detour from the library");
  canvas->Legend(Key::kCross, kContactColor, "bumper contact");
  canvas->Legend(Key::kFrame, kBoxColor, "virtual boxes");
  canvas->Legend(Key::kDot, kTrail, "start");
  canvas->Legend(Key::kRing, kGoalColor, "goal");
}

// ---- A detour ----

cv::Scalar CostColor(unsigned char cost) {
  if (cost == costmap_2d::LETHAL_OBSTACLE) {
    return kWall;
  }
  if (cost == costmap_2d::INSCRIBED_INFLATED_OBSTACLE) {
    return kInscribed;
  }
  if (cost == costmap_2d::NO_INFORMATION) {
    return kUnknown;
  }
  if (cost >= Inflation::kLowestRingCost) {
    return kRing;
  }
  const double share = static_cast<double>(cost) / Inflation::kLowestRingCost;
  return kNearby * share + cv::Scalar(255, 255, 255) * (1.0 - share);
}

// A little darker and bluer: a cell that the planner may not use.
cv::Scalar OutsideCorridor(const cv::Scalar& color) { return color * 0.6 + cv::Scalar(190, 170, 165) * 0.4; }

void DrawCosts(const DetourReport& detour, Canvas* canvas) {
  const costmap_2d::Costmap2D& map = detour.map;
  const auto color_of = [&](unsigned int mx, unsigned int my) {
    const std::size_t cell = static_cast<std::size_t>(my) * map.getSizeInCellsX() + mx;
    const cv::Scalar color = map.IsLaserObstacle(mx, my) ? kLaserColor : CostColor(map.getCost(mx, my));
    return detour.corridor.data[cell] == 0 ? color : OutsideCorridor(color);
  };
  canvas->Cells(CellColors(map, color_of), MapArea(map));
}

// Where IsBilateralObstacle looks, beside the middle of the blocked run.
void DrawSidePoints(const DetourReport& detour, Canvas* canvas) {
  constexpr double kSideDistance = 0.2;  // m
  if (detour.blocked.poses.size() < 2) {
    return;
  }
  const Vec2d first = ToVec2d(detour.blocked.poses.front().pose.position);
  const Vec2d last = ToVec2d(detour.blocked.poses.back().pose.position);
  const double across = Direction(first, last) + 0.5 * kPi;
  for (const double side : {-kSideDistance, kSideDistance}) {
    canvas->Dot(
        {0.5 * (first.x + last.x) + side * std::cos(across), 0.5 * (first.y + last.y) + side * std::sin(across)}, 4,
        kBlockedColor);
  }
}

void DrawDetourLegend(Canvas* canvas) {
  canvas->Legend(Key::kSquare, kWall, "obstacle (cost 254)");
  canvas->Legend(Key::kSquare, kLaserColor, "cell that the laser sees");
  canvas->Legend(Key::kSquare, kInscribed, "closed to the robot's centre (253)");
  canvas->Legend(Key::kSquare, kRing, "ring, cost 127 to 94: no shortcuts");
  canvas->Legend(Key::kSquare, kNearby, "cost 93 to 1");
  canvas->Legend(Key::kSquare, kUnknown, "unknown (255)");
  canvas->Legend(Key::kSquare, OutsideCorridor(cv::Scalar(255, 255, 255)), "outside the corridor");
  canvas->Legend(Key::kDashes, kPathColor, "path ahead");
  canvas->Legend(Key::kLine, kBlockedColor, "its blocked run");
  canvas->Legend(Key::kDot, kBlockedColor, "side points, 0.2 m from the run's middle");
  canvas->Legend(Key::kLine, kDetourColor, "detour and its poses");
  canvas->Legend(Key::kRing, kGoalColor, "local goal, the end of the stretch ahead");
  canvas->Legend(Key::kFrame, kBoxColor, "virtual boxes");
  canvas->Legend(Key::kRing, kTrail, "robot");
}

}  // namespace

cv::Mat DrawDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const DriveRecord& drive) {
  const Canvas::Area area = DriveArea(map, drive);
  const double larger_side = std::max(area.max_x - area.min_x, area.max_y - area.min_y);
  Canvas canvas(area, std::min(kDriveMaxScale, kDriveWidth / larger_side), kPanelWidth);
  DrawMap(map, &canvas);
  canvas.Dashes(ToPoints(drive.path), kPathColor, 2.5);
  for (const VirtualBox& box : drive.boxes) {
    DrawBox(box, &canvas);
  }
  for (const Obstacle& obstacle : scenario.obstacles) {
    canvas.FillPolygon(Box2d(obstacle.center, obstacle.yaw, obstacle.length, obstacle.width).GetAllCorners(),
                       obstacle.low ? kSillColor : kObstacleColor);
  }
  for (const DetourReport& detour : drive.detours) {
    canvas.Line(ToPoints(detour.detour), kDetourColor, 2);
  }
  Canvas::Points trail;
  for (const TrajectorySample& sample : drive.trajectory) {
    trail.emplace_back(sample.pose.x, sample.pose.y);
  }
  canvas.Line(trail, kTrail, 2);
  canvas.Dot(trail.front(), 6, kTrail);
  canvas.Circle(scenario.goal, 0.12, kGoalColor, 2);
  DrawRobot(drive.trajectory.back().pose, &canvas);
  for (const Event& event : drive.events) {
    if (event.kind == "contact") {
      canvas.Cross(ToVec2d(event.position), 6, kContactColor, 2.5);
    }
  }
  canvas.ScaleBar(larger_side > 12.0 ? 2.0 : 1.0);

  canvas.Title(drive.status == ExitStatus::kReached ? "Goal reached" : "Goal not reached");
  canvas.Text(Format("%.1f m driven in %.1f s, detours: %zu, contacts: %d", drive.driven, drive.trajectory.back().time,
                     drive.detours.size(), drive.contacts));
  canvas.Gap();
  DrawDriveLegend(scenario, &canvas);
  canvas.Gap();
  DrawNumberedEvents(drive, &canvas);
  return canvas.Finish();
}

cv::Mat DrawDetour(const DetourReport& detour, int number) {
  Canvas canvas(MapArea(detour.map), kDetourScale, kPanelWidth);
  DrawCosts(detour, &canvas);
  for (const VirtualBox& box : detour.boxes) {
    DrawBox(box, &canvas);
  }
  canvas.Dashes(ToPoints(detour.path), kPathColor, 2.5);
  canvas.Line(ToPoints(detour.blocked), kBlockedColor, 4);
  DrawSidePoints(detour, &canvas);
  canvas.Line(ToPoints(detour.detour), kDetourColor, 2.5);
  for (const Vec2d& point : ToPoints(detour.detour)) {
    canvas.Dot(point, 3, kDetourColor);
  }
  canvas.Circle(ToVec2d(detour.path.poses.back().pose.position), 0.08, kGoalColor, 2.5);
  DrawRobot(detour.robot, &canvas);
  canvas.ScaleBar(1.0);

  canvas.Title(Format("Detour %d, %.1f s", number, DriveTime(detour.stamp)));
  canvas.Text("local map of 6 m x 6 m around the robot");
  canvas.Text(detour.goal_repaired ? "local goal occupied: the detour ends at the last free place before it"
                                   : "local goal free");
  canvas.Text(detour.smoothed ? "smoothed, every segment checked" : "unsmoothed: a shortcut was blocked");
  canvas.Gap();
  DrawDetourLegend(&canvas);
  return canvas.Finish();
}

}  // namespace controller_base_demo
