#!/usr/bin/env python3
"""Tests of ./run that build nothing."""

import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class CopiedCheckout(unittest.TestCase):
    """A checkout with a build directory that was configured for another place, or for its own."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.checkout = os.path.join(scratch.name, "copy")
        self.programs = os.path.join(scratch.name, "programs")
        for directory in "packaging", "tools":
            shutil.copytree(os.path.join(ROOT, directory), os.path.join(self.checkout, directory))
        shutil.copy(os.path.join(ROOT, "run"), self.checkout)
        # Programs that would install or build.
        os.mkdir(self.programs)
        for program in "cmake", "apt-get", "sudo", "dpkg-query":
            path = os.path.join(self.programs, program)
            answer = "install ok installed" if program == "dpkg-query" else f"called {program}"
            with open(path, "w", encoding="utf-8") as file:
                file.write(f"#!/bin/sh\nprintf '%s' '{answer}'\n")
            os.chmod(path, 0o755)

    def build(self, home):
        """The exit status and messages of ./run build, with a build directory for the source directory HOME."""
        os.makedirs(os.path.join(self.checkout, "build"))
        with open(os.path.join(self.checkout, "build/CMakeCache.txt"), "w", encoding="utf-8") as cache:
            cache.write(f"CMAKE_BUILD_TYPE:STRING=Release\nCMAKE_HOME_DIRECTORY:INTERNAL={home}\n")
        environment = dict(os.environ, PATH=self.programs + ":" + os.environ["PATH"])
        done = subprocess.run([os.path.join(self.checkout, "run"), "build"], env=environment, capture_output=True,
                              text=True, check=False)
        return done.returncode, done.stderr

    def test_is_refused_with_what_to_do(self):
        status, message = self.build("/somewhere/else")
        self.assertEqual(status, 1)
        self.assertEqual(message, "run: build/ was built for another checkout, /somewhere/else, and cannot be used "
                                  "here. Remove it, and build again: rm -r build\n")

    def test_builds_in_its_own_place(self):
        status, message = self.build(self.checkout)
        self.assertEqual((status, message), (0, "called cmake"))


if __name__ == "__main__":
    unittest.main()
