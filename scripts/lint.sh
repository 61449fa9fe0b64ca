#!/bin/sh
# Formatting of every source; clang-tidy over the product (not the tests).
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
echo "formatting: clean"

cmake --preset release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
git ls-files 'numerics/*.cpp' 'tev2_loader/*.cpp' 'exporter/*.cpp' 'host/*.cpp' 'tools/*.cpp' |
    grep -v windows |
    xargs -n 1 -P "$(nproc)" clang-tidy -p build --quiet --extra-arg=-Wno-unknown-warning-option 2>/dev/null
echo "clang-tidy: clean"
