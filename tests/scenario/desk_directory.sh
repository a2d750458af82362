#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A TV uses only a directory of its own; an error that prevents the start names the remedy.
. "$(dirname "$0")/lib.sh"

# says WHAT TEXT: the last command's error contains the text.
says() { grep -qF -- "$2" "$work/err" || { cat "$work/err"; die "$1"; }; passed "$1"; }

echo "a directory of other files"
mkdir -p "$work/mine/tmp"; echo mine >"$work/mine/tmp/thesis"
cd "$work/mine"
exits "tv up refuses it" 1 tv --root . up
says "the error names the remedy" "choose another directory with --root"
exits "desk-tv refuses it as well" 1 desk-tv --root .
equal "nothing was deleted or added" "./tmp/thesis" "$(find . -type f)"
exits "the root directory is refused" 2 tv --root / up
exits "a home directory is refused, even an empty one" 2 env "HOME=$work/mine" tv --root . up
exits "a directory that contains it is refused" 2 env "HOME=$work/mine/tmp/me" tv --root . up
exits "a directory that cannot be created" 1 tv --root /proc/tv up
says "the error names the directory and the reason" "cannot create the TV's directory /proc/tv: "
cd "$work"

echo "a TV directory without the marker file"
web_feeder "$work/feeder.wgt" feederold1
tv up
there "a new TV has the marker file" "$TV_ROOT/.tv-desk"
tv pkg install "$work/feeder.wgt"
tv down
rm "$TV_ROOT/.tv-desk"
tv up
holds "its packages are kept" '.packages | any(.id == "feederold1")'
there "the marker file is added" "$TV_ROOT/.tv-desk"
tv down

echo "a machine without user namespaces"
mkdir "$work/bin"
printf '#!/bin/sh\necho "bwrap: No permissions to create new namespace" >&2; exit 1\n' >"$work/bin/bwrap"
chmod +x "$work/bin/bwrap"
exits "tv up fails" 1 env "PATH=$work/bin:$PATH" tv --root "$work/second" up
says "the error contains bubblewrap's message" "No permissions to create new namespace"
says "the error names the option that helps" "tv up --no-sandbox"

echo "Ctrl-C during tv up"
printf '#!/bin/sh\nexec sleep 86400\n' >"$work/hang"; chmod +x "$work/hang"
# Background processes of a shell ignore SIGINT unless it is reset to the default.
ORV_ENABLER=$work/hang env --default-signal=INT tv up >"$work/out" 2>"$work/err" &
up=$!
comes_true "the TV answers" tv status >/dev/null 2>&1
kill -INT $up
code=0; wait $up || code=$?
equal "the signal ends tv up" 130 "$code"
says "it says that the TV continues to start" "the TV continues to start in the background"
says "it says how to stop the TV" "tv down"
exits "the TV is up" 0 tv status
tv down
the_end
