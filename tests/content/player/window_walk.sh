#!/usr/bin/env bash
# The demo as a player sees it, end to end: the launcher opens its window on a virtual X display with the game's own
# modules, xdotool holds the forward key for a second, and the crate pile ahead must come nearer on screen by the
# factor that walking speed predicts; then Escape held quits the game cleanly. Skipped, saying why, where no virtual
# display can start. Usage: window_walk.sh <launcher> <game tree> <ground_edge.js>
set -uo pipefail
source "$(dirname "$0")/../../support/virtual_display.sh"
launcher=$1 tree=$2 measure=$3 skip=77
world="window-walk-$$"

for tool in Xvfb xdotool node; do
  command -v "$tool" >/dev/null || { echo "SKIPPED: $tool is not installed (scripts/setup installs it)"; exit $skip; }
done

work=$(mktemp -d)
cleanup() {
  kill ${launcher_pid:-} ${xvfb_pid:-} 2>/dev/null
  wait 2>/dev/null
  rm -rf "$work" "$tree/../Meridon-data/server/worlds/$world"
}
trap cleanup EXIT
fail() { echo "FAILED: $1"; cat "$work/out" "$work/err"; exit 1; }

start_virtual_display 1280x800

cd "$tree"
ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" "$launcher" --world "$world" --seconds 120 \
  --screenshot "$work/after.png" >"$work/out" 2>"$work/err" &
launcher_pid=$!

window=$(timeout 30 xdotool search --sync --name '^Meridon$' | head -n1)
[ -n "$window" ] || fail "the launcher opened no window named Meridon"
xdotool windowfocus --sync "$window"
# The crates of a new world topple for a few seconds before they lie still.
sleep 8

screenshots="$tree/../Meridon-data/screenshots"
before_list=$(ls "$screenshots" 2>/dev/null)
xdotool key F4
for _ in $(seq 100); do
  before=$(comm -13 <(echo "$before_list") <(ls "$screenshots" 2>/dev/null) | head -n1)
  [ -n "$before" ] && break
  sleep 0.1
done
[ -n "$before" ] || fail "F4 saved no screenshot"
sleep 0.5  # the file is written whole before the next frame
mv "$screenshots/$before" "$work/before.png"

xdotool keydown w; sleep 1; xdotool keyup w
sleep 1
xdotool keydown Escape
for _ in $(seq 100); do kill -0 "$launcher_pid" 2>/dev/null || break; sleep 0.1; done
xdotool keyup Escape
kill -0 "$launcher_pid" 2>/dev/null && fail "holding Escape did not quit"
wait "$launcher_pid"
status=$?
launcher_pid=
[ "$status" -eq 0 ] || fail "the launcher exited with $status"
[ -s "$work/after.png" ] || fail "no last frame was saved"

# The pile's foot, some 11 m ahead at the eye's 1.65 m, lies below the eye's level by f * 1.65 / depth pixels. A
# second at walking pace (4 m/s) brings it 2 to 5 m nearer, allowing for the key's first and last input passes.
near_before=$(node "$measure" "$work/before.png") && near_after=$(node "$measure" "$work/after.png") ||
  fail "the frames could not be measured"
echo "pile's foot below the eye's level: $near_before px before, $near_after px after the walk"
ratio=$(awk -v a="$near_after" -v b="$near_before" 'BEGIN { print a / b }')
awk -v r="$ratio" 'BEGIN { exit !(r > 11.0 / 9.0 && r < 11.0 / 5.5) }' ||
  fail "the pile came nearer by a factor $ratio; a second's walk predicts 1.22 to 2"
echo "walked towards the pile (factor $ratio) and quit with Escape held"
