#!/bin/sh
# check_readme.sh README SOURCE COMMAND...: the README must hold the source (not looked at if it is -) and then what the
# command prints, each in a block.
set -eu
readme=$1
source=$2
shift 2
block() { awk -v start="$1" '$0 == start && !done { inside = 1; next } /^```$/ && inside { inside = 0; done = 1 } inside' "$2"; }
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
if [ "$source" != - ]; then
    block '```c' "$readme" > "$folder/source"
    diff "$folder/source" "$source"
fi
awk '/ and prints$/ { found = 1 } found' "$readme" > "$folder/rest"
awk '/^```$/ { n++; next } n == 1' "$folder/rest" > "$folder/expected"
"$@" > "$folder/printed"
diff "$folder/expected" "$folder/printed"
