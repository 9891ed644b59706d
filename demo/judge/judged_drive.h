#ifndef CONTROLLER_BASE_DEMO_JUDGE_JUDGED_DRIVE_H_
#define CONTROLLER_BASE_DEMO_JUDGE_JUDGED_DRIVE_H_

#include <nav_msgs/Path.h>

#include "costmap_2d/costmap_2d.h"
#include "demo/judge/run_result.h"
#include "simulation/drive_setup.h"

namespace controller_base::demo {

// Drives along `path` through the setup's world and judges the drive by the true world. Needs what RunDrive needs.
RunResult DriveAndJudge(const costmap_2d::Costmap2D& map, const simulation::DriveSetup& setup,
                        const nav_msgs::Path& path);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_JUDGE_JUDGED_DRIVE_H_
