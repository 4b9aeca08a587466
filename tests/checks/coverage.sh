#!/usr/bin/env bash
# Reports the lines and branches of the pack that its tests execute, and lists those that they do not.
#
#   tests/checks/coverage.sh [--missing]
#
# Branches that only an exception takes are left out: every call and every operation that may fault
# has one. The three sets of kernels count together. Faults are read from flags: the counters would
# miss a fault that traps.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-full.txt
cd "$root"
build coverage pack_tests
find build/coverage -name '*.gcda' -delete
# Not threads: the counters would miscount. Nor what the pack imports: the counters write files.
build/coverage/tests/pack_tests --gtest_brief=1 --gtest_filter='-Robustness.Threads*:Imports.*' >&2
# Of a function in a header the program has one copy, which may be that of the tests.
report=build/coverage/coverage.json
gcovr --root . --object-directory build/coverage --exclude-throw-branches \
  --filter '(pack|structural|linsys|norms|eigen|svd)/' --exclude '.*(?<!linsys/lu)[_/]plain\.hpp' \
  --json "$report" build/coverage/CMakeFiles build/coverage/tests/CMakeFiles 2>build/coverage/gcovr.log
python3 tests/checks/coverage_report.py "$report" "$@"
