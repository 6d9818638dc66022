#!/usr/bin/env bash
# Checks the layout of the source tree and the style rules that no tool checks. Prints every line
# that breaks a rule, and fails if there is one.
cd "$(dirname "$0")/.."

all=(src practice companion rehearse tests bench)
lines() { grep -rnP --include='*.cpp' --include='*.h' "$@"; }

broken_rules() {
  # Each room may include itself and those before it; of the other programs, only rehearse may
  # include more than itself and the platform.
  local seen="" room
  for room in platform model link hardcore persist engine ui app; do
    seen+="|$room"
    lines "^\s*#\s*include \"(?!(${seen#|})/)" "src/$room"
  done
  lines '^\s*#\s*include "(?!(companion|platform)/|companion\.h")' companion
  lines '^\s*#\s*include "(?!(practice|platform)/)' practice
  lines '^\s*#\s*include "(?!(rehearse|platform|model|link|persist|engine)/|ui/look\.h)' rehearse
  # Only the platform contains code for one system.
  lines '^\s*#\s*(if|include <(unistd|sys/|X11/|fcntl|signal))' src practice companion rehearse |
    grep -v '^src/platform/'
  lines '<windows\.h>' "${all[@]}" | grep -vE '^(src/platform/windows/|tests/native_windows\.cpp|bench/bare_window\.cpp)'
  # Locals are not const.
  local name='(\w*[^\W_]|\[[^]]*\])(, \w+)*( =| : |[({;[]|$)'
  lines "^\s+((if|for|while) \()?(static )?const [\w:]+(<[^=;(){}]*>)? $name" "${all[@]}"
}

! broken_rules | grep .
