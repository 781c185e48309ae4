#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Installs, uses and removes the packages in the system that this runs in, which has
# nothing else, and builds the library from its sources there. The folder of this
# script has the packages, the sources, README.md's program, commands and list of
# packages, and the program that was built outside; what programs print goes to its
# folder "said".
#
# usage: sh use_packages.sh RUNTIME_PACKAGE DEVELOPMENT_PACKAGE PYTHON_PACKAGE PROGRAM_PACKAGE

set -eux
runtime=$1
development=$2
python=$3
program=$4
cd "$(dirname "$0")"
mkdir said
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
unset CMAKE_CXX_COMPILER_LAUNCHER  # it may be ccache, which this system does not have

install() {
  apt-get install --yes --quiet --no-install-recommends "$@"
}

# All files but those that a system writes while it runs, and these here.
list_files() {
  find / -xdev \( -path "$PWD" -o -path /dev -o -path /proc -o -path /run -o -path /sys \
    -o -path /tmp -o -path /var/cache -o -path /var/lib/apt -o -path /var/log \) -prune -o -print |
    grep -v '^/var/lib/dpkg/[a-z]*-old$' | sort
}

list_files > before.txt
install "./$runtime.deb"
./built_outside > said/runtime
apt-get purge --yes --quiet --auto-remove "$runtime"
list_files > after.txt
diff before.txt after.txt

# shellcheck disable=SC2046  # a list of packages
install $(cat documented_packages.txt)
export HOME="$PWD/home"
(cd source && sh -e ../install.sh)
cmake -S . -B build/installed -D CMAKE_PREFIX_PATH="$HOME/rulecheck"
cmake --build build/installed
build/installed/program > said/installed_from_source

install "./$runtime.deb" "./$development.deb" pkg-config
cmake -S . -B build/packaged
cmake --build build/packaged
build/packaged/program > said/find_package
sh -e command.sh
./a.out > said/pkg_config
install "./$python.deb"
python3 example.py > said/python
install "./$program.deb" verilator
rulecheck --help
(cd designs && rulecheck lint -o ../result.pb --waivers waivers -- --top-module board -f design.f)
rulecheck text result.pb > said/findings
rulecheck gate result.pb --fail-on fatal
apt-get purge --yes --quiet "$runtime" "$development" "$python" "$program"
list_files > after.txt
if grep -i -e rulecheck -e /vok after.txt; then
  echo "these files are left" >&2
  exit 1
fi
