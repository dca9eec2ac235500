# The Debian packages that the scripts need, and the function that installs what is missing of them.
# Sourced by scripts/run, scripts/test, scripts/fuzz and .ci/run.

build_packages=(build-essential cmake ninja-build qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev
  libarchive-dev)
display_packages=(xvfb xauth fonts-dejavu-core)
test_packages=(7zip) # packs the archives that the tests unpack
check_packages=(git clang-format clang-tidy clazy)
benchmark_packages=(libspdlog-dev srecord)
fuzz_packages=(clang libclang-rt-dev llvm)

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
