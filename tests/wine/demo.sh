#!/bin/bash
# Signs in to the tool in FOLDER with real keys, leaves a picture of its account window there and closes it.
# usage, under with-display.sh: demo.sh FOLDER
set -euo pipefail
folder=$1 picture=$1/window.png

fail() { echo "demo: $*" >&2; exit 1; }

# Waits until two pictures of the screen in a row are equal: then a window is painted and accepts keys.
settle() {
    local before='' now=none
    for _ in $(seq 80); do
        sleep 0.3
        import -silent -window root "$picture"
        now=$(identify -format '%#' "$picture") # of the pixels only
        [ "$now" != "$before" ] || break
        before=$now
    done
}

# Brings the window with this title and at least this width to the front. A window may vanish while it is examined.
window() {
    local id width
    for _ in $(seq 300); do
        sleep 0.2
        kill -0 "$tool" 2>/dev/null || fail "the tool has ended"
        for id in $(xdotool search --onlyvisible --name "$1" 2>/dev/null); do
            width=$(xdotool getwindowgeometry --shell "$id" 2>/dev/null | sed -n 's/^WIDTH=//p')
            [ "${width:-0}" -ge "$2" ] && xdotool windowactivate --sync "$id" 2>/dev/null && settle && return
        done
    done
    fail "no window $1"
}

$TOLV_WINE "$folder/prjDexoBenutzerkonten.exe" &
tool=$!
window '^Anmeldung$' 300
xdotool type --delay 60 HwendorpliqZ
xdotool key Return
window '^Tolv-Benutzerkontenverwaltung$' 500 # a message box has that title too
# The screen beside the window is empty and is cut off.
convert "$picture" -trim +repage "$picture"
xdotool key Escape
timeout 20 tail --pid="$tool" -f /dev/null || fail "the tool does not close"
