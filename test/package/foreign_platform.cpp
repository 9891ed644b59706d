// A robot's library whose classes have the names and the signatures of the bundled platform's and nothing else in
// common with them: an operation of one cannot use an object of the other.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::uint64_t kMark = 0x666f726569676e21;  // at the head of every object of this library

// What each class of this library begins with. Ends the process when the object is another library's.
struct Marked {
  void Check() const {
    if (mark != kMark) {
      std::abort();
    }
  }

  std::uint64_t mark = kMark;
};

}  // namespace

namespace costmap_2d {

class Costmap2D : public Marked {
 public:
  Costmap2D(unsigned int, unsigned int, double, double, double, unsigned char default_value);
  unsigned char getCost(unsigned int, unsigned int) const;
  void setCost(unsigned int, unsigned int, unsigned char cost);
  bool worldToMap(double, double, unsigned int&, unsigned int&) const;
  bool IsInmap(double, double) const;
  bool IsLethalObstacle(unsigned int, unsigned int) const;

 private:
  std::uint8_t cost_;
};

Costmap2D::Costmap2D(unsigned int, unsigned int, double, double, double, unsigned char default_value)
    : cost_(default_value) {}

unsigned char Costmap2D::getCost(unsigned int, unsigned int) const {
  Check();
  return cost_;
}

void Costmap2D::setCost(unsigned int, unsigned int, unsigned char cost) {
  Check();
  cost_ = cost;
}

bool Costmap2D::worldToMap(double, double, unsigned int&, unsigned int&) const {
  Check();
  return false;
}

bool Costmap2D::IsInmap(double, double) const {
  Check();
  return false;
}

bool Costmap2D::IsLethalObstacle(unsigned int, unsigned int) const {
  Check();
  return false;
}

}  // namespace costmap_2d

namespace nav_core::math {

struct Vec2d {
  double x;
  double y;
};

class Box2d : public Marked {
 public:
  Box2d(const Vec2d&, double, double, double);
  bool IsPointIn(const Vec2d&) const;
};

Box2d::Box2d(const Vec2d&, double, double, double) {}

bool Box2d::IsPointIn(const Vec2d&) const {
  Check();
  return true;
}

}  // namespace nav_core::math

class BlockAllocator : public Marked {
 public:
  ~BlockAllocator();
  void* Allocate(std::size_t);
};

BlockAllocator::~BlockAllocator() { Check(); }

void* BlockAllocator::Allocate(std::size_t) { std::abort(); }

class AStar : public Marked {
 public:
  struct Vec2 {
    std::uint16_t x;
    std::uint16_t y;
  };
  struct Params : Marked {};

  explicit AStar(BlockAllocator*) {}
  std::vector<Vec2> Find(const Params& params);
};

std::vector<AStar::Vec2> AStar::Find(const Params& params) {
  Check();
  params.Check();
  return std::vector<Vec2>(7);
}

// What the robot does with them.
extern "C" {

int CostOfForeignMap() {
  costmap_2d::Costmap2D map(1, 1, 1.0, 0.0, 0.0, 0);
  map.setCost(0, 0, 42);
  return map.getCost(0, 0);
}

int LengthOfForeignPath() {
  BlockAllocator allocator;
  return static_cast<int>(AStar(&allocator).Find(AStar::Params()).size());
}

int IsFarPointInForeignBox() { return nav_core::math::Box2d({0.0, 0.0}, 0.0, 0.0, 0.0).IsPointIn({1e9, 1e9}) ? 1 : 0; }
}
