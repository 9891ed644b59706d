#ifndef CONTROLLER_BASE_DEMO_APARTMENT_H_
#define CONTROLLER_BASE_DEMO_APARTMENT_H_

#include <opencv2/core.hpp>
#include <string>

#include "scenario.h"

namespace controller_base_demo {

// The picture of the bundled map, as it lies in maps/apartment.png: grey levels of the map_server format, 0.05 m a
// pixel, the top row is the largest y. controller_base_demo_draw_apartment writes it.
cv::Mat DrawApartment();

// The drive through the bundled apartment in which every part of the library has its say. `maps_folder` holds
// apartment.yaml.
Scenario ApartmentScenario(const std::string& maps_folder);

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_APARTMENT_H_
