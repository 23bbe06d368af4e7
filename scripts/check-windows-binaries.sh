#!/usr/bin/env bash
# Checks the Windows build's programs and DLLs as a user's machine will see
# them:
#   - each imports only Windows system DLLs and the project's own DLLs
#     (no MinGW runtime DLL: libgcc_s_*, libstdc++-*, libwinpthread-*);
#   - the plug-in exports plain C names only (no @N, no leading underscore,
#     no C++ mangling), nothing but definePluginTypes, math and the triples
#     X, XName, XDescription;
#   - given the native build's plug-in, the two export the same names;
#   - the simulated plug-in (icpdas_plugin_sim.dll) exports the plug-in's
#     names and imports, of the project's DLLs, only the host's value library
#     (NvMathLib.dll): it carries the SDK stand-ins.
#
#   bash scripts/check-windows-binaries.sh build/windows [build/default/bin/libicpdas_plugin.so]
set -euo pipefail

if [[ $# -lt 1 || $# -gt 2 ]]; then
  echo "usage: $0 WINDOWS_BUILD_DIR [NATIVE_PLUGIN_SO]" >&2
  exit 2
fi
bin="$1/bin"
native_plugin="${2:-}"
objdump=${OBJDUMP:-x86_64-w64-mingw32-objdump}

# Windows' own DLLs that a program of this project may import (case-blind).
system_dlls='^(kernel32|msvcrt|ucrtbase|api-ms-win-.*|ntdll|user32|advapi32|ws2_32|setupapi|cfgmgr32|bcrypt|shell32|ole32|oleaut32|shlwapi|winmm|hid)\.dll$'

failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

shopt -s nullglob nocaseglob
binaries=("$bin"/*.dll "$bin"/*.exe)
shopt -u nocaseglob
[[ ${#binaries[@]} -gt 0 ]] || { echo "FAIL: no DLL or EXE in $bin" >&2; exit 1; }

# (A table, not a pipe into grep -q: with pipefail, grep leaving early
# would fail the pipe whenever printf had not finished writing.)
declare -A own=()
for f in "${binaries[@]}"; do own[$(basename "$f" | tr '[:upper:]' '[:lower:]')]=1; done

for f in "${binaries[@]}"; do
  while read -r dll; do
    lower=$(tr '[:upper:]' '[:lower:]' <<<"$dll")
    if [[ "$lower" =~ $system_dlls ]]; then continue; fi
    if [[ -n "${own[$lower]:-}" ]]; then continue; fi
    fail "$(basename "$f") imports $dll"
  done < <("$objdump" -p "$f" | awk '/DLL Name:/ {print $3}')
done

exports_of() {
  "$objdump" -p "$1" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' \
    | sed -n 's/^[[:space:]]*\[[[:space:]]*[0-9]*\][[:space:]]*//p'
}

plugin="$bin/icpdas_plugin.dll"
if [[ ! -f "$plugin" ]]; then
  fail "no $plugin"
else
  mapfile -t names < <(exports_of "$plugin" | sort)
  [[ ${#names[@]} -gt 0 ]] || fail "icpdas_plugin.dll exports nothing"
  declare -A exported=()
  for n in "${names[@]}"; do exported[$n]=1; done
  for n in "${names[@]}"; do
    if [[ ! "$n" =~ ^[A-Za-z][A-Za-z0-9_]*$ || "$n" == _Z* ]]; then
      fail "icpdas_plugin.dll exports a decorated name: $n"
      continue
    fi
    case "$n" in
      definePluginTypes | math) continue ;;
    esac
    base=${n%Description}
    base=${base%Name}
    if [[ -z "${exported[$base]:-}" || -z "${exported[${base}Name]:-}" || -z "${exported[${base}Description]:-}" ]]; then
      fail "icpdas_plugin.dll exports $n, which is not part of a complete X, XName, XDescription triple"
    fi
  done
  for n in definePluginTypes math; do
    [[ -n "${exported[$n]:-}" ]] || fail "icpdas_plugin.dll does not export $n"
  done
  if [[ -n "$native_plugin" ]]; then
    if ! diff -u --label "native ($native_plugin)" --label "windows ($plugin)" \
         <(nm -D --defined-only "$native_plugin" | awk '{print $3}' | sort) \
         <(printf '%s\n' "${names[@]}"); then
      fail "the Windows plug-in's exports differ from the native one's"
    fi
  fi
  echo "icpdas_plugin.dll exports ${#names[@]} names"
fi

sim="$bin/icpdas_plugin_sim.dll"
if [[ ! -f "$sim" ]]; then
  fail "no $sim"
elif [[ -f "$plugin" ]]; then
  if ! diff -u --label "$plugin" --label "$sim" <(exports_of "$plugin" | sort) <(exports_of "$sim" | sort); then
    fail "icpdas_plugin_sim.dll exports other names than icpdas_plugin.dll"
  fi
  while read -r dll; do
    lower=$(tr '[:upper:]' '[:lower:]' <<<"$dll")
    if [[ -n "${own[$lower]:-}" && "$lower" != nvmathlib.dll ]]; then fail "icpdas_plugin_sim.dll imports $dll"; fi
  done < <("$objdump" -p "$sim" | awk '/DLL Name:/ {print $3}')
  echo "icpdas_plugin_sim.dll exports the plug-in's names and carries the SDK stand-ins"
fi

if [[ $failures -gt 0 ]]; then
  echo "$failures problem(s) found" >&2
  exit 1
fi
echo "imports and exports of ${#binaries[@]} Windows binaries: OK"
