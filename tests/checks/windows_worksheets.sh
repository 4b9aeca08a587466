#!/usr/bin/env bash
# The worksheet application for Windows gives what the one for this system gives: the text, the JSON and
# the report of every example and of a worksheet of files, units and mistakes, the files that they
# write, and the status. Lines of text end differently; see same_output.py for the last digits of what
# C libraries compute, and there is no gnuplot on either side.
#   windows_worksheets.sh BUILD WINDOWS_BUILD COMMAND...      the command runs a program of Windows
set -euo pipefail
build=$(realpath "$1") windows=$(realpath "$2")
shift 2
run=("$@")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

export LC_ALL=C.UTF-8 WORKSHEET_CATALOGUE=none
mkdir "$scratch/bin"

# The output without what is due to the system: line ends, the place, and how to get gnuplot.
plain() {
  tr -d '\r' | sed -e "s#Z:.tmp.${scratch##*/}.there#DIRECTORY#g; s#$scratch/here#DIRECTORY#g" \
    -e 's#[.][.]\\\\*#../#g; s#there is no gnuplot to draw with.*#there is no gnuplot#' \
    -e '/^wine client error/d'  # Of Wine itself, when a process ends.
}

for side in here there; do
  mkdir "$scratch/$side"
  cp -r examples/. "$scratch/$side"
  cat >"$scratch/$side/größe.ws" <<'END'
# Dateien
A = [1, 2.5; 3, 1/3]
write("größe.csv", A)
B = read("größe.csv")
C = read("no such file.csv")
D = read("../ozone.csv")
E = 3{kN} * 2{m} in {J}
E + 1{s}
v = 60{rpm} in {Hz}
help zeros
A[3, 3]
lsolve([1, 2; 2, 4], [1; 2])
x = eigenvals(A
"text ü"
plot(1:5, (1:5).^2)
frobnicate(3)
include "bar.ws"
END
  printf 'm = 12{kg}\r\nm / 4\r\n' >"$scratch/$side/bar.ws"
  for sheet in "$scratch/$side"/*.ws; do
    name=$(basename "$sheet")
    for options in '' --json '--html report.html --sandbox .' '--audit full'; do
      program=(env PATH="$scratch/bin" "$build/worksheet")
      [[ $side == there ]] && program=("${run[@]}" "$windows/worksheet.exe")
      status=0
      (cd "$scratch/$side" && "${program[@]}" $options "$name" </dev/null) \
        >"$scratch/out" 2>"$scratch/err" || status=$?
      for stream in out err; do
        plain <"$scratch/$stream" >"$scratch/$side/$name.${options//[^a-z]/}.$stream"
      done
      echo "$status" >>"$scratch/$side/$name.status"
    done
    plain <"$scratch/$side/report.html" >"$scratch/$side/$name.html"
    rm "$scratch/$side/report.html"
  done
  "${program[@]}" -e '1/3' --json | plain >"$scratch/$side/expression"
  echo '2 * 21' | "${program[@]}" | plain >"$scratch/$side/input"
done
[[ $(<"$scratch/there/input") == 42 ]]
tests/checks/same_output.py "$scratch/here" "$scratch/there"
