#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The line coverage of the rooms that know no platform, by all tests but those of the desktop; fails below the limit.
#   scripts/coverage.sh                  builds the preset `coverage`, runs its tests, reports
#   scripts/coverage.sh --reset BUILD    forgets the counts of an instrumented build
#   scripts/coverage.sh --report BUILD   reports what has run there since
set -e -u -o pipefail
cd "$(dirname "$0")/.."

limit=97

# Counts of an earlier run would hide what this one does not reach.
reset() { find "$1" -name '*.gcda' -delete; }

report() {
  gcovr --root . --object-directory "$1" --gcov-executable gcov \
    --filter 'core/' --filter 'input/' --filter 'text/' --filter 'hotkey/' --filter 'app/' --filter 'support/' \
    --exclude-throw-branches --print-summary --fail-under-line "$limit"
}

case ${1:-} in
  --reset) reset "$2" ;;
  --report) report "$2" ;;
  '')
    cmake --preset coverage
    cmake --build --preset coverage
    reset build/coverage
    ctest --test-dir build/coverage -j "$(getconf _NPROCESSORS_ONLN)" --output-on-failure --no-tests=error -LE desktop
    report build/coverage
    ;;
  *)
    echo "usage: scripts/coverage.sh [--reset BUILD | --report BUILD]" >&2
    exit 2
    ;;
esac
