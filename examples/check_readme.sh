#!/bin/sh
# check_readme.sh PROGRAM SOURCE README: the README must hold the source and then what the program prints, each in a block.
set -eu
block() { awk -v start="$1" '$0 == start && !done { inside = 1; next } /^```$/ && inside { inside = 0; done = 1 } inside' "$2"; }
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
block '```c' "$3" > "$folder/source"
diff "$folder/source" "$2"
awk '/ and prints$/ { found = 1 } found' "$3" > "$folder/rest"
awk '/^```$/ { n++; next } n == 1' "$folder/rest" > "$folder/expected"
"$1" > "$folder/printed"
diff "$folder/expected" "$folder/printed"
