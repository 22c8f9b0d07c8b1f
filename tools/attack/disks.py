"""Full disks: a small file system of the process's own where it may mount one, else a limit on the size of files."""

import ctypes
import os
import resource

import writes

KIND, WEIGHT = "disks", 6

CLONE_NEWNS = 0x00020000
MS_REC, MS_PRIVATE = 0x4000, 1 << 18
PAGE = 4096
MOST_LEFT = 64 << 10  # bytes that are left free at most
SIZE = 1 << 20  # of the file system


def libc(function, *arguments):
    """Calls a function of the C library; raises an OSError if it fails."""
    if getattr(ctypes.CDLL(None, use_errno=True), function)(*arguments) != 0:
        raise OSError(ctypes.get_errno(), function)


def enter_namespace():
    """Lets this process mount file systems that no other process sees; whether it may."""
    try:
        libc("unshare", CLONE_NEWNS)
        libc("mount", b"none", b"/", None, MS_REC | MS_PRIVATE, None)
    except OSError:
        return False
    return True


def attack_mounted(frame, rng, writing, written):
    """One command with its files, and now and then TMPDIR, on a file system that is nearly full."""
    directory = frame.temporary if rng.random() < 0.2 else frame.work
    inodes = rng.random() < 0.2
    options = f"size={SIZE},nr_inodes={rng.randrange(14, 20) if inodes else 200}".encode()
    libc("mount", b"none", str(directory).encode(), b"tmpfs", 0, options)
    try:
        writes.prepare(frame)
        filler = directory / "filler"
        with open(filler, "wb") as file:
            space = os.statvfs(directory)
            left = rng.randrange(0, MOST_LEFT, PAGE) if rng.random() < 0.8 else 0
            file.write(bytes(max(space.f_bavail * space.f_bsize - left, 0)))
        run(frame, writing, written, None)
    except OSError:
        frame.tally.notes["file systems too small for the inputs"] += 1
    finally:
        libc("umount2", str(directory).encode(), 2)


def attack_limited(frame, rng, writing, written):
    """One command that may not write large files."""
    writes.prepare(frame)
    limit = rng.randrange(0, 20000)
    run(frame, writing, written, lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))


def run(frame, writing, written, before):
    """Runs the command; it succeeds, or fails with status 3 and names its output."""
    old = writes.contents(frame)
    outcome = frame.run(writing.words, before=before)
    frame.tally.inputs += 1
    writes.compare(frame, writing, written, old, outcome)
    names = [part for output in writing.outputs for part in (output, output.split("/", maxsplit=1)[0])]
    statuses = (0, 1, 3) if writing.words[0] == "compare" else (0, 3)
    frame.check(outcome, names if outcome.status == 3 else None, statuses=statuses)


def attack(frame, rng):
    """One command on a full disk."""
    number = rng.randrange(len(writes.WRITINGS))
    writing = writes.WRITINGS[number]
    _, written = frame.once(f"whole {number}", lambda: writes.whole(frame, writing))
    frame.begin(frame.kind, frame.number)
    mounted = frame.once("namespace", enter_namespace)
    frame.tally.notes["on file systems of their own" if mounted else "by a limit on the size of files"] += 1
    (attack_mounted if mounted else attack_limited)(frame, rng, writing, written)
