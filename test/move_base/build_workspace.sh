#!/usr/bin/env bash
# Builds the stock navigation stack, where its sources are, and this project on top of it in a catkin workspace.
set -euo pipefail

setup=$("$SOURCE/scripts/build_navigation")
# The workspace may lie in the project's build folder, and roslaunch follows links: so that is not linked.
package=$WORKSPACE/src/controller_base
mkdir -p "$package"
for entry in "$SOURCE"/*; do
  [[ ${entry##*/} == build ]] || ln -sfn "$entry" "$package/"
done
cd "$WORKSPACE"
set +u
source "$setup"
export PATH=/usr/bin:$PATH
catkin_make --use-ninja -DPYTHON_EXECUTABLE=/usr/bin/python3 -DCMAKE_BUILD_TYPE=Release >build.log 2>&1 ||
  { tail -n 40 build.log; exit 1; }
source devel/setup.bash
rospack plugins --attrib=plugin nav_core | grep '^controller_base '
