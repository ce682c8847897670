# Shared by the set-up scripts: install what is missing, then configure and build incrementally.
# Sourced, not run.

set -euo pipefail

VANTOREL_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
VANTOREL_BUILD="${VANTOREL_BUILD:-$VANTOREL_ROOT/build}"

# Debian 12 packages that building, running and testing Vantorel need.
VANTOREL_PACKAGES=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev  # Qt Core, Network, SQL, D-Bus (the notifications), Gui and Widgets
    qt6-svg-dev libqt6svg6 qt6-qpa-plugins
    qt6-charts-dev libqt6opengl6-dev  # the Now view's charts (their CMake files need Qt OpenGL's)
    libqt6sql6-sqlite  # the local history's database driver, loaded at run time
    libplist-dev zlib1g-dev
    fonts-dejavu-core
    desktop-file-utils appstream
    dpkg-dev  # dpkg-shlibdeps: the Debian package's library dependencies
)

# What the test script needs besides: the formatting check, the layer check, and the session bus
# that the notification test starts for itself.
VANTOREL_TEST_PACKAGES=(clang-format python3 dbus-daemon)

vantorel_missing_packages() {
    local missing=()
    for pkg in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
            missing+=("$pkg")
        fi
    done
    echo "${missing[@]:-}"
}

vantorel_install_packages() {
    local missing
    missing="$(vantorel_missing_packages "$@")"
    [ -z "$missing" ] && return 0
    echo "Installing: $missing"
    local sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        sudo="sudo"
    fi
    # shellcheck disable=SC2086
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -q
    # shellcheck disable=SC2086
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing
}

# vantorel_build [-DOPTION=VALUE ...]: configures on the first run, and again whenever an option
# given here is not yet the build's own, then builds what changed.
vantorel_build() {
    vantorel_install_packages "${VANTOREL_PACKAGES[@]}"
    local configure=0
    if [ ! -f "$VANTOREL_BUILD/build.ninja" ]; then
        configure=1
    fi
    for option in "$@"; do
        local name="${option#-D}"
        if ! grep -q "^${name%%=*}:[A-Z]*=${name#*=}\$" "$VANTOREL_BUILD/CMakeCache.txt" 2>/dev/null; then
            configure=1
        fi
    done
    if [ "$configure" = 1 ]; then
        cmake -S "$VANTOREL_ROOT" -B "$VANTOREL_BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
    fi
    cmake --build "$VANTOREL_BUILD" --parallel
}
