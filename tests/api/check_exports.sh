#!/usr/bin/env bash
# Fails when the shared library exports any symbol that is not a zb_* function.
set -euo pipefail
lib=$1
symbols=$(nm -D --defined-only "$lib" | awk '{print $3}')
bad=$(printf '%s\n' "$symbols" | grep -v -E '^zb_[a-z_]+$' | grep -v '^$' || true)
if [ -n "$bad" ]; then
  echo "unexpected exported symbols:"; echo "$bad"; exit 1
fi
echo "exports: $(printf '%s\n' "$symbols" | grep -c '^zb_' || true) zb_* functions, nothing else"
