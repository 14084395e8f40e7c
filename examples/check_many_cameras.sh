#!/bin/sh
# check_many_cameras.sh PROGRAM: every second camera has a flame, which begins at column 16 + 8 * (number modulo 16) and is 24
# columns wide; a box has a pixel more on either side. It is reported as soon as 50 frames have gone.
set -eu
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cameras=20
for number in $(seq 0 $((cameras - 1))); do
    left=$((16 + 8 * (number % 16)))
    if [ $((number % 2)) -eq 0 ]; then
        echo "camera $number: no fire"
    else
        echo "camera $number: fire from frame 50, columns $((left - 1)) to $((left + 24))"
    fi
done > "$folder/expected"
"$1" $cameras > "$folder/printed"
diff "$folder/expected" "$folder/printed"

code=0
"$1" 129 2> "$folder/message" || code=$?
[ $code -eq 2 ]
grep -q 'from 1 to 128 cameras' "$folder/message"
