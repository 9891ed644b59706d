#!/usr/bin/env bash
# Builds the stock navigation stack, where its sources are, and this project on top of it in a catkin workspace, with catkin_make and
# with catkin_make_isolated, and looks at what each left in its devel and its install space.
set -Eeuo pipefail

setup=$("$SOURCE/scripts/build_navigation")
trap 'echo "$0, line $LINENO: failed: $BASH_COMMAND" >&2' ERR
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
# Both compile the same files with the same options: with ccache the second takes what the first has made.
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=$WORKSPACE/ccache CCACHE_NOHASHDIR=1
  unset CCACHE_BASEDIR
fi

# build TOOL ARGUMENT...
build() {
  "$1" --use-ninja -DPYTHON_EXECUTABLE=/usr/bin/python3 -DCMAKE_BUILD_TYPE=Release "${@:2}" >"$1.log" 2>&1 ||
    { tail -n 40 "$1.log"; exit 1; }
}

# node_command NODE LAUNCH_FILE ARGUMENT...: how roslaunch would start it.
node_command() {
  roslaunch --args "$1" controller_base "${@:2}"
}

# check_space SPACE: the plugin, the nodes and the launch files are there and can be used; the follower's package is found.
check_space() (
  source "$1/setup.bash"
  rospack plugins --attrib=plugin nav_core | grep "^controller_base $WORKSPACE/" >/dev/null
  python3 -c 'import ctypes; ctypes.CDLL("libcontroller_base_move_base.so")'
  node=$(node_command path_follower robot.launch)
  "${node%% *}" --parameters | grep '^max_vel_x m/s' >/dev/null
  robot=$(node_command simulated_robot move_base_simulation.launch)
  ldd "${robot%% *}" >"ldd_$1.log"
  ! grep 'not found' "ldd_$1.log" || exit 1
  "$(dirname "${node%% *}")/controller_base_doctor" --help | grep '^usage: doctor' >/dev/null
  cmake -S "$SOURCE/test/package/follower_on_a_grid" -B "example_$1" >"example_$1.log"
  cmake --build "example_$1" >>"example_$1.log"
)

build catkin_make install
check_space devel
check_space install
build catkin_make_isolated --install
check_space devel_isolated
check_space install_isolated
