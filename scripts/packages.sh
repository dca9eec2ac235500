# The Debian packages that the scripts need, and the function that installs what is missing of them.
# Sourced by the scripts beside it and by .ci/run.

build_packages=(build-essential cmake ninja-build qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev
  libarchive-dev)
display_packages=(xvfb xauth fonts-dejavu-core)
test_packages=(7zip) # packs the archives that the tests unpack
# A desktop to use the programs on from outside: its bus, its window manager, mouse and keyboard, pictures.
system_test_packages=(python3 python3-gi at-spi2-core dbus dbus-daemon openbox xdotool imagemagick)
check_packages=(git clang-format clang-tidy clazy shellcheck pyflakes3 procps)
package_packages=(dpkg-dev file gzip) # dpkg-dev finds out what the package depends on
# They judge the package and install it in a throw-away Debian.
package_test_packages=(lintian desktop-file-utils appstream man-db mmdebstrap xvfb xauth xdotool openbox)
benchmark_packages=(libspdlog-dev srecord)
qt6_packages=(lld qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins qt6-serialport-dev)
picture_packages=(pngquant imagemagick)
clang_packages=(clang libclang-rt-dev lld llvm)

# install_packages NAME...: installs the named packages that are not there yet.
install_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "Please install as root first: ${missing[*]}" >&2
      return 1
    }
    as_root=(sudo)
  fi
  echo "Installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}
