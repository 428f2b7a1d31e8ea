#!/bin/sh
# packaging/linux/reproduce.sh
#
# Builds the last commit twice: in folders of other names and depth, one after the other, with another umask, time zone and
# language. Every file of the two build/package must have the same bytes, and those of this folder as well where they were
# built from this commit. Prints the hashes, or what differs within the packages.
set -eu
cd "$(dirname "$0")/../.."
commit=$(git rev-parse HEAD)
work=$(mktemp -d "${TMPDIR:-/tmp}/harvellon-reproduce.XXXXXX")
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

build() { ( # FOLDER UMASK ZONE LANGUAGE
    umask "$2"
    git clone --quiet --no-local . "$work/$1"
    cd "$work/$1"
    git checkout --quiet "$commit"
    env -u HARVELLON_FEED_SIGNING_KEY CCACHE_DISABLE=1 TZ="$3" LC_ALL="$4" ./dev package >/dev/null
); }

content() { # PACKAGE FOLDER
    mkdir -p "$2"
    case $1 in
        *.deb) dpkg-deb --raw-extract "$1" "$2" && { ar tv "$1" && dpkg-deb --contents "$1"; } >"$2/listing" ;;
        *.rpm) rpm2cpio "$1" | (cd "$2" && cpio --quiet -idm) && rpm -qp --xml "$1" >"$2/listing" ;;
        *.tar.gz) tar -xf "$1" -C "$2" && tar -tvf "$1" >"$2/listing" ;;
        *) cp "$1" "$2" ;;
    esac
}

compare() { # FOLDER FOLDER
    same=yes
    for name in $({ ls "$1" && ls "$2"; } | sort -u); do
        ! cmp "$1/$name" "$2/$name" || continue
        same=
        rm -rf "$work/inside"
        content "$1/$name" "$work/inside/first"
        content "$2/$name" "$work/inside/second"
        (cd "$work/inside" && diff -r --no-dereference first second | head -n 60)
    done
    [ -n "$same" ]
}

build first 022 Pacific/Kiritimati C.UTF-8
build another/place/below/second 077 Etc/GMT+12 de_DE.UTF-8
status=0
compare "$work/first/build/package" "$work/another/place/below/second/build/package" || status=1
if zgrep -qs "commit $commit\\.$" build/release/packaging/changelog && [ -d build/package ]; then
    compare "$work/first/build/package" build/package || status=1
fi
[ $status != 0 ] || (cd "$work/first/build/package" && echo "twice the same from $commit:" && sha256sum -- *)
exit $status
