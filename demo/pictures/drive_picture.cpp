// The picture of a whole drive.

#include <algorithm>
#include <cmath>
#include <vector>

#include "costmap_2d/cost_values.h"
#include "demo/judge/verdict.h"
#include "demo/pictures/canvas.h"
#include "demo/pictures/map_cells.h"
#include "demo/pictures/palette.h"
#include "demo/pictures/panel.h"
#include "demo/pictures/picture_parts.h"
#include "demo/pictures/pictures.h"
#include "follower/format.h"
#include "simulation/obstacle_outline.h"

namespace controller_base::demo {
namespace {

using Key = Panel::Key;

constexpr double kLargestSide = 1100;  // pixels of the larger side
constexpr double kUsualScale = 90;     // pixels per metre
constexpr double kSmallestSide = 600;  // pixels of the larger side of a small map
constexpr double kSlimmest = 0.125;    // the smaller side, of the larger one
constexpr double kSurroundings = 1.5;  // m around the drive, on a map that is much larger
constexpr double kMostOfTheMap = 0.4;  // a drive that needs this share of the map shows all of it

// Grows to hold points.
class Bounds {
 public:
  explicit Bounds(const Area& whole) : whole_(whole), area_{whole.max_x, whole.max_y, whole.min_x, whole.min_y} {}

  // The point, or the map's nearest one, with its surroundings as far as the map goes.
  void Include(double x, double y) {
    const double near_x = std::clamp(x, whole_.min_x, whole_.max_x);
    const double near_y = std::clamp(y, whole_.min_y, whole_.max_y);
    area_ = {std::max(whole_.min_x, std::min(area_.min_x, near_x - kSurroundings)),
             std::max(whole_.min_y, std::min(area_.min_y, near_y - kSurroundings)),
             std::min(whole_.max_x, std::max(area_.max_x, near_x + kSurroundings)),
             std::min(whole_.max_y, std::max(area_.max_y, near_y + kSurroundings))};
  }
  const Area& area() const { return area_; }

 private:
  Area whole_;
  Area area_;
};

// The part of the map that the drive needs, or all of it.
Area DriveArea(const Area& whole, const simulation::DriveRecord& drive, const Story& story) {
  Bounds bounds(whole);
  for (const nav_msgs::Path& path : story.paths()) {
    for (const geometry_msgs::PoseStamped& pose : path.poses) {
      bounds.Include(pose.pose.position.x, pose.pose.position.y);
    }
  }
  for (const simulation::TrajectorySample& sample : drive.trajectory) {
    bounds.Include(sample.pose.x, sample.pose.y);
  }
  const Area& area = bounds.area();
  const bool is_most = area.Width() * area.Height() > kMostOfTheMap * whole.Width() * whole.Height();
  return is_most ? whole : area;
}

// With a part of what is off the map where the area is a mere stripe.
Area Widened(const Area& area) {
  const double least = kSlimmest * std::max(area.Width(), area.Height());
  const double x = std::max(0.0, 0.5 * (least - area.Width()));
  const double y = std::max(0.0, 0.5 * (least - area.Height()));
  return {area.min_x - x, area.min_y - y, area.max_x + x, area.max_y + y};
}

double PixelsPerMetre(const Area& area) {
  const double side = std::max(area.Width(), area.Height());
  return std::min(kLargestSide / side, std::max(kUsualScale, kSmallestSide / side));
}

cv::Scalar ColorOf(unsigned char cost) {
  return cost == costmap_2d::LETHAL_OBSTACLE  ? palette::kWall
         : cost == costmap_2d::NO_INFORMATION ? palette::kUnknown
                                              : palette::kFree;
}

// The map in blocks of a pixel or more, and what its colours mean.
void DrawMap(const costmap_2d::Costmap2D& map, const Area& area, double scale, Canvas* canvas, Panel* panel) {
  const int side = std::max(1, static_cast<int>(std::ceil(1.0 / (scale * map.getResolution()))));
  const MapBlocks blocks = BlocksOf(map, area, side);
  canvas->FillPolygon(
      {{area.min_x, area.min_y}, {area.max_x, area.min_y}, {area.max_x, area.max_y}, {area.min_x, area.max_y}},
      palette::kOffMap);
  const auto color_of = [&](int column, int row) { return ColorOf(blocks.costs.at<unsigned char>(row, column)); };
  canvas->Cells(Painted(blocks.costs.size(), color_of), blocks.area);
  canvas->Grid();
  panel->Legend(Key::kSquare, palette::kWall, "wall or furniture on the map");
  if (cv::countNonZero(blocks.costs == costmap_2d::NO_INFORMATION) > 0) {
    panel->Legend(Key::kSquare, palette::kUnknown, "unknown to the map");
  }
}

// The outlines of those that vanished before `time`, as they stood last.
void DrawVanished(const std::vector<simulation::Obstacle>& obstacles, double time, Canvas* canvas) {
  for (const simulation::Obstacle& obstacle : obstacles) {
    if (obstacle.vanishes_at <= time) {
      canvas->Polygon(OutlineAt(obstacle, std::nextafter(obstacle.vanishes_at, 0.0)), ObstacleColor(obstacle), 1.5);
    }
  }
}

// What is in the world, and what the robot holds for it.
void DrawWorld(const simulation::DriveRecord& drive, const Story& story, Canvas* canvas) {
  const double end = drive.trajectory.back().time;
  for (const follower::VirtualBox& box : drive.boxes) {
    DrawBox(box, canvas);
  }
  DrawObstacles(story.obstacles(), end, canvas);
  DrawVanished(story.obstacles(), end, canvas);
}

void DrawTrajectory(const simulation::DriveRecord& drive, const Story& story, Canvas* canvas) {
  for (const follower::DetourReport& detour : drive.detours) {
    canvas->Line(ToPoints(detour.detour), palette::kDetour, 2);
  }
  const Canvas::Points trail = Trail(drive, drive.trajectory.size() - 1);
  canvas->Line(trail, palette::kTrail, 2);
  canvas->Dot(trail.front(), 6, palette::kTrail);
  for (const nav_msgs::Path& path : story.paths()) {
    canvas->Circle(ToVec2d(path.poses.back().pose.position), 0.12, palette::kGoal, 2);
  }
  DrawRobot(drive.trajectory.back().pose, palette::kTrail, canvas);
  DrawContacts(drive.events, 6, canvas);
}

void ExplainWorld(const simulation::DriveRecord& drive, const Story& story, Panel* panel) {
  ExplainObstacles(story.obstacles(), panel);
  if (std::any_of(story.obstacles().begin(), story.obstacles().end(), [&](const simulation::Obstacle& obstacle) {
        return obstacle.vanishes_at <= drive.trajectory.back().time;
      })) {
    panel->Legend(Key::kFrame, palette::kObstacle, "one that vanished");
  }
}

void ExplainTrajectory(const simulation::DriveRecord& drive, Panel* panel) {
  panel->Legend(Key::kDashes, palette::kPath, "planned path");
  panel->Legend(Key::kLine, palette::kTrail, "trajectory, robot at its end");
  if (!drive.detours.empty()) {
    panel->Legend(Key::kLine, palette::kDetour, "detour from the library");
  }
  if (drive.contacts > 0) {
    panel->Legend(Key::kCross, palette::kContact, "bumper contact");
  }
  if (!drive.boxes.empty()) {
    panel->Legend(Key::kFrame, palette::kBox, "virtual boxes");
  }
  panel->Legend(Key::kDot, palette::kTrail, "start");
  panel->Legend(Key::kRing, palette::kGoal, "goal");
}

// The last event of a moment says what came of those before it.
void DrawMomentNumbers(const Story& story, Canvas* canvas, Panel* panel) {
  int number = 0;
  for (const Moment& moment : story.moments()) {
    ++number;
    const follower::Event& event = moment.events.back();
    canvas->Number({moment.true_pose.x, moment.true_pose.y}, number, NumberColor(moment));
    panel->NumberedText(number, NumberColor(moment),
                        follower::Format("%.1f s  %s: ", moment.time, Name(event.kind)) + event.text);
  }
  if (story.left_out() > 0) {
    panel->Text(follower::Format("and %zu more events without pictures", story.left_out()));
  }
}

}  // namespace

cv::Mat DrawDrive(const costmap_2d::Costmap2D& map, const simulation::DriveRecord& drive, const Story& story) {
  const Area driven = DriveArea(AreaOf(map), drive, story);
  const Area area = Widened(driven);
  const double scale = PixelsPerMetre(area);
  Canvas canvas(area, scale);
  Panel panel(kPanelWidth);
  panel.Title(OutcomeText(drive));
  panel.Text(Judge(drive).text);
  panel.Text(Summary(drive));
  panel.Gap();
  DrawMap(map, area, scale, &canvas, &panel);
  if (area.min_x < driven.min_x || area.min_y < driven.min_y) {
    panel.Legend(Key::kSquare, palette::kOffMap, "off the map");
  }
  for (const nav_msgs::Path& path : story.paths()) {
    canvas.Dashes(ToPoints(path), palette::kPath, 2.5);
  }
  DrawWorld(drive, story, &canvas);
  ExplainWorld(drive, story, &panel);
  DrawTrajectory(drive, story, &canvas);
  ExplainTrajectory(drive, &panel);
  canvas.ScaleBar();
  panel.Gap();
  DrawMomentNumbers(story, &canvas, &panel);
  return WithPanel(canvas, panel);
}

}  // namespace controller_base::demo
