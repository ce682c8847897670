#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a packager and a user would see:
# every file in its standard place, valid desktop and software-centre metadata, and an installed
# executable that finds its own resources.
set -euo pipefail
build="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null

fail() { echo "FAIL: $*" >&2; exit 1; }
for file in \
    bin/vantorel \
    share/vantorel/DataSun.plist share/vantorel/DataGraphs.plist share/vantorel/DataAurora.plist \
    share/vantorel/DataEarth.plist share/vantorel/DataAlerts.plist share/vantorel/DataNow.plist \
    share/vantorel/DefaultDescription.txt share/vantorel/PhaseNames.plist \
    share/applications/org.example.Vantorel.desktop \
    share/metainfo/org.example.Vantorel.metainfo.xml \
    share/icons/hicolor/scalable/apps/org.example.Vantorel.svg \
    share/man/man1/vantorel.1 \
    share/doc/vantorel/LICENSE; do
    [ -e "$prefix/$file" ] || fail "$file is not installed"
done

desktop-file-validate "$prefix/share/applications/org.example.Vantorel.desktop" \
    || fail "desktop file does not validate"
appstreamcli validate --no-net "$prefix/share/metainfo/org.example.Vantorel.metainfo.xml" >/dev/null \
    || fail "metainfo does not validate"

# The installed program, run from elsewhere, in a home of its own, without a display.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
unset DISPLAY WAYLAND_DISPLAY
cd "$work"
"$prefix/bin/vantorel" --version | grep -q '^vantorel ' || fail "--version"
list="$("$prefix/bin/vantorel" report --list --data-dir "$work/data")" || fail "report --list"
echo "$list" | grep -q 'RSGA.txt' || fail "the installed program does not find its resources"
"$prefix/bin/vantorel" moon --date 2008-01-01 | grep -q '^Moon Phase for ' || fail "moon"
# No data yet (exit 1), but the Now group's definitions are found: nothing on standard error.
now_errors="$("$prefix/bin/vantorel" now --data-dir "$work/data" 2>&1 >/dev/null || true)"
[ -z "$now_errors" ] || fail "now: $now_errors"
echo "installation checked in $prefix"
