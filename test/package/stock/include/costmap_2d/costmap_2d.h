#ifndef COSTMAP_2D_COSTMAP_2D_H_
#define COSTMAP_2D_COSTMAP_2D_H_

#include <vector>

namespace costmap_2d {

// Unlike the bundled map it is polymorphic, so its members lie elsewhere.
class Costmap2D {
 public:
  Costmap2D(unsigned int cells_size_x, unsigned int cells_size_y, double resolution, double origin_x, double origin_y,
            unsigned char default_value = 0);
  virtual ~Costmap2D();

  void setCost(unsigned int mx, unsigned int my, unsigned char cost);
  const unsigned char* getCharMap() const { return costs_.data(); }

 private:
  unsigned int size_x_;
  unsigned int size_y_;
  double resolution_;
  double origin_x_;
  double origin_y_;
  std::vector<unsigned char> costs_;
};

}  // namespace costmap_2d

#endif  // COSTMAP_2D_COSTMAP_2D_H_
