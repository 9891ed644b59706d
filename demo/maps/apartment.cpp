#include "demo/maps/apartment.h"

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace controller_base::demo {
namespace {

constexpr double kResolution = 0.05;   // m per pixel
constexpr double kLength = 14.0;       // m, outer walls included; the rooms' coordinates begin at the lower left corner
constexpr double kDepth = 10.0;        // m
constexpr double kSurroundings = 0.5;  // m of unknown cells around the outer walls

constexpr int kFree = 254;
constexpr int kOccupied = 0;
constexpr int kUnknown = 205;

// From the lower left to the upper right corner, metres.
struct Rectangle {
  double x0, y0, x1, y1;
};

struct Disc {
  double x, y, radius;
};

const std::vector<Rectangle> kWalls = {
    {0.0, 0.0, 14.0, 0.2},  {0.0, 9.8, 14.0, 10.0}, {0.0, 0.0, 0.2, 10.0}, {13.8, 0.0, 14.0, 10.0},  // outside
    {0.2, 4.2, 9.0, 4.35},                                                                           // hall, south
    {0.2, 6.0, 10.0, 6.15},                                                                          // hall, north
    {4.4, 6.0, 4.55, 9.8},                                                                           // bedroom | bath
    {6.7, 6.0, 6.85, 9.8},                                                                           // bath | study
    {9.85, 6.0, 10.0, 9.8},                                                                          // study | living
    {4.2, 0.2, 4.35, 4.35},                                                                          // kitchen | living
};

const std::vector<Rectangle> kDoors = {
    {3.1, 6.0, 4.0, 6.15},  // bedroom
    {5.2, 6.0, 6.0, 6.15},  // bath
    {7.2, 6.0, 8.1, 6.15},  // study
    {2.7, 4.2, 3.6, 4.35},  // kitchen
};

const std::vector<Rectangle> kFurniture = {
    {0.2, 8.0, 2.2, 9.6},     // double bed
    {0.2, 7.4, 0.65, 7.85},   // bedside table
    {3.8, 7.4, 4.4, 9.4},     // wardrobe
    {4.55, 9.05, 6.2, 9.8},   // bath tub
    {6.25, 7.9, 6.7, 8.6},    // wash basin
    {4.55, 7.3, 5.1, 7.7},    // toilet
    {6.85, 9.1, 8.9, 9.8},    // desk
    {9.45, 6.6, 9.85, 8.6},   // book shelf
    {0.2, 0.2, 3.4, 0.8},     // kitchen counter
    {0.2, 0.8, 0.8, 2.6},     // kitchen counter, the short leg
    {3.5, 0.2, 4.2, 0.9},     // refrigerator
    {13.0, 5.4, 13.8, 8.0},   // sofa
    {11.5, 9.0, 13.6, 9.8},   // sofa, the long side
    {11.4, 6.4, 12.2, 7.6},   // coffee table
    {10.0, 7.2, 10.35, 9.2},  // sideboard
    {12.9, 0.2, 13.8, 0.65},  // low shelf
    {8.2, 0.2, 10.0, 0.6},    // piano
    {0.2, 5.65, 1.4, 6.0},    // coats
};

// Legs of the dining table, of its chairs and of the kitchen stools; a plant.
const std::vector<Disc> kLegs = {
    {6.2, 1.3, 0.06}, {7.6, 1.3, 0.06},  {6.2, 2.2, 0.06},  {7.6, 2.2, 0.06}, {13.35, 8.5, 0.22},
    {2.0, 2.1, 0.16}, {8.7, 0.95, 0.17}, {13.3, 2.4, 0.28}, {8.5, 8.7, 0.2},
};

class Drawing {
 public:
  Drawing() : image_(Pixels(kDepth + 2 * kSurroundings), Pixels(kLength + 2 * kSurroundings), CV_8UC1, kUnknown) {}

  void Fill(const Rectangle& area, int grey) {
    const cv::Point lower_left(Column(area.x0), Row(area.y0) - 1);
    const cv::Point upper_right(Column(area.x1) - 1, Row(area.y1));
    cv::rectangle(image_, lower_left, upper_right, cv::Scalar(grey), cv::FILLED);
  }

  void Fill(const Disc& area, int grey) {
    cv::circle(image_, {Column(area.x), Row(area.y)}, Pixels(area.radius), cv::Scalar(grey), cv::FILLED);
  }

  const cv::Mat& image() const { return image_; }

 private:
  static int Pixels(double metres) { return static_cast<int>(std::lround(metres / kResolution)); }
  static int Column(double x) { return Pixels(x + kSurroundings); }
  static int Row(double y) { return Pixels(kDepth + kSurroundings - y); }

  cv::Mat image_;
};

}  // namespace

cv::Mat DrawApartment() {
  Drawing drawing;
  drawing.Fill(Rectangle{0.0, 0.0, kLength, kDepth}, kFree);
  for (const Rectangle& wall : kWalls) {
    drawing.Fill(wall, kOccupied);
  }
  for (const Rectangle& door : kDoors) {
    drawing.Fill(door, kFree);
  }
  for (const Rectangle& piece : kFurniture) {
    drawing.Fill(piece, kOccupied);
  }
  for (const Disc& leg : kLegs) {
    drawing.Fill(leg, kOccupied);
  }
  return drawing.image();
}

}  // namespace controller_base::demo
