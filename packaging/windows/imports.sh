#!/usr/bin/env bash
# usage: imports.sh PROGRAM...: prints the requirements of the programs that Windows XP does not
# meet, and fails if there is one: a later version of the system, another DLL, or a function that
# the compiler's headers declare for later versions only.
set -euo pipefail
host=i686-w64-mingw32

libraries='ADVAPI32|COMCTL32|COMDLG32|GDI32|KERNEL32|MSIMG32|OLE32|OLEACC|OLEAUT32|RPCRT4|SHELL32|'
libraries+='SHLWAPI|USER32|UXTHEME|VERSION|WINMM|MSVCRT'
headers=(windows.h commctrl.h mmsystem.h ole2.h oleacc.h psapi.h shlobj.h shlwapi.h uxtheme.h)

# Prints every name before a parenthesis. Names that are no functions are in both lists and do not
# matter.
declared() {
    printf '#include <%s>\n' "${headers[@]}" |
        "$host-g++-posix" -x c++ -E -P "-D_WIN32_WINNT=$1" - |
        grep -oP '\w+(?=\s*\()' | sort -u
}

needed() {
    "$host-objdump" -p "$1" | awk '
        /^MajorSubsystemVersion/ { major = $2 }
        /^MinorSubsystemVersion/ && major "." $2 != "5.1" { print "version", major "." $2 }
        /DLL Name:/ { print "library", $3 }
        /^\t[0-9a-f]+\t +[0-9]+ +[A-Za-z_?@]/ { print "function", $3 }'
}

later=$(comm -13 <(declared 0x0501) <(declared 0x0A00))
grep -qx GetTickCount64 <<<"$later" # or the comparison says nothing
for program; do
    needed "$program" | awk -v libraries="^($libraries)[.]DLL\$" -v later="$later" \
        -v program="$(basename "$program")" '
        BEGIN { split(later, names, "\n"); for (i in names) isLater[names[i]] }
        $1 == "version" || $1 == "library" && toupper($2) !~ libraries ||
            $1 == "function" && $2 in isLater {
                print program ":", $0, "is not of Windows XP"
                found = 1
            }
        END { exit found }' || status=1
done
exit "${status:-0}"
