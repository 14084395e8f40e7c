#!/usr/bin/env bash
# try_slurm.sh FLAME_CLIP ORVA_FIRE: runs slurm.sbatch on a Slurm of one node that it starts on this machine and ends
# again. Needs root and the Debian packages slurmctld, slurmd, slurm-client and munge. Not one of the tests: it takes half
# a minute and two daemons.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
flame_clip=$(realpath "$1")
export ORVA_FIRE
ORVA_FIRE=$(realpath "$2")
work=$(mktemp -d)
chmod 755 "$work"
daemons=()
finish() {
    for daemon in "${daemons[@]}"; do kill "$daemon" 2> /dev/null || true; done
    wait 2> /dev/null || true
    rm -rf "$work"
}
trap finish EXIT
fail() { echo "$*"; tail -n 20 "$work"/*.log; exit 1; }

start_munge() {
    mkdir -m 700 "$work/munge"
    mkdir -m 755 "$work/munge/run"
    dd if=/dev/urandom of="$work/munge/key" bs=1024 count=1 status=none
    chmod 600 "$work/munge/key"
    chmod 711 "$work/munge"
    munged --foreground --force --key-file "$work/munge/key" --socket "$work/munge/run/socket" --pid-file "$work/munge/pid" \
        --log-file "$work/munge/log" --seed-file "$work/munge/seed" > "$work/munged.log" 2>&1 &
    daemons+=($!)
}

write_settings() {
    local host memory
    host=$(hostname -s)
    memory=$(awk '/MemTotal/ {print int($2 / 2048)}' /proc/meminfo)
    mkdir "$work/state" "$work/spool"
    cat > "$work/slurm.conf" <<END
ClusterName=one
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge/run/socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
MpiDefault=none
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) RealMemory=$memory State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
END
    export SLURM_CONF=$work/slurm.conf
}

start_slurm() {
    slurmctld -D -f "$SLURM_CONF" > "$work/slurmctld.log" 2>&1 &
    daemons+=($!)
    slurmd -D -f "$SLURM_CONF" > "$work/slurmd.log" 2>&1 &
    daemons+=($!)
    for ((i = 0; i < 60; ++i)); do
        if [ "$(sinfo -h -o %t 2> /dev/null)" = idle ]; then return; fi
        sleep 0.5
    done
    sinfo -R || true
    fail "no node came up"
}

start_munge
write_settings
start_slurm
sinfo

cd "$work"
mkdir -p recordings/gate
for name in one gate/two three four five; do
    "$flame_clip" "recordings/$name.mp4" --size 160x120 --seconds 2
done
sbatch --wait --array=1-3 "$here/slurm.sbatch" 3 "$work/recordings" "$work/results" --no-video || fail "the job failed"
cat orva-fire-*.log | grep shard
"$ORVA_FIRE" merge results --expect recordings

echo "again, one task only, after some results are gone:"
rm -r results/gate results/one.mp4 results/three.mp4
sbatch --wait --array=2 "$here/slurm.sbatch" 3 "$work/recordings" "$work/results" --no-video || fail "the job failed"
sbatch --wait --array=1,3 "$here/slurm.sbatch" 3 "$work/recordings" "$work/results" --no-video || fail "the job failed"
merge=$(sbatch --parsable --wait --wrap "'$ORVA_FIRE' merge '$work/results' --expect '$work/recordings'")
cat "slurm-$merge.out"
