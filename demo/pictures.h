#ifndef CONTROLLER_BASE_DEMO_PICTURES_H_
#define CONTROLLER_BASE_DEMO_PICTURES_H_

#include <opencv2/core.hpp>

#include "costmap_2d/costmap_2d.h"
#include "drive.h"
#include "scenario.h"

namespace controller_base_demo {

// The whole drive on its map: path, way driven, detours, contacts, boxes and what stood in the way, with numbered
// events, legend and scale bar.
cv::Mat DrawDrive(const costmap_2d::Costmap2D& map, const Scenario& scenario, const DriveRecord& drive);

// The local map at the moment of a detour: costs, corridor, path with its blocked run, boxes, and the detour.
// `number` counts the drive's detours from 1.
cv::Mat DrawDetour(const DetourReport& detour, int number);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_H_
