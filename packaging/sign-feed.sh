#!/bin/sh
# packaging/sign-feed.sh KEY                 prints the public half of KEY, for the CMake setting HARVELLON_FEED_KEY
# packaging/sign-feed.sh KEY BUILD PACKAGE   writes the signed update feed beside PACKAGE, for the program in BUILD
#
# KEY is a private Ed25519 key: openssl genpkey -algorithm ed25519 -out KEY. Programs refuse the feed after HARVELLON_FEED_DAYS
# days (90 where it is not set), so that nobody can show them an old one for ever: sign it anew before.
set -eu

key=$1
fail() {
    printf 'sign-feed: %s\n' "$*" >&2
    exit 1
}
command -v openssl >/dev/null || fail 'openssl is not there'

public=$(openssl pkey -in "$key" -pubout -outform DER | tail -c 32 | openssl base64 -A)
if [ $# -eq 1 ]; then
    echo "$public"
    exit
fi
build=$2
package=$3

# A setting of the build, as CMake keeps it.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

[ "$(setting HARVELLON_FEED_KEY)" = "$public" ] ||
    fail "the program in $build believes another key: cmake $build -DHARVELLON_FEED_KEY=$public"
address=$(setting HARVELLON_UPDATE_FEED)
case $address in
    https://*/*) ;;
    *) fail "HARVELLON_UPDATE_FEED is no https address: $address" ;;
esac
feed=$(dirname "$package")/${address##*/}
moment() { date -u -d "$1" +%Y-%m-%dT%H:%M:%SZ; }
issued=$(moment now)
expires=$(moment "${HARVELLON_FEED_DAYS:-90} days")

cat >"$feed.new" <<END
<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:harvellon="${address%/*}" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
  <channel>
    <title>Harvellon Connect</title>
    <harvellon:issued>$issued</harvellon:issued>
    <harvellon:expires>$expires</harvellon:expires>
    <item>
      <enclosure url="${address%/*}/$(basename "$package")" length="$(wc -c <"$package")" sparkle:os="linux"
        type="application/vnd.debian.binary-package" sparkle:shortVersionString="$(setting CMAKE_PROJECT_VERSION)"/>
    </item>
  </channel>
</rss>
END
signature=$(openssl pkeyutl -sign -rawin -inkey "$key" -in "$feed.new" | openssl base64 -A)
[ ${#signature} -eq 88 ] || fail "$key cannot sign: is it an Ed25519 key?"
echo "<!-- signature $signature -->" >>"$feed.new"
mv "$feed.new" "$feed"
echo "$feed"
