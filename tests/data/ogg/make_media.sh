#!/usr/bin/env bash
# Makes the Ogg Vorbis files in this folder. Run from anywhere; needs sox and
# oggenc (Debian packages sox and vorbis-tools, see scripts/install-deps.sh).
# Made with sox 14.4.2 and oggenc 1.4.2 (libvorbis 1.3.7) on Debian 12; other
# versions make other bytes, which the tests don't depend on, except for the
# comment texts. The tests compare the decoder's sound with oggdec's decode
# of these same files, made at test time.
#
# Source sound: a rising sine under pink noise, the two channels mixed
# differently, peaks normalised to -4 dBFS.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

source_sound() {  # rate channels seconds out
  sox -n -r "$1" -c 2 -b 16 "$work/stereo.wav" synth "$3" sine 100-6000 pinknoise \
    remix 1,2v0.4 1v0.3,2 gain -n -4
  if [ "$2" -eq 1 ]; then sox "$work/stereo.wav" -c 1 "$4"; else cp "$work/stereo.wav" "$4"; fi
}

# 44.1 kHz stereo, quality 5, 4 s; comments in UTF-8 (oggenc writes its
# names in small letters), a track number "3/12", and a TITLE that a later
# title replaces.
source_sound 44100 2 4 "$work/a.wav"
oggenc -Q -q 5 -c "TITLE=First Title" -t "Café Ünïcode ☕" -a "Ärtist" -l "Album ß" -d 2011 \
  -N 3/12 -G Jazz -c "COMMENT=A comment" -o stereo_44k.ogg "$work/a.wav"

# 22050 Hz mono, quality 2, 3 s; only an artist.
source_sound 22050 1 3 "$work/b.wav"
oggenc -Q -q 2 -a "Mono Artist" -o mono_22k.ogg "$work/b.wav"

# 48 kHz stereo, quality 0, 2 s; no comments but the encoder's.
source_sound 48000 2 2 "$work/c.wav"
oggenc -Q -q 0 -o stereo_48k.ogg "$work/c.wav"

# 8000 Hz mono, quality 1, 0.5 s: shorter than the output's prefill.
source_sound 8000 1 0.5 "$work/d.wav"
oggenc -Q -q 1 -t "Short" -o short_8k_mono.ogg "$work/d.wav"

# A chained file: two links of 44.1 kHz stereo, 2 s each, titled apart.
source_sound 44100 2 2 "$work/e.wav"
oggenc -Q -q 3 -t "Link One" -a "Chain" -o "$work/one.ogg" "$work/e.wav"
sox "$work/e.wav" "$work/f.wav" reverse
oggenc -Q -q 3 -t "Link Two" -a "Chain" -o "$work/two.ogg" "$work/f.wav"
cat "$work/one.ogg" "$work/two.ogg" > chained.ogg
