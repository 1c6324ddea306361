# Sourced by run, test and .ci/run: installs what is missing by apt, and touches no network when nothing is.

packages_for() {
  case "$1" in
    build) echo cmake ninja-build g++ qt6-base-dev libqt6svg6 libgl-dev ;;
    test) echo at-spi2-core python3-gi python3-xlib gir1.2-atspi-2.0 libgtest-dev python3 strace file util-linux mount dpkg-dev man-db libglib2.0-bin fuse3 libfuse3-dev pkg-config ;;
    display) echo xvfb openbox xdotool x11-utils xclip wmctrl imagemagick fonts-dejavu-core xterm dbus weston qt6-wayland wl-clipboard ;;
    bench) echo libbenchmark-dev ;;
    check) echo clang clang-format clang-tidy libclang-rt-14-dev cppcheck ccache lld git lintian appstream desktop-file-utils ;;
  esac
}

# need GROUP: installs the group's missing packages. Works as root or with sudo.
need() {
  missing=""
  for package in $(packages_for "$1"); do
    # One whose set-up is not through has its files in place; asking for it again would only fail again.
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null |
      grep -qE '^install ok (installed|half-configured|triggers-(awaited|pending))' || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  echo "Installing:$missing" >&2
  sudo=""
  [ "$(id -u)" = 0 ] || sudo=sudo
  $sudo apt-get update -q >&2
  # shellcheck disable=SC2086
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing >&2
}

# cmake_build ROOT PRESET [TARGET...]: configures once and builds.
cmake_build() {
  build_root=$1 build_preset=$2
  shift 2
  export CCACHE_BASEDIR="$build_root" CCACHE_NOHASHDIR=1  # another clone may find what this one compiled
  [ -f "$build_root/build/$build_preset/build.ninja" ] || (cd "$build_root" && cmake --preset "$build_preset") >&2
  if [ $# -gt 0 ]; then
    (cd "$build_root" && cmake --build --preset "$build_preset" --target "$@") >&2
  else
    (cd "$build_root" && cmake --build --preset "$build_preset") >&2
  fi
}
