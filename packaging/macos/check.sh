#!/bin/sh
# Type-checks the macOS sources on Linux, against hand-written declarations of the system functions they call. It finds
# misspelt names, wrong arguments and missing headers; it cannot check what the calls do.
set -eu
cd "$(dirname "$0")/../.."
qt=$(pkg-config --cflags Qt6Core Qt6Gui Qt6Network Qt6Qml Qt6Quick Qt6Widgets | sed 's/-I/-isystem/g')
status=0
for source in $(git ls-files -- '*_macos.cpp' '*_macos.mm'); do
    language=c++
    [ "${source%.mm}" = "$source" ] || language='objective-c++ -fobjc-arc -fobjc-runtime=macosx-13.0'
    # shellcheck disable=SC2086
    clang++ -fsyntax-only -std=c++20 -fPIC -fblocks -x $language -DQ_OS_DARWIN -DQ_OS_MACOS -Wall -Wextra -Wno-reserved-identifier \
        -Wno-four-char-constants -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_KEYWORDS \
        -isystem packaging/macos/declarations -IHarvellonConnect $qt -fcoroutines-ts "$source" || {
        echo "not well: $source" >&2
        status=1
    }
done
exit $status
