"""Runs the tool as a process. KORVEX2_TOOL names the program, KORVEX2_TEST_ONE_IN shortens walks; ctest sets them."""

import os
import subprocess

import numpy as np
import pytest

TOOL = os.environ.get("KORVEX2_TOOL", "")
ONE_IN = int(os.environ.get("KORVEX2_TEST_ONE_IN", "1"))


def some(steps):
    """The steps of a long walk, one in so many where sanitizers or an emulator make each run of the tool long."""
    return list(steps)[::ONE_IN]


class Tool:
    """The tool in a folder of its own, which must hold what it is told to hold and nothing else."""

    def __init__(self, folder):
        self.folder = folder

    @staticmethod
    def command(*arguments):
        return [TOOL, *map(str, arguments)]

    def run(self, *arguments, **options):
        return subprocess.run(
            self.command(*arguments), cwd=self.folder, capture_output=True, text=True, timeout=120, **options)

    def succeeds(self, *arguments):
        result = self.run(*arguments)
        assert result.returncode == 0, result.stderr
        assert result.stderr == ""
        return result.stdout

    def fails(self, code, *arguments):
        """The message; checks its form and that no file came, went or changed."""
        before = self.contents()
        result = self.run(*arguments)
        assert result.returncode == code, (result.returncode, result.stderr)
        assert result.stdout == ""
        assert result.stderr.startswith("korvex2: ")
        assert result.stderr.endswith("\n") and result.stderr.count("\n") == 1, result.stderr
        assert self.contents() == before
        return result.stderr[len("korvex2: "):-1]

    def takes(self, *arguments):
        """The exit code, and the memory that was taken at the peak, in bytes."""
        process = subprocess.Popen(
            self.command(*arguments), cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return process.returncode, usage.ru_maxrss * 1024

    def contents(self):
        return {path: path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}


@pytest.fixture
def tool(tmp_path):
    assert TOOL, "set KORVEX2_TOOL to the program to test"
    return Tool(tmp_path)


@pytest.fixture
def rng():
    return np.random.default_rng(20240229)
