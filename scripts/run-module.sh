#!/usr/bin/env bash
# run-module.sh [zqtest options]: install what is missing, build the release preset and run every
# test class of the module; options go to the runner (see README).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh" release >&2
exec "$root/build/release/bin/zqtest" "$@"
