#ifndef CONTROLLER_BASE_ROBOT_TURNED_GRID_H_
#define CONTROLLER_BASE_ROBOT_TURNED_GRID_H_

#include <geometry_msgs/Pose.h>

#include <cstdint>

#include "robot/grid.h"

namespace controller_base::robot {

// The cells of a grid in another frame; `frame` is where the origin of the grid's own frame lies in it. A grid that is
// only moved keeps its cells. One that is turned is sampled at the centres of cells that lie along the other frame's
// axes, as many, around the same middle; those beyond the grid's corners are `outside`. None of the
// source's cells with the byte `kept` is lost in between.
GridBytes InOtherFrame(const GridBytes& source, const geometry_msgs::Pose& frame, std::uint8_t outside,
                       std::uint8_t kept);

// A turn of less moves no cell of a local map by as much as a quarter of a cell.
constexpr double kNoTurn = 0.003;  // rad

}  // namespace controller_base::robot

#endif  // CONTROLLER_BASE_ROBOT_TURNED_GRID_H_
