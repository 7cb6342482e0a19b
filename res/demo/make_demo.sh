#!/usr/bin/env bash
# Makes the demo list that ./run.sh plays on a first start: three short
# tracks of our own making and the list that names them. Run from anywhere;
# needs sox (scripts/install-deps.sh). Made with SoX 14.4.2; -D turns
# dither off, so the same sox makes the same bytes.
set -euo pipefail
cd "$(dirname "$0")"

# "Bells": plucked notes of a C major arpeggio, one after the other.
notes=()
for note in C4 E4 G4 C5 G4 E4; do
  sox -D -n -r 22050 -c 2 -b 16 "note_$note.wav" synth 0.75 pluck "$note" vol 0.6 fade 0 0.75 0.4
  notes+=("note_$note.wav")
done
sox -D "${notes[@]}" 01_bells.wav
rm -f "${notes[@]}"

# "Chord": a soft A minor triad, one note on each side and one in the middle.
sox -D -n -r 22050 -c 2 -b 16 02_chord.wav synth 4 sine A3 sine C4 sine E4 remix 1,3 2,3 \
  vol 0.25 fade 0.3 4 0.8

# "Sweep": a tone rising from 200 Hz to 2 kHz, left to right.
sox -D -n -r 22050 -c 2 -b 16 03_sweep.wav synth 4 sine 200-2000 sine 200-2000 \
  remix 1v1,2v0 1v0.3,2v1 vol 0.3 fade 0.2 4 0.5

cat > demo.m3u <<'LIST'
#EXTM3U
#EXTINF:4,Tavrinsonic demo - Bells
01_bells.wav
#EXTINF:4,Tavrinsonic demo - Chord
02_chord.wav
#EXTINF:4,Tavrinsonic demo - Sweep
03_sweep.wav
LIST
