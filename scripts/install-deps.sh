#!/usr/bin/env bash
# install-deps.sh [fuzz]: installs the Debian packages the build needs, and only when one is missing,
# so that the README commands cost nothing on a machine that already has them. With "fuzz" also clang
# and its runtime libraries (libFuzzer, the sanitizers), which only scripts/run-fuzz.sh needs.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config ccache
  libgtest-dev libgmock-dev libbenchmark-dev
  libssl-dev libpng-dev libtbb-dev libeigen3-dev
  nlohmann-json3-dev libtinyxml2-dev
  libepoxy-dev libegl1 libegl-mesa0 libgl1-mesa-dri
  libassimp-dev libopenmesh-dev libcgal-dev
)
if [[ "${1:-}" == fuzz ]]; then
  packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

if ((${#missing[@]})); then
  echo "install-deps: installing ${missing[*]}"
  sudo=""
  [[ $(id -u) -eq 0 ]] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
