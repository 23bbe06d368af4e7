#!/usr/bin/env bash
# Runs a Windows program under Wine, unattended and headless:
#
#   cmake/wine-run.sh PROGRAM.exe [ARG...]
#
# CMake uses it as CMAKE_CROSSCOMPILING_EMULATOR, so ctest runs the test
# executables of a Windows build through it. The Wine prefix is a throw-away
# one inside the build tree (the nearest folder above the program, or else
# above the working folder, that holds a CMakeCache.txt), created once by the
# first run; WINEPREFIX, when set, is used instead. No window opens and
# nothing prompts: DISPLAY is unset, and the components that Wine would
# offer to download (Mono, Gecko) are disabled. The program's exit status is
# this script's.
set -euo pipefail

if [[ $# -lt 1 ]]; then
  echo "usage: $0 PROGRAM.exe [ARG...]" >&2
  exit 2
fi

find_build_dir() {
  local dir
  dir=$(cd "$1" 2>/dev/null && pwd -P) || return 1
  while [[ "$dir" != / ]]; do
    if [[ -f "$dir/CMakeCache.txt" ]]; then
      printf '%s\n' "$dir"
      return 0
    fi
    dir=$(dirname "$dir")
  done
  return 1
}

if [[ -z "${WINEPREFIX:-}" ]]; then
  build_dir=$(find_build_dir "$(dirname "$1")" || find_build_dir "$PWD" || true)
  if [[ -n "$build_dir" ]]; then
    WINEPREFIX="$build_dir/wine-prefix"
  else
    WINEPREFIX="${TMPDIR:-/tmp}/icp-wine-prefix-$(id -u)"
  fi
fi
export WINEPREFIX
export WINEARCH=win64
# Quiet; WINEDEBUG=err+module, say, tells why a program does not start.
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d${WINEDLLOVERRIDES:+;$WINEDLLOVERRIDES}"
unset DISPLAY WAYLAND_DISPLAY

# The 64-bit loader: Debian keeps it out of PATH.
if command -v wine64 >/dev/null 2>&1; then
  wine=$(command -v wine64)
elif [[ -x /usr/lib/wine/wine64 ]]; then
  wine=/usr/lib/wine/wine64
elif command -v wine >/dev/null 2>&1; then
  wine=$(command -v wine)
else
  echo "$0: Wine is not installed" >&2
  exit 127
fi
export WINELOADER="$wine"
wineserver=""
for candidate in "$(dirname "$wine")/wineserver64" "$(dirname "$wine")/wineserver" \
                 "$(command -v wineserver64 || true)" "$(command -v wineserver || true)"; do
  if [[ -n "$candidate" && -x "$candidate" ]]; then
    wineserver=$candidate
    break
  fi
done

# First use: create the prefix, once, even when several tests start at once.
mkdir -p "$(dirname "$WINEPREFIX")"
exec 9>"$WINEPREFIX.lock"
flock 9
if [[ ! -f "$WINEPREFIX/.initialised" ]]; then
  rm -rf "$WINEPREFIX"
  log="$WINEPREFIX.init.log"
  if ! "$wine" wineboot -i >"$log" 2>&1 </dev/null; then
    echo "$0: creating the Wine prefix $WINEPREFIX failed; see $log" >&2
    exit 1
  fi
  [[ -n "$wineserver" ]] && "$wineserver" -w
  touch "$WINEPREFIX/.initialised"
fi
# One server and one set of Wine's own services (services.exe, winedevice,
# plugplay, ...) for a whole test run. The server, started here with a
# persistence delay, outlives each program by 20 s, so that no program meets
# a server that is shutting down ("a wine server seems to be running, but I
# cannot connect to it"). The services are started by a wineboot of their
# own, with no terminal and no pipe: started by the program, they would hold
# its output open, and the test runner would wait for them to end.
if [[ -n "$wineserver" ]] && "$wineserver" -p20 </dev/null >/dev/null 2>&1; then
  "$wine" wineboot </dev/null >/dev/null 2>&1 || true
fi
flock -u 9
exec 9>&-

exec "$wine" "$@"
