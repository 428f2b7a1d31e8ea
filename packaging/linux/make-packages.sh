#!/bin/sh
# packaging/linux/make-packages.sh BUILD FOLDER
#
# Makes in FOLDER, from the programs in BUILD, what people on Linux install: a Debian package, an rpm, and for Arch a
# PKGBUILD with the archive of the sources that it builds. Beside them lies the list of what is inside. The same commit and
# the same versions of Debian's packages give the same bytes; SOURCE_DATE_EPOCH is the time that all of them carry.
set -eu

build=$(realpath "$1")
mkdir -p "$2"
folder=$(realpath "$2")
cd "$(dirname "$0")/../.."
: "${SOURCE_DATE_EPOCH:?the time of the commit, in seconds since 1970}"
umask 022
export LC_ALL=C.UTF-8 TZ=UTC
# More than one thread writes other bytes than one.
export DPKG_DEB_THREADS_MAX=1

# A setting of the build, as CMake keeps it.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
version=$(setting CMAKE_PROJECT_VERSION)
release=$(setting HARVELLON_BUILD_NUMBER)
commit=$(setting HARVELLON_COMMIT)

cd "$build"
for generator in DEB RPM; do
    cpack -G $generator -B "$folder"
done
rm -rf "$folder/_CPack_Packages"
cd - >/dev/null

# CPack keeps the times of the files and the order in which the disk lists them.
package=$(echo "$folder"/*.deb)
content=$(mktemp -d)
trap 'rm -rf "$content"' EXIT
dpkg-deb --raw-extract "$package" "$content/deb"
sort -k 2 -o "$content/deb/DEBIAN/md5sums" "$content/deb/DEBIAN/md5sums"
find "$content/deb" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group -Zxz --build "$content/deb" "$package" >/dev/null

sources=harvellon-connect-$version
git archive --format=tar --prefix="$sources/" "${commit%-dirty}" -- . ':!docs/screenshots' | gzip -9n >"$folder/$sources.tar.gz"
sha256=$(sha256sum "$folder/$sources.tar.gz" | cut -d ' ' -f 1)
sed -e "s|@version@|$version|" -e "s|@release@|$release|" -e "s|@server@|$(setting HARVELLON_SERVER)|" \
    -e "s|@commit@|$commit|" -e "s|@sha256@|$sha256|" packaging/linux/PKGBUILD.in >"$folder/PKGBUILD"
packaging/linux/list-contents.py "$package" "$commit" "$(setting HARVELLON_SERVER)" >"${package%.deb}.cdx.json"
