# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What the tools share, such as the lists of Debian packages and their installation.
# Source this from bash scripts that set -euo pipefail. It sets root, the folder of the sources.

root=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)

# The packages that each purpose needs. Scripts use the lists, not this file.
# shellcheck disable=SC2034
{
  bench_packages=(binutils libbenchmark-dev libfmt-dev libjemalloc2 libmimalloc2.0 libprotozero-dev
    libtcmalloc-minimal4 pkg-config pybind11-dev python3-dev python3-protobuf rapidjson-dev)
  build_packages=(g++ cmake ninja-build libprotobuf-dev protobuf-compiler)
  app_packages=(libcli11-dev libkainjow-mustache-dev libre2-dev nlohmann-json3-dev openssl
    pkg-config)
  lint_packages=(verilator)
  test_packages=(binutils libgmock-dev libgtest-dev locales python3 python3-jsonschema valgrind)
  style_packages=(clang clang-format clang-tidy cppcheck shellcheck)
  browser_packages=(chromium poppler-utils)
  compatibility_packages=(abigail-tools)
  coverage_packages=(gcovr)
  mutation_packages=(clang)
  fuzz_packages=(clang libclang-rt-dev llvm)
  interop_packages=(default-jdk-headless libprotobuf-java python3-protobuf)
  python_packages=(pybind11-dev python3-dev python3-pip python3-protobuf python3-setuptools python3-wheel)
  grpc_packages=(libgrpc++-dev openssl protobuf-compiler-grpc python3-grpcio)
  debian_packages=(build-essential debhelper dh-python dpkg-dev pybind11-dev python3-dev python3-protobuf)
  debian_test_packages=(lintian mmdebstrap pkg-config)
  matrix_packages=(mmdebstrap)
  docs_packages=(mkdocs mkdocs-material mscgen protobuf-compiler python3-protobuf)
  source_packages=(g++ make xz-utils)
  recipe_packages=(make meson pkg-config)
}

# Installs what all tests need.
install_for_all_tests() {
  install_packages "${build_packages[@]}" "${app_packages[@]}" "${test_packages[@]}" \
    "${lint_packages[@]}" "${style_packages[@]}" "${browser_packages[@]}" \
    "${bench_packages[@]}" "${compatibility_packages[@]}" \
    "${coverage_packages[@]}" "${fuzz_packages[@]}" "${interop_packages[@]}" \
    "${python_packages[@]}" "${grpc_packages[@]}" "${debian_packages[@]}" "${debian_test_packages[@]}" \
    "${docs_packages[@]}" "${recipe_packages[@]}"
  command -v npm > /dev/null || install_packages nodejs npm
  quietly npm --prefix tests ci
}

# Ends the script with an error that its user can fix.
fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 2
}

# Prints the comment at the start of the script, which is its manual.
show_help() {
  sed -nE '3,/^set /s/^# ?//p' "$0"
  exit
}

take_no_arguments() {
  case ${1-} in
    '') ;;
    -h | --help) show_help ;;
    *) fail "unknown argument $1 (see --help)" ;;
  esac
}

# Runs a command and shows its output only if it fails.
quietly() {
  local output status=0
  output=$("$@" 2>&1) || status=$?
  ((status == 0)) || printf '%s\n' "$output" >&2
  return "$status"
}

is_installed() {
  [[ $(dpkg-query --show --showformat '${db:Status-Abbrev}' "$1" 2> /dev/null) == ?i* ]]
}

as_root() {
  if ((EUID == 0)); then
    "$@"
  else
    sudo -- "$@"
  fi
}

# Ends the script unless it can build here, and keeps other tools from building in this
# checkout until it ends. The tools that it starts itself see VOK_BUILDS_LOCKED. The lock is
# descriptor 9: close that for programs that may outlive the tool and don't build.
prepare_builds() {
  [[ $root != *[\;\"\\]* ]] || fail "$root: CMake does not support a semicolon, quote or backslash in a path"
  [[ ${VOK_BUILDS_LOCKED-} != "$root" ]] || return 0
  mkdir -p "$root/build"
  exec 9> "$root/build/.lock"
  if ! flock --nonblock 9; then
    echo "Waiting for another tool that builds in this checkout" >&2
    flock 9
  fi
  export VOK_BUILDS_LOCKED=$root
  if command -v ccache > /dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    export CCACHE_BASEDIR=${CCACHE_BASEDIR-$root}
  fi
}

# Runs apt-get as root, and shows its output only if it fails. Waits for up to 10 minutes
# while another program has its locks.
apt_get() {
  local output end=$((SECONDS + 600))
  until output=$(as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get "$@" 2>&1); do
    if [[ $output != *'E: Could not get lock'* ]] || ((SECONDS >= end)); then
      printf '%s\n' "$output" >&2
      return 1
    fi
    echo "Waiting for another program that uses apt"
    sleep 2
  done
}

apt_lists_are_new=false

# Installs those of the named Debian packages that are missing.
install_packages() {
  local name missing=()
  for name; do
    is_installed "$name" || missing+=("$name")
  done
  if ((${#missing[@]} == 0)); then
    return
  fi
  command -v apt-get > /dev/null ||
    fail "these packages are missing, and there is no apt-get to install them: ${missing[*]}"
  ((EUID == 0)) || command -v sudo > /dev/null ||
    fail "these packages are missing, and only root or sudo can install them: ${missing[*]}"
  printf 'Installing %s\n' "${missing[*]}"
  if ! $apt_lists_are_new; then
    apt_get update || fail "apt-get update failed"
    apt_lists_are_new=true
  fi
  apt_get install --yes --no-install-recommends "${missing[@]}" ||
    fail "these packages could not be installed: ${missing[*]}"
}
