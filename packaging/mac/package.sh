#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# On a Mac: builds Lexwend.app, signs it for the hardened runtime, checks it, zips it, and runs the self-test out of the
# unpacked archive. Written for the bash 3.2 of macOS. It was never run on macOS; docs/macos.md tells what is known.
set -u -o pipefail
cd "$(dirname "$0")/../.." || exit 1
. scripts/setup.sh

usage() {
  cat <<'END'
usage: packaging/mac/package.sh [--universal ICU] [--identity NAME] [--notarise PROFILE] [--url URL] [--no-install]
  (no option)         for the processor of this Mac, signed ad hoc: it starts here and, by "Open Anyway", elsewhere
  --universal ICU     for both processors, with the static ICU in that folder (packaging/mac/build_icu.sh makes one)
  --identity NAME     the certificate that signs; with a "Developer ID Application" one the archive can be notarised
  --notarise PROFILE  hand the archive to Apple and staple the answer; PROFILE is one of `notarytool store-credentials`
  --url URL           where the archive will be downloaded from: writes the Homebrew cask as well
  --no-install        do not install anything; take what the machine has
END
}

identity=- icu="" profile="" url="" install=yes
while [ $# -gt 0 ]; do
  case $1 in
    --universal | --identity | --notarise | --url)
      if [ $# -lt 2 ] || [ -z "$2" ]; then
        usage >&2
        exit 2
      fi
      case $1 in
        --universal) icu=$2 ;;
        --identity) identity=$2 ;;
        --notarise) profile=$2 ;;
        --url) url=$2 ;;
      esac
      shift
      ;;
    --no-install) install=no ;;
    -h | --help)
      usage
      exit 0
      ;;
    *)
      usage >&2
      exit 2
      ;;
  esac
  shift
done

[ "$(uname -s)" = Darwin ] || setup_fail "Lexwend.app is packed on a Mac; this is $(uname -s)"
[ -z "$profile" ] || [ "$identity" != - ] || setup_fail "Apple notarises no ad-hoc signature: name a Developer ID with --identity"
[ -z "$icu" ] || [ -f "$icu/lib/libicuuc.a" ] || setup_fail "there is no static ICU in $icu: lib/libicuuc.a is missing"

# ---- build
[ "$install" = no ] || lexwend_setup build
# The preset keeps what an earlier run was told, so each of the three is told every time.
if [ -n "$icu" ]; then
  architectures="arm64;x86_64"
  ICU_ROOT=$icu
  export ICU_ROOT
else
  architectures=$(uname -m)
fi
setup_environment
build=build/package-mac
setup_say "package: building for $architectures"
cmake --preset release -B "$build" "-DCMAKE_OSX_ARCHITECTURES=$architectures" "-DICU_ROOT=$ICU_ROOT" ||
  setup_fail "CMake could not configure the build; its own words stand above"
cmake --build "$build" || setup_fail "the build failed; the compiler's own words stand above"

# ---- sign
packed=build/packages
app=$packed/Lexwend.app
program=$app/Contents/MacOS/Lexwend
rm -rf "$app" && mkdir -p "$packed" && cp -R "$build/app/Lexwend.app" "$app" ||
  setup_fail "Lexwend.app could not be put into $packed"
timestamp=--timestamp
[ "$identity" != - ] || timestamp=--timestamp=none # the time comes from Apple, for a certificate of Apple's
codesign --force --options runtime $timestamp --entitlements packaging/mac/Lexwend.entitlements --sign "$identity" "$app" ||
  setup_fail "codesign did not sign Lexwend.app as '$identity'"

# ---- check
info() { plutil -extract "$1" raw "$app/Contents/Info.plist"; }
check_bundle() {
  local found library
  plutil -lint "$app/Contents/Info.plist" >/dev/null || setup_fail "the property list is damaged"
  found=$(info CFBundleIdentifier)
  [ "$found" = org.lexwend.Lexwend ] || setup_fail "the identifier of the bundle is '$found'"
  found=$(info LSUIElement)
  [ "$found" = true ] || setup_fail "the bundle would have an icon in the Dock"
  found=$(lipo -archs "$program" | tr ' ' '\n' | sort | paste -s -d ';' -)
  [ "$found" = "$architectures" ] || setup_fail "the program is for '$found' and not for '$architectures'"
  otool -L "$program" | sed -n 's/^[[:space:]]\{1,\}\([^ ]*\) (.*/\1/p' | sort -u >"$packed/libraries.txt"
  [ -s "$packed/libraries.txt" ] || setup_fail "otool names no library of the program"
  while read -r library; do
    case $library in
      /usr/lib/* | /System/Library/Frameworks/*) ;;
      *) setup_fail "the program needs $library, which other Macs do not have" ;;
    esac
  done <"$packed/libraries.txt"
  rm -f "$packed/libraries.txt"
  codesign --verify --strict "$app" || setup_fail "the signature of $app does not hold"
  codesign --display --verbose "$app" 2>&1 | grep -q 'flags=.*runtime' || setup_fail "$app lacks the hardened runtime"
}
self_test() {
  local said
  said=$("$1/Contents/MacOS/Lexwend" --selftest) || setup_fail "the self-test of $1 did not end well"
  case $said in
    *"ALL PASSED") ;;
    *)
      printf '%s\n' "$said" >&2
      setup_fail "the self-test of $1 failed. Its samples are those of the layout named Hebrew: with another Hebrew layout enabled that is right"
      ;;
  esac
}
check_bundle
version=$(info CFBundleShortVersionString)
kind=$(uname -m)
[ -z "$icu" ] || kind=universal
archive=$packed/Lexwend-$version-macos-$kind.zip

# ---- zip, notarise, and look at what comes out of the archive
pack() {
  rm -f "$archive"
  ditto -c -k --keepParent "$app" "$archive" || setup_fail "ditto could not write $archive"
}
pack
if [ -n "$profile" ]; then
  setup_say "package: Apple looks at the archive; that takes some minutes"
  xcrun notarytool submit "$archive" --keychain-profile "$profile" --wait ||
    setup_fail "Apple did not accept the archive; 'xcrun notarytool log' tells why"
  xcrun stapler staple "$app" || setup_fail "the answer could not be stapled to Lexwend.app"
  spctl --assess --type execute "$app" || setup_fail "another Mac would not start $app"
  pack
fi
unpacked=$(mktemp -d) || setup_fail "there is no folder to unpack the archive into"
trap 'rm -rf "$unpacked"' EXIT
ditto -x -k "$archive" "$unpacked" || setup_fail "$archive cannot be unpacked"
app=$unpacked/Lexwend.app program=$unpacked/Lexwend.app/Contents/MacOS/Lexwend
check_bundle
self_test "$unpacked/Lexwend.app"

sum=$(shasum -a 256 "$archive") || setup_fail "$archive has no check sum"
sum=${sum%% *}
if [ -n "$url" ]; then
  # A cask names one archive, so it is for the one with both processors, or for this processor only.
  sed -e "s|@VERSION@|$version|" -e "s|@SHA256@|$sum|" -e "s|@URL@|$url|g" packaging/mac/lexwend.rb.in >"$packed/lexwend.rb" ||
    setup_fail "the cask could not be written"
  setup_say "package: the cask is $packed/lexwend.rb"
fi
setup_say "package: $archive is built, signed as '$identity', and its self-test passed"
setup_say "     sha256: $sum"
