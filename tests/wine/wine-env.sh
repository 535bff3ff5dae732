# To be sourced: how to run the exes of one architecture on this machine. Set TOLV_ARCH (x64 or x86) before.
#
# Each architecture may have a command of its own:
#   TOLV_WINE_X64, TOLV_WINE_X86   the command that runs an exe (default: wine; may have several words)
#   TOLV_WINESERVER_X64, _X86      the same for the server (default: wineserver)
#   TOLV_WINE_DIR                  the folder for prefixes and for the runs (default: out/wine of the checkout)
#
# Sets TOLV_WINE and TOLV_WINESERVER (split at blanks when used), TOLV_TEMPLATE (the prefix from which those of the runs
# are copied) and the variables that Wine reads. Returns 77 if this machine cannot run that architecture.

TOLV_ARCH=${TOLV_ARCH:-x64}
case $TOLV_ARCH in
x64)
    TOLV_WINE=${TOLV_WINE_X64:-wine}
    TOLV_WINESERVER=${TOLV_WINESERVER_X64:-wineserver}
    export WINEARCH=win64
    ;;
x86)
    # On a machine with only 64-bit Wine the `wine` command starts but then fails, so its 32-bit loader is checked.
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

# German texts in boxes and umlauts on command lines need the German locale. No crash window may wait for a click, and
# Wine must not offer to download its add-ons.
export LC_ALL=de_DE.UTF-8 WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe='
