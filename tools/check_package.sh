#!/usr/bin/env bash
# Makes the Debian package twice, in folders of different names and by people of different habits, and compares the
# bytes; then has it looked at by lintian, and its papers by the checkers of their own. What is missing is installed.
#
#     tools/check_package.sh FOLDER
#
# FOLDER is made and gets the builds and, at its top, the package. Exit status 0 only if nothing was found.
set -euo pipefail

top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
# shellcheck source=tools/toolchain.sh
. "$top/tools/toolchain.sh"

installMissing() {
    local missing=()
    missingBuildPackages
    has dpkg-shlibdeps || missing+=(dpkg-dev)
    hasHeader CLI/CLI.hpp || missing+=(libcli11-dev)
    hasHeader nlohmann/json.hpp || missing+=(nlohmann-json3-dev)
    has lintian || missing+=(lintian)
    has appstreamcli || missing+=(appstream)
    has desktop-file-validate || missing+=(desktop-file-utils)
    if [ ${#missing[@]} -gt 0 ]; then
        installPackages "${missing[@]}"
    fi
}

# copySources TREE: what git knows of the sources, as they stand.
copySources() {
    mkdir -p "$1"
    git -C "$top" ls-files -z | (cd "$top" && xargs -0 cp --parents -t "$1")
}

# makePackage TREE BUILD
makePackage() {
    cmake -S "$1" -B "$2" >"$2.log"
    cmake --build "$2" --parallel "$(jobCount)" >>"$2.log"
    (cd "$2" && cpack >>"$2.log")
}

folder=$(mkdir -p "${1:?the folder to work in}" && cd "$1" && pwd)
installMissing
(umask 022 && copySources "$folder/one")
(umask 077 && copySources "$folder/the other one/tarvelmon")
(umask 022 && makePackage "$folder/one" "$folder/one-build")
(umask 077 && export LC_ALL=C.UTF-8 TZ=Asia/Kathmandu && makePackage "$folder/the other one/tarvelmon" "$folder/b")

status=0
for package in "$folder"/one-build/*.deb "$folder"/one-build/*.tar.gz; do
    if cmp "$package" "$folder/b/${package##*/}"; then
        echo "the same twice: ${package##*/}"
    else
        status=1
    fi
done
cp "$folder"/one-build/*.deb "$folder"
lintian --allow-root --fail-on error,warning "$folder"/*.deb || status=1
dpkg-deb -x "$folder"/*.deb "$folder/contents"
appstreamcli validate --no-net "$folder"/contents/usr/share/metainfo/*.xml || status=1
desktop-file-validate "$folder"/contents/usr/share/applications/*.desktop || status=1
exit "$status"
