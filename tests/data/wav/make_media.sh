#!/usr/bin/env bash
# Makes the WAV and AAC files in this folder. Run from anywhere; needs sox and
# ffmpeg (Debian packages, see scripts/install-deps.sh). Made with SoX 14.4.2
# and ffmpeg 5.1 on Debian 12; the tests compare against sox's and ffmpeg's
# decodes of these very files, so other versions' bytes serve as well.
#
# Source sound: a sine on a DC offset, so that every sample has a magnitude
# of well over 500 and the player's silence threshold never drops one: the
# samples that reach the capture device can then be compared exactly. -D
# turns dither off.
set -euo pipefail
cd "$(dirname "$0")"

mono=(synth 1.5 sine 440 vol 0.3 dcshift 0.45)
stereo=(synth 1.5 sine 440 sine 660 vol 0.3 dcshift 0.45)

# PCM, 8000 Hz: 16-bit mono and stereo, 8-bit (unsigned) mono.
sox -D -n -r 8000 -c 1 -b 16 pcm16_mono.wav "${mono[@]}"
sox -D -n -r 8000 -c 2 -b 16 pcm16_stereo.wav "${stereo[@]}"
sox -D -n -r 8000 -c 1 -b 8 pcm8_mono.wav "${mono[@]}"

# Microsoft ADPCM, 8000 Hz, mono and stereo (blocks of 256 and 512 bytes,
# sox's fmt chunk of 50 bytes with the seven standard coefficient pairs, and a
# "fact" chunk between fmt and data).
sox -D -n -r 8000 -c 1 -e ms-adpcm adpcm_mono.wav "${mono[@]}"
sox -D -n -r 8000 -c 2 -e ms-adpcm adpcm_stereo.wav "${stereo[@]}"

# AAC-LC in ADTS, 32000 Hz mono, 48 kbit/s, by ffmpeg's own encoder.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sox -D -n -r 32000 -c 1 -b 16 "$work/source.wav" "${mono[@]}"
ffmpeg -loglevel error -y -i "$work/source.wav" -c:a aac -b:a 48k -f adts aac_mono.aac
