#!/bin/sh
# packaging/macos/check.sh [SOURCE…]
#
# Type-checks the macOS sources on Linux, against hand-written declarations of the system functions they call. It finds
# misspelt names, wrong arguments, missing headers, wrong formats of log lines and calls that the oldest supported macOS
# does not have; it cannot check what the calls do.
set -eu
cd "$(dirname "$0")/../.."
# shellcheck disable=SC2046
[ $# -gt 0 ] || set -- $(git ls-files -- '*_macos.cpp' '*_macos.mm')
oldest=$(sed -n 's/.*CMAKE_OSX_DEPLOYMENT_TARGET \([0-9.]*\).*/\1/p' CMakeLists.txt)
warnings=$(sed -n 's/^ *-pthread \(-W.*\))$/\1/p' cmake/harvellon.cmake)
if [ -z "$oldest" ] || [ -z "$warnings" ]; then
    echo 'the oldest macOS or the warnings are not where this script looks' >&2
    exit 1
fi
qt=$(pkg-config --cflags Qt6Core Qt6Gui Qt6Network Qt6Qml Qt6Quick Qt6Widgets | sed 's/-I/-isystem/g')
# For a Mac clang leaves out the headers of this machine. With two settings they are good enough to be parsed for one:
# glibc has a macro of its own for a name that Apple's clang defines, and libstdc++ uses glibc's extensions.
here=$(clang++ -E -v -x c++ /dev/null 2>&1 | sed -n 's/^ \(\/.*\)/-isystem \1/p')
status=0
for source in "$@"; do
    language=c++
    [ "${source%.mm}" = "$source" ] || language='objective-c++ -fobjc-arc'
    # shellcheck disable=SC2086
    clang++ -fsyntax-only -std=c++20 -fPIC -x $language --target=x86_64-apple-macosx"$oldest" \
        -nostdinc -nostdinc++ -U__nonnull -D_GNU_SOURCE $warnings -Wunguarded-availability -Wformat-nonliteral \
        -Wno-four-char-constants -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_URL_CAST_FROM_STRING -DQT_NO_KEYWORDS \
        -DQT_DISABLE_DEPRECATED_BEFORE=0x060400 -IHarvellonConnect -isystem packaging/macos/declarations $qt $here "$source" || {
        echo "not well: $source" >&2
        status=1
    }
done
exit $status
