#!/bin/bash
# Runs a command where `wine` runs 32-bit programs: tests/wine32.sh COMMAND...
# Exit code 77: this machine cannot run 32-bit code at all.
#
# 32-bit Wine needs i386 libraries. Making i386 a second architecture of the machine's own packages often fails (each
# library must have the same version for both), and would change the machine. So they are fetched into a tree of their
# own, from the package sources this machine has, unpacked without installing, and laid over /usr for this one command
# in a mount namespace of its own. The tree is kept outside the work tree and serves every later run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/cmake/packages.sh"

cache=$cacheFolder
version=$(dpkg-query -W -f '${Version}' libwine)
tree=$cache/i386-$(. /etc/os-release; echo "$VERSION_CODENAME")-$version

# A whole 32-bit program in one system call (exit), that needs no library: does it run?
runs32BitCode() {
    local probe=$cache/runs32
    [ -x "$probe" ] || g++ -m32 -nostdlib -static -no-pie -x c -o "$probe" - <<<'
        void _start(void) { __asm__ volatile("int $0x80" : : "a"(1), "b"(0)); for (;;) {} }'
    "$probe" 2>/dev/null
}

fetchTree() {
    local work apt
    work=$(mktemp -d "$cache/i386.XXXXXX")
    trap 'rm -rf "$work"' RETURN
    mkdir -p "$work"/apt/lists/partial "$work"/apt/archives/partial "$work"/all "$work"/tree/lib
    touch "$work/apt/status"
    apt=(-q -o APT::Architecture=i386 -o APT::Architectures::=i386 -o Acquire::Languages=none
        -o Dir::State="$work/apt" -o Dir::State::status="$work/apt/status" -o Dir::State::lists="$work/apt/lists"
        -o Dir::Cache="$work/apt" -o APT::Sandbox::User="$(id -un)" -o Debug::NoLocking=1)
    say "fetching 32-bit Wine, 140 MB, once on each machine"
    apt-get "${apt[@]}" update >"$cache/i386.log" 2>&1 || true # one foreign source without i386 does no harm
    apt-get "${apt[@]}" -y --no-install-recommends --download-only install wine32 >>"$cache/i386.log" 2>&1 ||
        { tail -5 "$cache/i386.log" >&2; return 1; }
    local deb
    for deb in "$work"/apt/archives/*.deb; do
        dpkg-deb --fsys-tarfile "$deb" | tar -x --keep-directory-symlink -C "$work/all" ./lib ./usr/lib \
            ./usr/i686-w64-mingw32/lib 2>/dev/null || true # few packages have all three
    done
    # Only what no 64-bit package owns: the architecture's own folders, its loader, and Wine's two programs.
    cp -a "$work"/all/lib/. "$work"/all/usr/lib/. "$work/tree/lib/"
    find "$work/tree/lib" -mindepth 1 -maxdepth 1 ! -name i386-linux-gnu ! -name wine ! -name 'ld-linux.so.2' \
        -exec rm -rf {} +
    # The package's own installation step copies this one library and marks it, at byte 64, as one of Wine's own:
    # without the mark no prefix gets it.
    local zlib=$work/all/usr/i686-w64-mingw32/lib/zlib1.dll
    { head -c 64 "$zlib"; printf 'Wine builtin DLL'; head -c 16 /dev/zero; tail -c +97 "$zlib"; } \
        >"$work/tree/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll"
    mv "$work/tree" "$tree"
}

if /usr/lib/wine/wine --version >/dev/null 2>&1; then
    exec env WINEARCH=win32 "$@"
fi
mkdir -p "$cache"
runs32BitCode || exit 77
(
    flock 9
    [ -d "$tree" ] || fetchTree
) 9>"$cache/i386.lock" || die "32-bit Wine could not be fetched"

export TREE32=$tree WINEARCH=win32
namespace=(unshare --mount --propagation private)
[ "$(id -u)" = 0 ] || namespace+=(--map-root-user)
# The tree hides the files in /usr: the machine may have another i386 loader, which looks for libraries elsewhere.
exec "${namespace[@]}" bash -c '
    mount -t overlay overlay -o "lowerdir=$TREE32:/usr" /usr || { echo "no overlay on /usr" >&2; exit 2; }
    exec "$@"' bash "$@"
