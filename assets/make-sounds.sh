#!/usr/bin/env bash
# Generates the program's three sounds from plain tones with sox, at equal loudness. The files are
# kept beside this script, so that a build needs no sox; run it again after changing a sound.
set -euo pipefail
cd "$(dirname "$0")"

raw=$(mktemp --suffix=.wav)
trap 'rm -f "$raw"' EXIT
loudness=-22 # dB, root mean square

# make NAME TONE...: writes the tones in sequence; each is "SECONDS FREQUENCY FREQUENCY".
make() {
    local name=$1 tone parts=()
    shift
    for tone in "$@"; do
        read -r seconds low high <<<"$tone"
        parts+=("|sox -n -r 22050 -c 1 -p synth $seconds sine $low sine $high remix - fade q 0.01 $seconds 0.06")
    done
    sox --no-dither "${parts[@]}" -b 16 "$raw"
    local level
    level=$(sox "$raw" -n stats 2>&1 | awk '/RMS lev dB/ { print $4 }')
    sox --no-dither "$raw" "$name" gain "$(awk "BEGIN { print $loudness - ($level) }")"
    echo "$name: $(sox "$name" -n stats 2>&1 | awk '/RMS lev dB|Length s/ { printf "%s ", $NF }')"
}

make sound_ok.wav "0.12 659 1319" "0.22 880 1760"      # up: all is well
make sound_warning.wav "0.16 587 880" "0.26 440 660"   # down: something went
make sound_failure.wav "0.10 523 740" "0.10 392 554" "0.10 523 740" "0.18 392 554" # to and fro
