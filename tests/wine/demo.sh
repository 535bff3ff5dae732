#!/bin/bash
# Signs in to the tool in FOLDER with real keys, leaves a picture of its account window there and closes it.
# usage, under with-display.sh: demo.sh FOLDER
set -euo pipefail
folder=$1

# The window of that title, once it is there and has the keyboard.
window() {
    local id
    id=$(timeout 60 xdotool search --sync --onlyvisible --name "$1" | head -1)
    xdotool windowactivate --sync "$id"
    echo "$id"
}

$TOLV_WINE "$folder/prjDexoBenutzerkonten.exe" &
tool=$!
window '^Anmeldung$' >/dev/null
xdotool type --delay 30 HwendorpliqZ
xdotool key Return
window '^Tolv-Benutzerkontenverwaltung$' >/dev/null
# Painting takes its time: the picture is done when it stays the same.
before='' now=none
for _ in $(seq 40); do
    sleep 0.25
    import -window root "$folder/window.png"
    now=$(identify -format '%#' "$folder/window.png") # of the pixels alone
    [ "$now" != "$before" ] || break
    before=$now
done
# What is drawn beside the window is the empty screen; it is left off.
convert "$folder/window.png" -trim +repage "$folder/window.png"
xdotool key Escape
timeout 20 tail --pid="$tool" -f /dev/null
