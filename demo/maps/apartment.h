#ifndef CONTROLLER_BASE_DEMO_MAPS_APARTMENT_H_
#define CONTROLLER_BASE_DEMO_MAPS_APARTMENT_H_

#include <opencv2/core.hpp>

namespace controller_base::demo {

// The picture of the bundled map, as it lies in maps/apartment.png: grey levels of the map_server format, 0.05 m a
// pixel, the top row is the largest y. controller_base_demo_draw_apartment writes it.
cv::Mat DrawApartment();

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_MAPS_APARTMENT_H_
