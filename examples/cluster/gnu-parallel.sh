#!/usr/bin/env bash
# gnu-parallel.sh RECORDINGS RESULTS [HOST...] [-- OPTION...]
#
# Looks for fire in all recordings with GNU parallel, a task for each, and joins the results. Without a HOST on all
# processors of this machine; otherwise on the hosts, each written as for parallel --sshlogin: "gate" takes as many tasks at
# once as it has processors, "4/viewer@gate" four; ":" is this machine. All hosts must see both folders under the same
# path, have orva-fire, and let in ssh without a password. OPTIONs are those of orva-fire batch. ORVA_FIRE names the program.
#
# It may be stopped and started again at any moment: what is done is not done again. Which host did what is told by
# RESULTS/tasks.tsv. Names of recordings must not hold line ends. Ends as orva-fire merge does.
set -euo pipefail
[ $# -ge 2 ] || { sed -n '2,3s/^# \{0,1\}//p' "$0" >&2; exit 2; }
orva_fire=${ORVA_FIRE:-orva-fire}
mkdir -p "$2"
recordings=$(realpath "$1")
results=$(realpath "$2")
shift 2

hosts=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    hosts+=(--sshlogin "$1")
    shift
done
[ $# -eq 0 ] || shift

# The longest first, so that no host is left alone with one at the end.
longest_first() {
    "$orva_fire" batch "$recordings" -o "$results" --plan 1 | sort -t "$(printf '\t')" -k 2,2nr | cut -f 3-
}

# A task that fails is tried once more, elsewhere if there is another host; merge tells what is missing in the end.
longest_first | parallel --quote --retries 2 --joblog "$results/tasks.tsv" "${hosts[@]}" \
    "$orva_fire" batch "$@" --base "$recordings" -o "$results" {} || true
exec "$orva_fire" merge "$results" --expect "$recordings"
