#!/usr/bin/env bash
# One scene with both planners in the real stack: two rows; a second run drives nothing again; a table of somebody else stays.
set -euo pipefail

setup=$WORKSPACE/devel/setup.bash
[[ -e $setup ]] || { echo "no workspace with the stock navigation stack: $setup is missing"; exit 77; }
set +u
source "$setup"
set -u
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

"$PROGRAM" --scenes 1 --seed 83 --speed 3 --out "$out"
[[ $(wc -l <"$out/drives.csv") == 3 ]]
grep -q '^apartment,83,plugin,reached,' "$out/drives.csv"
grep -q '^apartment,83,dwa,' "$out/drives.csv"
grep -q '^1 scenes, ' "$out/compared.md"

before=$(cat "$out/drives.csv")
"$PROGRAM" --scenes 1 --seed 83 --speed 3 --out "$out" >"$out/again"
if grep -q '^apartment' "$out/again"; then echo "a drive was repeated"; exit 1; fi
[[ $(cat "$out/drives.csv") == "$before" ]]

echo "somebody's" >"$out/drives.csv"
if "$PROGRAM" --scenes 1 --out "$out" 2>"$out/complaint"; then echo "another table was taken"; exit 1; fi
grep -q "not a table of compared drives" "$out/complaint"
[[ $(cat "$out/drives.csv") == "somebody's" ]]
