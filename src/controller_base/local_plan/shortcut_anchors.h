#ifndef CONTROLLER_BASE_LOCAL_PLAN_SHORTCUT_ANCHORS_H_
#define CONTROLLER_BASE_LOCAL_PLAN_SHORTCUT_ANCHORS_H_

#include <cstddef>

namespace nav_controller::internal {

// Calls `keep(i)` for the poses of a path of `count` that remain when each remaining one is joined to the farthest
// later pose that it sees: the first pose, the corners between, the last pose, in that order.
//
// `sees(i, j)` says whether the straight line from pose i to pose j is free. From each corner it is asked for the last
// pose, then backwards until it answers true, each pair once; the next pose is taken without asking.
template <typename Sees, typename Keep>
void VisitShortcutAnchors(std::size_t count, Sees&& sees, Keep&& keep) {
  if (count == 0) {
    return;
  }
  const std::size_t last = count - 1;
  for (std::size_t anchor = 0; anchor != last;) {
    keep(anchor);
    std::size_t next = last;
    while (next > anchor + 1 && !sees(anchor, next)) {
      --next;
    }
    anchor = next;
  }
  keep(last);
}

}  // namespace nav_controller::internal

#endif  // CONTROLLER_BASE_LOCAL_PLAN_SHORTCUT_ANCHORS_H_
