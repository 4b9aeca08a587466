#!/usr/bin/env bash
# The syntax files and shell completions that the build makes are sound, and hold the program's words
# and options: editor_files_test.sh BUILD
set -euo pipefail
cd "$1"
export WORKSHEET_CATALOGUE=none
fail() { echo "$*" >&2; exit 1; }
! grep -rnE '@[a-z_]+@' editors || fail 'a name was not replaced'
xmllint --noout editors/worksheet.xml
cat >editors/parse.cmake <<'EOF'
file(READ editors/worksheet.tmLanguage.json text)
string(JSON count LENGTH "${text}" patterns)
foreach(k RANGE 1 ${count})
  math(EXPR k "${k} - 1")
  string(JSON pattern GET "${text}" patterns ${k} match)
endforeach()
EOF
cmake -P editors/parse.cmake
# Every word stands in every syntax file as a whole word.
while read -r _ word; do
  for file in worksheet.vim worksheet.xml worksheet.tmLanguage.json; do
    grep -qw -- "$word" "editors/$file" || fail "$file does not know $word"
  done
done < <(./worksheet --words)
[[ $(./worksheet --words | grep -c '^function ') -gt 50 ]] || fail 'there are too few functions'
./worksheet --words | grep -qx 'function lsolve' || fail 'there is no function of the pack'

# bash offers what begins so.
source editors/worksheet.bash
offers() { COMP_WORDS=(worksheet "$1" "$2") COMP_CWORD=2; _worksheet; printf '%s\n' "${COMPREPLY[@]}"; }
for option in $(./worksheet --help | grep -oE '^ +-[-a-z,]+' | tr , ' '); do
  offers '' "$option" | grep -qx -- "$option" || fail "bash does not offer $option"
  grep -q -- "'$option:" editors/_worksheet || fail "zsh does not offer $option"
done
offers --functions lso | grep -qx lsolve || fail 'bash does not offer functions'
