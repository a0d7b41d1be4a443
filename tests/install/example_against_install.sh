#!/usr/bin/env bash
# usage: example_against_install.sh <meridon build dir> <example source dir> <scratch dir>
set -euo pipefail
build=$1 example=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$example" -B "$work/example" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/example" > "$work/build.log" 2>&1 || { cat "$work/build.log"; exit 1; }
for class in GAME_Mod SERVER_Mod MERIDON_Mod; do
  test -f "$work/example/modules/MERIDON_example/MERIDON_example.$class.so" || { echo "missing $class library"; exit 1; }
done
cd "$work/example"
run() { "$work/prefix/bin/meridon" --world install-test --ticks 5 --server-hz 0 --modules MERIDON_example --mods MERIDON_example; }
out=$(run)
echo "$out"
grep -q "MERIDON_example: 5 server ticks" <<<"$out"
# The demo's first run makes a crate and a door; the second loads them back and saves them again.
saves=$(ls ../Meridon-data/server/worlds/install-test/entities/*.entitystate | wc -l)
test "$saves" -eq 2 || { echo "expected 2 saved entities, found $saves"; exit 1; }
run
test "$(ls ../Meridon-data/server/worlds/install-test/entities/*.entitystate | wc -l)" -eq 2
