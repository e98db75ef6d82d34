#!/usr/bin/env bash
# build.sh [PRESET]: configure (once) and build one preset; release when none is named.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
preset=${1:-release}
"$root/scripts/install-deps.sh"
cd "$root"
[[ -f build/$preset/build.ninja ]] || cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
