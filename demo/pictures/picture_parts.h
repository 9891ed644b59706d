#ifndef CONTROLLER_BASE_DEMO_PICTURES_PICTURE_PARTS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_PICTURE_PARTS_H_

#include <nav_msgs/Path.h>

#include <cstddef>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "demo/pictures/canvas.h"
#include "demo/pictures/panel.h"
#include "demo/pictures/story.h"
#include "follower/geometry.h"
#include "nav_core/math/vec2d.h"
#include "simulation/drive_record.h"
#include "simulation/world.h"

namespace controller_base::demo {

// What several pictures of a drive show in the same way.

constexpr int kPanelWidth = 460;  // pixels

nav_core::math::Vec2d ToVec2d(const geometry_msgs::Point& point);
Canvas::Points ToPoints(const nav_msgs::Path& path);
// The way driven up to the sample of index `last`.
Canvas::Points Trail(const simulation::DriveRecord& drive, std::size_t last);

void DrawRobot(const follower::Pose2d& robot, const cv::Scalar& color, Canvas* canvas);
void DrawBox(const follower::VirtualBox& box, Canvas* canvas);
// A cross for every contact among the events.
void DrawContacts(const std::vector<follower::Event>& events, double pixels, Canvas* canvas);
// The colour of an obstacle that the map does not show.
const cv::Scalar& ObstacleColor(const simulation::Obstacle& obstacle);
// Those that are there `time` seconds into the drive, and what their colours mean.
void DrawObstacles(const std::vector<simulation::Obstacle>& obstacles, double time, Canvas* canvas);
void ExplainObstacles(const std::vector<simulation::Obstacle>& obstacles, Panel* panel);

// The colour of a moment's number.
const cv::Scalar& NumberColor(const Moment& moment);

// "Goal reached", or not.
std::string OutcomeText(const simulation::DriveRecord& drive);
// How far it was, how long it took, and what happened, in a line.
std::string Summary(const simulation::DriveRecord& drive);

// The finished drawing with its panel to the right (CV_8UC3).
cv::Mat WithPanel(const Canvas& canvas, const Panel& panel);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_PICTURE_PARTS_H_
