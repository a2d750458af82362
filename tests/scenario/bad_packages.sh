#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Bad arguments of `tv pkg install`: one clear error line, exit code 1, and no files left behind.
. "$(dirname "$0")/lib.sh"

tv up
web_feeder "$work/good.wgt" goodapp001
tv pkg install "$work/good.wgt"
reached "a valid package is stored" '.store | length == 1'
tree() { (cd "$TV_ROOT" && find opt home -path opt/usr/apps/com.kalmora.tv.orv-enabler -prune -o -print | sort); }
before=$(tree); packages=$(tv pkg list --json)
refused() { # WHAT FILE
  exits "$1" 1 tv pkg install "$2"
  equal "$1: no files are left behind" "$before" "$(tree)"
  equal "$1: the package list is unchanged" "$packages" "$(tv pkg list --json)"
}

exits "a missing file" 4 tv pkg install "$work/none.wgt"
exits "no file argument" 2 tv pkg install
printf 'no zip' >"$work/nozip.wgt"; refused "not a zip" "$work/nozip.wgt"
: >"$work/empty.wgt"; refused "an empty file" "$work/empty.wgt"
mkdir "$work/dir.wgt"; refused "a directory" "$work/dir.wgt"
head -c 200 "$work/good.wgt" >"$work/cut.wgt"; refused "a truncated archive" "$work/cut.wgt"

bare() { rm -rf "$work/pack"; mkdir -p "$work/pack"; }
pack() { rm -f "$1"; (cd "$work/pack" && zip -q -r -X -y "$1" .); }
bare; echo hello >"$work/pack/index.html"; pack "$work/noconfig.wgt"; refused "no config.xml" "$work/noconfig.wgt"
bare; echo '<widget' >"$work/pack/config.xml"; pack "$work/broken.wgt"; refused "broken XML" "$work/broken.wgt"
bare; cat >"$work/pack/config.xml" <<'XML'
<widget xmlns="http://www.w3.org/ns/widgets" id="x" version="1.0"><name>none</name></widget>
XML
pack "$work/noapp.wgt"; refused "no application" "$work/noapp.wgt"
bare; cat >"$work/pack/config.xml" <<'XML'
<widget xmlns="http://www.w3.org/ns/widgets" xmlns:tizen="http://other.example.org/ns" id="x" version="1.0"><tizen:application id="foreignap1.App" package="foreignap1" required_version="4.0"/></widget>
XML
pack "$work/foreign.wgt"; refused "the usual prefix for another namespace" "$work/foreign.wgt"

make_wgt "$work/slip.wgt" slipapp001 1.0.0 ""
add_slip() { # adds an entry whose name points outside the package
  mkdir -p "$work/slip/inner"; echo evil >"$work/slip/evil.txt"
  (cd "$work/slip/inner" && zip -q "$1" ../evil.txt)
}
add_slip "$work/slip.wgt"; refused "an entry name with .." "$work/slip.wgt"
make_wgt "$work/absolute.wgt" absapp0001 1.0.0 ""
bsdtar -P -s ',^,/,' -a -cf "$work/absolute.zip" -C "$work/pack" config.xml index.html; refused "an absolute entry name" "$work/absolute.zip"
make_wgt "$work/link.wgt" linkapp001 1.0.0 ""
ln -s /etc/passwd "$work/pack/link"; pack "$work/link.wgt"; refused "a symbolic link" "$work/link.wgt"

web_feeder "$work/taken.wgt" goodapp001 2.0.0; refused "an id that is already installed" "$work/taken.wgt"
make_wgt "$work/badid.wgt" 'bad/id' 1.0.0 ""; refused "an id that is a path" "$work/badid.wgt"
web_feeder "$work/missing.wgt" missing001
exits "an update of a package that is not installed" 4 tv pkg update "$work/missing.wgt"
equal "the error says so" "tv: missing001 is not installed: use \`tv pkg install\`" "$(cat "$work/err")"
equal "the update does not install it" "$before" "$(tree)"

cat >"$work/prefix.xml" <<'XML'
<?xml version="1.0"?>
<w:widget xmlns:w="http://www.w3.org/ns/widgets" xmlns:tv="http://tizen.org/ns/widgets" id="p" version="1.0">
  <tv:application id="prefixapp1.App" package="prefixapp1" required_version="4.0"/>
  <tv:metadata key="http://kalmora.com/tv/metadata/orv_type/ch_feeder_standard" value="standard"/>
</w:widget>
XML
bare; cp "$work/prefix.xml" "$work/pack/config.xml"; pack "$work/prefix.wgt"
tv pkg install "$work/prefix.wgt"
reached "another prefix for the right namespaces is accepted" "$(stored prefixapp1)"

if [ "$(id -u)" = 0 ]; then
  tv down; rm -rf "$TV_ROOT"; mkdir -p "$work/small"
  mount -t tmpfs -o size=8m tmpfs "$work/small"
  trap 'tv down >/dev/null 2>&1; umount -l "$work/small"; finish' EXIT
  TV_ROOT=$work/small/tv
  tv up
  bare; head -c 12000000 /dev/urandom >"$work/pack/big.bin"; cp "$work/prefix.xml" "$work/pack/config.xml"; pack "$work/big.wgt"
  exits "a full disk" 1 tv pkg install "$work/big.wgt"
  grep -qi 'space' "$work/err" || { cat "$work/err"; die "the error does not mention space"; }
  passed "the error mentions space"
  absent "a full disk: no files are left behind" "$TV_ROOT/opt/usr/apps/prefixapp1"
  tv pkg install "$work/prefix.wgt"
  reached "a small package still fits" "$(stored prefixapp1)"
fi
the_end
