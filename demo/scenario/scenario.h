#ifndef CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_

#include <string>
#include <vector>

#include "demo/judge/expectation.h"
#include "simulation/drive_setup.h"

namespace controller_base::demo {

// Where the file names what only the map can show to be wrong: "FILE:LINE: 'KEY'". Empty where no file does.
struct ScenarioPlaces {
  std::string map;
  std::string start;
  std::string goal;
  std::vector<std::string> way_points;  // as DriveSetup::points
};

// What a scenario file says.
struct Scenario {
  simulation::DriveSetup setup;
  Expectation expectation;
  ScenarioPlaces places = {};
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_H_
