#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks a Debian package by the tools of the trade: check.sh PACKAGE. Prints what they complain of.
set -u -o pipefail
package=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

complain() {
  printf '%s\n' "$1" >&2
  failed=1
}

as_nobody=()
[ "$(id -u)" -ne 0 ] || as_nobody=(--allow-root)
said=$(lintian --pedantic --fail-on error,warning,info,pedantic "${as_nobody[@]}" "$package" 2>&1) || complain "lintian: $said"
dpkg-deb -x "$package" "$folder" || complain "dpkg-deb cannot unpack $package"
share=$folder/usr/share
said=$(desktop-file-validate "$share/applications/org.lexwend.Lexwend.desktop" 2>&1) || complain "desktop-file-validate: $said"
[ -z "$said" ] || complain "desktop-file-validate: $said"
said=$(appstreamcli validate --no-net "$share/metainfo/org.lexwend.Lexwend.metainfo.xml" 2>&1) || complain "appstreamcli: $said"
for page in "$share"/man/man1/*.1.gz; do
  said=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
  [ -z "$said" ] || complain "man: $said"
done
for script in "$share"/bash-completion/completions/*; do
  bash -n "$script" || complain "bash cannot read $script"
done
exit "$failed"
