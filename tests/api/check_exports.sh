#!/usr/bin/env bash
# Fails unless the shared library exports exactly the 22 zb_* functions of zb_api.h.
set -euo pipefail
lib=$1
expected="zb_create
zb_destroy
zb_flush
zb_get_command
zb_get_version
zb_initialize
zb_is_feature_supported
zb_on_dsp_wakeup
zb_register_notifier
zb_set_active
zb_set_bypass
zb_set_command
zb_set_data
zb_set_enable
zb_set_linklaws_value
zb_set_orientation
zb_set_output_mode
zb_set_parameter
zb_set_parameters_array
zb_set_sound_mode
zb_set_volume
zb_wait_for_flush"
# Every defined dynamic symbol, as "type name"; all must be text (functions).
actual=$(nm -D --defined-only "$lib" | awk '{print $2, $3}' | sort -k2)
if [ "$actual" != "$(printf '%s\n' "$expected" | sed 's/^/T /')" ]; then
  echo "exported symbols differ from the 22 zb_* functions:"
  diff <(printf '%s\n' "$expected" | sed 's/^/T /') <(printf '%s\n' "$actual") || true
  exit 1
fi
echo "exports: exactly the 22 zb_* functions"
