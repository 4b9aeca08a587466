#!/usr/bin/env bash
# The worksheet application for Windows gives what the one for this system gives: the text, the JSON and
# the report of every example and of a worksheet of files, units and mistakes, the files that they
# write, and the status. Lines of text end differently, and that is all.
#   windows_worksheets.sh BUILD WINDOWS_BUILD COMMAND...      the command runs a program of Windows
set -euo pipefail
build=$(realpath "$1") windows=$(realpath "$2")
shift 2
run=("$@")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Both draw with the gnuplot of this system, in which Wine finds a program to run.
ln -s "$(command -v gnuplot)" "$scratch/gnuplot.exe"
export WINEPATH=$scratch LC_ALL=C WORKSHEET_CATALOGUE=none

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
E = 3 kN * 2 m in J + 1 s
v = 60 rpm in Hz
t = 20 degC in K
A[3, 3]
lsolve([1, 2; 2, 4], [1; 2])
x = eigenvals(A
"text ü"
plot(1:5, (1:5).^2)
frobnicate(3)
include("bar.ws")
END
  printf 'm = 12 kg\r\nm / 4\r\n' >"$scratch/$side/bar.ws"
  for sheet in "$scratch/$side"/*.ws; do
    name=$(basename "$sheet")
    for options in '' --json '--html report.html --sandbox .' '--audit full'; do
      program=("$build/worksheet")
      [[ $side == there ]] && program=("${run[@]}" "$windows/worksheet.exe")
      status=0
      (cd "$scratch/$side" && "${program[@]}" $options "$name" </dev/null) \
        >"$scratch/out" 2>"$scratch/err" || status=$?
      for stream in out err; do
        tr -d '\r' <"$scratch/$stream" >"$scratch/$side/$name.${options//[^a-z]/}.$stream"
      done
      echo "$status" >>"$scratch/$side/$name.status"
    done
    mv "$scratch/$side/report.html" "$scratch/$side/$name.html"
  done
  "${program[@]}" -e '1/3' --json | tr -d '\r' >"$scratch/$side/expression"
  echo 'sin(1)^2 + cos(1)^2' | "${program[@]}" | tr -d '\r' >"$scratch/$side/input"
done
[[ $(head -c 40 "$scratch/there/input") == 1* ]] || { cat "$scratch/there/input" >&2; exit 1; }
diff -r "$scratch/here" "$scratch/there" >&2
echo "worksheets: $(ls "$scratch/here" | wc -l) files, the same as here"
