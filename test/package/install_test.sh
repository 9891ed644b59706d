#!/usr/bin/env bash
# Installs the build into an empty prefix, moves it elsewhere, and builds and runs a user's program against it.
source "$(dirname "$0")/package_test.sh"

quietly cmake --install "$BUILD" --prefix "$work/first"
mv "$work/first" "$work/prefix"
prefix=$work/prefix
package=$prefix/share/controller_base/cmake

# Everything is there, and nothing knows where it was built or installed.
for file in include/controller_base/local_planner.h include/controller_base/platform/costmap_2d.h \
    include/controller_base_platform/costmap_2d/costmap_2d.h \
    lib/libcontroller_base.so lib/libcontroller_base_platform.so share/controller_base/cmake/controller_baseConfigVersion.cmake; do
  [[ -e $prefix/$file ]] || fail "$file is not installed"
done
for path in "$SOURCE" "$BUILD" "$work"; do
  ! grep -rl -- "$path" "$prefix" || fail "the files above contain $path"
done
readelf -d "$prefix/lib/libcontroller_base.so" >"$work/dynamic"
expect_text 'Library runpath: [$ORIGIN]' "$work/dynamic"

# The exported targets carry no flag, only the language level.
! grep -E 'INTERFACE_(COMPILE_OPTIONS|COMPILE_DEFINITIONS|LINK_OPTIONS)' "$package"/controller_baseTargets*.cmake ||
  fail "the exported targets carry the flags above"

use_broken_python
quietly cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
quietly cmake --build "$work/consumer"
! grep -oE -- ' -[Wf][^ ]*' "$work/consumer/compile_commands.json" || fail "the flags above reached the user's program"
expect_consumer_runs "$work/consumer/controller_base_consumer"
