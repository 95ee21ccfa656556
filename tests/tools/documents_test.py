#!/usr/bin/python3
"""Every block of commands in the documents is run, and what stands below a command is what it prints. Links within the
project lead to what is there.

usage: documents_test.py TREE PROGRAM...

| Block | What is done with it |
| --- | --- |
| ```console | typed anew and compared: "$ " before a command of the shell, "(gfast-cli)> " before one of the console |
| ```text, a picture or an output | must have no such line |
| indented, beginning with "[" | a piece of a board file: the lab must take it |
| any other | commands for the shell, which must succeed |

A block below the line `<!-- not run: REASON -->` is not run, but the files and presets that it names must exist.
GFAST_RENEW_TEXTS=1 writes into the documents what is printed, and fails.
"""
import concurrent.futures
import contextlib
import os
import pathlib
import re
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import tempfile

PATIENCE = 60  # seconds

# Blocks that another test runs: the document, how they begin, and that test.
RUN_ELSEWHERE = [
    ("README.md", "(gfast-cli)> ", "tests/console/readme_test.cpp"),
    ("docs/line-faults.md", "$ gfast-lab ", "tests/console/line_faults_test.cpp"),
    ("docs/report.md", "$ gfast-report ", "tests/unit/gfast-report/gfast_report_test.cpp"),
    ("docs/console.md", "ssh -N ", "tests/console/ssh_test.cpp"),
]

MARK = re.compile(r"<!-- not run: .*\w.* -->")
LINK = re.compile(r"""(?:\]\(|src=")(?!https?:)([^)"#\s]*)#?([^)"\s]*)[)"]""")
PROMPT = re.compile(r"\(gfast-cli\)(\(config\))?> ")


class Failure(Exception):
    pass


class Block:
    """Lines [begin, end) of a document, without the fences."""

    def __init__(self, lines, begin, end, fence=None):
        self.begin, self.end, self.fence = begin, end, fence
        self.lines = [line if fence is not None else line[4:] for line in lines[begin:end]]
        above = lines[: begin if fence is None else begin - 1]
        self.marked = MARK.fullmatch(next((line for line in reversed(above) if line), "")) is not None

    def shows_commands(self):
        return any(line.startswith("$ ") or PROMPT.match(line) for line in self.lines)


def blocks_of(lines):
    blocks, i = [], 0
    while i < len(lines):
        begin = i
        if lines[i].startswith("```"):
            i = lines.index("```", i + 1)
            blocks.append(Block(lines, begin + 1, i, lines[begin][3:]))
        elif lines[i].startswith("    ") and (i == 0 or not lines[i - 1]):
            while i < len(lines) and (lines[i].startswith("    ") or not lines[i]):
                i += 1
            while not lines[i - 1]:
                i -= 1
            blocks.append(Block(lines, begin, i))
            continue
        elif lines[i].lstrip().startswith("```"):
            raise Failure(f"line {i + 1}: the fence of a block is indented")
        i += 1
    return blocks


def anchor_of(heading):
    return re.sub(r"[^\w -]", "", heading.strip().lower()).replace(" ", "-")


def anchors_in(text):
    return {anchor_of(heading) for heading in re.findall(r"^#+ (.*)", text, re.M)}


class Session:
    """A session at a lab of its own."""

    def __init__(self, command, folder, environment):
        self.lab = subprocess.Popen(
            command + ["--port", "0"], cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
        )
        printed = b""
        while not (listening := re.search(rb"Listening on port (\d+)\r?\n", printed)):
            line = self.lab.stdout.readline()
            if not line:
                raise Failure(f"{shlex.join(command)} does not serve: {printed.decode()}")
            printed += line
        self.socket = socket.create_connection(("127.0.0.1", int(listening[1])), PATIENCE)
        self.prompt = self.answer()[1]

    def answer(self):
        """What comes before the next prompt, and the prompt."""
        received = b""
        while not (end := re.search(r"\r\n(\(gfast-cli\)(\(config\))?> )$", received.decode(errors="replace"))):
            some = self.socket.recv(65536)
            if not some:
                raise Failure(f"the session ends: {received!r}")
            received += some
        text = re.sub(rb"\xff..", b"", received, flags=re.DOTALL).decode()
        return text[: len(text) - len(end[0])], end[1]

    def type(self, line):
        """The lines that a session shows: prompt, what is typed, the answer."""
        self.socket.sendall(line.encode() + b"\r")
        text, next_prompt = self.answer()
        shown = (self.prompt + text).replace("\r", "").removesuffix("\n").split("\n")
        self.prompt = next_prompt
        return shown

    def close(self):
        self.socket.close()
        self.lab.kill()
        self.lab.wait()
        self.lab.stdout.close()


class Document:
    """A document and the folder in which its commands are run, one after the other."""

    def __init__(self, tree, name, programs):
        self.tree, self.name, self.programs = tree, name, programs
        self.text = (tree / name).read_text()
        self.lines = self.text.removesuffix("\n").split("\n")
        self.failures = []

    def fail(self, block, what):
        self.failures.append(f"{self.name}:{block.begin + 1}: {what}")

    def run(self):
        try:
            return self.run_blocks(blocks_of(self.lines))
        except (Failure, ValueError) as failure:
            return [f"{self.name}: {failure}"]

    def run_blocks(self, blocks):
        printed, done = [], 0
        with tempfile.TemporaryDirectory() as folder:
            self.folder = pathlib.Path(folder)
            shutil.copytree(self.tree / "docs/boards", self.folder / "boards")
            (self.folder / "virtual-board").symlink_to(self.tree / "virtual-board")
            self.environment = {
                "PATH": os.pathsep.join([*{str(path.parent) for path in self.programs}, os.environ["PATH"]]),
                "TZ": "UTC0",
                "HOME": folder,
            }
            for block in blocks:
                printed += self.lines[done : block.begin]
                try:
                    printed += self.judged(block)
                except (Failure, OSError, ValueError, subprocess.SubprocessError) as failure:
                    self.fail(block, failure)
                    printed += self.lines[block.begin : block.end]
                done = block.end
        printed += self.lines[done:]
        self.check_links(blocks)
        if os.environ.get("GFAST_RENEW_TEXTS") and printed != self.lines:
            (self.tree / self.name).write_text("\n".join(printed) + "\n")
        return self.failures

    def judged(self, block):
        """The block as it must stand in the document."""
        if block.marked:
            self.check_names(block)
        elif not self.is_run_elsewhere(block):
            if block.fence == "console":
                printed = self.typed(block)
                self.compare(block, printed)
                return printed
            if block.fence == "text":
                if block.shows_commands():
                    raise Failure("commands, in a block without any: it should be ```console")
            elif block.fence is None and block.lines[0].startswith("["):
                (self.folder / "boards/piece.toml").write_text("\n".join(block.lines))
                (self.folder / "nothing.script").write_text("")
                self.must_succeed("gfast-lab --speed max --board boards/piece.toml nothing.script")
            else:
                self.must_succeed("\n".join(block.lines))
        return self.lines[block.begin : block.end]

    def is_run_elsewhere(self, block):
        for document, beginning, test in RUN_ELSEWHERE:
            if document == self.name and block.lines[0].startswith(beginning):
                if not (self.tree / test).exists():
                    raise Failure(f"{test} is said to run it, and is not there")
                return True
        return False

    def compare(self, block, printed):
        for i, (shown, line) in enumerate(zip(block.lines + [None], printed + [None])):
            if shown != line:
                self.failures.append(f"{self.name}:{block.begin + i + 1}: shows  {shown!r}\n    but it is {line!r}")
                return

    def shell(self, commands):
        """Status and output of these commands. What they leave running is ended."""
        process = subprocess.Popen(
            ["sh", "-e", "-c", commands],
            cwd=self.folder,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            start_new_session=True,
        )
        try:
            output = process.communicate(timeout=PATIENCE)[0]
        except subprocess.TimeoutExpired:
            raise Failure(f"does not end, and no mark that it is not run: {commands}") from None
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
        return process.returncode, output.decode()

    def must_succeed(self, commands):
        status, output = self.shell(commands)
        if status != 0:
            raise Failure(f"status {status}, and no mark that it is not run: {output.rstrip()}")

    def typed(self, block):
        if not block.shows_commands():
            raise Failure("a transcript without a command")
        printed, session, i = [], None, 0
        try:
            while i < len(block.lines):
                line = block.lines[i]
                i += 1
                following = block.lines[i] if i < len(block.lines) else ""
                if prompt := PROMPT.match(line):
                    session = session or self.session("gfast-lab")
                    printed += session.type(line[prompt.end() :])
                elif line.startswith("$ ") and PROMPT.match(following):
                    printed.append(line)
                    if session:
                        session.close()
                    session = self.session(line[2:])
                elif line.startswith("$ "):
                    end = next((j for j in range(i, len(block.lines)) if self.is_command(block.lines[j])), None)
                    printed += [line] + self.output(line[2:], block.lines[i:end])
        finally:
            if session:
                session.close()
        return printed

    @staticmethod
    def is_command(line):
        return line.startswith("$ ") or PROMPT.match(line)

    def session(self, command):
        words = shlex.split(command)
        program = next((path for path in self.programs if path.name == words[0]), None)
        if program is None or program.name != "gfast-lab":
            raise Failure(f"not a lab: {command}")
        return Session([str(program), *words[1:]], self.folder, self.environment)

    def output(self, command, shown):
        """What a command of the shell prints. A file that a document shows and nobody wrote is what it shows."""
        file = re.fullmatch(r"cat ([\w.-]+)", command)
        if file and not (self.folder / file[1]).exists():
            (self.folder / file[1]).write_text("".join(line + "\n" for line in shown))
        text = self.shell(command)[1]
        return text.removesuffix("\n").split("\n") if text else []

    def check_links(self, blocks):
        """Links within the project, to a file, a folder or a heading."""
        shown = {i for block in blocks for i in range(block.begin, block.end)}
        for i, line in enumerate(self.lines):
            for path, anchor in [] if i in shown else LINK.findall(line):
                place = (self.tree / self.name).parent / path if path else self.tree / self.name
                if not place.exists() or (anchor and anchor not in anchors_in(place.read_text())):
                    self.failures.append(f"{self.name}:{i + 1}: nothing is at {path}{'#' if anchor else ''}{anchor}")

    def check_names(self, block):
        """What a block that is not run names must be there all the same."""
        text = "\n".join(block.lines)
        presets = set(re.findall(r'"name": "([\w-]+)"', (self.tree / "CMakePresets.json").read_text()))
        for preset in re.findall(r"--preset ([\w-]+)", text):
            if preset not in presets:
                self.fail(block, f"there is no preset {preset}")
        for path in re.findall(r"(?:^|[ (])((?:\./|tools/|tests/|virtual-board/|boards/)[\w./-]*)", text, re.M):
            if not any((self.tree / place / path).exists() for place in ("", "docs")):
                self.fail(block, f"there is no {path}")


def main():
    tree = pathlib.Path(sys.argv[1]).resolve()
    programs = [pathlib.Path(path) for path in sys.argv[2:]]
    names = [str(path.relative_to(tree)) for pattern in ("*.md", "docs/*.md") for path in sorted(tree.glob(pattern))]
    documents = [Document(tree, name, programs) for name in names]
    # Some only wait.
    with concurrent.futures.ThreadPoolExecutor(max_workers=4) as pool:
        failures = [failure for found in pool.map(Document.run, documents) for failure in found]
    for failure in failures:
        print(failure)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
