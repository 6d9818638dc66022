#!/usr/bin/env bash
# Makes anew everything that is kept in the tree and made: the icon, the sounds, the profiles, the help
# document and all pictures but the one from Windows.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
need sox imagemagick

packaging/windows/make-icon.sh
assets/make-sounds.sh
docs/make-help.sh
docs/take-screenshots.sh 200 rehearsal
