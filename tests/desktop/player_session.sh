# What the desktop tests share, sourced after `set -euo pipefail`: the check
# that a session bus runs, a private home for the player (folders, runtime
# folder, offscreen window, SDL's dummy sound), and the count of failures.
[ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || { echo "FAIL: no session bus (run under dbus-run-session)"; exit 1; }
work=$(mktemp -d)
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
export QT_QPA_PLATFORM=offscreen SDL_AUDIODRIVER=dummy
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
