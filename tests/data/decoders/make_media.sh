#!/usr/bin/env bash
# Makes the MPEG audio files in this folder. Run from anywhere; needs sox,
# lame and ffmpeg (Debian packages, see scripts/install-deps.sh). Made with
# sox 14.4.2, LAME 3.100 and ffmpeg 5.1 on Debian 12; other versions make
# other bytes, which the tests don't depend on, except for the tag texts.
#
# Source sound: two seconds of a rising sine under pink noise, the two
# channels mixed differently, peaks normalised to -4 dBFS.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sox -n -r 44100 -c 2 -b 16 "$work/source.wav" synth 2 sine 100-6000 pinknoise \
  remix 1,2v0.4 1v0.3,2 gain -n -4

# MPEG-1 layer III, 44.1 kHz stereo, 128 kbit/s CBR; ID3v2.3 in ISO-8859-1
# and an ID3v1.1 tag with track 7 and genre 17 (Rock).
lame --quiet -b 128 --id3v2-latin1 --add-id3v2 --tt "Latin Title" --ta "Some Artist" \
  --tl "An Album" --ty 2004 --tn 7 --tg Rock --tc "A comment" \
  "$work/source.wav" cbr128_44k_stereo.mp3

# MPEG-1 layer III, 44.1 kHz stereo, VBR; ID3v2.3 in UTF-16 with a
# little-endian byte-order mark, and ID3v1 (lame writes its texts as Latin-1).
lame --quiet -V 4 --id3v2-utf16 --add-id3v2 --tt "Café Ünïcode ☕" --ta "Ärtist" \
  --tl "Album ß" --ty 2011 --tn 3/12 --tg Jazz \
  "$work/source.wav" vbr_44k_stereo.mp3

# MPEG-2 layer III, 22050 Hz mono, 32 kbit/s; ID3v1 only.
lame --quiet -m m --resample 22.05 -b 32 --id3v1-only --tt "Mono Title" --ta "Mono Artist" \
  --tl "Mono Album" --ty 1987 --tn 31 --tg 147 \
  "$work/source.wav" mpeg2_22k_mono.mp3

# MPEG-2.5 layer III, 8000 Hz mono, 16 kbit/s; no tag.
lame --quiet -m m --resample 8 -b 16 "$work/source.wav" mpeg25_8k_mono.mp3

# MPEG-1 layer II, 48 kHz stereo, 160 kbit/s; no tag.
ffmpeg -loglevel error -y -i "$work/source.wav" -ar 48000 -c:a mp2 -b:a 160k -f mp2 layer2_48k_stereo.mp2

# ID3v2.4 written by ffmpeg: every text frame in UTF-8, the year as TDRC.
ffmpeg -loglevel error -y -i mpeg25_8k_mono.mp3 -c:a copy -id3v2_version 4 -write_xing 0 \
  -metadata title="Tïtle ☕" -metadata artist="Artist" -metadata album="Albüm" \
  -metadata genre="(13)" -metadata date=1999 -metadata track=5/9 id3v24_utf8.mp3

# MPEG-2 layer III inside RIFF: the 22050 Hz mono file's frames in a WAVE file
# with format tag 85, as ffmpeg writes it (with a fact and a LIST chunk).
ffmpeg -loglevel error -y -i mpeg2_22k_mono.mp3 -c:a copy -f wav riff_wave_22k_mono.mp3
