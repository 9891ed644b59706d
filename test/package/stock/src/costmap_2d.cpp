#include <costmap_2d/costmap_2d.h>

namespace costmap_2d {

Costmap2D::Costmap2D(unsigned int cells_size_x, unsigned int cells_size_y, double resolution, double origin_x,
                     double origin_y, unsigned char default_value)
    : size_x_(cells_size_x),
      size_y_(cells_size_y),
      resolution_(resolution),
      origin_x_(origin_x),
      origin_y_(origin_y),
      costs_(cells_size_x * cells_size_y, default_value) {}

Costmap2D::~Costmap2D() = default;

void Costmap2D::setCost(unsigned int mx, unsigned int my, unsigned char cost) { costs_[my * size_x_ + mx] = cost; }

}  // namespace costmap_2d
