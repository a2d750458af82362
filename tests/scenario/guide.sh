#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The app developer guide, pasted block by block into one shell: every ```sh block has to succeed.
. "$(dirname "$0")/lib.sh"

guide=$(cd "$(dirname "$0")/../.." && pwd)/docs/app-developer-guide.md
SAMPLES=$ORV_SAMPLES
export SAMPLES
mkdir "$work/blocks" "$work/desk"
# Named after their first line, so that a failure points into the guide.
awk -v dir="$work/blocks" '
  /^```sh$/ { file = sprintf("%s/line-%04d", dir, FNR + 1); next }
  /^```/ { file = "" }
  file { print > file }' "$guide"
blocks=$(ls "$work/blocks" | wc -l)
[ "$blocks" -ge 8 ] || die "the guide has only $blocks blocks of commands"

tv up
can_mount || { echo "nothing can be mounted here: skipped"; exit 77; }
cd "$work/desk"
for block in "$work/blocks"/*; do
  echo "--- app-developer-guide.md, ${block##*/}"
  # Not in a subshell: a directory that one block changes to is where the next one begins.
  . "$block"
  passed "${block##*/}"
done
the_end
