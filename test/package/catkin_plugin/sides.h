#ifndef CONTROLLER_BASE_CATKIN_PLUGIN_SIDES_H_
#define CONTROLLER_BASE_CATKIN_PLUGIN_SIDES_H_

// A map as both sides know it.
struct MapView {
  const unsigned char* costs;  // row by row, the lowest first
  unsigned int size_x;         // cells
  unsigned int size_y;
  double resolution;  // metres
  double origin_x;
  double origin_y;
};

// Includes the robot's headers: asks the library about a map of the robot's, with a wall across it or without.
bool IsRobotBlocked(bool with_wall);

// Includes the library's headers: whether the metre ahead of (0, 0) is blocked.
bool IsBlocked(const MapView& view);

#endif  // CONTROLLER_BASE_CATKIN_PLUGIN_SIDES_H_
