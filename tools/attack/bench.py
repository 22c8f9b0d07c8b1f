"""The frame of all attacks: runs commands in a directory that holds their inputs, and holds each run to the bars."""

import collections
import dataclasses
import os
import pathlib
import re
import shlex
import shutil
import time

import processes

READ_MEMORY = 128  # MiB, for --read-memory
READ_TIME = 5  # seconds, for --read-time
RENDER_TIME = 20  # seconds, for --time-limit: a valid scene may take long to render
RUN_TIME = 90  # seconds after which a command counts as hung; far more than any needs, on a busy machine too
OWN_MEMORY = 400  # MiB that a command may take besides the files that it reads
DOCUMENTED = (0, 1, 2, 3, 130)
MOST_SAVED = 5  # inputs of one kind of failure that are saved

# What must never happen. The order is that of the table's columns.
BARS = {
    "hang": "hung",
    "death": "guard died",
    "status": "wrong status",
    "untold": "untold",
    "memory": "over the limit",
    "torn": "torn or lost",
    "left": "left behind",
    "process": "processes left",
    "undefined": "sanitizers' reports",
}
BARS_OF_ALL = [bar for bar in BARS if bar != "undefined"]  # those that apply to builds without sanitizers

# For a build with sanitizers. Reports go to files, since processes that read files have no standard error of their own.
# Freed memory is reused sooner than by default, to stay within --read-memory.
SANITIZERS = {
    "ASAN_OPTIONS": "log_path={reports}/report:detect_leaks=0:quarantine_size_mb=8:allocator_may_return_null=1",
    "UBSAN_OPTIONS": "log_path={reports}/report:print_stacktrace=1",
}
# What a sanitizer reports where other builds throw std::bad_alloc.
NO_MEMORY = re.compile("out-of-memory|allocation-size-too-big|failed to allocate")


@dataclasses.dataclass
class Tally:
    """What the attacks of one kind have counted."""

    inputs: int = 0
    runs: int = 0
    taken: int = 0  # runs with status 0
    seconds: float = 0
    broken: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    notes: collections.Counter = dataclasses.field(default_factory=collections.Counter)

    def add(self, other):
        """Adds what another process has counted."""
        self.inputs += other.inputs
        self.runs += other.runs
        self.taken += other.taken
        self.seconds += other.seconds
        self.broken += other.broken
        self.notes += other.notes


@dataclasses.dataclass
class Failure:
    """A bar that a run has broken."""

    kind: str
    bar: str
    text: str
    saved: str  # the directory with the inputs and the command; empty if enough of the same are saved


class Bench:
    """Where one process attacks: its directories, and what it has found."""

    def __init__(self, options, scratch, saved, seeds):
        self.velm, self.evil, self.seed = options.velm, options.evil, options.seed
        self.scratch = scratch
        self.work = scratch / "work"  # the current directory of the commands
        self.temporary = scratch / "tmp"  # their TMPDIR
        self.reports = scratch / "reports"  # where their sanitizers report
        self.sanitized = options.sanitized
        self.saved = saved
        self.seeds = seeds
        self.tallies = collections.defaultdict(Tally)
        self.failures = []
        self.signatures = collections.Counter()
        self.kind, self.number = "", 0
        self.made = {}

    def once(self, name, make):
        """What `make` gives at the first call under this name."""
        if name not in self.made:
            self.made[name] = make()
        return self.made[name]

    @property
    def tally(self):
        """What the present kind has counted."""
        return self.tallies[self.kind]

    def begin(self, kind, number):
        """Starts an attack with empty directories."""
        self.kind, self.number = kind, number
        for directory in (self.work, self.temporary, self.reports):
            shutil.rmtree(directory, ignore_errors=True)
            directory.mkdir(parents=True)

    def write(self, name, data):
        """Writes an input, and gives its name."""
        path = self.work / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data if isinstance(data, bytes) else data.encode("utf-8", "surrogatepass"))
        return name

    def environment(self, extra=None):
        """The environment of commands."""
        sanitizers = {key: value.format(reports=self.reports) for key, value in SANITIZERS.items()}
        return {"PATH": os.environ.get("PATH", "/usr/bin:/bin"), "HOME": str(self.temporary), "LC_ALL": "C.UTF-8",
                "TMPDIR": str(self.temporary), **(sanitizers if self.sanitized else {}), **(extra or {})}

    def start(self, words, extra=None, before=None):
        """Starts velm with these words."""
        return processes.start([str(self.velm), *words], self.work, self.environment(extra),
                               (self.scratch / "out.txt", self.scratch / "err.txt"), before)

    def finish(self, process, words, extra=None, seconds=RUN_TIME):
        """Waits for a command, and gives its outcome."""
        began = time.monotonic()
        status, peak, hung = processes.wait(process, seconds)
        left = processes.end_strays(0 if hung else processes.GRACE)
        self.tally.runs += 1
        self.tally.taken += status == 0
        outcome = processes.Outcome(words=list(words), environment=dict(extra or {}), status=status, hung=hung,
                                    out=processes.text_of(self.scratch / "out.txt"),
                                    err=processes.text_of(self.scratch / "err.txt"),
                                    seconds=time.monotonic() - began, peak=peak, left=[] if hung else left)
        self.check_reports(outcome)
        return outcome

    def check_reports(self, outcome):
        """Reports what sanitizers have found, except a lack of memory."""
        for path in sorted(self.reports.iterdir()):
            text = processes.text_of(path)
            path.unlink()
            if not NO_MEMORY.search(text):
                self.report("undefined", text, outcome)

    def run(self, words, extra=None, seconds=RUN_TIME, before=None):
        """Runs velm with these words, and gives the outcome."""
        return self.finish(self.start(words, extra, before), words, extra, seconds)

    def files(self):
        """The names of all files in the directory of the inputs, and of those in TMPDIR."""
        return {str(path.relative_to(self.scratch)) for directory in (self.work, self.temporary)
                for path in directory.rglob("*") if not path.is_dir() or path.is_symlink()}

    def check(self, outcome, named, statuses=(0, 1), memory=None):
        """Holds a run of inputs to the bars. Every failure has a message with one of `named`, unless that is None."""
        if outcome.hung:
            self.report("hang", f"no end after {RUN_TIME} s", outcome)
            return
        if outcome.status < 0:
            self.report("death", f"ended by signal {-outcome.status}", outcome)
        elif outcome.status not in statuses and not is_time_limit(outcome):
            self.report("status", f"status {outcome.status}", outcome)
        self.check_message(outcome, named)
        limit = memory or READ_MEMORY + OWN_MEMORY
        if outcome.peak > limit and not self.sanitized:
            self.report("memory", f"{outcome.peak:.0f} MiB, of {limit}", outcome)
        if outcome.left:
            self.report("process", left_text(outcome), outcome)

    def check_message(self, outcome, named):
        """A failure has one line that names the file; nothing but velm itself prints lines."""
        lines = outcome.err.splitlines()
        for line in lines:
            if not line.startswith("velm: ") or re.search(r"[\x00-\x08\x0b-\x1f\x7f]", line):
                self.report("untold", f"a line that is not velm's: {line[:200]}", outcome)
                return
        errors = [line for line in lines if not line.startswith("velm: warning: ")]
        if named and outcome.status > 0 and not any(name in line for line in errors for name in named):
            self.report("untold", f"no line names {' or '.join(named)}: {' / '.join(errors)[:300]}", outcome)

    def check_files(self, outcome, before, allowed=()):
        """No file has appeared but those that the command was to write."""
        for name in sorted(self.files() - before - {f"work/{one}" for one in allowed}):
            self.report("left", f"left behind: {name}", outcome)

    def report(self, bar, text, outcome):
        """Notes a broken bar, and saves the inputs with the command."""
        self.tally.broken[bar] += 1
        signature = (self.kind, bar, re.sub(r"[0-9]+|\"[^\"]*\"", "#", text)[:60])
        self.signatures[signature] += 1
        name = ""
        if self.signatures[signature] <= MOST_SAVED:
            name = self.save(bar, text, outcome)
        self.failures.append(Failure(kind=self.kind, bar=bar, text=text, saved=name))

    def save(self, bar, text, outcome):
        """Saves the inputs, the command to repeat it and what it printed; gives the directory."""
        target = self.saved / f"{self.kind}-{self.number}-{bar}"
        shutil.rmtree(target, ignore_errors=True)
        shutil.copytree(self.work, target / "inputs", symlinks=True, ignore_dangling_symlinks=True)
        settings = "".join(f"{key}={shlex.quote(value)} " for key, value in outcome.environment.items())
        command = f"{settings}{shlex.quote(str(self.velm))} {shlex.join(outcome.words)}"
        (target / "repeat.sh").write_text(f"#!/bin/sh\n# {text!r}\ncd \"$(dirname \"$0\")/inputs\" && {command}\n",
                                          encoding="utf-8", errors="replace")
        os.chmod(target / "repeat.sh", 0o755)
        (target / "result.txt").write_text(
            f"{text}\nstatus {outcome.status}, {outcome.seconds:.2f} s, {outcome.peak:.0f} MiB\n\n{outcome.err}",
            encoding="utf-8", errors="replace")
        return str(target)


def left_text(outcome):
    """Which processes a command has left behind."""
    return f"{len(outcome.left)} left running: {outcome.left[0][:100]}"


def is_time_limit(outcome):
    """Whether a render ended because of --time-limit."""
    return outcome.status == 3 and "time limit" in outcome.err


def render(scene, *words):
    """The words of a render of a scene: small, with small limits."""
    return ["render", scene, "-o", "picture.png", "--size", "8x8", "--samples", "1", "--frames", "1", "--threads", "2",
            "--quiet", "--time-limit", str(RENDER_TIME), *LIMITS, *words]


LIMITS = ["--read-memory", str(READ_MEMORY), "--read-time", str(READ_TIME)]


def seed_files(directory, endings, most):
    """Files in and below a directory that have one of the endings and at most that many bytes, sorted by name."""
    return [path for path in sorted(pathlib.Path(directory).rglob("*"))
            if path.suffix.lower() in endings and path.is_file() and 0 < path.stat().st_size <= most]
