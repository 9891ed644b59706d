#ifndef CONTROLLER_BASE_SIMULATION_HARSH_WORLD_H_
#define CONTROLLER_BASE_SIMULATION_HARSH_WORLD_H_

#include "simulation/drive_setup.h"

namespace controller_base::simulation {

// How unkind the world of a drive is.
enum class Conditions {
  kKind,   // as DriveSetup says by itself
  kHarsh,  // as MakeHarsh makes it
};

// Makes the drive one through a world that is as unkind as a real one: obstacles stand off the grid, the laser is
// noisy, the odometry drifts and is corrected in jumps, commands arrive late, and a press of the bumper lasts.
void MakeHarsh(DriveSetup* setup);

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_HARSH_WORLD_H_
