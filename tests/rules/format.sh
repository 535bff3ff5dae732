#!/bin/bash
# Checks that every C++ file is formatted as .clang-format says.
set -uo pipefail
cd "$(dirname "$0")/../.."
bad=$(git ls-files -co --exclude-standard -- '*.h' '*.cpp' | xargs -P 2 -n 20 clang-format --dry-run -Werror 2>&1 |
    sed -n 's/^\([^ ]*\.\(h\|cpp\)\):.*error.*/\1/p' | sort -u)
if ! command -v clang-format >/dev/null; then echo "FAIL format: no clang-format"
elif [ -n "$bad" ]; then sed 's/^/FAIL format: /' <<<"$bad"
else echo "PASS format"
fi
