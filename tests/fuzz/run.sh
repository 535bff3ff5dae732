#!/bin/bash
# Coverage-guided fuzzing of the engine's reading: tests/fuzz/run.sh [SECONDS] [FOLDER OF SEED FILES]
# Needs clang with its fuzzer run time (Debian: clang, libclang-rt-14-dev). Findings are left in out/fuzz.
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-600} seeds=${2:-}
mkdir -p out/fuzz/corpus
clang++ -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all -I. \
    tests/fuzz/FuzzRead.cpp tests/fuzz/ReadEverything.cpp base/*.cpp $(ls jet/*.cpp | grep -v Windows) -o out/fuzz/fuzz_read
cd out/fuzz
exec ./fuzz_read -max_total_time="$seconds" -max_len=400000 -timeout=10 -rss_limit_mb=2048 corpus ${seeds:+"$seeds"}
