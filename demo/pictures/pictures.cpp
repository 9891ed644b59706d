#include "demo/pictures/pictures.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "demo/pictures/canvas.h"
#include "demo/pictures/plots.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "nav_core/math/box2d.h"
#include "simulation/obstacle_outline.h"

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
const cv::Scalar kTrueColor(90, 90, 90);
const cv::Scalar kBlockedColor(30, 30, 220);
const cv::Scalar kLaserColor(140, 60, 20);

constexpr double kMomentScale = 140;   // pixels per metre
constexpr int kPanelWidth = 460;       // pixels
constexpr int kDriveWidth = 1100;      // pixels of the larger side of the drive's map, at most
constexpr double kDriveMaxScale = 90;  // pixels per metre
constexpr double kSurroundings = 1.5;  // m around the path, on a map that is much larger

Vec2d ToVec2d(const geometry_msgs::Point& point) { return {point.x, point.y}; }

Canvas::Points ToPoints(const nav_msgs::Path& path) {
  Canvas::Points points;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    points.push_back(ToVec2d(pose.pose.position));
  }
  return points;
}

void DrawRobot(const Pose2d& robot, const cv::Scalar& color, Canvas* canvas) {
  const Vec2d nose(robot.x + kRobotRadius * std::cos(robot.yaw), robot.y + kRobotRadius * std::sin(robot.yaw));
  canvas->Circle({robot.x, robot.y}, kRobotRadius, color, 2);
  canvas->Line({{robot.x, robot.y}, nose}, color, 2);
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
Canvas::Area DriveArea(const costmap_2d::Costmap2D& map, const DriveRecord& drive, const Story& story) {
  const Canvas::Area whole = MapArea(map);
  Canvas::Area area{whole.max_x, whole.max_y, whole.min_x, whole.min_y};
  const auto include = [&](double x, double y) {
    area = {std::min(area.min_x, x - kSurroundings), std::min(area.min_y, y - kSurroundings),
            std::max(area.max_x, x + kSurroundings), std::max(area.max_y, y + kSurroundings)};
  };
  for (const nav_msgs::Path& path : story.paths()) {
    for (const geometry_msgs::PoseStamped& pose : path.poses) {
      include(pose.pose.position.x, pose.pose.position.y);
    }
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

const cv::Scalar& NumberColor(const Moment& moment) {
  const bool has_contact = std::any_of(moment.events.begin(), moment.events.end(),
                                       [](const Event& event) { return event.kind == "contact"; });
  return has_contact ? kContactColor : kNumberColor;
}

// The last event of a moment says what came of those before it.
void DrawMomentNumbers(const Story& story, Canvas* canvas) {
  int number = 0;
  for (const Moment& moment : story.moments()) {
    ++number;
    const Event& event = moment.events.back();
    canvas->Number({moment.true_pose.x, moment.true_pose.y}, number, NumberColor(moment));
    canvas->NumberedText(number, NumberColor(moment),
                         Format("%.1f s  %s: ", moment.time, event.kind.c_str()) + event.text);
  }
  if (story.left_out() > 0) {
    canvas->Text(Format("and %zu more events without pictures", story.left_out()));
  }
}

const cv::Scalar& ObstacleColor(const Obstacle& obstacle) { return obstacle.low ? kSillColor : kObstacleColor; }

// Those that are there `time` seconds into the drive.
void DrawObstacles(const std::vector<Obstacle>& obstacles, double time, Canvas* canvas) {
  for (const Obstacle& obstacle : obstacles) {
    canvas->FillPolygon(OutlineAt(obstacle, time), ObstacleColor(obstacle));
  }
}

// The outlines of those that vanished before `time`, as they stood last.
void DrawVanished(const std::vector<Obstacle>& obstacles, double time, Canvas* canvas) {
  for (const Obstacle& obstacle : obstacles) {
    if (obstacle.vanishes_at <= time) {
      canvas->Polygon(OutlineAt(obstacle, std::nextafter(obstacle.vanishes_at, 0.0)), ObstacleColor(obstacle), 1.5);
    }
  }
}

void DrawObstacleLegend(const std::vector<Obstacle>& obstacles, Canvas* canvas) {
  const auto has = [&](bool low) {
    return std::any_of(obstacles.begin(), obstacles.end(),
                       [&](const Obstacle& obstacle) { return obstacle.low == low; });
  };
  if (has(false)) {
    canvas->Legend(Key::kSquare, kObstacleColor, "not on the map, seen by the laser");
  }
  if (has(true)) {
    canvas->Legend(Key::kSquare, kSillColor, "not on the map, too low for the laser");
  }
}

void DrawDriveLegend(const DriveRecord& drive, const Story& story, Canvas* canvas) {
  canvas->Legend(Key::kSquare, kWall, "wall or furniture on the map");
  DrawObstacleLegend(story.obstacles(), canvas);
  if (std::any_of(story.obstacles().begin(), story.obstacles().end(),
                  [&](const Obstacle& obstacle) { return obstacle.vanishes_at <= drive.trajectory.back().time; })) {
    canvas->Legend(Key::kFrame, kObstacleColor, "one that vanished");
  }
  canvas->Legend(Key::kDashes, kPathColor, "planned path");
  canvas->Legend(Key::kLine, kTrail, "way driven, robot at its end");
  if (!drive.detours.empty()) {
    canvas->Legend(Key::kLine, kDetourColor, "detour from the library");
  }
  if (drive.contacts > 0) {
    canvas->Legend(Key::kCross, kContactColor, "bumper contact");
  }
  if (!drive.boxes.empty()) {
    canvas->Legend(Key::kFrame, kBoxColor, "virtual boxes");
  }
  canvas->Legend(Key::kDot, kTrail, "start");
  canvas->Legend(Key::kRing, kGoalColor, "goal");
}

// The way driven up to the sample of index `last`.
Canvas::Points Trail(const DriveRecord& drive, std::size_t last) {
  Canvas::Points trail;
  for (std::size_t i = 0; i <= last && i < drive.trajectory.size(); ++i) {
    trail.emplace_back(drive.trajectory[i].pose.x, drive.trajectory[i].pose.y);
  }
  return trail;
}

// ---- A moment ----

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

void DrawCosts(const Moment& moment, Canvas* canvas) {
  const costmap_2d::Costmap2D& map = moment.map;
  const auto is_outside = [&](unsigned int mx, unsigned int my) {
    nav_core::math::Vec2d center;
    unsigned int corridor_mx = 0;
    unsigned int corridor_my = 0;
    map.mapToWorld(mx, my, center.x, center.y);
    return moment.detour &&
           (!moment.detour->map.worldToMap(center.x, center.y, corridor_mx, corridor_my) ||
            moment.detour->corridor.data[corridor_my * moment.detour->corridor.info.width + corridor_mx] != 0);
  };
  const auto color_of = [&](unsigned int mx, unsigned int my) {
    const cv::Scalar color = map.IsLaserObstacle(mx, my) ? kLaserColor : CostColor(map.getCost(mx, my));
    return is_outside(mx, my) ? OutsideCorridor(color) : color;
  };
  canvas->Cells(CellColors(map, color_of), MapArea(map));
}

// More than what a picture can show.
bool IsLost(const Moment& moment) { return Distance(moment.true_pose, moment.believed_pose) > 0.02; }

void DrawBlockage(const Blockage& blockage, Canvas* canvas) {
  canvas->Line(ToPoints(blockage.run), kBlockedColor, 5);
  canvas->Dot(ToVec2d(blockage.left), 4.5, kBlockedColor);
  canvas->Dot(ToVec2d(blockage.right), 4.5, kBlockedColor);
}

void DrawDetour(const DetourReport& detour, Canvas* canvas) {
  canvas->Line(ToPoints(detour.detour), kDetourColor, 3);
  for (const Vec2d& point : ToPoints(detour.detour)) {
    canvas->Dot(point, 4, kDetourColor);
  }
  canvas->Circle(ToVec2d(detour.path.poses.back().pose.position), 0.08, kGoalColor, 2.5);
}

void DrawMomentLegend(const Moment& moment, Canvas* canvas) {
  canvas->Legend(Key::kSquare, kWall, "obstacle (cost 254)");
  canvas->Legend(Key::kSquare, kLaserColor, "cell that the laser sees");
  canvas->Legend(Key::kSquare, kInscribed, "closed to the robot's centre (253)");
  canvas->Legend(Key::kSquare, kRing, "ring, cost 127 to 94: no shortcuts");
  canvas->Legend(Key::kSquare, kNearby, "cost 93 to 1");
  canvas->Legend(Key::kSquare, kUnknown, "unknown (255)");
  DrawObstacleLegend(moment.obstacles, canvas);
  canvas->Legend(Key::kRing, kTrail, "robot");
  if (IsLost(moment)) {
    canvas->Legend(Key::kRing, kTrueColor, "where the robot really is");
  }
  canvas->Legend(Key::kLine, kTrail, "way driven");
  canvas->Legend(Key::kDashes, kPathColor, "path ahead");
  if (moment.blockage) {
    canvas->Legend(Key::kLine, kBlockedColor, "its blocked run");
    canvas->Legend(Key::kDot, kBlockedColor, "side points, 0.2 m from the run's middle");
  }
  if (moment.detour) {
    canvas->Legend(Key::kSquare, OutsideCorridor(kFree), "outside the corridor");
    canvas->Legend(Key::kLine, kDetourColor, "detour and its poses");
    canvas->Legend(Key::kRing, kGoalColor, "local goal of the detour");
  }
  if (!moment.boxes.empty()) {
    canvas->Legend(Key::kFrame, kBoxColor, "virtual boxes");
  }
}

// ---- Plots ----

template <typename ValueOf>
std::vector<cv::Point2d> OverTime(const DriveRecord& drive, const ValueOf& value_of) {
  std::vector<cv::Point2d> points;
  for (const TrajectorySample& sample : drive.trajectory) {
    points.emplace_back(sample.time, value_of(sample));
  }
  return points;
}

std::string Summary(const DriveRecord& drive) {
  return Format("%.1f m driven in %.1f s, detours: %zu, contacts: %d", drive.driven, drive.trajectory.back().time,
                drive.detours.size(), drive.contacts);
}

}  // namespace

cv::Mat DrawDrive(const costmap_2d::Costmap2D& map, const DriveRecord& drive, const Story& story) {
  const Canvas::Area area = DriveArea(map, drive, story);
  const double larger_side = std::max(area.max_x - area.min_x, area.max_y - area.min_y);
  Canvas canvas(area, std::min(kDriveMaxScale, kDriveWidth / larger_side), kPanelWidth);
  DrawMap(map, &canvas);
  for (const nav_msgs::Path& path : story.paths()) {
    canvas.Dashes(ToPoints(path), kPathColor, 2.5);
  }
  for (const VirtualBox& box : drive.boxes) {
    DrawBox(box, &canvas);
  }
  const double end = drive.trajectory.back().time;
  DrawObstacles(story.obstacles(), end, &canvas);
  DrawVanished(story.obstacles(), end, &canvas);
  for (const DetourReport& detour : drive.detours) {
    canvas.Line(ToPoints(detour.detour), kDetourColor, 2);
  }
  const Canvas::Points trail = Trail(drive, drive.trajectory.size() - 1);
  canvas.Line(trail, kTrail, 2);
  canvas.Dot(trail.front(), 6, kTrail);
  for (const nav_msgs::Path& path : story.paths()) {
    canvas.Circle(ToVec2d(path.poses.back().pose.position), 0.12, kGoalColor, 2);
  }
  DrawRobot(drive.trajectory.back().pose, kTrail, &canvas);
  for (const Event& event : drive.events) {
    if (event.kind == "contact") {
      canvas.Cross(ToVec2d(event.position), 6, kContactColor, 2.5);
    }
  }
  canvas.ScaleBar(larger_side > 12.0 ? 2.0 : 1.0);

  canvas.Title(drive.status == ExitStatus::kReached ? "Goal reached" : "Goal not reached");
  canvas.Text(drive.verdict);
  canvas.Text(Summary(drive));
  canvas.Gap();
  DrawDriveLegend(drive, story, &canvas);
  canvas.Gap();
  DrawMomentNumbers(story, &canvas);
  return canvas.Finish();
}

cv::Mat DrawMoment(const DriveRecord& drive, const Story& story, std::size_t index) {
  const Moment& moment = story.moments()[index];
  Canvas canvas(MapArea(moment.map), kMomentScale, kPanelWidth);
  DrawCosts(moment, &canvas);
  DrawObstacles(moment.obstacles, moment.time, &canvas);
  for (const VirtualBox& box : moment.boxes) {
    DrawBox(box, &canvas);
  }
  canvas.Line(Trail(drive, moment.sample), kTrail, 2);
  canvas.Dashes(ToPoints(moment.ahead), kPathColor, 2.5);
  if (moment.blockage) {
    DrawBlockage(*moment.blockage, &canvas);
  }
  if (moment.detour) {
    DrawDetour(*moment.detour, &canvas);
  }
  if (IsLost(moment)) {
    DrawRobot(moment.true_pose, kTrueColor, &canvas);
  }
  DrawRobot(moment.believed_pose, kTrail, &canvas);
  for (const Event& event : moment.events) {
    if (event.kind == "contact") {
      canvas.Cross(ToVec2d(event.position), 8, kContactColor, 3);
    }
  }
  canvas.ScaleBar(1.0);

  canvas.Title(Format("%zu  %s", index + 1, moment.events.back().kind.c_str()));
  canvas.Text(Format("%.2f s into the drive, %.2f m/s, %.2f m off the path", moment.time, moment.motion.speed,
                     moment.deviation));
  for (const Event& event : moment.events) {
    canvas.Gap();
    canvas.Heading(event.kind);
    canvas.Text(event.text);
  }
  canvas.Gap();
  canvas.Gap();
  DrawMomentLegend(moment, &canvas);
  return canvas.Finish();
}

cv::Mat DrawPlots(const DriveRecord& drive, const Story& story) {
  const Chart deviation{"distance from the path, m",
                        0.4,
                        {{"deviation", kTrail, OverTime(drive, [](const auto& sample) { return sample.deviation; })}},
                        Chart::Limit{"warning", 0.3}};
  const Chart progress{"used up of the path's budget, 1 being the path itself",
                       1.2,
                       {{"way", kPathColor, OverTime(drive, [](const auto& sample) { return sample.distance_ratio; })},
                        {"time", kDetourColor, OverTime(drive, [](const auto& sample) { return sample.time_ratio; })}},
                       Chart::Limit{"end of the budget", 3.0}};
  const Chart speed{"speed, m/s",
                    0.5,
                    {{"speed", kLaserColor, OverTime(drive, [](const auto& sample) { return sample.motion.speed; })}},
                    {}};
  std::vector<Mark> marks;
  for (const Moment& moment : story.moments()) {
    marks.push_back({moment.time, static_cast<int>(marks.size()) + 1, NumberColor(moment)});
  }
  return DrawCharts(drive.status == ExitStatus::kReached ? "Goal reached" : "Goal not reached", Summary(drive),
                    {deviation, progress, speed}, marks, drive.trajectory.back().time);
}

}  // namespace controller_base_demo
