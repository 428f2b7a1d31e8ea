#!/bin/sh
# packaging/macos/make-cask.sh VERSION IMAGE SERVER
#
# Prints the Homebrew cask that installs IMAGE, once it can be downloaded from SERVER.
set -eu
here=$(dirname "$0")
if command -v sha256sum >/dev/null; then hash=$(sha256sum "$2"); else hash=$(shasum -a 256 "$2"); fi
sed -e "s|@version@|$1|" -e "s|@sha256@|${hash%% *}|" -e "s|@server@|$3|" "$here/harvellon-connect.rb.in"
