// The picture of a moment: what the robot knows around it, and what it does.

#include <nav_msgs/OccupancyGrid.h>

#include "costmap_2d/cost_values.h"
#include "demo/pictures/canvas.h"
#include "demo/pictures/map_cells.h"
#include "demo/pictures/palette.h"
#include "demo/pictures/panel.h"
#include "demo/pictures/picture_parts.h"
#include "demo/pictures/pictures.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "follower/local_map.h"

namespace controller_base::demo {
namespace {

using nav_core::math::Vec2d;
using Key = Panel::Key;

constexpr double kMomentScale = 140;  // pixels per metre

cv::Scalar CostColor(unsigned char cost) {
  if (cost == costmap_2d::LETHAL_OBSTACLE) {
    return palette::kWall;
  }
  if (cost == costmap_2d::INSCRIBED_INFLATED_OBSTACLE) {
    return palette::kInscribed;
  }
  if (cost == costmap_2d::NO_INFORMATION) {
    return palette::kUnknown;
  }
  if (cost >= follower::Inflation::kLowestRingCost) {
    return palette::kRing;
  }
  const double share = static_cast<double>(cost) / follower::Inflation::kLowestRingCost;
  return palette::kNearby * share + palette::kFree * (1.0 - share);
}

// A little darker and bluer: a cell that the planner may not use.
cv::Scalar OutsideCorridor(const cv::Scalar& color) { return color * 0.6 + cv::Scalar(190, 170, 165) * 0.4; }

// `cells` is the map of the moment at which the detour began.
bool IsInCorridor(const follower::DetourReport& detour, const costmap_2d::Costmap2D& cells, const Vec2d& point) {
  unsigned int mx = 0;
  unsigned int my = 0;
  return cells.worldToMap(point.x, point.y, mx, my) &&
         detour.corridor.data[static_cast<std::size_t>(my) * detour.corridor.info.width + mx] == 0;
}

void DrawCosts(const Moment& moment, Canvas* canvas) {
  const costmap_2d::Costmap2D& map = moment.map;
  const costmap_2d::Costmap2D detour_cells = moment.detour ? ToCostmap(moment.detour->map.View()) : map;
  const cv::Size size(static_cast<int>(map.getSizeInCellsX()), static_cast<int>(map.getSizeInCellsY()));
  const auto color_of = [&](int column, int row) {
    const auto mx = static_cast<unsigned int>(column);
    const auto my = static_cast<unsigned int>(size.height - 1 - row);
    const cv::Scalar color = map.IsLaserObstacle(mx, my) ? palette::kLaser : CostColor(map.getCost(mx, my));
    Vec2d center;
    map.mapToWorld(mx, my, center.x, center.y);
    return !moment.detour || IsInCorridor(*moment.detour, detour_cells, center) ? color : OutsideCorridor(color);
  };
  canvas->Cells(Painted(size, color_of), AreaOf(map));
  canvas->Grid();
}

// More than what a picture can show.
bool IsLost(const Moment& moment) { return Distance(moment.true_pose, moment.estimated_pose) > 0.02; }

void DrawBlockage(const follower::Blockage& blockage, Canvas* canvas) {
  canvas->Line(ToPoints(blockage.run), palette::kBlocked, 5);
  canvas->Dot(ToVec2d(blockage.left), 4.5, palette::kBlocked);
  canvas->Dot(ToVec2d(blockage.right), 4.5, palette::kBlocked);
}

void DrawDetour(const follower::DetourReport& detour, Canvas* canvas) {
  canvas->Line(ToPoints(detour.detour), palette::kDetour, 3);
  for (const Vec2d& point : ToPoints(detour.detour)) {
    canvas->Dot(point, 4, palette::kDetour);
  }
  canvas->Circle(ToVec2d(detour.path.poses.back().pose.position), 0.08, palette::kGoal, 2.5);
}

void DrawPlans(const Moment& moment, Canvas* canvas) {
  canvas->Dashes(ToPoints(moment.ahead), palette::kPath, 2.5);
  if (moment.blockage) {
    DrawBlockage(*moment.blockage, canvas);
  }
  if (moment.detour) {
    DrawDetour(*moment.detour, canvas);
  }
}

void DrawRobots(const Moment& moment, Canvas* canvas) {
  if (IsLost(moment)) {
    DrawRobot(moment.true_pose, palette::kTrueRobot, canvas);
  }
  DrawRobot(moment.estimated_pose, palette::kTrail, canvas);
  DrawContacts(moment.events, 8, canvas);
}

void ExplainCosts(Panel* panel) {
  panel->Legend(Key::kSquare, palette::kWall, "obstacle (cost 254)");
  panel->Legend(Key::kSquare, palette::kLaser, "cell that the laser sees");
  panel->Legend(Key::kSquare, palette::kInscribed, "closed to the robot's centre (253)");
  panel->Legend(Key::kSquare, palette::kRing, "ring, cost 127 to 94: no shortcuts");
  panel->Legend(Key::kSquare, palette::kNearby, "cost 93 to 1");
  panel->Legend(Key::kSquare, palette::kUnknown, "unknown (255)");
}

void ExplainRobots(const Moment& moment, Panel* panel) {
  panel->Legend(Key::kRing, palette::kTrail, "robot");
  if (IsLost(moment)) {
    panel->Legend(Key::kRing, palette::kTrueRobot, "where the robot really is");
  }
  panel->Legend(Key::kLine, palette::kTrail, "trajectory");
}

void ExplainPlans(const Moment& moment, Panel* panel) {
  panel->Legend(Key::kDashes, palette::kPath, "path ahead");
  if (moment.blockage) {
    panel->Legend(Key::kLine, palette::kBlocked, "its blocked run");
    panel->Legend(Key::kDot, palette::kBlocked, "side points, 0.2 m from the run's middle");
  }
  if (moment.detour) {
    panel->Legend(Key::kSquare, OutsideCorridor(palette::kFree), "outside the corridor");
    panel->Legend(Key::kLine, palette::kDetour, "detour and its poses");
    panel->Legend(Key::kRing, palette::kGoal, "local goal of the detour");
  }
  if (!moment.boxes.empty()) {
    panel->Legend(Key::kFrame, palette::kBox, "virtual boxes");
  }
}

void TellMoment(const Moment& moment, std::size_t number, Panel* panel) {
  panel->Title(follower::Format("%zu  %s", number, Name(moment.events.back().kind)));
  panel->Text(follower::Format("%.2f s into the drive, %.2f m/s, %.2f m off the path", moment.time, moment.motion.speed,
                               moment.deviation));
  for (const follower::Event& event : moment.events) {
    panel->Gap();
    panel->Heading(Name(event.kind));
    panel->Text(event.text);
  }
  panel->Gap();
  panel->Gap();
}

}  // namespace

cv::Mat DrawMoment(const simulation::DriveRecord& drive, const Story& story, std::size_t index) {
  const Moment& moment = story.moments()[index];
  Canvas canvas(AreaOf(moment.map), kMomentScale);
  DrawCosts(moment, &canvas);
  DrawObstacles(moment.obstacles, moment.time, &canvas);
  for (const follower::VirtualBox& box : moment.boxes) {
    DrawBox(box, &canvas);
  }
  canvas.Line(Trail(drive, moment.sample), palette::kTrail, 2);
  DrawPlans(moment, &canvas);
  DrawRobots(moment, &canvas);
  canvas.ScaleBar();
  Panel panel(kPanelWidth);
  TellMoment(moment, index + 1, &panel);
  ExplainCosts(&panel);
  ExplainObstacles(moment.obstacles, &panel);
  ExplainRobots(moment, &panel);
  ExplainPlans(moment, &panel);
  return WithPanel(canvas, panel);
}

}  // namespace controller_base::demo
