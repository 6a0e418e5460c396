#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Formats every C++ file; `format.sh --check` only reports what that would change.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run -Werror)
git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' |
    xargs -0 clang-format "${mode[@]}"
