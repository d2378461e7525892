# shellcheck shell=bash disable=SC2034
# What the scripts of this folder share. They source it first: it stops them at the first error
# and moves to the top of the repository.
set -euo pipefail
script=$(realpath "$0")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# How many jobs to run at a time; JOBS in the environment overrides it.
jobs=${JOBS:-$(nproc)}

# What every build needs: the presets hold the library, the program and the tests.
build_packages=(g++ cmake ninja-build pkg-config ccache libfmt-dev nlohmann-json3-dev
  libpugixml-dev libcli11-dev libpcap-dev libsystemd-dev libgtest-dev libcairo2-dev
  libpango1.0-dev libpng-dev libjpeg-dev libwebp-dev libzip-dev libsdl2-dev
  libxcb-xtest0-dev)
# What the tests run.
test_packages=(dbus gzip python3 fonts-dejavu-core fonts-liberation2 libgdiplus xvfb chromium)
bench_packages=(libbenchmark-dev libboost-graph-dev qt6-base-dev)
clang_packages=(clang libclang-rt-14-dev)

# say WORD...: a message for the person who runs the script.
say() { printf '== %s\n' "$*" >&2; }

# fail WORD...: ends the script with a message.
fail() {
  printf '%s: %s\n' "${script##*/}" "$*" >&2
  exit 1
}

# usage: prints the comment at the head of the script, which is its help.
usage() { sed -n '2,/^$/s/^# \{0,1\}//p' "$script"; }

wrong_usage() {
  printf '%s: %s\n' "${script##*/}" "$*" >&2
  usage >&2
  exit 2
}

is_installed() {
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null || true) == installed* ]]
}

as_root() {
  if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# need_packages PACKAGE...: installs those Debian packages that are missing. Touches no network
# when none is.
need_packages() {
  local package missing=()
  if ! command -v apt-get >/dev/null; then
    say "this is not a Debian system; the equivalents of these packages are needed: $*"
    return
  fi
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    fail "please install as root: apt-get install ${missing[*]}"
  fi
  say "installing ${missing[*]}"
  if [[ -z ${WAYFENCE_APT_UPDATED:-} ]]; then
    as_root apt-get -qq update
    export WAYFENCE_APT_UPDATED=yes
  fi
  as_root env DEBIAN_FRONTEND=noninteractive DEBCONF_NOWARNINGS=yes \
    apt-get -qq -y -o Dpkg::Use-Pty=0 install --no-install-recommends "${missing[@]}" >/dev/null
}

# configure PRESET [CMAKE-OPTION...]: shows what was left out, and everything when it fails.
configure() {
  local preset=$1 log=build/configure-$1.log
  shift
  mkdir -p build
  if ! cmake --preset "$preset" "$@" >"$log" 2>&1; then
    cat "$log" >&2
    fail "the build in build/$preset could not be configured"
  fi
  grep '^-- wayfence' "$log" >&2 || true
}

# build PRESET [TARGET...]: configures and compiles the targets, or everything.
build() {
  local preset=$1
  shift
  say "building ${*:-everything} in build/$preset"
  configure "$preset"
  cmake --build "build/$preset" --parallel "$jobs" ${1:+--target "$@"} >&2
}
