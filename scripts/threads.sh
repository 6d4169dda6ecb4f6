#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Looks for races and for memory that is used wrongly: the tests of the clipboard's thread and of the threads beside it, and
# 50 fixes on a desktop, under ThreadSanitizer; the unit suites under valgrind. Exits 1 when one of them finds something.
# Both slow a program down ten times and more, so a test that misses its time is told and does not count.
set -u -o pipefail
cd "$(dirname "$0")/.." || exit 1
export LC_ALL=C.UTF-8
for tool in valgrind setarch; do
  command -v $tool >/dev/null 2>&1 || { echo "$tool is missing"; exit 1; }
done

jobs=$(nproc)
bad=0
reports=build/tsan/reports

verdict() { # NAME STATUS
  if [ "$2" = 0 ]; then echo "ok      $1"; else echo "FAILED  $1"; bad=1; fi
}

# A program that has gone through its tests: what they found themselves is for a program at full speed.
ran() { # NAME STATUS OUTPUT
  local missed
  missed=$(grep -c '^\[  FAILED  \].*ms)$' "$3")
  if [ "$2" -le 1 ] && grep -q '^\[=*\] [0-9]* tests* from .* ran' "$3"; then
    echo "ok      $1$([ "$missed" = 0 ] || echo ", $missed tests missed their time")"
  else
    tail -40 "$3"
    verdict "$1" 1
  fi
}

programs="linux_clipboard_test linux_selection_test linux_session_test linux_accessibility_test"
cmake --preset tsan >/dev/null && cmake --build --preset tsan -j "$jobs" \
  --target lexwend lexwend-convert lexwend_host_module qt6_editor $programs >/dev/null || exit 1
rm -rf "$reports" && mkdir -p "$reports"
# GLib, Qt and D-Bus are not instrumented: what they hand from thread to thread looks like a race. Some tests have another
# program in a process that they fork, and it has threads.
export TSAN_OPTIONS="ignore_noninstrumented_modules=1 second_deadlock_stack=1 die_after_fork=0 log_path=$PWD/$reports/report"
for program in $programs; do
  path=$(find build/tsan/tests -name "$program" -type f)
  # With its addresses at random the sanitizer of clang 14 does not start on every kernel.
  setarch -R "$path" --gtest_brief=1 >"$reports/$program.txt" 2>&1
  ran "ThreadSanitizer: $program" $? "$reports/$program.txt"
done
setarch -R /usr/bin/python3 -B bench/endurance.py build/tsan/app/lexwend build/tsan/tools/lexwend-convert \
  build/tsan/tests/desktop/qt6_editor --fixes 50 --desktops 1 --any-memory
verdict "ThreadSanitizer: 50 fixes" $?
found=$(find "$reports" -name 'report.*' | wc -l)
[ "$found" = 0 ] || cat "$reports"/report.*
verdict "ThreadSanitizer: $found reports" "$found"
unset TSAN_OPTIONS

programs="test_support test_input test_text hotkey_test app_test test_tools lexwend_fake_host_test lexwend_scenario_script_test
  linux_session_test linux_selection_test linux_clipboard_test"
cmake --preset dev >/dev/null && cmake --build --preset dev -j "$jobs" --target $programs >/dev/null || exit 1
for program in $programs; do
  path=$(find build/dev/tests -name "$program" -type f)
  # Not those of how exactly a timer keeps its time, nor those that go through every mask: valgrind is slow.
  valgrind -q --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite --trace-children=no \
    "$path" --gtest_brief=1 --gtest_filter=-GLibRunLoop.*:*everyMaskPuts*:*ForEveryKeyAndMask* >"$reports/valgrind-$program.txt" 2>&1
  ran "valgrind: $program" $? "$reports/valgrind-$program.txt"
done
exit $bad
