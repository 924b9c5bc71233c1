#!/usr/bin/env bash
# Configures and builds. Build folder: $DVN_BUILD_DIR (default build);
# extra CMake arguments: $DVN_CMAKE_ARGS (for example -DDVN_SANITIZE=ON).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${DVN_BUILD_DIR:-$root/build}"
# shellcheck disable=SC2086
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE="${DVN_BUILD_TYPE:-RelWithDebInfo}" ${DVN_CMAKE_ARGS:-}
cmake --build "$build" -j"${DVN_JOBS:-2}"
