#!/usr/bin/env bash
# usage: example_against_install.sh <meridon build dir> <example source dir> <scratch dir>
set -euo pipefail
build=$1 example=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$example" -B "$work/example" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/example" >/dev/null
for class in GAME_Mod SERVER_Mod MERIDON_Mod; do
  test -f "$work/example/modules/MERIDON_example/MERIDON_example.$class.so" || { echo "missing $class library"; exit 1; }
done
cd "$work/example"
out=$("$work/prefix/bin/meridon" --ticks 5 --server-hz 0 --modules MERIDON_example --mods MERIDON_example)
echo "$out"
grep -q "MERIDON_example: 5 server ticks" <<<"$out"
