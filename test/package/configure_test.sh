#!/usr/bin/env bash
# Configures the project where the first python3 is of no use: as it comes, as a package of a catkin workspace, and with
# something missing.
source "$(dirname "$0")/package_test.sh"
use_broken_python

# Release when nothing is said.
quietly configure plain
expect_text "-O3 -DNDEBUG" "$work/plain/compile_commands.json"

# In a catkin workspace a python3 that works is found.
quietly configure catkin -DCATKIN_DEVEL_PREFIX="$work/devel"
[[ -e $work/devel/share/controller_base/cmake/controller_baseConfig.cmake ]] || fail "no package in the devel space"

expect_refusal no_roscpp "controller_base is missing the ROS package roscpp." -DCMAKE_DISABLE_FIND_PACKAGE_roscpp=ON
expect_refusal no_ros "controller_base is missing the ROS package roscpp; the ROS package rosconsole." \
  -DCMAKE_DISABLE_FIND_PACKAGE_roscpp=ON -DCMAKE_DISABLE_FIND_PACKAGE_rosconsole=ON
expect_refusal no_platform "CONTROLLER_BASE_PLATFORM is 'none'; it can be bundled or external." -DCONTROLLER_BASE_PLATFORM=none
