# The Debian packages and the build of the project. Sourced by the scripts beside it.

build_packages=(cmake ninja-build ccache g++ pkg-config libwxgtk3.2-dev libgtk-3-dev libx11-dev
  libxi-dev libcanberra-dev libasound2-dev)
run_packages=(fonts-liberation xdg-utils)
display_packages=(xvfb openbox imagemagick x11-utils)
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev libxtst-dev locales xdotool clang-format
  clang-tidy-16 cppcheck python3 chromium weston xwayland at-spi2-core dbus-daemon
  gir1.2-atspi-2.0 python3-gi)
fuzz_packages=(clang-14 libclang-rt-14-dev)

# ccache: share compiled objects between checkouts.
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=yes

# need NAME...: installs those of the packages that are missing.
need() {
    local missing=() package sudo=()
    for package; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    echo "Installing: ${missing[*]}"
    ((EUID == 0)) || sudo=(sudo)
    # apt refuses to run twice at a time.
    flock "${BASH_SOURCE[0]}" "${sudo[@]}" sh -c 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "$@" >/dev/null' sh "${missing[@]}"
}

# configure FOLDER OPTION...: configures the build. CMake refuses a build folder that was moved or
# copied with its checkout, so that one is configured afresh.
configure() {
    local cache=$1/CMakeCache.txt fresh=()
    [[ ! -e $cache || $(sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' "$cache") -ef $1 ]] ||
        fresh=(--fresh)
    cmake "${fresh[@]}" -B "$@" >/dev/null
}

# build PRESET TESTING [TARGET...]: builds the changed files, with (ON) or without (OFF) the tests.
# Two scripts that build in the same folder take turns.
build() {
    local preset=$1 testing=$2 lock
    shift 2
    mkdir -p "build/$preset"
    exec {lock}<"build/$preset"
    flock "$lock"
    echo "Building ($preset)"
    configure "build/$preset" --preset "$preset" -DBUILD_TESTING="$testing"
    cmake --build --preset "$preset" ${1+--target "$@"} -- --quiet
    exec {lock}<&-
}
