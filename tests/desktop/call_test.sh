#!/usr/bin/env bash
# Phone calls pause and resume the player: a stand-in ModemManager on a
# private bus that plays the system bus (a second dbus-daemon, named by
# DBUS_SYSTEM_BUS_ADDRESS), and the two call messages posted by another
# program through the instance socket. The player's state is read through
# MPRIS with playerctl. CTest runs it under dbus-run-session for the session bus.
# Usage: call_test.sh PLAYER STAND_IN
set -euo pipefail
player=$1
stand_in=$2
source "$(dirname "$0")/player_session.sh"
pid=
bus=
modem=
cleanup() {
  exec 3>&- 2>/dev/null || true
  [ -n "$modem" ] && kill "$modem" 2>/dev/null || true
  [ -n "$pid" ] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true
  [ -n "$bus" ] && kill "$bus" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
status() { playerctl -p tavrinsonic status 2>/dev/null || true; }
# Waits up to 5 s for the player's status to become VALUE.
expect() {
  for _ in $(seq 50); do
    [ "$(status)" = "$1" ] && { echo "ok: $2: $1"; return 0; }
    sleep 0.1
  done
  fail "$2: the status is '$(status)', expected '$1'"
}
# The status stays VALUE for a second.
stays() {
  for _ in $(seq 10); do
    [ "$(status)" = "$1" ] || { fail "$2: the status became '$(status)', expected '$1' to stay"; return 0; }
    sleep 0.1
  done
  echo "ok: $2: stays $1"
}
# A command to the stand-in, once it has answered.
modem() {
  echo "$*" >&3
  local answer
  read -r -t 5 answer <&4 || answer="(nothing)"
  [ "$answer" = ok ] || fail "the stand-in answered '$answer' to '$*'"
}
# A message posted by another program through the instance socket.
post() {
  /usr/bin/python3 - "$1" <<'PY'
import os, socket, struct, sys
s = socket.socket(socket.AF_UNIX)
s.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], "tavrinsonic", "instance"))
s.sendall(struct.pack("<II", int(sys.argv[1]), 0))
s.recv(1)
PY
}

# The "system" bus, and a ModemManager that isn't there yet.
dbus-daemon --session --nofork --print-address=1 > "$work/bus.address" &
bus=$!
for _ in $(seq 50); do [ -s "$work/bus.address" ] && break; sleep 0.1; done
export DBUS_SYSTEM_BUS_ADDRESS=$(head -n 1 "$work/bus.address")
mkfifo "$work/to-modem" "$work/from-modem"
/usr/bin/python3 "$stand_in" < "$work/to-modem" > "$work/from-modem" &
modem=$!
exec 3> "$work/to-modem" 4< "$work/from-modem"
read -r -t 5 ready <&4 && [ "$ready" = ready ] || { echo "FAIL: the stand-in didn't start"; exit 1; }

sox -n -r 44100 -c 2 -b 16 "$work/tone.wav" synth 120 sine 440 vol 0.3
"$player" "$work/tone.wav" > "$work/player.log" 2>&1 &
pid=$!
expect Playing "playing before any modem"

# ModemManager comes after the player.
modem own
modem add 1 3
expect Paused "an incoming call rings"
modem state 1 4
stays Paused "the call is answered"
modem state 1 7
expect Playing "the call ends"
modem delete 1

# A rejected call: no end, the player waits for the user.
modem add 2 3
expect Paused "a second call rings"
modem state 2 7
stays Paused "the call is rejected"
modem delete 2
playerctl -p tavrinsonic play-pause
expect Playing "the user plays again"

# A second call while the first is on: the music comes back after both.
modem add 3 4
expect Paused "an outgoing call connects"
modem add 4 6
modem state 4 7
modem delete 4
stays Paused "a waiting call is rejected"
modem state 3 7
expect Playing "the first call ends"
modem delete 3

# ModemManager goes away mid-call: the player stays paused; when it comes
# back without the call, nothing changes.
modem add 5 4
expect Paused "a call before the service goes"
modem vanish
stays Paused "the service vanished mid-call"
modem own
stays Paused "the service is back without the call"
playerctl -p tavrinsonic play-pause
expect Playing "the user plays again"

# Stopped during a call: nothing happens.
playerctl -p tavrinsonic stop
expect Stopped "stopped"
modem add 6 3
modem state 6 4
modem state 6 7
stays Stopped "a call while stopped"
playerctl -p tavrinsonic play
expect Playing "played again"

# Another program posts the two messages through the instance socket.
post 10053
expect Paused "10053 posted by another program"
post 10053
stays Paused "10053 again"
post 10054
expect Playing "10054 posted by another program"

kill "$pid"
wait "$pid" 2>/dev/null || true
pid=
[ "$failures" -eq 0 ] && echo "PASS" || { echo "$failures failures"; exit 1; }
