#!/usr/bin/env bash
# A render by a cluster of one node: an array of jobs, one of which is killed and queued again, and the join behind them:
# slurm.sh BIN_DIR
# shellcheck source=tests/sharing/farm.sh
. "$(dirname "$0")/farm.sh"

[ "$(id -u)" -eq 0 ] || { echo "SKIPPED: the cluster's daemons run jobs as root"; exit 77; }
export PATH=$PATH:/usr/sbin
host=$(hostname -s)
mkdir run state spool
# Keys and sockets of its own, whatever else runs on this machine.
dd if=/dev/urandom of=munge.key bs=1 count=1024 status=none
chmod 600 munge.key
cat >slurm.conf <<END
ClusterName=test
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=17817
SlurmdPort=17818
AuthType=auth/munge
AuthInfo=socket=$work/run/munge.socket
CredType=cred/munge
SlurmUser=root
SlurmdUser=root
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/run/slurmctld.pid
SlurmdPidFile=$work/run/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=batch_sched_delay=1,sched_interval=1
MinJobAge=300
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=$host Default=YES MaxTime=INFINITE State=UP
END
export SLURM_CONF=$work/slurm.conf
chmod 755 "$work"
munged --foreground --force --key-file munge.key --socket run/munge.socket --pid-file run/munged.pid \
  --log-file run/munged.log --seed-file run/seed 2>/dev/null &
slurmctld -D >run/slurmctld.log 2>&1 &
slurmd -D >run/slurmd.log 2>&1 &
daemons=$(jobs -p | tr "\n" " ")
# shellcheck disable=SC2064,SC2086 # as they are now
trap "kill $daemons 2>/dev/null; wait; rm -rf '$work'" EXIT

until_true() { # SECONDS COMMAND...
  local tries=$(($1 * 5))
  shift
  until "$@" >/dev/null 2>&1; do
    [ $((tries -= 1)) -gt 0 ] || fail "waited in vain: $* $(tail -n 5 run/*.log) $(squeue 2>&1)"
    sleep 0.2
  done
}
idle() { sinfo -h -o %T | grep -q idle; }
ended() { [ -z "$(squeue -h)" ]; }
for _ in $(seq 300); do idle 2>/dev/null && break || sleep 0.2; done
idle 2>/dev/null || { echo "SKIPPED: no cluster comes up on this machine: $(tail -n 3 run/*.log)"; exit 77; }

# Long enough that one can be killed on the way.
ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=640x480:r=25:d=6 -f lavfi -i sine=d=6 -c:v ffv1 -c:a flac long.mkv
render=(-e oil-painting --codec ffv1 --audio-codec flac --threads 1)
aveffect render long.mkv whole.mkv "${render[@]}" --progress none
aveffect plan shared-film --chunks 4 --as slurm render long.mkv part.mkv "${render[@]}" >submit
sh -e submit >submitted
worker_runs() { pgrep -f '^aveffect work shared-film 1$'; }
until_true 60 worker_runs
job=$(squeue -h -r -o %i | grep '_1$')
scontrol requeue "$job"
pkill -KILL -f '^aveffect work shared-film 1$' || true
[ ! -e shared-film/chunks/000001.json ] || fail "the worker was killed too late to try anything"
# What is queued again waits for two minutes if nobody says otherwise.
waits() { squeue -h -r -o '%i %r' | grep -q "^$job BeginTime"; }
until_true 60 waits
scontrol update JobId="$job" StartTime=now
until_true 120 ended
[ -e part.mkv ] || fail "no film: $(cat slurm-*.out) $(tail -n 20 run/slurmctld.log)"
same part.mkv whole.mkv "by Slurm"
