#!/usr/bin/env bash
# Builds the player if needed and runs it: ./run.sh [path]
# With no path it opens the default list (the bundled demo list on a first start).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
bash "$here/scripts/install-deps.sh"
if [ ! -f "$here/build/build.ninja" ]; then
  cmake -S "$here" -B "$here/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
fi
cmake --build "$here/build" -j "${JOBS:-2}" --target tavrinsonic resources > /dev/null
# A first start (no settings stored yet) given nothing plays the demo list.
config=${XDG_CONFIG_HOME:-$HOME/.config}/tavrinsonic/registry.reg
if [ $# -eq 0 ] && [ ! -e "$config" ]; then
  set -- "$here/build/share/tavrinsonic/demo/demo.m3u"
fi
exec "$here/build/bin/tavrinsonic" "$@"
