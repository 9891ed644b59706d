#!/usr/bin/env bash
# Builds the project and a user of it in one catkin workspace, and the user alone against what that workspace installed.
source "$(dirname "$0")/package_test.sh"

workspace=$work/workspace
mkdir -p "$workspace/src"
ln -s "$SOURCE" "$workspace/src/controller_base"
cp -r "$here/catkin_consumer" "$workspace/src"
cp "$here/consumer/main.cpp" "$workspace/src/catkin_consumer"

cd "$workspace"
quietly catkin_make --use-ninja -DPYTHON_EXECUTABLE=/usr/bin/python3 -DCMAKE_BUILD_TYPE=Debug install
expect_consumer_runs devel/lib/controller_base_catkin_consumer/controller_base_catkin_consumer
[[ -e devel/lib/libcontroller_base.so ]] || fail "the library is not in the devel space"
[[ -e install/share/controller_base/package.xml ]] || fail "package.xml is not installed"
! grep -rlI -- "$SOURCE" install || fail "the files above contain $SOURCE"

quietly cmake -S src/catkin_consumer -B "$work/consumer" -DCMAKE_PREFIX_PATH="$workspace/install" \
  -DPYTHON_EXECUTABLE=/usr/bin/python3
quietly cmake --build "$work/consumer"
expect_consumer_runs "$work/consumer/devel/lib/controller_base_catkin_consumer/controller_base_catkin_consumer"
