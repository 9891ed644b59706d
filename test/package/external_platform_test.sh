#!/usr/bin/env bash
# Builds the library on a robot's own platform, installs it, and builds and runs a user's program on both.
source "$(dirname "$0")/package_test.sh"

# The robot's platform is the bundled one under its plain names and without its inline namespace.
robot=$work/robot
cp -r "$here/robot_platform" "$work/robot_source"
cp -r "$SOURCE/platform/include" "$SOURCE/platform/src" "$work/robot_source"
own_names=()
for name in astar/astar.h astar/block_allocator.h costmap_2d/cost_values.h costmap_2d/costmap_2d.h nav_core/math/box2d.h \
    nav_core/math/vec2d.h; do
  mv "$work/robot_source/include/controller_base/platform/${name##*/}" "$work/robot_source/include/$name"
  own_names+=(-e "s|controller_base/platform/${name##*/}|$name|")
done
rmdir -p --ignore-fail-on-non-empty "$work/robot_source/include/controller_base/platform"
find "$work/robot_source" -type f -exec sed -i "${own_names[@]}" -e 's/CONTROLLER_BASE_PLATFORM_/ROBOT_/' \
  -e '/^inline namespace controller_base_platform {$/d' -e '/^}  \/\/ namespace controller_base_platform$/d' {} +
! grep -rniE 'controller_base(_|/)platform' "$work/robot_source" || fail "the lines above still name the bundled platform"
quietly cmake -S "$work/robot_source" -B "$work/robot_build" -DCMAKE_INSTALL_PREFIX="$robot" -DCMAKE_BUILD_TYPE=Debug
quietly cmake --build "$work/robot_build" --target install

external=(-DCONTROLLER_BASE_PLATFORM=external -DCMAKE_PREFIX_PATH="$robot" -DCMAKE_BUILD_TYPE=Debug)
astar_headers=-DCONTROLLER_BASE_ASTAR_INCLUDE_DIRS=$robot/astar/include
astar_library=-DCONTROLLER_BASE_ASTAR_LIBRARIES=$robot/lib/libastar.so

quietly configure library "${external[@]}" "$astar_headers" "$astar_library" -DCMAKE_INSTALL_PREFIX="$work/prefix"
quietly cmake --build "$work/library" --target install
[[ ! -e $work/prefix/include/controller_base_platform ]] || fail "the bundled platform's headers are installed"
nm -DC "$work/prefix/lib/libcontroller_base.so" >"$work/symbols"
expect_text "U costmap_2d::Costmap2D::worldToMap" "$work/symbols"
expect_text "U AStar::Find" "$work/symbols"
! grep controller_base_platform "$work/symbols" || fail "the symbols above are of the bundled platform"

quietly cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/prefix;$robot"
quietly cmake --build "$work/consumer"  # uses the plain names and controller_base/platform/, in both orders
export LD_LIBRARY_PATH=$robot/lib  # a robot's setup file says where its libraries are
expect_consumer_runs "$work/consumer/controller_base_consumer"

expect_refusal no_astar "missing the robot's astar/astar.h" "${external[@]}"
expect_refusal no_costmap "missing the robot's costmap_2d/costmap_2d.h" "${external[@]}" "$astar_headers" "$astar_library" \
  -DCMAKE_DISABLE_FIND_PACKAGE_costmap_2d=ON
expect_refusal no_library "missing the robot's library in CONTROLLER_BASE_ASTAR_LIBRARIES" "${external[@]}" "$astar_headers"
expect_refusal wrong_library "missing the robot's library /nowhere/libastar.so" "${external[@]}" "$astar_headers" \
  -DCONTROLLER_BASE_ASTAR_LIBRARIES=/nowhere/libastar.so
