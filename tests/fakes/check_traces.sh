#!/bin/sh
# Plays scenes once with the stand-in's own trace and once through the shim: both must write the same lines.
# usage: check_traces.sh SCENE_PLAYER SHIM
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
HI_STANDIN_TRACE=$work/standin HI_SHIM_TRACE=$work/shim LD_PRELOAD=$2 "$1" >"$work/output"
test "$(wc -l <"$work/standin")" -gt 1000
cmp "$work/standin" "$work/shim"
echo "$(wc -l <"$work/standin") lines, the same from both"
