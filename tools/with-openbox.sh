#!/usr/bin/env bash
# Usage: with-openbox.sh COMMAND...
# Runs a command on the X display of $DISPLAY (a virtual one from xvfb-run) with Debian's openbox as its
# window manager, as an operator's desktop has one: windows are activated as they come up and take the
# focus. The window manager is stopped afterwards, whatever the command did.
set -uo pipefail
if ! command -v openbox >/dev/null; then
    echo "with-openbox: openbox is not installed (make test installs it)" >&2
    exit 1
fi
openbox --sm-disable >/dev/null 2>&1 &
wm=$!
# Ready once it has said so on the root window.
for _ in $(seq 100); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.05
done
"$@"
rc=$?
kill "$wm" 2>/dev/null
wait "$wm" 2>/dev/null
exit $rc
