"""Running one command, so that nothing of it is lost: its end, its memory, and every process that it leaves behind."""

import ctypes
import dataclasses
import os
import select
import signal
import subprocess
import time

PR_SET_CHILD_SUBREAPER = 36
GRACE = 3.0  # seconds in which the processes that a command has started may end after it
MOST_OUTPUT = 1 << 20  # bytes of each stream that are looked at


def become_subreaper():
    """From now on, orphaned descendants become children of this process instead of init's."""
    if ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl(PR_SET_CHILD_SUBREAPER)")


def children_of(process):
    """The process ids of the children of a process; none if it has ended."""
    try:
        with open(f"/proc/{process}/task/{process}/children", encoding="ascii") as file:
            return [int(word) for word in file.read().split()]
    except OSError:
        return []


def descendants_of(process):
    """The process ids of the children of a process, of their children, and so on."""
    found = []
    for child in children_of(process):
        found += [child, *descendants_of(child)]
    return found


def command_of(process):
    """The command line of a process, for a message."""
    try:
        with open(f"/proc/{process}/cmdline", "rb") as file:
            return file.read().replace(b"\0", b" ").decode(errors="replace").strip() or f"process {process}"
    except OSError:
        return f"process {process}"


def send(process, number):
    """Sends a signal to a process that may have ended."""
    try:
        os.kill(process, number)
    except ProcessLookupError:
        pass


def reap():
    """Takes note of all children that have ended."""
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
    except ChildProcessError:
        pass


def wait_for_all():
    """Waits until no child is left."""
    try:
        while True:
            os.wait()
    except ChildProcessError:
        pass


def end_strays(grace=GRACE):
    """Waits for all remaining children of this process, and kills those that do not end; gives their command lines."""
    until = time.monotonic() + grace
    left = {}
    while True:
        reap()
        now = children_of(os.getpid())
        if not now:
            return list(left.values())
        if time.monotonic() >= until:
            for process in now:
                left.setdefault(process, command_of(process))
                send(process, signal.SIGKILL)
        time.sleep(0.005)


@dataclasses.dataclass
class Outcome:
    """How a command ended."""

    words: list
    environment: dict
    status: int  # negative: minus the number of the signal that ended it
    hung: bool  # it did not end in time, and was killed
    out: str
    err: str
    seconds: float
    peak: float  # MiB: the largest resident memory of any of its processes
    left: list  # command lines of processes that it left behind


def start(words, directory, environment, streams, before=None):
    """Starts a command in a session of its own, with files for its output."""
    with open(streams[0], "wb") as out, open(streams[1], "wb") as err:
        return subprocess.Popen(words, cwd=directory, env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                stderr=err, start_new_session=True, preexec_fn=before)


def text_of(path):
    """The beginning of what a command has written to a stream."""
    with open(path, "rb") as file:
        return file.read(MOST_OUTPUT).decode(errors="replace")


def wait(process, seconds):
    """Waits for a command; gives its status, its largest memory in MiB, and whether it had to be killed."""
    handle = os.pidfd_open(process.pid)
    try:
        poller = select.poll()
        poller.register(handle, select.POLLIN)
        hung = not poller.poll(max(seconds, 0) * 1000)
    finally:
        os.close(handle)
    if hung:
        for one in [process.pid, *descendants_of(process.pid)]:
            send(one, signal.SIGKILL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_maxrss / 1024, hung
