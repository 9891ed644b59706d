#include <cstdio>

#include "sides.h"

int main() {
  std::printf("with a wall %s, without %s\n", IsRobotBlocked(true) ? "blocked" : "free",
              IsRobotBlocked(false) ? "blocked" : "free");
}
