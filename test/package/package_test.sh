# What the package tests share; they source it. ctest sets SOURCE (this project's folder), BUILD (its build folder), and the
# compiler and generator to use.
set -euo pipefail

readonly here=$SOURCE/test/package
work=$(mktemp -d)
readonly work
trap 'rm -rf "$work"' EXIT
trap 'echo "$0, line $LINENO: failed: $BASH_COMMAND" >&2' ERR

fail() {
  echo "$0: $*" >&2
  exit 1
}

# quietly COMMAND...: runs it and shows what it printed only when it fails.
quietly() {
  "$@" >"$work/output" 2>&1 || { cat "$work/output"; fail "failed: $*"; }
}

# expect_text TEXT FILE: the file has a line with TEXT.
expect_text() {
  grep -qF -- "$1" "$2" || { cat "$2"; fail "no line with: $1"; }
}

# A `python3` that cannot do anything comes first on the PATH.
use_broken_python() {
  mkdir -p "$work/broken_python"
  printf '#!/bin/sh\necho "this python3 must not be asked" >&2\nexit 1\n' >"$work/broken_python/python3"
  chmod +x "$work/broken_python/python3"
  PATH=$work/broken_python:$PATH
}

# expect_consumer_runs PROGRAM: what test/package/consumer/main.cpp prints and logs.
expect_consumer_runs() {
  ROSCONSOLE_FORMAT='${logger}: ${message}' "$1" >"$work/consumer_output" 2>&1 ||
    { cat "$work/consumer_output"; fail "$1 failed"; }
  expect_text "index 0, blocked" "$work/consumer_output"
  expect_text "ros.nav_controller: Robot has deviated from path!" "$work/consumer_output"
}

# configure NAME ARGUMENT...: configures this project's library, without demo and tests, in the build folder $work/NAME.
configure() {
  cmake -S "$SOURCE" -B "$work/$1" -DCONTROLLER_BASE_BUILD_DEMO=OFF -DCONTROLLER_BASE_BUILD_ROBOT=OFF -DCONTROLLER_BASE_BUILD_TESTS=OFF \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "${@:2}"
}

# expect_refusal NAME TEXT ARGUMENT...: configuring ends with one error, which has this text on one line.
expect_refusal() {
  local log=$work/$1.log
  ! configure "$1" "${@:3}" >"$log" 2>&1 || fail "configured although it should have refused: ${*:3}"
  expect_text "$2" "$log"
  [[ $(grep -c 'CMake Error' "$log") -eq 1 ]] || { cat "$log"; fail "more than one error"; }
}
