#!/usr/bin/env bash
# End to end through a real window: the launcher opens its GLFW window on a virtual X display, xdotool types the key
# bound to the chat action, and the TEST_input module prints when the controller reports the action pressed.
# Usage: window_key_press.sh <launcher> <game tree>
set -uo pipefail
source "$(dirname "$0")/../support/virtual_display.sh"
launcher=$1 tree=$2 skip=77

for tool in Xvfb xdotool; do
  command -v "$tool" >/dev/null || { echo "SKIPPED: $tool is not installed (scripts/setup installs it)"; exit $skip; }
done

work=$(mktemp -d)
cleanup() {
  kill ${launcher_pid:-} ${xvfb_pid:-} 2>/dev/null
  wait 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAILED: $1"; cat "$work/out" "$work/err"; exit 1; }

start_virtual_display 1024x768

cd "$tree"
# X11 and GLFW keep allocations until the process ends; in sanitizer builds the leak checker would blame the
# launcher for them. The launcher's own leaks stay covered by its other tests.
ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" "$launcher" --modules TEST_input --seconds 20 >"$work/out" 2>"$work/err" &
launcher_pid=$!

window=$(timeout 15 xdotool search --sync --name '^Meridon$' | head -n1)
[ -n "$window" ] || fail "the launcher opened no window named Meridon"
# Typed through XTEST into the focused window, as a keyboard would.
xdotool windowfocus --sync "$window"
xdotool key --delay 100 Return

# TEST_input quits the game once it has seen the press; without it the run ends after its 20 seconds.
wait "$launcher_pid"
status=$?
launcher_pid=
grep -q "^InputChat pressed$" "$work/out" || fail "the key press did not reach the bound action"
[ "$status" -eq 0 ] || fail "the launcher exited with $status"
echo "InputChat turned on from a key typed into the window"
