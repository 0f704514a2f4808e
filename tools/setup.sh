# Shared by ./run and ./test: installs the Debian packages that are missing, configures, builds.
# Everything is said on the error stream; the standard output belongs to what is run.

# What every build needs.
build_packages=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-multimedia-dev qt6-translations-l10n libgl-dev
    libfluidsynth-dev libsndfile1-dev libmp3lame-dev libasound2-dev libzip-dev libpulse-dev
    fluid-soundfont-gm
)

# What the window needs on top of it, and its pictures in the tests: glyphs for the symbols on its
# buttons.
window_packages=(
    fonts-dejavu-core fonts-symbola fonts-droid-fallback
)

# What the tools of those who write rhythms need on top of what every build needs.
author_packages=(
    libebur128-dev
    python3 python3-numpy
)

# What the packages need on top of what every build needs.
package_packages=(
    build-essential debhelper librsvg2-bin libebur128-dev git
)

# What the tests need on top of what every build needs.
test_packages=(
    "${author_packages[@]}"
    clang-format libbenchmark-dev git mold
    g++-mingw-w64-x86-64-win32
    locales
    pulseaudio pulseaudio-utils libasound2-plugins
    xvfb openbox dbus-daemon at-spi2-core python3-pyatspi
    poppler-utils
)

# What the fuzzers need on top of it: a compiler that brings a fuzzer along.
fuzz_packages=(
    clang libclang-rt-dev
)

# What it takes to look for memory that is lost or read too early.
memcheck_packages=(
    valgrind
)

say() {
    printf '%s\n' "$*" >&2
}

# The version of the sources in a folder: the project states it, and nobody else.
project_version() {
    sed -n 's/^project(velta VERSION \([0-9.]*\) .*/\1/p' "$1/CMakeLists.txt"
}

# Prints those of the named packages that are not installed.
missing_packages() {
    local name
    for name in "$@"; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null) != installed ]]; then
            printf '%s\n' "$name"
        fi
    done
}

# Runs a command as root, or fails without asking where nobody could answer.
as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif [[ -t 0 ]]; then
        sudo "$@"
    else
        sudo -n "$@"
    fi
}

may_become_root() {
    [[ $EUID -eq 0 ]] || { command -v sudo >/dev/null && { [[ -t 0 ]] || sudo -n true 2>/dev/null; }; }
}

# Installs the named packages that are missing, or says which they are and fails.
install_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "Velta's scripts install what they need with apt-get, which this system does not have; tools/setup.sh lists them."
        return 1
    fi
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [[ ${#missing[@]} -gt 0 ]] || return 0
    if ! may_become_root; then
        say "These Debian packages are missing, and only root may install them: ${missing[*]}"
        return 1
    fi
    say "Installing Debian packages: ${missing[*]}"
    as_root apt-get update -q >&2 &&
        as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -q --no-install-recommends "${missing[@]}" >&2 || {
        say "The packages could not be installed: ${missing[*]}"
        return 1
    }
}

# build <preset> [target...]: configures once, then builds what has changed.
build() {
    local preset=$1
    shift
    local folder="$root/build/$preset"
    if [[ ! -f "$folder/build.ninja" ]]; then
        say "Building for the first time; this takes some minutes."
        (cd "$root" && cmake --preset "$preset" >&2) || return 1
    fi
    cmake --build "$folder" ${1:+--target "$@"} -- --quiet 2>&1 |
        sed '/^ninja: no work to do\.$/d' >&2
}
