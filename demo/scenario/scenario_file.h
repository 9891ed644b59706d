#ifndef CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_FILE_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_FILE_H_

#include <string>

#include "demo/scenario/scenario.h"
#include "demo/scenario/yaml_section.h"

namespace controller_base::demo {

// Reads a scenario as docs/scenarios.md describes it. File names in it are relative to its own folder. Throws
// ScenarioError.
Scenario LoadScenario(const std::string& file);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_SCENARIO_FILE_H_
