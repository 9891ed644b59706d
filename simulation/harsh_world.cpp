#include "simulation/harsh_world.h"

#include "follower/geometry.h"

namespace controller_base::simulation {
namespace {

constexpr double kLaserNoise = 0.01;                      // m
constexpr double kCommandDelay = 0.1;                     // s
constexpr double kScaleError = 0.02;                      // of the distance
constexpr double kTurnDrift = 1.0 * follower::kPi / 180;  // rad for each metre
constexpr double kCorrectionPeriod = 1.0;                 // s

}  // namespace

void MakeHarsh(DriveSetup* setup) {
  setup->shapes = Shapes::kTrue;
  setup->faults.laser_noise = kLaserNoise;
  setup->faults.lasting_press = true;
  setup->faults.command_delay = kCommandDelay;
  setup->faults.drift = {kScaleError, kTurnDrift, kCorrectionPeriod};
}

}  // namespace controller_base::simulation
