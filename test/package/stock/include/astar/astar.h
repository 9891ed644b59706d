#ifndef ASTAR_ASTAR_H_
#define ASTAR_ASTAR_H_

class AStar {
 public:
  struct Vec2 {
    int x;
    int y;
  };
};

#endif  // ASTAR_ASTAR_H_
