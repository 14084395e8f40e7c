#!/usr/bin/env bash
# Runs the pipelines of the documents as they are written there, on a clip with a fire and on a camera that serves it.
# The plug-in is the installed one, found by nothing but GST_PLUGIN_PATH.
#   documented_pipelines.sh SOURCE_FOLDER BUILD_FOLDER FLAME_CLIP RTSP_CAMERA
set -euo pipefail
source=$1 build=$2 flame_clip=$3 rtsp_camera=$4
folder=$(mktemp -d)
camera_pid=
# Closing the camera's standard input ends it.
clean_up() {
    exec 5>&- || true
    [ -z "$camera_pid" ] || wait "$camera_pid" || true
    rm -rf "$folder"
}
trap clean_up EXIT
cd "$folder"
export GST_REGISTRY=$folder/registry.bin

fail() {
    printf 'documented_pipelines: %s\n' "$*" >&2
    exit 1
}

# commands DOCUMENT NAME: the indented lines that follow <!-- pipeline: NAME --> in a document.
commands() {
    awk -v mark="<!-- pipeline: $2 -->" '
        $0 == mark { found = 1; next }
        found && /^    / { print substr($0, 5); begun = 1; next }
        found && begun { exit }' "$source/$1" | grep . || fail "$1 shows no pipeline '$2'"
}

# run NAME: what a reader would paste into a shell. Its output goes to NAME.out.
run() {
    commands "$1" "$2" > "$2.sh"
    timeout 120 bash -o pipefail "$2.sh" > "$2.out" 2> "$2.err" || { cat "$2.sh" "$2.out" "$2.err" >&2; fail "$2 failed"; }
}

expect() {
    grep -q "$2" "$1.out" || { cat "$1.out" "$1.err" >&2; fail "$1 printed no '$2'"; }
}

bytes() { stat -c %s "$1"; }

for component in runtime gstreamer; do
    cmake --install "$build" --prefix "$folder/tree" --component $component > install.out
done
GST_PLUGIN_PATH=$(dirname "$(find "$folder/tree" -name libgstorvafire.so)")
export GST_PLUGIN_PATH

"$flame_clip" clip.mp4 --size 320x180 --seconds 5 --onset 0.4 2> flame-clip.err || { cat flame-clip.err >&2; exit 1; }
export VIDEO=clip.mp4

run README.md file
expect file 'event=(string)start'
expect file 'event=(string)end'
gst-launch-1.0 -q filesrc location=marked.mp4 ! decodebin ! video/x-raw,format=I420 ! filesink location=marked.yuv
[ "$(bytes marked.yuv)" -eq $((125 * 320 * 180 * 3 / 2)) ] || fail "marked.mp4 does not hold the clip's 125 pictures"

mkfifo camera.in
"$rtsp_camera" "$folder/clip.mp4" < camera.in > camera.out &
camera_pid=$!
exec 5> camera.in
for _ in $(seq 100); do [ -s camera.out ] && break; sleep 0.1; done
CAMERA=$(cat camera.out)
export CAMERA
run README.md camera
expect camera 'event=(string)start'
expect camera 'event=(string)end'

# The pipeline must keep lines away that the detector does print here.
gst-launch-1.0 -q filesrc location=clip.mp4 ! decodebin ! orvafire tiles=3x3 ! fakesink > lines.out
[ -s lines.out ] || fail "the detector prints nothing about this clip, so that nothing would be shown"
run docs/gstreamer.md fdsink
[ "$(bytes pictures.yuv)" -eq $((125 * 320 * 180 * 3 / 2)) ] || fail "the detector's lines got between the pictures"

gst-inspect-1.0 orvafire > inspect.out
for property in grade zones tiles confirm cooldown max-age draw interval; do
    grep -qE "^  $property +: .{30}" inspect.out || fail "gst-inspect-1.0 says nothing about $property"
done
for part in 'Long-name +Fire detector' 'GstVideoRegionOfInterestMeta' 'Klass +Filter/Analyzer/Video'; do
    grep -qE "$part" inspect.out || fail "gst-inspect-1.0 does not say '$part'"
done
echo "documented_pipelines: all pipelines ran"
