#ifndef CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_

#include "demo/judge/expectation.h"
#include "simulation/drive_setup.h"

namespace controller_base::demo {

// What a scenario file says.
struct Scenario {
  simulation::DriveSetup setup;
  Expectation expectation;
  std::string map_place = {};  // "FILE:LINE", where the file names the map; empty: no file does
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_
