#!/usr/bin/env bash
# Builds the plug-in and the command-line host, and runs the quick-start
# script against the simulated modules.
#
#   bash scripts/quickstart.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh
cmake --preset default
cmake --build --preset default --target icphost icpdas_plugin
build/default/bin/icphost run examples/quickstart
