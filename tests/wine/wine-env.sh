# Sourced: how the exes of one architecture are run here. Set TOLV_ARCH (x64 or x86) before.
#
# Each architecture may have a command of its own:
#   TOLV_WINE_X64, TOLV_WINE_X86   what comes before the exe's name (default: wine; may hold blanks)
#   TOLV_WINESERVER_X64, _X86      the same for the server (default: wineserver)
#   TOLV_WINE_DIR                  where prefixes and run folders lie (default: out/wine of the checkout)
#
# Gives TOLV_WINE and TOLV_WINESERVER (split at blanks when used), TOLV_TEMPLATE (the prefix that runs are
# copied from) and the variables that Wine reads. Returns 77 if this machine cannot run that architecture.

TOLV_ARCH=${TOLV_ARCH:-x64}
case $TOLV_ARCH in
x64)
    TOLV_WINE=${TOLV_WINE_X64:-wine}
    TOLV_WINESERVER=${TOLV_WINESERVER_X64:-wineserver}
    export WINEARCH=win64
    ;;
x86)
    # The `wine` command of a machine with 64-bit Wine only starts, and then fails: its 32-bit loader is asked.
    if [ -z "${TOLV_WINE_X86:-}" ] && ! /usr/lib/wine/wine --version >/dev/null 2>&1; then
        echo "no 32-bit Wine here" >&2
        return 77
    fi
    TOLV_WINE=${TOLV_WINE_X86:-wine}
    TOLV_WINESERVER=${TOLV_WINESERVER_X86:-wineserver}
    export WINEARCH=win32
    ;;
*)
    echo "TOLV_ARCH is x64 or x86, not '$TOLV_ARCH'" >&2
    return 2
    ;;
esac
export TOLV_ARCH TOLV_WINE TOLV_WINESERVER

TOLV_WINE_DIR=${TOLV_WINE_DIR:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/out/wine}
TOLV_TEMPLATE=$TOLV_WINE_DIR/template-$TOLV_ARCH
mkdir -p "$TOLV_WINE_DIR/runs"
export TOLV_WINE_DIR TOLV_TEMPLATE

# German texts in boxes and ordinary command lines with umlauts need the German locale; no crash window may
# wait for a click, and no download of Wine's add-ons may be offered.
export LC_ALL=de_DE.UTF-8 WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe='
