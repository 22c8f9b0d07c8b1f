#!/usr/bin/env python3
"""Tests of the scripts in packaging/."""

import os
import subprocess
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def shell(command):
    """The exit status, standard output and standard error of a command that uses the functions of module_packages.sh."""
    script = f"set -euo pipefail; say() {{ echo \"$*\" >&2; }}; source packaging/module_packages.sh; {command}"
    done = subprocess.run(["bash", "-c", script], cwd=ROOT, capture_output=True, text=True, check=False)
    return done.returncode, done.stdout, done.stderr


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
