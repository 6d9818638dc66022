# Minimal Debian 12 systems for the tests of the packages. Each is made once and kept in the user's
# cache. Sourced by those tests.
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quirkmeter

# make_root FOLDER COMMAND...: runs the command, which fills FOLDER.partial, and renames that to
# FOLDER, so that FOLDER is always complete.
make_root() {
    [[ ! -d $1 ]] || return 0
    echo "Making $1" >&2
    mkdir -p "$cache"
    rm -rf "$1.partial"
    "${@:2}" >"$1.log" 2>&1 && mv "$1.partial" "$1" && return
    tail -n 5 "$1.log" >&2
    return 1
}

# bootstrap FOLDER [OPTION]...: fills the folder with a minimal system.
bootstrap() {
    debootstrap --variant=minbase --components=main "${@:2}" bookworm "$1" "$(
        apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' \
            'Component: main' | head -n 1
    )"
}
