# The Debian packages that the scripts at the root need, in one place, and how to install them. To be sourced, not run.
# needPackages says what it installs and does nothing if everything is installed.

buildPackages=(g++ cmake ninja-build ccache googletest)
windowsPackages=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix)
# python3 and procps are for the scripts that drive the windows, locales for German texts and command lines.
winePackages=(wine64 wine xvfb xdotool openbox imagemagick x11-apps x11-xkb-utils locales
    fonts-dejavu-core python3 procps)
packagingPackages=(nsis pandoc weasyprint fonts-dejavu-core osslsigncode imagemagick zip git)
testPackages=(clang-format clang-tidy python3 python3-pefile mdbtools ca-certificates util-linux git
    poppler-utils openssl)

mdbReader=mdb-reader@3.2.0 # from npm, a second opinion in tests/foreign

# What is fetched or found out once on a machine, for all clones.
cacheFolder=${XDG_CACHE_HOME:-$HOME/.cache}/prjDexoBenutzerkonten
export DEBIAN_FRONTEND=noninteractive LC_ALL=${LC_ALL:-C.UTF-8}

say() { printf '== %s\n' "$*"; }
die() { printf '%s: %s\n' "${0##*/}" "$*" >&2; exit 2; }

# Without a terminal nobody can type a password, so sudo must not ask for one.
sudo=(sudo --preserve-env=DEBIAN_FRONTEND)
[ -t 0 ] || sudo+=(-n)
asRoot() {
    if [ "$(id -u)" = 0 ]; then "$@"
    elif ! command -v sudo >/dev/null; then die "this needs root, and there is no sudo: $*"
    else "${sudo[@]}" "$@"
    fi
}

# needPackages NAME...: installs those that are missing, all at once.
needPackages() {
    local name missing=()
    command -v apt-get >/dev/null || die "this needs a Debian system (apt-get)"
    for name in "$@"; do
        case $(dpkg-query -W -f '${Status}' "$name" 2>/dev/null) in
            "install ok installed") ;;
            *) missing+=("$name") ;;
        esac
    done
    if [ ${#missing[@]} -gt 0 ]; then
        say "installing ${missing[*]}"
        mkdir -p out
        # If the index cannot be refreshed, that does no harm as long as the old one names the packages.
        asRoot apt-get -qq update >out/apt.log 2>&1 </dev/null || say "apt-get update complains, see out/apt.log"
        asRoot apt-get -q -y --no-install-recommends install "${missing[@]}" >>out/apt.log 2>&1 </dev/null ||
            { tail -20 out/apt.log >&2; die "packages could not be installed (out/apt.log)"; }
    fi
}

# Uses the machine's Node.js if it includes npm; otherwise installs Debian's.
needNode() {
    command -v node >/dev/null && command -v npm >/dev/null || needPackages nodejs npm
}

# Sets mdbReaderModules to the folder of the package.
needMdbReader() {
    mdbReaderModules=$cacheFolder/$mdbReader
    [ ! -e "$mdbReaderModules/.ready" ] || return 0
    needNode
    say "installing the npm package $mdbReader"
    mkdir -p "$mdbReaderModules" out
    npm install --no-save --no-package-lock --no-audit --no-fund --prefix "$mdbReaderModules" "$mdbReader" \
        >out/npm.log 2>&1 </dev/null || { tail -20 out/npm.log >&2; die "$mdbReader could not be installed"; }
    touch "$mdbReaderModules/.ready"
}

# Wine takes the language and the code page of its programs from here.
needGermanLocale() {
    locale -a 2>/dev/null | grep -qix 'de_DE\.utf-\?8' && return
    say "generating the locale de_DE.UTF-8"
    asRoot localedef -i de_DE -f UTF-8 de_DE.UTF-8 || die "the locale de_DE.UTF-8 could not be generated"
}

# buildPreset PRESET [TARGET...]: configures once, then builds; prints nothing unless something fails.
buildPreset() {
    local preset=$1 dir=out/build/$1 log=out/build/$1.log
    shift
    mkdir -p out/build
    if [ ! -e "$dir/build.ninja" ]; then
        say "configuring $preset"
        cmake --preset "$preset" >"$log" 2>&1 </dev/null || { tail -30 "$log" >&2; return 1; }
    fi
    # What is compiled in one clone can be used in the next, whatever its folder is.
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_IGNOREOPTIONS='-ffile-prefix-map=/*'
    say "building $preset"
    local targets=()
    [ $# = 0 ] || targets=(--target "$@")
    cmake --build "$dir" --parallel "$(nproc)" "${targets[@]}" >"$log" 2>&1 </dev/null ||
        { grep -m 40 -E 'error|warning|FAILED|No such|undefined reference' "$log" >&2 || tail -30 "$log" >&2; return 1; }
}
