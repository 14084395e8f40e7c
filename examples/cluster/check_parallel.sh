#!/usr/bin/env bash
# check_parallel.sh FLAME_CLIP ORVA_FIRE: gnu-parallel.sh on two hosts and one that is down, and again after some results
# are gone. Both hosts are this machine, each behind an ssh server of its own that talks through a pipe; without ssh it is
# one host.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
flame_clip=$1
export ORVA_FIRE=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
command -v parallel > /dev/null || { echo "SKIPPED: GNU parallel is not installed"; exit 77; }
export HOME=$work  # for the settings of parallel

# The folder that a server of root's insists on; systems that never started one have none.
[ "$(id -u)" -ne 0 ] || [ -d /run/sshd ] || mkdir -m 755 /run/sshd

# A server as a child of each connection: no port, and nothing that stays.
write_ssh_settings() {
    ssh-keygen -q -t ed25519 -N '' -f "$work/host-key" && ssh-keygen -q -t ed25519 -N '' -f "$work/key"
    cat > "$work/sshd" <<END
HostKey $work/host-key
AuthorizedKeysFile $work/key.pub
StrictModes no
UsePAM no
PidFile none
PermitRootLogin yes
END
    cat > "$work/ssh" <<END
Host first second
    ProxyCommand $(command -v sshd) -i -f $work/sshd 2> /dev/null
    IdentityFile $work/key
    StrictHostKeyChecking accept-new
    UserKnownHostsFile $work/known
    BatchMode yes
    LogLevel ERROR
Host down
    ProxyCommand false
    BatchMode yes
    LogLevel ERROR
END
}
PATH=$PATH:/usr/sbin
hosts=()
if command -v ssh sshd > /dev/null && write_ssh_settings && ssh -F "$work/ssh" first true; then
    hosts=("1/ssh -F $work/ssh first" "1/ssh -F $work/ssh second" "1/ssh -F $work/ssh down")
else
    echo "no ssh here: this machine is the only host"
fi

mkdir -p "$work/recordings/it's a gate"
for name in one "it's a gate/two" three; do
    "$flame_clip" "$work/recordings/$name.mp4" --size 160x120 --seconds 1
done
echo "no video" > "$work/recordings/cut.mp4"

run() { "$here/gnu-parallel.sh" "$work/recordings" "$work/results" "${hosts[@]}" -- --no-video > "$work/said" 2>&1; }
fail() { echo "$*"; cat "$work/said"; exit 1; }

code=0; run || code=$?
[ $code -eq 3 ] || fail "a recording that cannot be read: expected 3, got $code"
grep -q "4 recordings, 0 with fire reported, 1 failed, 0 missing" "$work/said" || fail "not all were looked at"
if [ ${#hosts[@]} -gt 0 ]; then
    for host in first second; do
        cut -f 2 "$work/results/tasks.tsv" | grep -q " $host$" || fail "$host did nothing: $(cat "$work/results/tasks.tsv")"
    done
fi

rm "$work/recordings/cut.mp4"
rm -r "$work/results/cut.mp4" "$work/results/three.mp4"
done_before=$(stat -c %Y.%i "$work/results/one.mp4")
run || fail "expected 0 the second time"
grep -q "3 recordings, 0 with fire reported, 0 failed, 0 missing" "$work/said" || fail "the second time did not complete it"
[ "$(stat -c %Y.%i "$work/results/one.mp4")" = "$done_before" ] || fail "what was done was done again"
tail -n +2 "$work/results/tasks.tsv" | wc -l | grep -q '^3$' || fail "expected three tasks"
tail -2 "$work/said"
