#!/usr/bin/env bash
# run-tests.sh [PRESET]: install what is missing, build a preset (release by default) and run all
# of our tests through CTest: our GoogleTest suites and one CTest test per module class.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
preset=${1:-release}
"$root/scripts/build.sh" "$preset"
cd "$root"
ctest --preset "$preset" -j "$(nproc)"
