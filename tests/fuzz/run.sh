#!/bin/bash
# Coverage-guided fuzzing of the engine's reading: tests/fuzz/run.sh [SECONDS] [FOLDER OF MORE SEED FILES]
# It starts with the seeds of the mutation test, because without them the fuzzer does not get past the header.
# Needs clang with its fuzzer run time (Debian: clang, libclang-rt-14-dev). Findings are left in out/fuzz.
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-600} more=${2:+$(realpath "$2")}
mkdir -p out/fuzz/corpus out/fuzz/seeds out/fuzz/objects
export FLAGS="-std=c++20 -O1 -g -fsanitize=address,undefined -fno-sanitize-recover=all -I."
# shellcheck disable=SC2016  # the inner shell expands it
printf '%s\n' tests/fuzz/{FuzzRead,ReadEverything,Seeds}.cpp base/*.cpp jet/{,*/}*.cpp |
    grep -v Windows | xargs -P "$(nproc)" -I{} sh -c \
    'clang++ $FLAGS -fsanitize=fuzzer-no-link -c {} -o "out/fuzz/objects/$(echo {} | tr / -).o"'
# shellcheck disable=SC2086  # the flags are several words
clang++ $FLAGS -fsanitize=fuzzer out/fuzz/objects/*.o -o out/fuzz/fuzz_read
cd out/fuzz
exec ./fuzz_read -max_total_time="$seconds" -max_len=400000 -len_control=0 -timeout=10 -rss_limit_mb=2048 \
    corpus seeds ${more:+"$more"}
