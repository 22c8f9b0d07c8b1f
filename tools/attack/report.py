"""The table of results, for the terminal and for docs/attack.md."""

import datetime
import os
import platform
import subprocess

import bench
import modules


def table(tallies, bars):
    """The rows of the table: the header, one for each kind of attack, and the totals."""
    total = bench.Tally()
    rows = [("attack", "inputs", "runs", "status 0", *(bench.BARS[bar] for bar in bars))]
    for kind, tally in tallies.items():
        total.add(tally)
        rows.append(row_of(kind, tally, bars))
    return [*rows, row_of("all", total, bars)]


def row_of(kind, tally, bars):
    """One row of the table."""
    return (kind, tally.inputs, tally.runs, tally.taken, *(tally.broken[bar] for bar in bars))


def as_text(tallies, sanitized):
    """The table for a terminal."""
    rows = table(tallies, bench.BARS if sanitized else bench.BARS_OF_ALL)
    widths = [max(len(str(row[index])) for row in rows) for index in range(len(rows[0]))]
    return "\n".join("  ".join(str(cell).ljust(width) if index == 0 else str(cell).rjust(width)
                               for index, (cell, width) in enumerate(zip(row, widths))) for row in rows)


def as_markdown(tallies):
    """The table for a document."""
    lines = ["| " + " | ".join(str(cell) for cell in row) + " |" for row in table(tallies, bench.BARS_OF_ALL)]
    lines.insert(1, "|---" + "|---:" * (len(bench.BARS_OF_ALL) + 3) + "|")
    return "\n".join(lines)


def first_line(*words):
    """The first line that a command prints."""
    try:
        return subprocess.run(words, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def package(name):
    """The version of a Debian package."""
    return first_line("dpkg-query", "-W", "-f", "${Version}", name)


def versions(velm):
    """What was attacked, and with what."""
    libraries = {"OpenImageIO": "libopenimageio-dev", "Assimp": "libassimp-dev", "Embree": "libembree-dev"}
    kernel = platform.release().split("-")[0]
    return ", ".join([first_line(velm, "--version"), *(f"{name} {package(one)}" for name, one in libraries.items()),
                      f"Python {platform.python_version()}", f"Linux {kernel} on {platform.machine()}"])


def page(options, tallies):
    """The text of docs/attack.md."""
    notes = [f"- {kind}: {count} {note}" for kind, tally in tallies.items()
             for note, count in sorted(tally.notes.items())]
    return PAGE.format(date=datetime.date.today().isoformat(), versions=versions(options.velm),
                       seed=options.seed,
                       minutes=f"{options.minutes:g}", cores=os.cpu_count(), table=as_markdown(tallies),
                       notes="\n".join(notes), memory=bench.READ_MEMORY, time=bench.READ_TIME,
                       call=modules.CALL_LIMIT, limit=bench.RUN_TIME, own=bench.OWN_MEMORY)


PAGE = """# Results of the attack

`./run attack MINUTES --report` writes this page. [testing.md](testing.md#an-attack-from-outside) says what the attack
does, and [security.md](security.md) what `velm` promises.

{date}: {minutes} minutes on {cores} cores, with `--seed {seed}`. {versions}.

{table}

{notes}

An *input* is one changed file, one kill, one full disk, or one fault of a module. A *run* is one process of `velm`;
several images share one. The columns after *status 0* count broken bars:

- **hung**: no end after {limit} seconds. Reading a file was limited to {time} s, and a call of a module to {call} s;
- **guard died**: the process that was started ended by a signal that nobody sent to it;
- **wrong status**: a status that is not documented for this fault;
- **untold**: a failure without a line that names the file or the module, or a line that is not `velm`'s;
- **over the limit**: more memory than `--read-memory {memory}` for each file that is read, and {own} MiB for the rest;
- **torn or lost**: an output that is neither absent, nor old, nor whole, or any other file that has changed;
- **left behind**: a file that was not asked for, in the directory or in `TMPDIR`;
- **processes left**: a process that still ran after the command.
"""
