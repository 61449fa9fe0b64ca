#!/bin/sh
# Formatting of every source; dependencies, widths and lengths of the tree; clang-tidy over the product (not the tests),
# all sources of a target at once.
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
echo "formatting: clean"
scripts/check_tree.py

cmake --preset lint >/dev/null
cmake --build build/lint --target tv2_viewer_page >/dev/null
sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json | sort -u |
    xargs -n 1 -P "$(nproc)" clang-tidy -p build/lint --quiet --checks=-bugprone-suspicious-include \
        --extra-arg=-Wno-unknown-warning-option 2>/dev/null
echo "clang-tidy: clean"
