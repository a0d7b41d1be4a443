#!/usr/bin/env bash
# Builds the libFuzzer targets in a clang tree of their own and runs each a few thousand inputs from its seeds; any
# crash, sanitizer report or leak fails. The seeds are copied first, as libFuzzer adds what it finds to its corpus.
#
# Usage: run_fuzzers.sh <source dir> <fuzz build dir> <scratch dir>
set -euo pipefail

source_dir=$1
build_dir=$2
scratch_dir=$3
runs=4000
targets=(unique_id_parser entity_config_reader save_file_reader formula_parser port_name_parser mesh_reader
  link_packet_decoder)
# Longer than any seed, short enough that an input stays readable in a report.
declare -A max_len=([unique_id_parser]=64 [entity_config_reader]=4096 [save_file_reader]=1024 [formula_parser]=64 [port_name_parser]=64
  [mesh_reader]=4096 [link_packet_decoder]=1024)

if ! command -v clang++ >/dev/null; then
  echo "run_fuzzers: clang++ not found; install the Debian packages clang and libclang-rt-14-dev (scripts/setup)" >&2
  exit 1
fi
if [ ! -e "$(clang++ -print-runtime-dir)/libclang_rt.fuzzer-x86_64.a" ]; then
  echo "run_fuzzers: clang's libFuzzer not found; install the Debian package libclang-rt-14-dev (scripts/setup)" >&2
  exit 1
fi

if [ ! -f "$build_dir/CMakeCache.txt" ]; then
  cmake -S "$source_dir" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DMERIDON_FUZZ=ON -DMERIDON_TESTS=OFF -DMERIDON_BENCHMARKS=OFF
fi
cmake --build "$build_dir" --target "${targets[@]/#/fuzz_}"

rm -rf "$scratch_dir"
for name in "${targets[@]}"; do
  work="$scratch_dir/$name"
  mkdir -p "$work/corpus" "$work/root"
  cp "$source_dir/fuzz/corpus/$name"/* "$work/corpus/"
  echo "== $name"
  # Run from a game folder of its own: the save-file target keeps its world beside the working folder.
  if ! (cd "$work/root" && "$build_dir/fuzz/fuzz_$name" -runs=$runs -seed=1 -max_len="${max_len[$name]}" \
      -timeout=10 -close_fd_mask=3 -artifact_prefix="$work/" "$work/corpus"); then
    echo "run_fuzzers: fuzz_$name failed; the input that did it is in $work/" >&2
    exit 1
  fi
done
