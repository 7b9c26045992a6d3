# Shared by scripts/demo, scripts/test and .ci/run: packages, steps, messages. Sourced, with the
# checkout as working folder afterwards. Needs bash.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
ROOT=$PWD
JOBS=$(nproc)
export LC_ALL=C.UTF-8

# What the shell of the caller would slip into every build; the presets for clang name theirs.
unset CXXFLAGS LDFLAGS
export CXX=g++

# Debian packages by what they are for; all are in Debian 12 itself.
PACKAGES_BUILD="g++ cmake ninja-build ccache pkg-config libexpat1-dev libcli11-dev
  nlohmann-json3-dev libcsv-dev default-jdk-headless"
PACKAGES_TEST="clang-14 libclang-rt-14-dev clang-format-14 clang-tidy-14 libgtest-dev
  libgmock-dev libbenchmark-dev python3 git"

say() { printf '\n==> %s\n' "$*"; }
die() { printf '\nFAILED: %s\n' "$*" >&2; exit 1; }

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "this needs root: $* (and there is no sudo)"
  fi
}

# install_packages <why> <package...>: asks apt for those that are missing, and does not call it
# when none is.
install_packages() {
  local why=$1 missing=() package
  shift
  command -v dpkg-query >/dev/null || die "Debian's packages are needed: $*"
  for package in "$@"; do
    if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      missing+=("$package")
    fi
  done
  if [ ${#missing[@]} -eq 0 ]; then
    say "All packages to $why are there"
    return 0
  fi
  say "Installing with apt, to $why: ${missing[*]}"
  as_root apt-get update -q || die "apt-get update"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
    "${missing[@]}" || die "apt-get install"
}

# from_cache <build folder> <variable>: a value that CMake has settled.
from_cache() { sed -n "s/^$2:[A-Z]*=//p" "$1/CMakeCache.txt"; }
