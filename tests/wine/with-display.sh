#!/bin/bash
# Runs a command on a display and in a Wine prefix of its own, and removes both afterwards.
#
#   with-display.sh [--arch x64|x86] [--dpi N] [--limit SECONDS] COMMAND...
#
# The command gets DISPLAY, WINEPREFIX, TOLV_WINE (what to put before an exe) and RUN (a folder for its files, deleted
# at the end). Exit code: the command's; 124 if the time limit ended it, 77 if there is no Wine for the architecture, 2 if
# no display or prefix could be made.
set -u
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

arguments=("$@")
dpi=96 limit=600
while [ $# -gt 0 ]; do
    case $1 in
    --arch) TOLV_ARCH=$2; shift 2 ;;
    --dpi) dpi=$2; shift 2 ;;
    --limit) limit=$2; shift 2 ;;
    *) break ;;
    esac
done
[ $# -gt 0 ] || { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2; exit 2; }
if [ "${TOLV_ARCH:-}" = x86 ] && [ -z "${TOLV_WINE_X86:-}" ] && [ ! -x /usr/lib/wine/wine ]; then
    exec "$here/../wine32.sh" "$0" "${arguments[@]}"
fi
. "$here/wine-env.sh" || exit $?

# Made once for each machine and Wine version. Two scripts that start at the same time wait for each other.
makeTemplate() {
    local version
    version=$($TOLV_WINE --version 2>/dev/null)
    [ "$(cat "$TOLV_TEMPLATE/.ready" 2>/dev/null)" = "$version" ] && return 0
    echo "making a Wine prefix in $TOLV_TEMPLATE" >&2
    rm -rf "$TOLV_TEMPLATE"
    env -u DISPLAY WINEPREFIX="$TOLV_TEMPLATE" timeout 180 $TOLV_WINE wineboot -i </dev/null >/dev/null 2>&1 &&
        WINEPREFIX=$TOLV_TEMPLATE timeout 60 $TOLV_WINESERVER -w &&
        echo "$version" >"$TOLV_TEMPLATE/.ready"
}
(flock -w 300 9 && makeTemplate) 9>"$TOLV_TEMPLATE.lock" || { echo "no Wine prefix could be made" >&2; exit 2; }

RUN=$(mktemp -d "$TOLV_WINE_DIR/runs/XXXXXX") || exit 2
WINEPREFIX=$RUN/prefix
export RUN WINEPREFIX
started=()
cleanUp() {
    trap - EXIT INT TERM HUP
    # Stopping the prefix's server ends every Windows program of this run, even those that have left our process group.
    timeout 20 $TOLV_WINESERVER -k </dev/null >/dev/null 2>&1
    timeout 20 $TOLV_WINESERVER -w </dev/null >/dev/null 2>&1
    local pid
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null
        wait "$pid" 2>/dev/null
    done
    rm -rf "$RUN"
}
trap cleanUp EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# Hard links make a prefix very fast; the registry files are written to, so they must be copies.
cp -al "$TOLV_TEMPLATE" "$WINEPREFIX" && cp --remove-destination "$TOLV_TEMPLATE"/*.reg "$WINEPREFIX/" || exit 2
sed -i "/^\[Control Panel\\\\\\\\Desktop\]/a \"LogPixels\"=dword:$(printf %08x "$dpi")" "$WINEPREFIX/user.reg"

setpriv --pdeathsig TERM Xvfb -displayfd 3 -screen 0 1366x768x24 -nolisten tcp -noreset \
    3>"$RUN/display" </dev/null >"$RUN/xvfb.log" 2>&1 &
started=($!)
for _ in $(seq 200); do
    [ -s "$RUN/display" ] && break
    sleep 0.05
done
[ -s "$RUN/display" ] || { echo "Xvfb does not start:" >&2; cat "$RUN/xvfb.log" >&2; exit 2; }
DISPLAY=:$(cat "$RUN/display")
export DISPLAY
setxkbmap de # before Wine starts, because Wine reads the layout only once
openbox --sm-disable </dev/null >"$RUN/openbox.log" 2>&1 &
started=($! "${started[@]}")

$TOLV_WINESERVER -p60 # keeps running between two exes, so that the next one starts fast
timeout -k 5 "$limit" "$@" <&0 &
started=($! "${started[@]}")
wait "$!"
exit $?
