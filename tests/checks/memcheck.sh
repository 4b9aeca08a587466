#!/usr/bin/env bash
# Valgrind over a sample: every function on the corpus of the digest, and the examples in the
# worksheet application. Valgrind knows neither AVX-512, so that the kernels are those of v3, nor
# arithmetic that traps, nor flags: no fault is ever seen. The examples meet none.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-full.txt
cd "$root"
build release digest_flags worksheet matrix
memcheck() {
  echo "Memcheck: ${*##*/}" >&2
  valgrind --quiet --error-exitcode=9 --leak-check=full --show-leak-kinds=definite \
    --errors-for-leak-kinds=definite "$@" >/dev/null
}
memcheck build/release/tests/digest/digest_flags
for sheet in examples/*.ws; do
  memcheck build/release/worksheet "$sheet"
done
