#!/usr/bin/env bash
# Installs the Debian packages that the build needs and that are missing.
#
#   bash scripts/install-deps.sh            the native build (presets default, asan)
#   bash scripts/install-deps.sh windows    also the Windows cross build and Wine
#   bash scripts/install-deps.sh fuzz       also clang and its libFuzzer (the fuzz preset)
#   bash scripts/install-deps.sh windows fuzz
#
# Nothing is asked: the package lists are refreshed and the packages
# installed non-interactively, as root or through sudo.
set -euo pipefail

native=(
  cmake make g++ pkg-config
  googletest libgtest-dev libbenchmark-dev
  nlohmann-json3-dev libcli11-dev libfmt-dev libserialport-dev libedit-dev
  python3 valgrind
)
windows=(
  mingw-w64 g++-mingw-w64-x86-64-posix
  wine wine64
)
fuzz=(
  clang libclang-rt-14-dev
)

wanted=("${native[@]}")
for extra in "$@"; do
  case $extra in
    windows) wanted+=("${windows[@]}") ;;
    fuzz) wanted+=("${fuzz[@]}") ;;
    *) echo "usage: $0 [windows] [fuzz]" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  if ! dpkg-query -W -f='${Status}\n' "$package" 2>/dev/null | grep -q '^install ok installed$'; then
    missing+=("$package")
  fi
done
if [[ ${#missing[@]} -eq 0 ]]; then
  exit 0
fi

if [[ $(id -u) -eq 0 ]]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
  as_root=(sudo -n)
else
  echo "$0: these packages are missing; install them as root:" >&2
  echo "  apt-get install ${missing[*]}" >&2
  exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q </dev/null
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -q -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold \
  "${missing[@]}" </dev/null
