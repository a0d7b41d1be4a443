#!/usr/bin/env bash
# A module author's view of an installed Meridon: install it, build a module of one's own against it outside any
# game tree, and run that module from its build folder with the installed launcher in the installed game tree. The
# bundled example builds against the install too.
# usage: module_against_install.sh <meridon build dir> <module source dir> <example source dir> <scratch dir>
set -euo pipefail
build=$1 module=$2 example=$3 work=$4
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
game=$prefix/lib/meridon/root
cmake --install "$build" --prefix "$prefix" >/dev/null

# <source> <build folder>
configure_and_build() {
  { cmake -S "$1" -B "$2" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$2"; } >"$2.log" 2>&1 ||
    { cat "$2.log"; exit 1; }
}
configure_and_build "$module" "$work/module"
configure_and_build "$example" "$work/example"
for class in GAME_Mod SERVER_Mod MERIDON_Mod; do
  test -f "$work/example/modules/MERIDON_example/MERIDON_example.$class.so" ||
    { echo "example: no $class library"; exit 1; }
done

# Server and content libraries build against Meridon::server: ImGui's folder is not on their include path, and
# neither Vulkan's headers (which Debian keeps in /usr/include, always on the path) nor ImGui's are among what they
# include. The client library's own ImGui include shows that the check sees what is included.
# <build folder>: a line "<object> <header>" for every header of every object, as ninja recorded them.
includes() { ninja -C "$1" -t deps | awk '/^[^ \t]/ { object = $1 } /^[ \t]/ { print object, $1 }'; }
for tree in "$work/module" "$work/example"; do
  if ninja -C "$tree" -t commands | grep -E '\.(SERVER|MERIDON)_Mod\.dir/' | grep -F imgui; then
    echo "a server or content library has ImGui's headers on its include path"; exit 1
  fi
  if includes "$tree" | grep -E '\.(SERVER|MERIDON)_Mod\.dir/' | grep -E '/vulkan/|imgui'; then
    echo "a server or content library includes Vulkan's or ImGui's headers"; exit 1
  fi
done
includes "$work/module" | grep -E '^CMakeFiles/TEST_outside\.GAME_Mod\.dir/\S+ \S+/imgui\.h$' >/dev/null ||
  { echo "the client library's includes were not seen"; exit 1; }

# The run: the installed game tree's bundled example beside the module from its build folder, headless.
cd "$game"
out=$("$prefix/bin/meridon" --world install-test --ticks 5 --server-hz 0 --verbose \
  --module-path "$work/module/modules" --modules MERIDON_example,TEST_outside --mods MERIDON_example,TEST_outside \
  --screenshot "$work/last-frame.png")
echo "$out"
for class in SERVER_Mod GAME_Mod MERIDON_Mod; do
  grep -qxF "meridon: loaded $work/module/modules/TEST_outside/TEST_outside.$class.so" <<<"$out" ||
    { echo "TEST_outside.$class was not loaded from its build folder"; exit 1; }
done
test ! -e "$game/modules/TEST_outside" || { echo "the module landed in the game tree"; exit 1; }
grep -qE '^TEST_outside: [1-9][0-9]* frames$' <<<"$out" || { echo "the module drew no frame"; exit 1; }

# Saves land beside the game folder: <prefix>/lib/meridon/Meridon-data.
marker=$(sed -n 's/^TEST_outside: marker //p' <<<"$out")
test -n "$marker" || { echo "the module made no marker"; exit 1; }
test -f "$prefix/lib/meridon/Meridon-data/server/worlds/install-test/entities/$marker.entitystate" ||
  { echo "the marker $marker was not saved"; exit 1; }

# The last frame: a PNG of the headless frame's 1280 x 720, by its signature and the size in its IHDR chunk.
header=$(od -An -tx1 -N24 "$work/last-frame.png" | tr -d ' \n')
test "$header" = 89504e470d0a1a0a0000000d4948445200000500000002d0 ||
  { echo "the screenshot is no PNG of 1280 x 720: $header"; exit 1; }
