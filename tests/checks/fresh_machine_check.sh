#!/usr/bin/env bash
# What the documents promise to someone with a new machine, by the commands that they show: two Debian
# systems on which nothing is installed. On one, a clone of this tree, from which all is built: a
# result, also without a network and for a user who may not install anything; a notebook; the packages.
# On the other, without a compiler, what was made: the extension and the packages, by a formula in Calc and
# a notebook.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"
source "$root/tests/checks/fresh_root.sh"

install_packages packages-full.txt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
builder=$scratch/builder user=$scratch/user
log=$scratch/log
nbconvert="apt install jupyter-nbconvert"

fail() {
  cat "$log" >&2
  echo "$*" >&2
  exit 1
}

# command_of DOCUMENT WORDS: the one command there that begins with these words.
command_of() {
  local found
  mapfile -t found < <(awk -v words="$2" '{ sub(/^ +/, "") } index($0, words) == 1' "$root/$1")
  ((${#found[@]} == 1)) || { echo "$1 has ${#found[@]} commands: $2" >&2; return 1; }
  echo "${found[0]}"
}
compute=$(command_of README.md './run -e')
install_kernel=$(command_of docs/notebook.md './run --kernel-install')
execute=$(command_of docs/notebook.md 'jupyter-nbconvert')
make_packages=$(command_of docs/spreadsheet.md './package')
install_jupyter=$(command_of docs/notebook.md 'apt install ./')
install_calc=$(command_of docs/spreadsheet.md 'apt install ./')
install_office=$(command_of docs/spreadsheet.md 'apt install libreoffice')
add_extension=$(command_of docs/spreadsheet.md 'unopkg add')
formula=$(command_of docs/spreadsheet.md '=MATRIX.LSOLVE(A1:B2;D1:D2)')
formula=${formula%% *}

home_of() {
  [[ $1 == root ]] && echo /root || echo "/home/$1"
}

# as_user ROOT USER [--offline] COMMANDS: runs them in the user's home. A compiler cache keeps the builds
# from compiling the same three times.
as_user() {
  local fresh=$1 name=$2 home options=()
  home=$(home_of "$2")
  shift 2
  [[ $1 != --offline ]] || { options=("$1"); shift; }
  in_root "$fresh" "${options[@]}" setpriv --reuid="$name" --regid="$name" --init-groups \
    env HOME="$home" CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=/var/cache/ccache \
    CCACHE_UMASK=000 CCACHE_BASEDIR="$home/matrix" CCACHE_NOHASHDIR=1 \
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime \
    sh -ec "cd; $1" 2>>"$log"
}
# In the directory of the clone, which the documents' commands take for granted.
in_matrix() {
  as_user "${@:1:$#-1}" "cd matrix; ${!#}"
}

# step WORDS: what is done by now, and how long it took.
step() {
  echo "A new machine: $1 ($SECONDS s)"
  SECONDS=0
  : >"$log"
}

# Both systems: a user; apt asks nothing and brings nothing that is not needed.
make_root "$builder"
cat >"$builder/etc/apt/apt.conf.d/check" <<'END'
APT::Get::Assume-Yes "true";
APT::Install-Recommends "false";
quiet "2";
END
in_root "$builder" sh -ec 'apt-get update; useradd --create-home user' >"$log" 2>&1 || fail 'no system'
cp -a "$builder" "$user"

git clone --quiet --bare "$root" "$builder/srv/matrix.git"
in_root "$builder" sh -ec 'apt-get install git ccache; mkdir -m 777 /var/cache/ccache' >"$log" 2>&1 ||
  fail 'no git'
step 'two systems'

# expect_result USER [--offline]: README's command gives what README shows.
expect_result() {
  local output
  output=$(in_matrix "$builder" "$@" "$compute") || fail './run fails'
  [[ $output == $'2 x 1 matrix\n  0.1\n  0.6' ]] || fail "$output"
}
clone='cd; git clone --quiet /srv/matrix.git matrix'
as_user "$builder" root "$clone"
expect_result root
step './run, from a clone to a result'
in_root "$builder" chown -R user /srv/matrix.git
as_user "$builder" user "$clone"
expect_result user --offline
step './run, without a network and without privileges'

# expect_notebook ROOT USER: the example, executed, shows what is kept in it.
expect_notebook() {
  local examples=$1$(home_of "$2")/matrix/examples
  in_matrix "$@" "$execute" >>"$log" || fail 'no notebook'
  /usr/bin/python3 "$root/tests/kernel/same_outputs.py" "$examples"/{truss,found}.ipynb
}
in_matrix "$builder" root "$install_kernel
  $nbconvert" >>"$log" || fail 'no kernel'
expect_notebook "$builder" root
step 'a notebook, from the clone'

in_matrix "$builder" root "$make_packages" >>"$log" || fail 'no packages'
step 'the packages, from the clone'

# On the other system root and the user have them, and the user the examples.
for home in /root /home/user; do
  mkdir -p "$user$home/matrix/build/package"
  cp "$builder"/root/matrix/build/package/*.{deb,oxt} "$user$home/matrix/build/package/"
  cp -r "$root/examples" "$user$home/matrix/"
done
cp "$root/calc/office.py" "$root/tests/checks/calc_formula.py" "$user/home/user/matrix/"
chown -R --reference="$user/home/user" "$user/home/user"

# expect_formula: a formula of the document has its value.
expect_formula() {
  local output
  output=$(in_matrix "$user" user "/usr/bin/python3 calc_formula.py '$formula'") || fail 'no Calc'
  [[ $output == '0.1 0.6' ]] || fail "$formula: $output"
}
in_matrix "$user" root "$install_office" >>"$log" || fail 'no LibreOffice'
in_matrix "$user" user "$add_extension" >>"$log" || fail 'no extension'
expect_formula
in_matrix "$user" user 'unopkg remove matrixpack.calc' >>"$log" || fail 'the extension stays'
step 'a formula in Calc, from the extension'

in_matrix "$user" root "$install_jupyter
  $nbconvert" >>"$log" || fail 'the packages do not install'
expect_notebook "$user" user
step 'a notebook, from the packages'

in_matrix "$user" root "$install_calc" >>"$log" || fail 'the packages do not install'
expect_formula
step 'a formula in Calc, from the packages'
