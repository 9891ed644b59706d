#include "demo/pictures/picture_parts.h"

#include <algorithm>
#include <cmath>

#include "demo/judge/verdict.h"
#include "demo/pictures/palette.h"
#include "follower/format.h"
#include "follower/inflation.h"
#include "nav_core/math/box2d.h"
#include "simulation/obstacle_outline.h"

namespace controller_base::demo {

using nav_core::math::Vec2d;

namespace {

bool IsContact(const follower::Event& event) { return event.kind == follower::EventKind::kContact; }

}  // namespace

Vec2d ToVec2d(const geometry_msgs::Point& point) { return {point.x, point.y}; }

Canvas::Points ToPoints(const nav_msgs::Path& path) {
  Canvas::Points points;
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    points.push_back(ToVec2d(pose.pose.position));
  }
  return points;
}

Canvas::Points Trail(const simulation::DriveRecord& drive, std::size_t last) {
  Canvas::Points trail;
  for (std::size_t i = 0; i <= last && i < drive.trajectory.size(); ++i) {
    trail.emplace_back(drive.trajectory[i].pose.x, drive.trajectory[i].pose.y);
  }
  return trail;
}

void DrawRobot(const follower::Pose2d& robot, const cv::Scalar& color, Canvas* canvas) {
  const Vec2d nose(robot.x + follower::kRobotRadius * std::cos(robot.yaw),
                   robot.y + follower::kRobotRadius * std::sin(robot.yaw));
  canvas->Circle({robot.x, robot.y}, follower::kRobotRadius, color, 2);
  canvas->Line({{robot.x, robot.y}, nose}, color, 2);
}

void DrawBox(const follower::VirtualBox& box, Canvas* canvas) {
  const nav_core::math::Box2d outline(ToVec2d(box.center), box.heading, 0.2, 0.1);
  canvas->Polygon(outline.GetAllCorners(), palette::kBox, 1);
}

void DrawContacts(const std::vector<follower::Event>& events, double pixels, Canvas* canvas) {
  for (const follower::Event& event : events) {
    if (IsContact(event)) {
      canvas->Cross(ToVec2d(event.position), pixels, palette::kContact, 2.5);
    }
  }
}

const cv::Scalar& ObstacleColor(const simulation::Obstacle& obstacle) {
  return obstacle.low ? palette::kSill : palette::kObstacle;
}

void DrawObstacles(const std::vector<simulation::Obstacle>& obstacles, double time, Canvas* canvas) {
  for (const simulation::Obstacle& obstacle : obstacles) {
    canvas->FillPolygon(OutlineAt(obstacle, time), ObstacleColor(obstacle));
  }
}

void ExplainObstacles(const std::vector<simulation::Obstacle>& obstacles, Panel* panel) {
  const auto has = [&](bool low) {
    return std::any_of(obstacles.begin(), obstacles.end(),
                       [&](const simulation::Obstacle& obstacle) { return obstacle.low == low; });
  };
  if (has(false)) {
    panel->Legend(Panel::Key::kSquare, palette::kObstacle, "not on the map, seen by the laser");
  }
  if (has(true)) {
    panel->Legend(Panel::Key::kSquare, palette::kSill, "not on the map, too low for the laser");
  }
}

const cv::Scalar& NumberColor(const Moment& moment) {
  return std::any_of(moment.events.begin(), moment.events.end(), IsContact) ? palette::kContact : palette::kNumber;
}

std::string OutcomeText(const simulation::DriveRecord& drive) {
  return Judge(drive).outcome == DriveOutcome::kReached ? "Goal reached" : "Goal not reached";
}

std::string Summary(const simulation::DriveRecord& drive) {
  return follower::Format("%.1f m driven in %.1f s, detours: %zu, contacts: %d", drive.driven,
                          drive.trajectory.back().time, drive.detours.size(), drive.contacts);
}

cv::Mat WithPanel(const Canvas& canvas, const Panel& panel) {
  const cv::Mat drawing = canvas.Finish();
  const cv::Mat text = panel.Finish(std::max(drawing.rows, panel.Height()));
  cv::Mat joined(text.rows, drawing.cols + text.cols, CV_8UC3, cv::Scalar(255, 255, 255));
  drawing.copyTo(joined(cv::Rect(cv::Point(), drawing.size())));
  text.copyTo(joined.colRange(drawing.cols, joined.cols));
  return joined;
}

}  // namespace controller_base::demo
