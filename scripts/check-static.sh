#!/usr/bin/env bash
# Builds the kit as a static library, installs it, and builds and runs the outside project of tests/consumer against
# that:
#
#   scripts/check-static.sh
#
# Builds into build/static, without debug information, which makes an archive of hundreds of megabytes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-packages.sh build test

readonly build=$PWD/build/static
cmake --preset release -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DVXKIT_WARNINGS_AS_ERRORS=ON \
  -DVXKIT_BUILD_TESTS=OFF -DVXKIT_BUILD_EXAMPLES=OFF -DVXKIT_BUILD_DESIGNER=OFF
cmake --build "$build" --parallel "$(nproc)"
tests/consumer/consumer_test.sh install "$build" "$build/consumer"
tests/consumer/consumer_test.sh cmake "$build/consumer"
tests/consumer/consumer_test.sh pkg-config "$build/consumer"
