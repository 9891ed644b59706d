#!/usr/bin/env bash
# Builds and runs an example that drives the follower against the installed package, and a user of the library alone where the
# follower is not installed.
source "$(dirname "$0")/package_test.sh"

quietly cmake --install "$BUILD" --prefix "$work/first"
mv "$work/first" "$work/prefix"
prefix=$work/prefix
package=$prefix/share/controller_base/cmake

quietly cmake -S "$here/follower_on_a_grid" -B "$work/example" -DCMAKE_PREFIX_PATH="$prefix"
quietly cmake --build "$work/example"
export ROS_HOME=$work/ros ROS_LOG_DIR=$work/ros
port=$(/usr/bin/python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
/usr/bin/python3 /usr/bin/rosmaster --core -p "$port" >"$work/master" 2>&1 &
master=$!
trap 'kill $master 2>/dev/null || true; rm -rf "$work"' EXIT
ROS_MASTER_URI=http://127.0.0.1:$port ROS_IP=127.0.0.1 timeout 60 "$work/example/follower_on_a_grid" >"$work/drive" 2>&1 ||
  { cat "$work/master" "$work/drive"; fail "the example failed"; }
expect_text "reached: " "$work/drive"

# It brings nothing with it that the library does not need.
readelf -d "$prefix/lib/libcontroller_base_follower.so" >"$work/needed"
expect_text "libcontroller_base.so" "$work/needed"
! grep -E 'yaml|tf2|rosbag|imgcodecs|highgui' "$work/needed" || fail "the follower needs the libraries above"
! grep -E 'INTERFACE_(COMPILE_OPTIONS|COMPILE_DEFINITIONS|LINK_OPTIONS)' "$package"/controller_base_followerTargets*.cmake ||
  fail "the exported target carries the flags above"

# Who asks for the library alone gets it alone, also where the follower was never installed.
readelf -d "$prefix/lib/libcontroller_base.so" >"$work/needed"
! grep follower "$work/needed" || fail "the library needs the follower"
mkdir "$work/alone"
cat >"$work/alone/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.16)
project(alone LANGUAGES CXX)
find_package(controller_base REQUIRED)
if(TARGET controller_base::follower)
  message(FATAL_ERROR "nobody asked for the follower")
endif()
find_package(controller_base QUIET COMPONENTS follower)
message(STATUS "with the follower: ${controller_base_FOUND}")
find_package(controller_base REQUIRED COMPONENTS wings)
END
ask() { ! cmake -S "$work/alone" -B "$work/alone/$1" -DCMAKE_PREFIX_PATH="$prefix" >"$work/asked" 2>&1 || fail "it has wings"; }
ask whole
expect_text "with the follower: 1" "$work/asked"
expect_text "controller_base has no component wings; it has follower." "$work/asked"
rm -r "$prefix/include/controller_base/follower" "$prefix"/lib/libcontroller_base_follower* "$package"/controller_base_follower*
ask part
expect_text "with the follower: 0" "$work/asked"
quietly cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix"
quietly cmake --build "$work/consumer"
expect_consumer_runs "$work/consumer/controller_base_consumer"
