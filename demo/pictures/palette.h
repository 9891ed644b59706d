#ifndef CONTROLLER_BASE_DEMO_PICTURES_PALETTE_H_
#define CONTROLLER_BASE_DEMO_PICTURES_PALETTE_H_

#include <opencv2/core.hpp>

namespace controller_base::demo::palette {

// Blue, green, red.
const cv::Scalar kWall(70, 70, 70);
const cv::Scalar kUnknown(205, 210, 205);
const cv::Scalar kFree(255, 255, 255);
const cv::Scalar kOffMap(240, 228, 218);
const cv::Scalar kPath(200, 120, 40);
const cv::Scalar kTrail(60, 140, 40);
const cv::Scalar kDetour(170, 40, 190);
const cv::Scalar kContact(30, 30, 220);
const cv::Scalar kBox(60, 60, 235);
const cv::Scalar kObstacle(40, 150, 245);
const cv::Scalar kSill(190, 130, 150);
const cv::Scalar kGoal(30, 30, 30);
const cv::Scalar kNumber(90, 60, 30);
const cv::Scalar kInscribed(150, 150, 225);
const cv::Scalar kRing(130, 200, 250);
const cv::Scalar kNearby(190, 240, 255);
const cv::Scalar kTrueRobot(90, 90, 90);
const cv::Scalar kBlocked(30, 30, 220);
const cv::Scalar kLaser(140, 60, 20);

}  // namespace controller_base::demo::palette

#endif  // CONTROLLER_BASE_DEMO_PICTURES_PALETTE_H_
