#ifndef CONTROLLER_BASE_DEMO_PICTURES_PICTURES_H_
#define CONTROLLER_BASE_DEMO_PICTURES_PICTURES_H_

#include <opencv2/core.hpp>

#include "costmap_2d/costmap_2d.h"
#include "demo/pictures/story.h"
#include "simulation/drive_record.h"

namespace controller_base::demo {

// A drive in pictures, each with a title, a legend, and axes with coordinates. Moments count from 1 in all of them.

// The whole drive on its map: paths, way driven, detours, contacts, boxes and what stood in the way, with a number and
// a line for each moment.
cv::Mat DrawDrive(const costmap_2d::Costmap2D& map, const simulation::DriveRecord& drive, const Story& story);

// The story's moment of index `moment` on its local map: costs, corridor, path ahead, blocked run, detour, boxes, and
// what was told.
cv::Mat DrawMoment(const simulation::DriveRecord& drive, const Story& story, std::size_t moment);

// Distance from the path, progress against the budget, and speed over time, with the moments' numbers.
cv::Mat DrawPlots(const simulation::DriveRecord& drive, const Story& story);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_PICTURES_H_
