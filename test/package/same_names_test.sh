#!/usr/bin/env bash
# Compiles users' files where a robot's own headers of the bundled platform's names lie on the include path as well. In every
# order of the path and of the includes, a file that includes the library alone gets the library's classes, a file that includes
# the robot's headers alone gets the robot's or is told what to do, and no file gets both. The robot is once a stand-in, once the
# stock navigation stack of ../shared/third_party, where it is at hand.
source "$(dirname "$0")/package_test.sh"

readonly files=$here/same_names
readonly plain_names=(astar/astar.h astar/block_allocator.h costmap_2d/cost_values.h costmap_2d/costmap_2d.h
  nav_core/math/box2d.h nav_core/math/vec2d.h)
readonly told="Include <controller_base/platform/"  # what the header of a plain name says where another lies behind it
readonly told_late="is included after another costmap_2d"
readonly compiler_tells="ambiguous"             # what the compiler says of two classes of one name

# compile FILE FLAG...: stops at the first error.
compile() {
  local prepared=()
  [[ $1 != "$files"/* ]] || prepared=(-include "$work/dependencies.h")
  "$CXX" -std=c++17 -fsyntax-only -Wfatal-errors "${prepared[@]}" "${@:2}" "${dependencies[@]}" "$1" 2>"$work/errors"
}

accepts() {
  compile "$@" || { cat "$work/errors"; fail "does not compile: $*"; }
}

# refuses TEXT FILE FLAG...: the first error has TEXT.
refuses() {
  ! compile "${@:2}" || fail "compiles although it must not: ${*:2}"
  grep -F "error: " "$work/errors" >"$work/first_error" || true
  [[ $(wc -l <"$work/first_error") -eq 1 ]] || { cat "$work/errors"; fail "not one error: ${*:2}"; }
  expect_text "$1" "$work/first_error"
}

# includes_alone NAME: a file that includes it and nothing else.
includes_alone() {
  echo "#include <$1>" >"$work/alone.cpp"
  echo "$work/alone.cpp"
}

# includes_both FIRST THEN: a file that does so and uses what both declare.
includes_both() {
  printf '#include <%s>\n#include <%s>\n' "$1" "$2" >"$work/both.cpp"
  case $1$2 in
    *astar.h*) echo 'AStar::Vec2 cell;' ;;
    *block_allocator.h*) echo 'BlockAllocator* allocator;' ;;
    *cost_values.h*) echo 'int cost = costmap_2d::FREE_SPACE;' ;;
    *costmap_2d.h*) echo 'costmap_2d::Costmap2D* map;' ;;
    *box2d.h*) echo 'nav_core::math::Box2d* box;' ;;
    *vec2d.h*) echo 'nav_core::math::Vec2d point;' ;;
  esac >>"$work/both.cpp"
  echo "$work/both.cpp"
}

# never_mixed TOLD PATH...: what holds in every order of the include path. TOLD is the first error of a file that includes the
# library first and the robot's map then.
never_mixed() {
  accepts "$files/library_only.cpp" "${@:2}"
  refuses "$1" "$files/library_then_robot.cpp" "${@:2}"
  local name
  for name in "${robots_names[@]}"; do
    local own=controller_base/platform/${name##*/}
    ! compile "$(includes_both "$own" "$name")" "${@:2}" || fail "both $own and $name in one file with ${*:2}"
    ! compile "$(includes_both "$name" "$own")" "${@:2}" || fail "both $name and $own in one file with ${*:2}"
  done
}

# check_robot_first PATH...
check_robot_first() {
  never_mixed "$compiler_tells" "$@"
  refuses "$told_late" "$files/robot_then_library.cpp" "$@"
  accepts "$files/robot_only.cpp" "$@"
  accepts "$files/robot_and_follower.cpp" "$@"
  accepts "$files/follower_and_robot.cpp" "$@"
  local name
  for name in "${robots_names[@]}"; do
    accepts "$(includes_alone "$name")" "$@"
  done
}

# check_library_first PATH...
check_library_first() {
  never_mixed "$told" "$@"
  refuses "$told" "$files/robot_then_library.cpp" "$@"
  refuses "$told" "$files/robot_only.cpp" "$@"
  local name
  for name in "${robots_names[@]}"; do
    refuses "$told${name##*/}>" "$(includes_alone "$name")" "$@"
  done

  # A user who cannot change the order hides the library's plain names.
  local hidden=-DCONTROLLER_BASE_HIDE_PLAIN_NAMES
  refuses "$compiler_tells" "$files/library_then_robot.cpp" "$hidden" "$@"
  refuses "$told_late" "$files/robot_then_library.cpp" "$hidden" "$@"
  accepts "$files/robot_only.cpp" "$hidden" "$@"
}

# check_library_alone PATH...
check_library_alone() {
  accepts "$files/library_only.cpp" "$@"
  local name
  for name in "${plain_names[@]}"; do
    accepts "$(includes_both "$name" "controller_base/platform/${name##*/}")" "$@"
    accepts "$(includes_both "controller_base/platform/${name##*/}" "$name")" "$@"
  done
}

IFS=: read -r -a dependencies <<<"$DEPENDENCIES"
dependencies=("${dependencies[@]/#/-I}")
# Compiled once, for time's sake.
printf '#include <%s>\n' geometry_msgs/PoseStamped.h nav_msgs/OccupancyGrid.h nav_msgs/Path.h opencv2/core/mat.hpp \
  ros/publisher.h >"$work/dependencies.h"
"$CXX" -std=c++17 -x c++-header "${dependencies[@]}" "$work/dependencies.h" -o "$work/dependencies.h.gch"

quietly cmake --install "$BUILD" --prefix "$work/prefix"
readonly build_tree=(-I "$SOURCE/include" -I "$SOURCE/platform/include" -I "$SOURCE/follower/include")
readonly installed=(-I "$work/prefix/include" -I "$work/prefix/include/controller_base_platform")
check_library_alone "${build_tree[@]}"
check_library_alone "${installed[@]}"

robots_names=("${plain_names[@]}")
robot=(-I "$here/stock/include")
for library in build_tree installed; do
  declare -n path=$library
  check_robot_first "${robot[@]}" "${path[@]}"
  check_library_first "${path[@]}" "${robot[@]}"
done

# A robot whose packages are all installed into one folder, this project too.
cp -r "$work/prefix" "$work/shared"
cp -r "$here/stock/include" "$work/shared"
readonly shared=("$work/shared/include" "$work/shared/include/controller_base_platform")
check_robot_first -I "${shared[0]}" -I "${shared[1]}"
check_library_first -I "${shared[1]}" -I "${shared[0]}"

readonly stack=$SOURCE/../shared/third_party/navigation
if [[ ! -d $stack ]]; then
  echo "There is no stock navigation stack in ../shared/third_party: only the stand-in was tried."
  exit 0
fi
for header in dynamic_reconfigure/server.h map_msgs/OccupancyGridUpdate.h tf2_ros/buffer.h; do
  if ! compile "$(includes_alone "$header")"; then
    echo "The stock navigation stack's headers include $header, which is not installed: only the stand-in was tried."
    exit 0
  fi
done
# What its own build would generate, and the loader of its plugins, which shows no map.
mkdir -p "$work/generated/costmap_2d" "$work/generated/pluginlib"
echo 'namespace costmap_2d { class Costmap2DConfig {}; }' >"$work/generated/costmap_2d/Costmap2DConfig.h"
echo 'namespace pluginlib { template <typename> class ClassLoader {}; }' >"$work/generated/pluginlib/class_loader.hpp"
robots_names=(costmap_2d/cost_values.h costmap_2d/costmap_2d.h)
robot=(-I "$stack/costmap_2d/include" -I "$work/generated")
check_robot_first "${robot[@]}" "${installed[@]}"
check_library_first "${installed[@]}" "${robot[@]}"
