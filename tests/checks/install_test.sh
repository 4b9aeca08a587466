#!/usr/bin/env bash
# What a host author and a pack author get: installs a build into a directory of its own, builds the
# examples against it outside of the tree, by the CMake package and by pkg-config, and runs them.
#
#   install_test.sh SOURCE BUILD CXX
set -euo pipefail
source=$1 build=$2 cxx=$3

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# Packages are relocatable: the tree is moved after it was installed.
cmake --install "$build" --prefix "$scratch/elsewhere" >"$scratch/log"
prefix=$scratch/prefix
mv "$scratch/elsewhere" "$prefix"
cp -r "$source/examples" "$scratch"
cd "$scratch"

fail() {
  echo "$*" >&2
  exit 1
}
# answers EXPECTED COMMAND...: the command succeeds and prints just that.
answers() {
  local expected=$1 output
  shift
  output=$("$@" 2>&1) || fail "$*: exit status $?: $output"
  [[ $output == "$expected" ]] || fail "$*: $output, not $expected"
}

cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(examples LANGUAGES CXX)
add_subdirectory(examples/minimal_host)
add_subdirectory(examples/minimal_pack)
END
{ cmake -G Ninja -S . -B by_cmake -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS='-Wall -Wextra -Wpedantic -Werror' && cmake --build by_cmake; } \
  >>log 2>&1 || { cat log >&2; fail 'the examples do not build with the CMake package'; }

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name matrix_pack.pc)")
export PKG_CONFIG_PATH
pack=$(pkg-config --variable=pack matrix_pack)
libdir=$(pkg-config --variable=libdir matrix_pack)
read -ra flags <<<"$(pkg-config --cflags --libs matrix_pack)"
"$cxx" -std=c++20 -fnon-call-exceptions examples/minimal_host/minimal_host.cpp -o by_pkg_config \
  "${flags[@]}" -Wl,-rpath,"$libdir" -ldl

solution=$'0.10000000000000001\n0.59999999999999998\nerror: must be vector (argument 2)'
answers "$solution" by_cmake/examples/minimal_host/minimal_host "$pack"
answers "$solution" ./by_pkg_config "$pack"
answers 7.07107 \
  "$prefix/bin/worksheet" --pack by_cmake/examples/minimal_pack/libminimal_pack.so -e 'rms([6; 8])'
"$prefix/bin/packcheck" --depth brief by_cmake/examples/minimal_pack/libminimal_pack.so >>log ||
  { cat log >&2; fail 'the pack of the example breaks a rule'; }
# The program finds the units and the pack that were installed with it.
answers '1 Hz' "$prefix/bin/worksheet" -e '60{rpm} in {Hz}'
answers 1 \
  env WORKSHEET_CATALOGUE="$scratch/none" "$prefix/bin/worksheet" -e 'rank([1, 2; 2, 4])'

# Each public header stands alone.
find "$prefix/include/matrix_pack" -name '*.hpp' -printf '#include "%P"\n' >headers
while read -r line; do
  echo "$line"
  "$cxx" -std=c++20 -Wall -Wextra -Wpedantic -Werror -fsyntax-only "${flags[0]}" -x c++ - <<<"$line"
done <headers
