#!/usr/bin/env bash
# Installs what is missing, builds every test and runs them all.
#  build/       Release build of everything (GUI tests, integration tests, benchmarks)
#  build-asan/  the core and its tests with AddressSanitizer + UndefinedBehaviorSanitizer,
#               and the libFuzzer targets (clang)
set -euo pipefail
cd "$(dirname "$0")"

./scripts/deps.sh --test

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUILLORA_TESTS=ON -DQUILLORA_BENCH=ON \
  >/dev/null
cmake --build build -j2

CXX_ASAN=g++
FUZZ=OFF
if command -v clang++ >/dev/null; then CXX_ASAN=clang++; FUZZ=ON; fi
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER="$CXX_ASAN" \
  -DQUILLORA_SANITIZE=ON -DQUILLORA_GUI=OFF -DQUILLORA_TESTS=ON -DQUILLORA_BENCH=OFF \
  -DQUILLORA_FUZZ="$FUZZ" >/dev/null
cmake --build build-asan -j2

status=0
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
(cd build && ctest --output-on-failure -j2) || status=1
(cd build-asan && ctest --output-on-failure -j2 -E '^integration\.') || status=1
exit $status
