"""Labs that serve, for the checks in this folder."""
import os
import re
import subprocess
import sys
import tempfile
import time
import urllib.request

SKIPPED = 77  # ctest's SKIP_RETURN_CODE


def skip(reason):
    print(f"skipped: {reason}")
    sys.exit(SKIPPED)


def need(*programs):
    """Ends the check as skipped where a program is not installed."""
    from shutil import which

    missing = [program for program in programs if which(program) is None]
    if missing:
        skip(f"{', '.join(missing)} not installed (tools/install-packages with SERVE_PACKAGES of tools/packages)")


class Lab:
    """A running lab on a board file's text or path; ends with the block."""

    def __init__(self, program, board, name="board"):
        self.folder = tempfile.TemporaryDirectory()
        if not os.path.exists(board):
            text, board = board, os.path.join(self.folder.name, name + ".toml")
            with open(board, "w") as file:
                file.write(text)
        self.output = open(os.path.join(self.folder.name, "output.txt"), "w+")
        self.process = subprocess.Popen(
            [program, "--board", board, "--port", "0", "--http", "0"], stdout=self.output, stderr=subprocess.STDOUT
        )
        self.address = self.await_output(r"Serving http://([0-9.:]+)/")[1]
        self.console = int(self.await_output(r"Listening on port (\d+)")[1])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        # Asks first: a program that may end by itself can write what it counts for tools/coverage.
        self.process.terminate()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.output.close()
        self.folder.cleanup()

    def printed(self):
        with open(self.output.name) as file:
            return file.read()

    def await_output(self, pattern, seconds=30):
        return wait_for(lambda: re.search(pattern, self.printed()), seconds, f"{pattern} in {self.printed()}")

    def get(self, path):
        with urllib.request.urlopen(f"http://{self.address}{path}", timeout=30) as answer:
            return answer.read()


def wait_for(condition, seconds, what="a condition"):
    """The condition's first true value."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.1)
    raise AssertionError(f"not within {seconds} s: {what}")
