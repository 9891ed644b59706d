#!/usr/bin/env bash
# Builds the project and a user of it in one catkin workspace, and the user alone against what that workspace installed; then the
# same with a package of the workspace that has a costmap_2d of its own, and a user of both.
source "$(dirname "$0")/package_test.sh"

workspace=$work/workspace
mkdir -p "$workspace/src"
ln -s "$SOURCE" "$workspace/src/controller_base"
cp -r "$here/catkin_consumer" "$workspace/src"
cp "$here"/consumer/*.cpp "$workspace/src/catkin_consumer"

# build_workspace: into the devel space and the install space.
build_workspace() {
  quietly catkin_make --use-ninja -DPYTHON_EXECUTABLE=/usr/bin/python3 -DCMAKE_BUILD_TYPE=Debug install
}

# build_alone PACKAGE: against the install space; its programs are then in $work/alone/PACKAGE/devel/lib.
build_alone() {
  quietly cmake -S "src/$1" -B "$work/alone/$1" -DCMAKE_PREFIX_PATH="$workspace/install" -DPYTHON_EXECUTABLE=/usr/bin/python3
  quietly cmake --build "$work/alone/$1"
}

# expect_plugin_runs PROGRAM
expect_plugin_runs() {
  "$1" >"$work/plugin_output" 2>&1 || { cat "$work/plugin_output"; fail "$1 failed"; }
  expect_text "with a wall blocked, without free" "$work/plugin_output"
}

cd "$workspace"
build_workspace
expect_consumer_runs devel/lib/controller_base_catkin_consumer/controller_base_catkin_consumer
[[ -e devel/lib/libcontroller_base.so ]] || fail "the library is not in the devel space"
[[ -e install/share/controller_base/package.xml ]] || fail "package.xml is not installed"
! grep -rlI -- "$SOURCE" install || fail "the files above contain $SOURCE"
build_alone catkin_consumer
expect_consumer_runs "$work/alone/catkin_consumer/devel/lib/controller_base_catkin_consumer/controller_base_catkin_consumer"

cp -r "$here/stock" "$here/catkin_plugin" "$workspace/src"
build_workspace
expect_plugin_runs devel/lib/controller_base_catkin_plugin/controller_base_catkin_plugin_user
expect_consumer_runs devel/lib/controller_base_catkin_consumer/controller_base_catkin_consumer
build_alone catkin_plugin
expect_plugin_runs "$work/alone/catkin_plugin/devel/lib/controller_base_catkin_plugin/controller_base_catkin_plugin_user"
