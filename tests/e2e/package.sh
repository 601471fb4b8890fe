#!/usr/bin/env bash
# Builds the Debian package from the build tree, unpacks it into a scratch root
# and checks what it holds.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

desktop-file-validate "$source/resources/desktop/app.narv.Narv.desktop" || fail "desktop file"
appstreamcli validate --no-net "$source/resources/desktop/app.narv.Narv.metainfo.xml" >"$work/as.log" 2>&1 \
    || { cat "$work/as.log"; fail "metainfo"; }

(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack"; }
deb=$(ls "$work"/out/narv_*.deb)
dpkg-deb -x "$deb" "$work/root"
for f in usr/bin/narv \
         usr/share/applications/app.narv.Narv.desktop \
         usr/share/metainfo/app.narv.Narv.metainfo.xml \
         usr/share/icons/hicolor/scalable/apps/app.narv.Narv.svg \
         usr/share/icons/hicolor/48x48/apps/app.narv.Narv.png \
         usr/share/icons/hicolor/256x256/apps/app.narv.Narv.png; do
    [[ -s "$work/root/$f" ]] || fail "missing $f"
done
[[ -x "$work/root/usr/bin/narv" ]] || fail "narv is not executable"
# The modules the program loads on demand, in the library folder it looks in.
for module in narv_views.so narv_update.so narv_updatewindow.so narv_classictray.so; do
    [[ -n $(find "$work/root/usr/lib" -path "*/narv/$module") ]] || fail "missing the module $module"
done
# Nothing from the build or test tree slips into the package.
if find "$work/root" -name 'tst_*' | grep -q .; then fail "test programs in the package"; fi
depends=$(dpkg-deb -f "$deb" Depends)
[[ $depends == *libqt6core6* ]] || fail "Depends lacks the Qt libraries found by dpkg-shlibdeps: $depends"
[[ $depends == *libicu* ]] || fail "Depends lacks ICU: $depends"
[[ $depends == *qml6-module-qtquick* ]] || fail "Depends lacks the QML modules: $depends"
# Only the modules link these: dpkg-shlibdeps must have read them.
[[ $depends == *libqt6network6* ]] || fail "Depends lacks QtNetwork (the update module): $depends"
[[ $depends == *libqt6widgets6* ]] || fail "Depends lacks QtWidgets (the classic tray module): $depends"
echo "package: 1 passed, 0 failed"
