# shellcheck shell=bash
# A Slurm cluster of pretended nodes on this machine's loopback, for tests. Needs root, but no systemd, no cgroups and no
# files outside of one directory. Nothing listens on any other network. Part of farm_test.sh.
#
#     cluster_up DIR NODES    starts it, and sets SLURM_CONF; the nodes are n1, n2 ...
#     cluster_cut NODE        ends a node and all that it runs at once, as a power cut would
#     wait_for_job JOB        waits until a job, with all tasks of an array, has ended
#     cluster_down            ends everything that cluster_up started
#
# Every process is ended by the id under which it was started.

cluster_dir='' cluster_daemons=()
declare -A cluster_nodes=() # process ids by node

free_ports() { # COUNT
    python3 - "$1" <<'PYTHON'
import socket
import sys

sockets = [socket.socket() for _ in range(int(sys.argv[1]))]
for one in sockets:
    one.bind(("127.0.0.1", 0))
print(*(one.getsockname()[1] for one in sockets))
PYTHON
}

cluster_conf() { # PORT ...: of the controller, then of each node
    local dir=$cluster_dir host user number=0 port
    host=$(hostname -s) user=$(id -un)
    # proctrack/linuxproc, task/none: no cgroups. config_overrides: nodes have as many processors as the file says.
    # NoInAddrAny: listens on 127.0.0.1 only.
    cat <<CONF
ClusterName=velm
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$1
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
AuthInfo=socket=$dir/munge.socket
CredType=cred/munge
CommunicationParameters=NoInAddrAny,NoCtldInAddrAny
StateSaveLocation=$dir/state
SlurmdSpoolDir=$dir/spool/%n
SlurmctldPidFile=$dir/slurmctld.pid
SlurmdPidFile=$dir/slurmd.%n.pid
SlurmctldLogFile=$dir/slurmctld.log
SlurmdLogFile=$dir/slurmd.%n.log
SlurmdParameters=config_overrides
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_interval=2,sched_min_interval=0
MpiDefault=none
ReturnToService=2
SlurmdTimeout=5
MessageTimeout=5
KillWait=2
MinJobAge=3600
JobRequeue=1
RequeueExit=3
CONF
    shift
    for port; do
        echo "NodeName=n$((++number)) NodeHostname=$host NodeAddr=127.0.0.1 Port=$port CPUs=1 RealMemory=1000"
    done
    echo "PartitionName=render Nodes=ALL Default=YES MaxTime=INFINITE State=UP"
}

# Waits until the command succeeds, for 30 seconds at most.
wait_until() { # COMMAND ...
    local try
    for ((try = 0; try < 300; ++try)); do
        if "$@"; then return 0; fi
        sleep 0.1
    done
    echo "Timed out: $*" >&2
    return 1
}

cluster_is_idle() { # NODES
    [ "$(sinfo --noheader --Node --format=%T 2>/dev/null | grep -c idle)" = "$1" ]
}

cluster_up() { # DIR NODES
    cluster_dir=$1
    local number node
    mkdir -p "$cluster_dir/state"
    chmod 755 "$cluster_dir"
    head -c 1024 /dev/urandom >"$cluster_dir/munge.key"
    chmod 400 "$cluster_dir/munge.key"
    munged --foreground --key-file="$cluster_dir/munge.key" --socket="$cluster_dir/munge.socket" \
        --pid-file="$cluster_dir/munged.pid" --log-file="$cluster_dir/munged.log" \
        --seed-file="$cluster_dir/munge.seed" >"$cluster_dir/munged.out" 2>&1 &
    cluster_daemons+=($!)
    local ports
    read -ra ports < <(free_ports $(($2 + 1)))
    cluster_conf "${ports[@]}" >"$cluster_dir/slurm.conf"
    export SLURM_CONF=$cluster_dir/slurm.conf
    wait_until test -S "$cluster_dir/munge.socket"
    slurmctld -D -f "$SLURM_CONF" >"$cluster_dir/slurmctld.out" 2>&1 &
    cluster_daemons+=($!)
    for ((number = 1; number <= $2; ++number)); do
        node=n$number
        mkdir -p "$cluster_dir/spool/$node"
        # In a process space of its own: when its first process ends, the system ends all others.
        unshare --pid --fork --kill-child --mount-proc \
            slurmd -D -N "$node" -f "$SLURM_CONF" >"$cluster_dir/slurmd.$node.out" 2>&1 &
        cluster_nodes[$node]=$!
    done
    wait_until cluster_is_idle "$2"
}

cluster_cut() { # NODE
    kill -KILL "${cluster_nodes[$1]}"
    wait "${cluster_nodes[$1]}" 2>/dev/null || true
    unset "cluster_nodes[$1]"
}

cluster_down() {
    local node id
    for node in "${!cluster_nodes[@]}"; do cluster_cut "$node"; done
    for id in "${cluster_daemons[@]}"; do kill "$id" 2>/dev/null || true; done
    for id in "${cluster_daemons[@]}"; do wait "$id" 2>/dev/null || true; done
    cluster_daemons=()
}

# A squeue that fails says nothing about the job.
job_is_over() { # JOB
    local left
    left=$(squeue --noheader --jobs="$1" 2>/dev/null) && [ -z "$left" ]
}

wait_for_job() { # JOB
    local try
    for ((try = 0; try < 20; ++try)); do
        if wait_until job_is_over "$1" 2>/dev/null; then return 0; fi
    done
    echo "Job $1 does not end" >&2
    return 1
}
