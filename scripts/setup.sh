#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What the machine must have, and how it gets there: apt-get on Debian, Homebrew on macOS.
#
# Sourced by ./run and ./test, which then call lexwend_setup; started by itself it installs the sets it is given:
#   scripts/setup.sh build test desktop bench
# Only what is missing is installed. When nothing is missing the network is not touched.
# Written for the bash 3.2 of macOS too: no associative arrays, no mapfile.

# To compile the rooms for the host in memory and test them there.
packages_fast="g++ cmake ninja-build libicu-dev libhwy-dev libgtest-dev libgmock-dev unicode-data python3"

# To compile the agent and the command-line tools.
packages_build="g++ cmake ninja-build pkg-config libicu-dev libhwy-dev qt6-base-dev qt6-base-private-dev qt6-svg-dev libglib2.0-dev
  libxcb1-dev libxcb-ewmh-dev libxcb-res0-dev libxcb-xfixes0-dev libxcb-xinput-dev libxcb-xkb-dev libxcb-xtest0-dev
  libxkbcommon-dev libxkbcommon-x11-dev libxkbregistry-dev libatspi2.0-dev libwayland-dev wayland-protocols plasma-wayland-protocols libjson-glib-dev"

# To run a fix in a private session and look at it: a display, a bus, a window manager, an editor, fonts with Hebrew,
# the accessibility interface and raw key events from Python, and screenshots.
packages_desktop="xvfb x11-utils x11-xkb-utils xkb-data dbus at-spi2-core openbox mousepad fonts-dejavu-core
  imagemagick python3 python3-gi gir1.2-atspi-2.0 libx11-6 libxtst6
  sway xwayland grim wl-clipboard qt6-wayland"

# For the test run: GoogleTest, Unicode's own test data, the second compiler with its tools, what the macOS host is
# compiled, linked and packed with on Linux, and the other applications of the desktop tests.
packages_test="libgtest-dev libgmock-dev unicode-data python3 gcovr
  clang-14 clang-format-14 clang-tidy-14 lld-14 llvm-14 libclang-rt-14-dev libc++-14-dev libc++abi-14-dev musl-dev libblocksruntime-dev
  libbenchmark-dev icnsutils zip vim tint2 xfce4-panel xfwm4 gnome-text-editor featherpad l3afpad bluefish xterm xfonts-base xclip xdotool strace valgrind
  x11-xserver-utils libglib2.0-bin foot qtwayland5 kate
  gir1.2-gtk-3.0 gir1.2-gtk-4.0 gir1.2-vte-2.91"

# The large applications of `./test --all`, and what makes the roots of its desktops.
packages_large="emacs-nox chromium firefox-esr libreoffice-writer libreoffice-calc libreoffice-gtk3 mmdebstrap"

# To make and check the Debian package, and to try it in a fresh root.
packages_package="build-essential dpkg-dev debhelper fakeroot lintian desktop-file-utils appstream man-db mmdebstrap xvfb x11-xkb-utils"

# For the figures of fixes in real applications, beside the set `desktop`.
packages_figures="xclip featherpad"

# The benchmarks of the preset `bench`.
packages_bench="libbenchmark-dev"

# Colour on a terminal only, and never where NO_COLOR is set.
setup_say() {
  if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then printf '\033[1m%s\033[0m\n' "$*"; else printf '%s\n' "$*"; fi
}

setup_fail() {
  if [ -t 2 ] && [ -z "${NO_COLOR:-}" ]; then printf '\033[31merror:\033[0m %s\n' "$*" >&2; else printf 'error: %s\n' "$*" >&2; fi
  exit 1
}

# The packages of the named sets, one per line, each once.
setup_packages() {
  local set
  for set in "$@"; do
    case $set in
      fast) printf '%s\n' $packages_fast ;;
      build) printf '%s\n' $packages_build ;;
      desktop) printf '%s\n' $packages_desktop ;;
      test) printf '%s\n' $packages_test ;;
      large) printf '%s\n' $packages_large ;;
      figures) printf '%s\n' $packages_figures ;;
      bench) printf '%s\n' $packages_bench ;;
      package) printf '%s\n' $packages_package ;;
    esac
  done | sort -u
}

# Reads package names, prints those that are not installed. Needs no /dev/fd, which a bare root may lack.
setup_missing() {
  local wanted installed
  wanted=$(cat)
  installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null | sed -n 's/ installed$//p' | sort -u)
  printf '%s\n' "$wanted" | sort -u | grep -vxF "$installed"
}

# Runs a command as root: apt-get's questions are switched off, a lock held by another program is waited for.
setup_as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    env DEBIAN_FRONTEND=noninteractive "$@"
  else
    sudo env DEBIAN_FRONTEND=noninteractive "$@"
  fi
}

# A line that the next one writes over: on a terminal only. Without words it clears the line.
setup_progress() {
  [ ! -t 1 ] || printf '\r\033[K%s' "$*"
}

# apt-get with its own words in the log file, and how far it is.
setup_apt_get() {
  local log=$1 kind percent text status
  shift
  setup_as_root sh -c 'exec apt-get -q -y -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 -o Dpkg::Use-Pty=0 -o APT::Status-Fd=3 "$@" 3>&1 >&2' \
    sh "$@" 2>>"$log" </dev/null |
    while IFS=: read -r kind _ percent text; do
      case $kind in
        dlstatus) setup_progress "  fetching   ${percent%%.*} %" ;;
        pmstatus) setup_progress "  installing ${percent%%.*} %  $text" ;;
      esac
    done
  status=${PIPESTATUS[0]}
  setup_progress
  return "$status"
}

# What apt-get says that an installation of these packages fetches and takes, with all that they need in turn.
setup_size() {
  setup_as_root env LC_ALL=C apt-get -q --assume-no -o DPkg::Lock::Timeout=300 --no-install-recommends install "$@" 2>/dev/null |
    sed -n -e 's/^Need to get \(.*\) of archives\.$/\1 to fetch/p' -e 's/^After this operation, \(.*\) of additional disk space.*/\1 on the disk/p' |
    paste -s -d , - | sed 's/,/, /'
}

setup_debian() {
  local missing count log size why
  missing=$(setup_packages "$@" | setup_missing)
  if [ -z "$missing" ]; then
    setup_say "set-up: everything for $* is installed"
    return 0
  fi
  count=$(printf '%s\n' "$missing" | wc -l | tr -d ' ')
  setup_say "set-up: $count packages are missing for $*:"
  printf '%s\n' $missing | paste -s -d ' ' - | fold -s -w 110 | sed 's/^/  /'
  if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null 2>&1; then
    setup_fail "packages must be installed, but you are not root and there is no sudo: run this as root once, or install the packages above"
  fi
  mkdir -p build
  log=build/setup.log
  : >"$log"
  setup_say "set-up: apt-get reads its package lists"
  setup_apt_get "$log" update ||
    setup_fail "apt-get could not read its package lists ($(setup_reason "$log")); the whole story is in $log"
  size=$(setup_size $missing)
  setup_say "set-up: installing them with apt-get, and what they need in turn: ${size:-it does not say how much}"
  if ! setup_apt_get "$log" install --no-install-recommends $missing; then
    setup_fail "apt-get could not install the packages ($(setup_reason "$log")); the whole story is in $log"
  fi
  why=$(setup_packages "$@" | setup_missing | paste -s -d ' ' -)
  [ -z "$why" ] || setup_fail "apt-get finished, but these packages are still missing: $why; the whole story is in $log"
  setup_say "set-up: done"
}

# apt-get's own first error, for the one sentence that the user reads.
setup_reason() {
  local line
  line=$(grep -m 1 -E '^(E:|dpkg: error|sudo:)' "$1" || tail -n 1 "$1")
  printf '%s' "${line:-it gave no reason}"
}

# Homebrew installs the Brewfile whole: it is short, and `brew bundle check` says within a second that nothing is missing.
setup_macos() {
  xcode-select -p >/dev/null 2>&1 ||
    setup_fail "the compiler of Xcode's command line tools is missing: run 'xcode-select --install' and start again"
  command -v brew >/dev/null 2>&1 ||
    setup_fail "Homebrew is missing: install it as https://brew.sh says and start again"
  if brew bundle check --no-upgrade --file=Brewfile >/dev/null 2>&1; then
    setup_say "set-up: everything in the Brewfile is installed"
    return 0
  fi
  setup_say "set-up: installing what the Brewfile lists with Homebrew"
  brew bundle install --no-upgrade --file=Brewfile ||
    setup_fail "Homebrew could not install what the Brewfile lists; its own words stand above"
  setup_say "set-up: done"
}

# Homebrew keeps its ICU apart from the system's, so CMake has to be told where it is, unless the user has told it.
setup_environment() {
  [ "$(uname -s)" = Darwin ] || return 0
  setup_say "macOS: the agent was compiled, linked and executed against doubles for it, but never run on macOS;"
  setup_say "       docs/macos.md has a checklist of fifteen minutes for whoever is the first"
  [ -z "${ICU_ROOT:-}" ] || return 0
  ICU_ROOT=$(brew --prefix icu4c) ||
    setup_fail "Homebrew does not know where its ICU is: run 'brew install icu4c', or name another with ICU_ROOT=/path/to/icu"
  export ICU_ROOT
}

# lexwend_setup SET...: the working folder must be the root of the tree.
lexwend_setup() {
  local set
  for set in "$@"; do
    case $set in
      fast | build | desktop | test | large | figures | bench | package) ;;
      *) setup_fail "there is no set of packages called '$set'; the sets are fast, build, desktop, test, large, figures, bench and package" ;;
    esac
  done
  case $(uname -s) in
    Darwin) setup_macos ;;
    *)
      if ! command -v apt-get >/dev/null 2>&1 || ! command -v dpkg-query >/dev/null 2>&1; then
        setup_fail "set-up knows apt-get (Debian 12) and Homebrew (macOS); install the counterparts of what scripts/setup.sh lists, then start again with --no-install"
      fi
      setup_debian "$@"
      ;;
  esac
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  set -u -o pipefail
  cd "$(dirname "$0")/.." || exit 1
  [ $# -gt 0 ] || setup_fail "usage: scripts/setup.sh SET... (fast, build, desktop, test, large, bench, package)"
  lexwend_setup "$@"
fi
