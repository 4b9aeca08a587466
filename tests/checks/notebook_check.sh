#!/usr/bin/env bash
# Builds the notebook kernel, enters it for a user who has nothing, and tries it: in process, with a
# client, its figures, and the example in nbconvert and in a browser.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-full.txt
install_packages packages-notebook.txt
build notebook worksheet-kernel kernel_tests matrix
tests=$root/tests/kernel
export WORKSHEET_CATALOGUE=none
"$root/build/notebook/tests/kernel_tests" --gtest_brief=1
/usr/bin/python3 "$tests/kernel_client.py" "$root/build/notebook/notebook"
/usr/bin/python3 "$tests/kernel_figures.py" "$root/build/notebook/notebook"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home"
cp "$root"/examples/truss* "$work"
cd "$work"
# Settings of the user stay out of it.
unset JUPYTER_PATH JUPYTER_DATA_DIR JUPYTER_CONFIG_DIR JUPYTER_RUNTIME_DIR XDG_DATA_HOME XDG_CONFIG_HOME
export HOME=$work/home
"$root/run" --kernel-install
timeout 120 jupyter-nbconvert --log-level=ERROR --to notebook --execute --output found.ipynb truss.ipynb
/usr/bin/python3 "$tests/same_outputs.py" truss.ipynb found.ipynb
timeout --kill-after=10 300 /usr/bin/python3 "$tests/live_notebook.py" truss.ipynb
