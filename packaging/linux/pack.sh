#!/usr/bin/env bash
# Builds the programs and packs them for Linux desktops into one folder that runs anywhere:
# build/linux/Quirkmeter-VERSION-linux-x86_64.tar.gz.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

# Every desktop with GTK 3 and libcanberra has these libraries under these names; start.sh names the
# packages to install where one is missing. The archive contains all other libraries.
system='^(ld-linux.*|lib(c|m|gcc_s|stdc\+\+|z|png16|fontconfig|X11|Xext|Xi|canberra|asound|cairo'
system+='|pango.*|g(lib|object|io|tk|dk|dk_pixbuf)-.*))\.so\.'

# bundle FILE PROGRAM: copies the libraries that the file needs, as the program would find them.
bundle() {
    local name path package
    for name in $(patchelf --print-needed "$1"); do
        if [[ $name =~ $system || -e $program/lib/$name ]]; then continue; fi
        path=$(ldd "$2" | awk -v name="$name" '$1 == name { print $3 }')
        cp -L "$path" "$program/lib/$name"
        path=$(readlink -f "$path")
        package=$(dpkg-query -S "$path" 2>/dev/null || dpkg-query -S "${path#/usr}")
        cp "/usr/share/doc/${package%%:*}/copyright" "$program/lib/${package%%:*}.copyright"
        bundle "$program/lib/$name" "$2"
    done
}

need "${build_packages[@]}" imagemagick patchelf
build release OFF

version=$(sed -n -E 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
archive=$PWD/build/linux/Quirkmeter-$version-linux-x86_64.tar.gz
folder=$PWD/build/linux/Quirkmeter
program=$folder/program
rm -rf build/linux
mkdir -p "$program/lib"
cmake --install build/release --strip --prefix "$program" >/dev/null
for file in "$program"/*; do
    if [[ ! -f $file || ! -x $file ]]; then continue; fi
    bundle "$file" "$file"
    patchelf --force-rpath --set-rpath '$ORIGIN/lib' "$file"
    # Only Quirkmeter starts the companion.
    [[ $file == *.exe ]] || ln -s start.sh "$folder/$(basename "$file")"
done
cp packaging/linux/{start.sh,desktop-entry.sh,README.txt} "$folder"
mv "$program/LICENSE.txt" "$folder"
# The last picture of the icon is the largest.
convert 'packaging/windows/quirkmeter.ico[-1]' "$folder/quirkmeter.png"
tar -C build/linux --sort=name --owner=0 --group=0 --numeric-owner -czf "$archive" Quirkmeter
ls -l "$archive"
