#!/bin/sh
# packaging/linux/check.sh PACKAGES
#
# Has each thing in PACKAGES, and what went into them, checked by the tools that distributors use. Not part of ./dev lint,
# because it needs the packages, and these the whole release build.
set -eu
packages=$(realpath "$1")
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

check() { # NAME COMMAND…
    name=$1
    shift
    if "$@" >"$work/log" 2>&1; then
        echo "good: $name"
    else
        status=1
        echo "bad:  $name" >&2
        cat "$work/log" >&2
    fi
}

# Debian's own bug numbers are not ours to close.
check 'Debian package' lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs \
    "$packages"/*.deb
check 'rpm' rpmlint --strict --config packaging/linux/rpmlint.toml "$packages"/*.rpm
check 'PKGBUILD' shellcheck --shell=bash --exclude=SC2034,SC2154,SC2164 "$packages/PKGBUILD"
# makepkg refuses to work for root.
cp "$packages/PKGBUILD" "$packages"/*.tar.gz "$work"
chown -R nobody "$work"
# shellcheck disable=SC2317 # called through check
as_nobody() { if [ "$(id -u)" = 0 ]; then runuser -u nobody -- "$@"; else "$@"; fi; }
# shellcheck disable=SC2317
sources() { (cd "$work" && as_nobody makepkg --nodeps --verifysource && as_nobody makepkg --printsrcinfo); }
check 'PKGBUILD and its sources' sources
check 'desktop file' desktop-file-validate packaging/linux/*.desktop
check 'description for software centres' appstreamcli validate --no-net build/release/packaging/*.metainfo.xml
packaging/macos/make-cask.sh 1.0.0 "$packages/PKGBUILD" https://connect.harvellon.example >"$work/harvellon-connect.rb"
check 'cask' ruby -c "$work/harvellon-connect.rb"
check 'style of the cask' rubocop --only Lint,Layout,Security --cache false "$work/harvellon-connect.rb"
check 'scripts' shellcheck packaging/linux/*.sh packaging/macos/*.sh
schemas=
if command -v npm >/dev/null; then
    schemas=build/cyclonedx/package/res/schema
    [ -e $schemas ] || (mkdir -p build/cyclonedx && cd build/cyclonedx &&
        npm pack --silent @cyclonedx/cyclonedx-library@10.3.0 && tar -xf ./*.tgz)
fi >/dev/null 2>&1
check 'list of contents' packaging/linux/check-list.py "$packages" $schemas
cat "$work/log"
exit $status
