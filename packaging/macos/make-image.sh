#!/bin/sh
# packaging/macos/make-image.sh BUILD FOLDER
#
# Makes FOLDER/HarvellonConnect.dmg from the bundle in BUILD, with the Qt that it was built with inside, and Sparkle where the
# program uses it. What lies in the bundle decides which macOS and which processors it is for; both are said, and the image
# never claims more. These variables, where set, have it signed and notarised:
#   HARVELLON_SIGNING_IDENTITY  the name of a "Developer ID Application" certificate in the keychain; refused for an image that
#                               not every Mac with the oldest supported macOS can run
#   HARVELLON_NOTARY_PROFILE    a profile that `xcrun notarytool store-credentials` has stored
set -eu

build=$1
folder=$2
here=$(cd "$(dirname "$0")" && pwd)
app=$folder/HarvellonConnect.app
program=$app/Contents/MacOS/HarvellonConnect
command=$app/Contents/MacOS/harvellon-connect
image=$folder/HarvellonConnect.dmg
identity=${HARVELLON_SIGNING_IDENTITY:-}
profile=${HARVELLON_NOTARY_PROFILE:-}

say() { printf 'package: %s\n' "$*" >&2; }
fail() {
    say "$*"
    exit 1
}

# A setting of the build, as CMake keeps it.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# The files in the bundle that hold code, and what each of them says about itself, for all its processors.
machos() {
    find "$app/Contents" -type f -exec file {} + | sed -n 's/: *Mach-O .*//p' | sed 's/ (for architecture .*//' | sort -u
}
load_commands() { otool -arch all -l "$1"; }
libraries() {
    load_commands "$1" | awk '$1 == "cmd" { loads = $2 ~ /(LOAD|REEXPORT).*DYLIB/ }
        loads && $1 == "name" { sub(/^ *name /, ""); sub(/ \(offset [0-9]+\)$/, ""); print }' | sort -u
}
rpaths() { load_commands "$1" | sed -n 's/^ *path \(.*\) (offset [0-9]*)$/\1/p' | sort -u; }
oldest_macos() {
    load_commands "$1" | awk '$1 == "cmd" { old = $2 == "LC_VERSION_MIN_MACOSX" }
        $1 == "minos" || (old && $1 == "version") { print $2 }'
}
newest() { sort -t . -k 1,1n -k 2,2n | tail -n 1; }

# A library as a file names it: whether it is the system's or in the bundle.
is_there() { # FILE LIBRARY
    case $2 in
        /usr/lib/* | /System/Library/*) return 0 ;;
        @executable_path/*) [ -e "$app/Contents/MacOS/${2#@executable_path/}" ] ;;
        @loader_path/*) [ -e "$(dirname "$1")/${2#@loader_path/}" ] ;;
        @rpath/*)
            {
                rpaths "$1"
                case $1 in */MacOS/*) ;; *) rpaths "$program" ;; esac
            } | grep '^@' | while read -r rpath; do
                if is_there "$1" "$rpath/${2#@rpath/}"; then echo yes; fi
            done | grep -q yes
            ;;
        *) return 1 ;;
    esac
}

qt=$(setting Qt6_DIR)
qt=${qt%/lib/cmake/Qt6}
for tool in "$qt/bin/macdeployqt" codesign file hdiutil install_name_tool lipo otool plutil xcrun; do
    command -v "$tool" >/dev/null || fail "$tool is not there; Qt's tools and Xcode's command line tools are needed"
done
[ -d "$build/HarvellonConnect/HarvellonConnect.app" ] || fail "no bundle in $build; build it first"

rm -rf "$folder"
mkdir -p "$folder/content"
cp -R "$build/HarvellonConnect/HarvellonConnect.app" "$app"
"$qt/bin/macdeployqt" "$app" "-executable=$command" "-qmldir=$here/../../HarvellonConnect/Desktop" "-libpath=$qt/lib" -always-overwrite

# macdeployqt copies only part of a framework that is not Qt's.
rm -rf "$app/Contents/Frameworks/Sparkle.framework"
if libraries "$program" | grep -q '/Sparkle\.framework/'; then
    cp -R "$(setting SPARKLE)" "$app/Contents/Frameworks/"
elif [ -n "${HARVELLON_SPARKLE:-}" ]; then
    fail "HARVELLON_SPARKLE is set, but $build was configured without it or without HARVELLON_UPDATE_KEY"
else
    say 'without Sparkle: this build announces updates and does not install them'
fi

# The loader would find the libraries of the machine that has built this.
machos | while read -r part; do
    rpaths "$part" | while read -r rpath; do
        case $rpath in
            /usr/lib/* | @*) ;;
            *) install_name_tool -delete_rpath "$rpath" "$part" ;;
        esac
    done
done

architectures=$(lipo -archs "$program")
machos | while read -r part; do
    libraries "$part" | while read -r library; do
        is_there "$part" "$library" || fail "$part needs $library, which is neither the system's nor in the bundle"
    done
    left=$(rpaths "$part" | grep -Ev '^(@|/usr/lib/)' || true)
    [ -z "$left" ] || fail "$part still looks for libraries in $left"
    for architecture in $architectures; do
        case " $(lipo -archs "$part") " in
            *" $architecture "*) ;;
            *) fail "$part is not for $architecture" ;;
        esac
    done
done
wanted=$(setting CMAKE_OSX_DEPLOYMENT_TARGET)
needed=$({
    echo "$wanted"
    machos | while read -r part; do oldest_macos "$part"; done
} | newest)
say "with Qt from $qt: for macOS $needed and later, on $architectures"
complete=yes
if [ "$needed" != "$wanted" ]; then
    say "for macOS $wanted take Qt from qt.io; Homebrew's is built for the running system (docs/macos.md)"
    plutil -replace LSMinimumSystemVersion -string "$needed" "$app/Contents/Info.plist"
    complete=
fi
for architecture in arm64 x86_64; do
    case " $architectures " in *" $architecture "*) ;; *) complete= ;; esac
done
[ -z "$identity" ] || [ -n "$complete" ] || fail 'not signed for others: not every Mac can run it'

# The hardened runtime loads only libraries with the signer's own team, which a signature for this machine does not have.
hardened='--options runtime --timestamp'
if [ -z "$identity" ]; then
    say 'HARVELLON_SIGNING_IDENTITY is not set: signed for this machine only'
    identity=-
    hardened=
fi
# shellcheck disable=SC2086
sign() { codesign --force $hardened --sign "$identity" "$@"; }
# A signature covers what lies within, so -depth brings the inner parts first. Sparkle's programs keep their entitlements.
find "$app/Contents" -depth ! -type l \( -name '*.dylib' -o -name '*.framework' -o -name '*.bundle' -o -name '*.xpc' -o \
    -name '*.app' -o -name harvellon-connect -o -path '*/Sparkle.framework/*/Autoupdate' \) | while read -r part; do
    case $part in
        *.xpc | *.app | */Autoupdate) sign --preserve-metadata=entitlements "$part" ;;
        *) sign "$part" ;;
    esac
done
sign --entitlements "$here/HarvellonConnect.entitlements" "$app"
machos | while read -r part; do
    codesign --verify --strict "$part" || fail "$part is not signed"
done
codesign --verify --deep --strict "$app"

cp -R "$app" "$folder/content/"
ln -s /Applications "$folder/content/Applications"
# While the system looks a new program over, hdiutil may fail with "Resource busy".
tries=5
until hdiutil create -quiet -ov -volname 'Harvellon Connect' -srcfolder "$folder/content" -format UDZO "$image"; do
    tries=$((tries - 1))
    [ $tries -gt 0 ] || fail 'hdiutil cannot make the image'
    sleep 5
done
rm -rf "$folder/content"

if [ "$identity" = - ] || [ -z "$profile" ]; then
    say 'not notarised: that takes HARVELLON_SIGNING_IDENTITY and HARVELLON_NOTARY_PROFILE'
else
    codesign --sign "$identity" --timestamp "$image"
    # It succeeds with any answer, also when Apple refuses.
    answer=$(xcrun notarytool submit "$image" --keychain-profile "$profile" --wait)
    if ! printf '%s\n' "$answer" | grep -q '^ *status: Accepted$'; then
        submission=$(printf '%s\n' "$answer" | sed -n 's/^ *id: //p' | head -n 1)
        xcrun notarytool log "$submission" --keychain-profile "$profile" >&2 || say "$answer"
        fail 'not notarised: Apple has refused the image'
    fi
    xcrun stapler staple "$image"
    spctl --assess --type open --context context:primary-signature --verbose "$image"
    "$here/make-cask.sh" "$(setting CMAKE_PROJECT_VERSION)" "$image" "$(setting HARVELLON_SERVER)" >"$folder/harvellon-connect.rb"
fi
echo "$image"
