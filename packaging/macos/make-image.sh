#!/bin/sh
# packaging/macos/make-image.sh BUILD FOLDER
#
# Makes FOLDER/HarvellonConnect.dmg from the bundle in BUILD, with Qt and Sparkle inside. These variables, where set,
# have it signed and notarised:
#   HARVELLON_SIGNING_IDENTITY  the name of a "Developer ID Application" certificate in the keychain
#   HARVELLON_NOTARY_PROFILE    a profile that `xcrun notarytool store-credentials` has stored
#   HARVELLON_SPARKLE           the folder of Sparkle.framework, when it is not in /Library/Frameworks
set -eu

build=$1
folder=$2
here=$(cd "$(dirname "$0")" && pwd)
app=$folder/HarvellonConnect.app
image=$folder/HarvellonConnect.dmg
identity=${HARVELLON_SIGNING_IDENTITY:-}
profile=${HARVELLON_NOTARY_PROFILE:-}

say() { printf 'package: %s\n' "$*" >&2; }
fail() {
    say "$*"
    exit 1
}

for tool in macdeployqt codesign hdiutil xcrun; do
    command -v $tool >/dev/null || fail "$tool is not there; Qt's tools and Xcode's command line tools are needed"
done
[ -d "$build/HarvellonConnect/HarvellonConnect.app" ] || fail "no bundle in $build; build it first"

rm -rf "$folder"
mkdir -p "$folder/content"
cp -R "$build/HarvellonConnect/HarvellonConnect.app" "$app"
command=$app/Contents/MacOS/harvellon-connect
macdeployqt "$app" -executable="$command" -qmldir="$here/../../HarvellonConnect/Desktop" -always-overwrite

sparkle=${HARVELLON_SPARKLE:-/Library/Frameworks}/Sparkle.framework
if [ -d "$sparkle" ]; then
    mkdir -p "$app/Contents/Frameworks"
    rm -rf "$app/Contents/Frameworks/Sparkle.framework"
    cp -R "$sparkle" "$app/Contents/Frameworks/"
else
    say 'Sparkle.framework is not there: this build announces updates and does not install them'
fi

if [ -z "$identity" ]; then
    say 'HARVELLON_SIGNING_IDENTITY is not set: signed for this machine only'
    identity=-
fi
# From the inside out, because a signature covers what lies within.
sign() { codesign --force --options runtime ${stamp:-} --sign "$identity" "$@"; }
[ "$identity" = - ] || stamp=--timestamp
find "$app/Contents" -name '*.xpc' -o -name 'Autoupdate' -o -name '*.app' | while read -r part; do
    sign --preserve-metadata=entitlements "$part"
done
find "$app/Contents" \( -name '*.dylib' -o -name '*.framework' \) -prune | while read -r part; do
    sign "$part"
done
sign "$command"
sign --entitlements "$here/HarvellonConnect.entitlements" "$app"
codesign --verify --deep --strict "$app"

cp -R "$app" "$folder/content/"
ln -s /Applications "$folder/content/Applications"
hdiutil create -quiet -volname 'Harvellon Connect' -srcfolder "$folder/content" -format UDZO "$image"
rm -rf "$folder/content"

if [ "$identity" = - ] || [ -z "$profile" ]; then
    say 'not notarised: that takes HARVELLON_SIGNING_IDENTITY and HARVELLON_NOTARY_PROFILE'
else
    codesign --sign "$identity" --timestamp "$image"
    xcrun notarytool submit "$image" --keychain-profile "$profile" --wait
    xcrun stapler staple "$image"
fi
echo "$image"
