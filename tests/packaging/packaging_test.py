#!/usr/bin/env python3
"""Tests of the scripts in packaging/."""

import hashlib
import json
import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def shell(command):
    """The exit status, standard output and standard error of a command with the functions of module_packages.sh."""
    script = f"set -euo pipefail; say() {{ echo \"$*\" >&2; }}; source packaging/module_packages.sh; {command}"
    done = subprocess.run(["bash", "-c", script], cwd=ROOT, capture_output=True, text=True, check=False)
    return done.returncode, done.stdout, done.stderr


PROGRAM = """#!/bin/sh
case $1 in
    --version) echo "velm 1.2.3" ;;
    draw) cat <<'TEXT'
Draw a file's picture
Usage: velm draw [OPTIONS] FILE

Positionals:
  FILE REQUIRED               A scene

Options:
  -o,--output FILE REQUIRED   The picture
  --level N:INT in [1 - 10]=5 The level
  --set PATH=VALUE            A value; may be given
                              several times
  --wait SECONDS:FLOAT in [0 - 1e+30]=0.5 Needs: --level
                              .5 is half a second
  --part K/N Excludes: --level --wait
                              A part
  --plain{false}              No colours
  -q                          No messages

TEXT
    ;;
    *) cat <<'TEXT'
Draws.
Usage: velm [OPTIONS] SUBCOMMAND

Options:
  --module FILE               The module
  --version                   Display program version information and exit

Subcommands:
  draw                        Draw a file's picture

TEXT
    ;;
esac
"""


def program(directory):
    """The path of a program there whose help texts have each form of option."""
    path = os.path.join(directory, "velm")
    with open(path, "w", encoding="utf-8") as file:
        file.write(PROGRAM)
    os.chmod(path, 0o755)
    return path


class ManPages(unittest.TestCase):
    def pages(self):
        with tempfile.TemporaryDirectory() as directory:
            subprocess.run([os.path.join(ROOT, "packaging/man_pages.py"), program(directory), directory + "/man"],
                           check=True, env=dict(os.environ, SOURCE_DATE_EPOCH="86400"))
            pages = {}
            for name in os.listdir(directory + "/man"):
                with open(os.path.join(directory, "man", name), encoding="utf-8") as page:
                    pages[name] = page.read()
            return pages

    def test_has_one_for_the_program_and_one_for_each_command(self):
        pages = self.pages()
        self.assertEqual(sorted(pages), ["velm-draw.1", "velm.1"])
        self.assertTrue(pages["velm.1"].startswith('.TH VELM 1 "1970-01-02" "velm 1.2.3" "User Commands"\n'))
        self.assertIn("\n\\fBvelm\\-draw\\fR(1)\nDraw a file\\(aqs picture.\n", pages["velm.1"])

    def test_says_limits_and_conditions_in_words(self):
        page = self.pages()["velm-draw.1"]
        for entry in (
                "\\fBFILE\\fR\nA scene.\n",
                "\\fB\\-o\\fR, \\fB\\-\\-output\\fR \\fIFILE\\fR\nThe picture. Required.\n",
                "\\fB\\-\\-level\\fR \\fIN\\fR\nThe level (1 to 10, default 5).\n",
                "\\fB\\-\\-set\\fR \\fIPATH=VALUE\\fR\nA value; may be given several times.\n",
                "\\fB\\-\\-wait\\fR \\fISECONDS\\fR\n\\&.5 is half a second (at least 0, default 0.5). "
                "Only with \\-\\-level.\n",
                "\\fB\\-\\-part\\fR \\fIK/N\\fR\nA part. Not with \\-\\-level, \\-\\-wait.\n",
                "\\fB\\-\\-plain\\fR\nNo colours.\n",
                "\\fB\\-q\\fR\nNo messages.\n"):
            self.assertIn("\n.TP\n" + entry, page)


class Completion(unittest.TestCase):
    def completed(self, *words):
        """What the last word of a command line may become; "FILES" if that is the name of a file."""
        script = f"""source {ROOT}/packaging/debian/completion.sh; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
                     COMPREPLY=(FILES); _velm; echo "${{COMPREPLY[@]}}" """
        with tempfile.TemporaryDirectory() as directory:
            done = subprocess.run(["bash", "-c", script, "bash", program(directory), *words], capture_output=True,
                                  text=True, check=True)
            return done.stdout.split()

    def test_gives_the_commands(self):
        self.assertEqual(self.completed("d"), ["draw"])
        self.assertEqual(self.completed("--module", "x.p", "d"), ["draw"])

    def test_gives_the_options_of_the_command(self):
        self.assertEqual(self.completed("draw", "--p"), ["--part", "--plain"])
        self.assertEqual(self.completed("--"), ["--module", "--version"])

    def test_leaves_the_names_of_files_to_the_shell(self):
        self.assertEqual(self.completed("draw", "sc"), ["FILES"])
        self.assertEqual(self.completed("--module", "d"), ["FILES"])


class Bundle(unittest.TestCase):
    """A directory with the shell, which needs a library besides that of C."""

    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)

    def bundle(self, name):
        directory = os.path.join(self.scratch.name, name)
        os.mkdir(directory)
        shutil.copy("/bin/bash", directory)
        bill = directory + ".json"
        done = subprocess.run([os.path.join(ROOT, "packaging/bundle.py"), "shell", "1.0", directory, bill, "dpkg"],
                              check=True, capture_output=True, text=True)
        with open(bill, "rb") as file:
            return directory, file.read(), done.stdout.strip()

    def test_has_the_libraries_but_that_of_c(self):
        directory, _, c_library = self.bundle("one")
        libraries = os.listdir(directory + "/lib")
        self.assertIn("libtinfo.so.6", libraries)
        self.assertNotIn("libc.so.6", libraries)
        self.assertRegex(c_library, r"^2\.\d+$")
        self.assertEqual(sorted(os.listdir(directory + "/licences")), ["dpkg.txt", "libtinfo6.txt"])

    def test_lists_packages_and_digests(self):
        directory, text, _ = self.bundle("one")
        bill = json.loads(text)
        self.assertEqual([package["name"] for package in bill["packages"]], ["shell", "dpkg", "libtinfo6"])
        self.assertEqual([file["fileName"] for file in bill["files"]], ["./bash", "./lib/libtinfo.so.6"])
        for file in bill["files"]:
            with open(os.path.join(directory, file["fileName"]), "rb") as content:
                self.assertEqual(file["checksums"][1]["checksumValue"], hashlib.sha256(content.read()).hexdigest())
        known = {"SPDXRef-DOCUMENT"} | {entry["SPDXID"] for entry in bill["packages"] + bill["files"]}
        for relation in bill["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, known)

    def test_gives_the_same_bytes_every_time(self):
        self.assertEqual(self.bundle("one")[1], self.bundle("two")[1])


class InstallPage(unittest.TestCase):
    TITLES = {"windows-i686": "WINDOWS", "macintosh": "MACINTOSH", "linux-x86_64": "LINUX"}

    def test_has_the_chapter_of_its_platform_only(self):
        for platform, title in self.TITLES.items():
            status, page, _ = shell(f"install_page {platform}")
            self.assertEqual(status, 0)
            self.assertEqual([line for line in page.splitlines() if line in self.TITLES.values()], [title])

    def test_is_a_screen_long_and_without_markup(self):
        for platform in self.TITLES:
            page = shell(f"install_page {platform}")[1]
            self.assertLess(len(page.splitlines()), 50)
            for markup in "`", "](", "\n#", "*":
                self.assertNotIn(markup, page)

    def test_is_an_error_without_a_chapter(self):
        status, _, message = shell("chapters docs/install.md Windows 'No such chapter'")
        self.assertEqual((status, message), (1, "run: docs/install.md has no chapter 'No such chapter'\n"))


class Version(unittest.TestCase):
    def test_has_a_chapter_in_the_changes_for_artists(self):
        version = shell("version")[1].strip()
        with open(os.path.join(ROOT, "packaging/artists/CHANGES.txt"), encoding="utf-8") as changes:
            self.assertRegex(changes.read(), rf"\n{version}[ \n](.*\n)*Changes the picture\n")


if __name__ == "__main__":
    unittest.main()
