#!/bin/sh
# packaging/linux/make-repository.sh PACKAGES REPOSITORY [KEY]
#
# Adds the Debian package in PACKAGES, and the list of what is in it, to the apt repository in REPOSITORY, and signs it.
# What was added before stays, older versions and older indexes as well, so that who is downloading is not disturbed. Run
# again without anything new it signs once more, which is due before the signature's 90 days are over. KEY is the fingerprint
# of a key in GnuPG's folder (GNUPGHOME); it may be left out where there is only one.
set -eu

packages=$1
repository=$2
key=${3:-}

fail() {
    printf 'repository: %s\n' "$*" >&2
    exit 1
}
umask 022
export LC_ALL=C.UTF-8

keys=$(gpg --batch --list-secret-keys --with-colons ${key:+"$key"} 2>/dev/null |
    awk -F : '$1 == "sec" { wanted = 1 } $1 == "fpr" && wanted { print $10; wanted = 0 }')
case $(echo "$keys" | grep -c .) in
    1) key=$keys ;;
    0) fail "no secret key ${key:-in ${GNUPGHOME:-~/.gnupg}}: a repository without a signature is refused by apt. Name a key of" \
        'yours with --key FINGERPRINT, or the folder of one with GNUPGHOME' ;;
    *) fail 'there is more than one secret key; name one with --key FINGERPRINT' ;;
esac

pool=pool/main/h/harvellon-connect
mkdir -p "$repository/$pool"
repository=$(cd "$repository" && pwd)
published=$repository/harvellon.gpg
# Users have the key that they downloaded once.
if [ -e "$published" ] && ! gpg --batch --show-keys --with-colons "$published" | grep -q "^fpr:.*:$key:"; then
    fail "$published holds another key, and whoever has it will refuse this one. Add the new key to that file a while before"
fi
for file in "$packages"/*.deb "$packages"/*.cdx.json; do
    added=$repository/$pool/${file##*/}
    if [ ! -e "$added" ]; then
        cp "$file" "$added.new"
        mv "$added.new" "$added"
    elif ! cmp -s "$file" "$added"; then
        fail "${file##*/} is there already, with another content; a new content needs a new version"
    fi
done
if [ ! -e "$published" ]; then
    gpg --batch --export "$key" >"$published"
    gpg --batch --armor --export "$key" >"$repository/harvellon.asc"
fi

cd "$repository"
work=$(mktemp -d "$repository/.new.XXXXXX")
trap 'rm -rf "$work"' EXIT
architectures=$(find $pool -name '*.deb' | sed 's/.*_\(.*\)\.deb/\1/' | sort -u | tr '\n' ' ')
for architecture in $architectures; do
    index=main/binary-$architecture
    mkdir -p "$work/$index" "dists/stable/$index/by-hash/SHA256"
    apt-ftparchive --arch "$architecture" -o APT::FTPArchive::MD5=false -o APT::FTPArchive::SHA1=false \
        -o APT::FTPArchive::SHA512=false packages pool >"$work/$index/Packages"
    gzip -9nk "$work/$index/Packages"
    xz -k "$work/$index/Packages"
    for file in "$work/$index"/Packages*; do
        cp "$file" "dists/stable/$index/by-hash/SHA256/$(sha256sum "$file" | cut -d ' ' -f 1)"
    done
done
# Whoever answers in our place can hold back a newer version for as long as an old signature counts. 90 days bound that,
# and leave a season between two releases without one of them having to be signed again.
(
    cd "$work"
    apt-ftparchive -o APT::FTPArchive::Release::Origin=Harvellon -o APT::FTPArchive::Release::Label=Harvellon \
        -o APT::FTPArchive::Release::Suite=stable -o APT::FTPArchive::Release::Codename=stable \
        -o APT::FTPArchive::Release::Architectures="$architectures" -o APT::FTPArchive::Release::Components=main \
        -o APT::FTPArchive::Release::Acquire-By-Hash=yes -o APT::FTPArchive::Release::ValidTime=$((90 * 24 * 3600)) \
        -o APT::FTPArchive::MD5=false -o APT::FTPArchive::SHA1=false -o APT::FTPArchive::SHA512=false release . >../.release
    mv ../.release Release
    gpg --batch --yes --local-user "$key" --digest-algo SHA512 --clearsign --output InRelease Release
    gpg --batch --yes --local-user "$key" --digest-algo SHA512 --armor --detach-sign --output Release.gpg Release
)
# apt reads the signature first, and then what it names by its hash.
find "$work" -type f -printf '%P\n' | sort -r | while read -r file; do
    mv "$work/$file" "dists/stable/$file"
done
