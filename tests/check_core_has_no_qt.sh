#!/usr/bin/env bash
# Fails when a file of the core (everything under src/ except the shell's user
# interface and the platform's Qt corner) includes a Qt header.
src=${1:?usage: check_core_has_no_qt.sh <src>}
hits=$(grep -rn -E '#\s*include\s*[<"]Q[A-Za-z]' "$src" \
  --include='*.h' --include='*.cpp' | grep -v -E "^$src/(shell/ui|platform/qt)/" || true)
if [ -n "$hits" ]; then
  echo "Core files include Qt:"
  echo "$hits"
  exit 1
fi
echo "core is free of Qt"
