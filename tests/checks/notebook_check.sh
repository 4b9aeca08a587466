#!/usr/bin/env bash
# Builds the notebook kernel and tries it with a client.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-notebook.txt
build notebook worksheet-kernel matrix
WORKSHEET_CATALOGUE=none /usr/bin/python3 "$root/tests/kernel/kernel_client.py" "$root/build/notebook/notebook"
