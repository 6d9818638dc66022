#!/usr/bin/env bash
# Builds the Windows programs on a Debian machine, each in one file that needs no other DLL, and
# puts them into build/windows/stage with the files that they need.
#
# Missing packages are installed with apt. wxWidgets is built from Debian's source package with
# wxwidgets.patch, once for each version and set of switches, and kept in the user's cache. A
# stopped build continues where it was. Exit status 75: that package cannot be fetched now.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

host=i686-w64-mingw32
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quirkmeter
jobs=$(nproc)

# docview and dataview stay on: the headers refuse without them. The other parts, which the
# programs do not use, would make each program larger.
switches=(
    --host="$host" CC="$host-gcc-posix" CXX="$host-g++-posix"
    CFLAGS=-Os CXXFLAGS=-Os --disable-shared --enable-monolithic
    --without-libpng --without-libjpeg --without-libtiff --without-zlib --without-expat
    --without-opengl --without-regex --without-nanosvg
    --disable-xrc --disable-webview --disable-richtext --disable-aui --disable-propgrid
    --disable-ribbon --disable-stc --disable-html --disable-mediactrl --disable-sockets
    --disable-protocol --disable-fs_zip --disable-grid --disable-svg
    --disable-printarch --disable-graphics_ctx --disable-mdi
)

# logged NAME COMMAND...: writes the command's output to a log and prints the end of it if the
# command fails.
logged() {
    local log=$cache/$1.log
    shift
    "$@" >>"$log" 2>&1 || {
        tail -n 30 "$log" >&2
        echo "failed: $* (all of it in $log)" >&2
        exit 1
    }
}

# Fetch the source packages with package lists of this build, so that the machine's package sources
# stay unchanged.
source_apt() {
    apt-get -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$cache/apt/sources" \
        -o Dir::State::Lists="$cache/apt/lists" "$@"
}

list_sources() {
    local file
    mkdir -p "$cache/apt/sources" "$cache/apt/lists/partial"
    apt-get indextargets --format '$(SOURCESENTRY)' 'Created-By: Packages' 'Origin: Debian' |
        sed 's/:[0-9]*$//' | sort -u | while read -r file; do
        sed -n -E '/^deb-src /d; s/^deb /deb-src /; s/^Types: .*/Types: deb-src/; p' "$file" \
            >"$cache/apt/sources/$(basename "$file")"
    done
    source_apt update
}

fetch_sources() {
    [[ -d $sources ]] && return
    echo "fetching the sources of wxWidgets $version"
    (logged fetch list_sources) || exit 75
    rm -rf "$sources.partial"
    mkdir -p "$sources.partial"
    (cd "$sources.partial" && logged fetch source_apt source "wxwidgets3.2=$version") || exit 75
    (cd "$sources.partial"/wxwidgets3.2-*/ && logged fetch patch -p1 -i "$patch")
    mv "$sources.partial"/wxwidgets3.2-*/ "$sources"
    rm -rf "$sources.partial"
}

configure_wxwidgets() {
    [[ -e $objects/configured ]] && return
    echo "configuring wxWidgets for $host"
    rm -rf "$objects"
    mkdir -p "$objects"
    (cd "$objects" && logged wxwidgets "$sources/configure" --prefix="$wxwidgets" "${switches[@]}")
    touch "$objects/configured"
}

# A file that was being written when a build was stopped may be incomplete.
drop_newest_objects() {
    local newest
    newest=$(find "$objects" -name '*.[oad]' -printf '%T@\n' | sort -n | tail -n 1)
    [[ -z $newest ]] ||
        find "$objects" -name '*.[oad]' -newermt "@$((${newest%.*} - 60))" -delete
}

compile_wxwidgets() {
    local total
    total=$(make -C "$objects" -n 2>/dev/null | grep -c ' -c -o ' || true)
    make -C "$objects" -j"$jobs" 2>&1 | tee -a "$cache/wxwidgets.log" |
        awk -v total="$total" '/ -c -o / && int(++n * 20 / total) > shown {
            shown = int(n * 20 / total)
            print "compiling wxWidgets: " shown * 5 " %"
            fflush()
        }' || {
        tail -n 30 "$cache/wxwidgets.log" >&2
        echo "failed: all of it in $cache/wxwidgets.log" >&2
        exit 1
    }
}

# Rename the folder last, so that a folder of this name is always complete.
install_wxwidgets() {
    local staged=$wxwidgets.partial
    rm -rf "$staged"
    logged wxwidgets make -C "$objects" install DESTDIR="$staged"
    mv "$staged$wxwidgets" "$wxwidgets"
    rm -rf "$staged" "$objects"
}

build_wxwidgets() {
    [[ -d $wxwidgets ]] && return
    echo "wxWidgets is built once; that takes some ten minutes on two cores"
    fetch_sources
    configure_wxwidgets
    drop_newest_objects
    compile_wxwidgets
    install_wxwidgets
}

mkdir -p "$cache"
need cmake ccache dpkg-dev make ninja-build wx3.2-headers g++-mingw-w64-i686-posix
version=$(dpkg-query -W -f '${Version}' wx3.2-headers)
patch=$PWD/packaging/windows/wxwidgets.patch
sources=$cache/wxwidgets-$version-$(sha256sum <"$patch" | cut -c 1-8)
wxwidgets=$sources-$(sha256sum <<<"${switches[*]}" | cut -c 1-8)
objects=$wxwidgets.objects
if [[ ! -d $wxwidgets ]]; then
    flock 9 # one at a time: the sources are the same for all
    build_wxwidgets
fi 9>"$cache/lock"

build=build/windows
configure "$build" -G Ninja -S . -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" \
    -DCMAKE_FIND_ROOT_PATH="$wxwidgets" \
    -DwxWidgets_CONFIG_EXECUTABLE="$wxwidgets/bin/wx-config"
cmake --build "$build" -j "$jobs"
cmake --install "$build" --prefix "$build/stage" >/dev/null
ls -l "$build"/stage/*.exe
