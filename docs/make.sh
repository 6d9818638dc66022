#!/usr/bin/env bash
# Regenerates all generated files in the tree: the icon, the sounds, the profiles, the help document
# and all pictures except the one from Windows.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
need sox imagemagick

packaging/windows/make-icon.sh
assets/make-sounds.sh
docs/make-help.sh
docs/take-screenshots.sh 200 rehearsal
