#!/usr/bin/env bash
# check_service.sh FLAME_CLIP ORVA_FIRE: the command of the unit runs with the settings of the example on a clip, systemd
# accepts the unit as that of a camera, and finds it well shut in.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
flame_clip=$1
orva_fire=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What the unit starts, with the folders of this test in place of the system's.
run_as_the_unit_does() {
    local command
    sed "s|^source = .*|source = \"$work/clip.mp4\"|" "$here/camera.conf" > "$work/door.conf"
    command=$(sed -n 's/^ExecStart=//p' "$here/orva-fire@.service")
    command=${command//%i/door}
    command=${command//"/usr/bin/orva-fire"/"$orva_fire"}
    command=${command//"/etc/orva-fire"/"$work"}
    command=${command//"/var/lib/orva-fire"/"$work/state"}
    mkdir "$work/state"
    "$flame_clip" "$work/clip.mp4" --size 160x120 --seconds 1
    $command 2> "$work/messages" || { cat "$work/messages"; exit 1; }
    [ -e "$work/state/door/annotated.mp4" ] || { echo "the unit's command left no video"; exit 1; }
}
run_as_the_unit_does

if ! command -v systemd-analyze > /dev/null; then
    echo "SKIPPED: systemd-analyze is not installed; systemd has not seen the unit"
    exit 77
fi
unit=$work/orva-fire@door.service
sed "s|/usr/bin/orva-fire|$orva_fire|; /^Documentation=/d" "$here/orva-fire@.service" > "$unit"
systemd-analyze verify "$unit"
# The score is 0 for a program that may do nothing and 100 for one that may do all.
systemd-analyze security --no-pager --offline=true --threshold=20 "$unit" > "$work/score" || { cat "$work/score"; exit 1; }
tail -1 "$work/score"
