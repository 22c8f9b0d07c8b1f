"""Signals at random moments, to any of velm's processes: every file is afterwards absent, old or whole."""

import re
import signal
import time

import bench
import processes
import writes

KIND, WEIGHT = "kills", 14

SIGNALS = (signal.SIGKILL, signal.SIGKILL, signal.SIGTERM, signal.SIGINT, signal.SIGHUP)
# Only SIGKILL of the first process may leave what is unfinished: a file or directory with six more letters in its name.
UNFINISHED = re.compile(r"\.[A-Za-z0-9]{6}(/.*)?$")


def target_of(rng, process):
    """One of the command's processes: the first one as often as all others together."""
    others = processes.descendants_of(process)
    return rng.choice(others) if others and rng.random() < 0.5 else process


def attack(frame, rng):
    """One command that is killed once."""
    number = rng.randrange(len(writes.WRITINGS))
    writing = writes.WRITINGS[number]
    seconds, written = frame.once(f"whole {number}", lambda: writes.whole(frame, writing))
    frame.begin(frame.kind, frame.number)
    writes.prepare(frame)
    before = writes.contents(frame)
    sent = rng.choice(SIGNALS)
    moment = rng.uniform(0, 1.1 * seconds)
    process = frame.start(writing.words)
    time.sleep(moment)
    target = target_of(rng, process.pid)
    processes.send(target, sent)
    outcome = frame.finish(process, writing.words)
    frame.tally.inputs += 1
    first = target == process.pid
    leftover = UNFINISHED if first and sent == signal.SIGKILL else None
    writes.compare(frame, writing, written, before, outcome, leftover)
    check(frame, outcome, first, sent, moment)


def check(frame, outcome, first, sent, moment):
    """The command ended by the signal or with a status that is documented, and left no process behind."""
    what = f"signal {sent} to the {'first' if first else 'second'} process after {moment:.3f} s"
    if outcome.hung:
        frame.report("hang", f"no end after {bench.RUN_TIME} s; {what}", outcome)
    elif outcome.status == -signal.SIGKILL and not first:
        frame.report("death", f"ended by SIGKILL; {what}", outcome)
    elif outcome.status < 0 and -outcome.status != sent:
        frame.report("death", f"ended by signal {-outcome.status}; {what}", outcome)
    elif outcome.status not in (*bench.DOCUMENTED, 128 + sent) and outcome.status >= 0:
        frame.report("status", f"status {outcome.status}; {what}", outcome)
    elif outcome.status in (1, 3) and not outcome.err.startswith("velm: "):
        frame.report("untold", f"status {outcome.status} without a message; {what}", outcome)
    if outcome.left:
        frame.report("process", f"{bench.left_text(outcome)}; {what}", outcome)
