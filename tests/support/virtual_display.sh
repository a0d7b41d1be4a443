# Sourced by the tests that drive the game's real window: starts Xvfb on a display it picks itself, exports DISPLAY,
# and exits with the skip code, saying why, where no virtual display can start. Needs $work (a scratch folder) and
# $skip; leaves the server's pid in $xvfb_pid for the caller's cleanup.
# Usage: start_virtual_display WIDTHxHEIGHT
start_virtual_display() {
  Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
  xvfb_pid=$!
  for _ in $(seq 100); do
    [ -s "$work/display" ] && break
    kill -0 "$xvfb_pid" 2>/dev/null || break
    sleep 0.1
  done
  if [ ! -s "$work/display" ]; then
    echo "SKIPPED: Xvfb could not start a virtual display:"; cat "$work/xvfb.log"; exit "$skip"
  fi
  export DISPLAY=":$(head -n1 "$work/display")"
}
