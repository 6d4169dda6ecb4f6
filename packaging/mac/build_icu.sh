#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# On a Mac: a static ICU for both processors and for macOS 13, which Homebrew does not offer. Never run on macOS yet.
#   packaging/mac/build_icu.sh SOURCE FOLDER
# SOURCE is the unpacked archive of ICU4C's own release (the folder that holds source/configure), FOLDER what to make.
set -eu -o pipefail

if [ $# -ne 2 ] || [ ! -x "$1/source/configure" ]; then
  echo "usage: $0 SOURCE FOLDER   (SOURCE holds source/configure of ICU4C)" >&2
  exit 2
fi
[ "$(uname -s)" = Darwin ] || { echo "error: this builds on a Mac only" >&2; exit 1; }
configure=$(cd "$1/source" && pwd)/configure
mkdir -p "$2"
target=$(cd "$2" && pwd)
oldest=13.0
own=$(uname -m)
other=x86_64
[ "$own" = arm64 ] || other=arm64

# One processor after the other: the tools that pack the data must run here, so the other build borrows them.
build() { # ARCHITECTURE OPTION...
  local architecture=$1
  shift
  mkdir -p "$target/build-$architecture"
  (
    cd "$target/build-$architecture"
    flags="-arch $architecture -mmacosx-version-min=$oldest -O2"
    CFLAGS=$flags CXXFLAGS="$flags -std=c++17" LDFLAGS="-arch $architecture" "$configure" --prefix="$target/$architecture" \
      --enable-static --disable-shared --disable-tests --disable-samples --disable-extras --with-data-packaging=static "$@"
    make -j "$(sysctl -n hw.ncpu)"
    make install
  )
}
build "$own"
case $other in arm64) triple=aarch64-apple-darwin ;; *) triple=x86_64-apple-darwin ;; esac
build "$other" --host="$triple" --with-cross-build="$target/build-$own"

rm -rf "${target:?}/lib" "${target:?}/include"
mkdir -p "$target/lib"
cp -R "$target/$own/include" "$target/include"
for library in libicuuc.a libicudata.a; do
  lipo -create "$target/arm64/lib/$library" "$target/x86_64/lib/$library" -output "$target/lib/$library"
done
echo "the ICU for both processors is in $target; give it to packaging/mac/package.sh --universal"
