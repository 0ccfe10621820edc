#!/bin/sh
# The Debian package: everything lands where a Linux desktop looks for it,
# apt resolves its dependencies, and the program unpacked from it, with
# nothing of the build tree, passes its self-test. Nothing is installed.
#   test_package.sh BUILD_DIR
set -eu
build=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

(cd "$build" && cpack -G DEB -B "$tmp/out" >"$tmp/cpack.log") || { cat "$tmp/cpack.log"; exit 1; }
deb=$(ls "$tmp"/out/kestrun_*.deb)
dpkg-deb -x "$deb" "$tmp/root"
for file in bin/kestrun share/kestrun/course.json share/kestrun/solutions.json \
    share/kestrun/VelmoraPixel-Regular.ttf share/kestrun/icons/go-home.svg \
    share/applications/org.kestrun.Kestrun.desktop share/metainfo/org.kestrun.Kestrun.metainfo.xml \
    share/icons/hicolor/scalable/apps/org.kestrun.Kestrun.svg share/icons/hicolor/48x48/apps/org.kestrun.Kestrun.png; do
    [ -f "$tmp/root/usr/$file" ] || { echo "not in the package: /usr/$file"; exit 1; }
done
dpkg-deb -f "$deb" Depends | grep -q bubblewrap || { echo "the package does not depend on bubblewrap"; exit 1; }

apt-get install --simulate "$deb" >"$tmp/apt.log" 2>&1 || { cat "$tmp/apt.log"; exit 1; }
grep -q '^Inst kestrun ' "$tmp/apt.log" || { cat "$tmp/apt.log"; echo "apt would not install the package"; exit 1; }

exec "$tmp/root/usr/bin/kestrun" --self-test
