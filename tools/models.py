#!/usr/bin/env python3
"""Renders every file of other people's models that velm reads, and writes a table and a contact sheet of the results.

    tools/models.py VELM [--table FILE] [--sheet FILE]

The files are those of two Debian packages. Every file gets a small picture, rendered with a limit of time and memory.
Ends with status 1 if velm crashes, exceeds a limit, or fails other than by an error in the file.
"""

import argparse
import collections
import concurrent.futures
import os
import re
import resource
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PACKAGES = ("assimp-testmodels", "glmark2-data")
ABOVE = ("/usr/share/assimp/models/", "/usr/share/")  # left out of names; the first that fits
WIDTH, HEIGHT = 112, 84  # of a picture, pixels
CAPTION = 14  # height below each picture
COLUMNS = 14
SECONDS = 20  # for reading a file, and for rendering it
MEBIBYTES = 4096  # for reading a file; also the most that any process may have needed
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
UNREAD = "the file is of no kind that is read"

PAGE = """# Other people's models

`./run models` renders every file of two Debian packages that `velm` reads, and writes this page. Files with errors are
damaged or contain nothing that is drawn: many of them are in the packages to try readers out. Reading a file may take
{seconds} seconds and {mebibytes} MiB.

Of {files} files that are read, {rendered} are rendered, {warned} of them with warnings.

Versions: {versions}.

![All pictures]({sheet})

*The pictures, in the order of the table: a three-quarter view with studio lights, unless the file brings its own.*

| | File | Result | Warnings |
|---|---|---|---|"""

Result = collections.namedtuple("Result", "file status picture error warnings mebibytes")


def files_of_packages():
    listed = subprocess.run(["dpkg-query", "-L", *PACKAGES], check=True, capture_output=True, text=True).stdout
    files = {line for line in listed.split("\n") if os.path.isfile(line) and not line.startswith("/usr/share/doc/")}
    return sorted(files, key=lambda file: (short(file).lower(), file))


def short(file):
    for directory in ABOVE:
        if file.startswith(directory):
            return file[len(directory):]
    return file


def messages(text, file):
    """The errors and warnings that velm printed, without directories of this machine and without the summary."""
    errors, warnings = [], []
    for line in text.replace(file + ": ", "").replace(os.path.dirname(file) + "/", "").split("\n"):
        if line.startswith("velm: warning: "):
            warnings.append(line.removeprefix("velm: warning: "))
        elif line.startswith("velm: ") and not re.match(r"velm: (note:|\d+ warnings?: )", line):
            errors.append(line.removeprefix("velm: "))
    return "; ".join(errors), warnings


def render(velm, file, picture):
    """The result of one file; None for a file that velm does not read."""
    command = [velm, "render", file, "-o", picture, "--frames", "1", "--size", f"{WIDTH}x{HEIGHT}", "--samples", "1",
               "--threads", "1", "--quiet", "--time-limit", str(SECONDS), "--read-time", str(SECONDS),
               "--read-memory", str(MEBIBYTES)]
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        # Resources include those of the processes that this one has waited for.
        _, status, used = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read().decode("utf-8", "replace")
    if UNREAD in text or "the file is empty" in text:
        return None
    error, warnings = messages(text, file)
    done = process.returncode == 0
    return Result(short(file), process.returncode, picture if done else "", error, warnings, used.ru_maxrss / 1024)


def render_all(velm, directory):
    files = files_of_packages()
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as workers:
        pictures = (os.path.join(directory, f"{number}.png") for number in range(len(files)))
        return [result for result in workers.map(lambda *one: render(velm, *one), files, pictures) if result]


def failures(results):
    """What must not happen, whatever the files contain."""
    for result in results:
        if result.status not in (0, 1):
            yield f"{result.file}: status {result.status}: {result.error}"
        elif result.mebibytes > MEBIBYTES:
            yield f"{result.file}: {result.mebibytes:.0f} MiB"


def sheet(results, file):
    """All pictures in one, in the order of the table, each with its number and the name of its file."""
    rendered = [(number, result) for number, result in enumerate(results, 1) if result.picture]
    command = ["oiiotool", "--nosoftwareattrib"]
    for number, result in rendered:
        caption = f"{number} {os.path.basename(result.file)}"
        command += [result.picture, "--eraseattrib", ".*", "--origin", "+0+0",
                    "--crop", f"{WIDTH}x{HEIGHT + CAPTION}+0+0", "--fullpixels",
                    f"--text:x=2:y={HEIGHT + CAPTION - 4}:size=10:font={FONT}", caption[:22]]
    rows = -(-len(rendered) // COLUMNS)
    command += ["--mosaic:pad=2", f"{COLUMNS}x{rows}", "-d", "uint8", "--compression", "jpeg:80", "-o", file]
    subprocess.run(command, check=True)


def cell(text):
    return text.replace("\\", "\\\\").replace("|", "\\|").replace("<", "&lt;").replace("*", "\\*").replace("_", "\\_")


def versions(velm):
    own = subprocess.run([velm, "--version"], check=True, capture_output=True, text=True).stdout.strip()
    query = ["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *PACKAGES, "libassimp5"]
    return [own, *subprocess.run(query, check=True, capture_output=True, text=True).stdout.strip().split("\n")]


def table(results, velm, name_of_sheet):
    rendered = sum(bool(result.picture) for result in results)
    warned = sum(bool(result.picture and result.warnings) for result in results)
    lines = [PAGE.format(files=len(results), rendered=rendered, warned=warned, seconds=SECONDS, mebibytes=MEBIBYTES,
                         versions=", ".join(versions(velm)), sheet=name_of_sheet)]
    for number, result in enumerate(results, 1):
        outcome = "rendered" if result.picture else f"error: {cell(result.error)}"
        lines.append(f"| {number} | {cell(result.file)} | {outcome} | {'; '.join(map(cell, result.warnings))} |")
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("velm", help="the program")
    parser.add_argument("--table", default=os.path.join(ROOT, "docs", "models.md"), help="the page that is written")
    parser.add_argument("--sheet", default=os.path.join(ROOT, "docs", "models.jpg"), help="the contact sheet")
    options = parser.parse_args()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    directory = tempfile.mkdtemp(prefix="velm-models-")
    try:
        results = render_all(os.path.abspath(options.velm), directory)
        sheet(results, options.sheet)
    finally:
        shutil.rmtree(directory)
    with open(options.table, "w", encoding="utf-8") as page:
        page.write(table(results, options.velm, os.path.relpath(options.sheet, os.path.dirname(options.table))))
    failed = list(failures(results))
    for line in failed:
        print(line, file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
