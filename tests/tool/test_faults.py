"""What happens to a run from outside: a disk that is full, a folder that goes away, an input that shrinks,
signals at any moment. Of one picture, of many, and of many in one file: never a part of a file under its final
name, never a temporary file left, a message that says what happened, and an exit code that is not 0. Only a run
that is killed leaves temporary files, under their temporary names."""

import os
import re
import resource
import shutil
import signal
import subprocess
import time

import numpy as np
import pytest

from conftest import TOOL
from pictures import pnm_bytes

STOPPING = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT]
MOMENTS = 8
FILES, FRAMES, WIDTH, HEIGHT = 30, 120, 160, 120
BATCH = ["in.raw", "--width", WIDTH, "--height", HEIGHT, "--method", "hq_linear", "--frames"]
KINDS = {"one": ["in.pgm", "out/out.png", "--to", "rgb8", "--method", "edge"],
         "many": [*BATCH, FILES, "out/{index}.png", "--to", "rgb8"],
         "raw": [*BATCH, "all", "out/all.raw", "--to", "rgb8"],
         "y4m": [*BATCH, "all", "out/all.y4m", "--to", "yuv444"]}
INPUTS = {"in.pgm": pnm_bytes(np.random.default_rng(5).integers(0, 256, (600, 800), dtype=np.uint8)),
          "in.raw": np.random.default_rng(6).bytes(FRAMES * WIDTH * HEIGHT)}


def names(folder):
    return sorted(path.name for path in folder.iterdir())


def is_temporary(name):
    return re.fullmatch(r"\.(out\.png|\d+\.png|all\.raw|all\.y4m)\.\d+-\d+\.tmp", name) is not None


def wait_for(work, process, ready):
    """Whether a name of that kind came into the folder before the run ended."""
    deadline = time.monotonic() + 60
    while process.poll() is None and time.monotonic() < deadline:
        if work.out.exists() and any(ready(name) for name in names(work.out)):
            return True
        time.sleep(0.0005)
    return False


class Work:
    """A conversion that takes a while to read, to convert and to write, and what it makes undisturbed."""

    undisturbed = {}  # of each kind: how long it takes, and what it makes

    def __init__(self, tool, kind):
        self.folder, self.out, self.kind = tool.folder, tool.folder / "out", kind
        self.arguments = ["convert", *KINDS[kind], "--from", "raw8", "--tile", "rggb"]
        self.input = KINDS[kind][0]
        self.output = next(argument for argument in KINDS[kind] if str(argument).startswith("out/"))
        self.prepare()
        if kind not in Work.undisturbed:
            Work.undisturbed[kind] = self.measured()
        self.seconds, self.whole = Work.undisturbed[kind]
        assert len(self.whole) == (FILES if kind == "many" else 1)

    def measured(self):
        begin = time.monotonic()
        assert self.through().returncode == 0
        return time.monotonic() - begin, self.outputs()

    def prepare(self, old=None):
        """The inputs, and a folder with nothing in it but old outputs."""
        for name, content in INPUTS.items():
            (self.folder / name).write_bytes(content)
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        for name in self.whole if old is not None else []:
            (self.out / name).write_bytes(old)

    def outputs(self):
        return {path.name: path.read_bytes() for path in self.out.iterdir()}

    def through(self, *before, arguments=None, **options):
        """Runs to its end, by a command that runs it."""
        return subprocess.run([*before, TOOL, *map(str, arguments or self.arguments)], cwd=self.folder,
                              capture_output=True, text=True, timeout=120, **options)

    def with_output(self, output):
        return [output if argument == self.output else argument for argument in self.arguments]

    def start(self, *more, ignored=()):
        def prepare():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            for number in ignored:
                signal.signal(number, signal.SIG_IGN)

        return subprocess.Popen([TOOL, *map(str, self.arguments), *more], cwd=self.folder, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True, preexec_fn=prepare)

    def started(self, moments, until=1.0, old=None):
        """A run for each of so many moments, started and left alone until then; each second one until it writes at
        least. Under an emulator they take long."""
        moments = moments if self.seconds < 0.5 else moments // 2
        for moment in range(moments):
            self.prepare(old)
            process = self.start()
            writes = moment % 2 == 1 and wait_for(self, process, is_temporary)
            time.sleep(self.seconds * until * moment / moments * (0.3 if writes else 1))
            yield process

    def check(self, succeeded, old=None):
        """Each file is whole, or as it was before a run that failed; none is missing after a success."""
        found = self.outputs()
        expected = self.whole if succeeded or old is not None else found
        assert found.keys() == expected.keys()
        for name, content in found.items():
            assert content == self.whole[name] or (not succeeded and content == old), name
        assert set(names(self.folder)) <= {*INPUTS, "out"}


def said(process):
    """The message, of one line, its exit code waited for. An emulator adds a line of its own where a core is dumped."""
    _, message = process.communicate(timeout=120)
    message = re.sub(r"^qemu: uncaught target signal .*\n", "", message, flags=re.MULTILINE)
    assert message == "" or (message.startswith("korvex2: ") and message.count("\n") == 1), message
    return message


@pytest.fixture(params=KINDS)
def work(tool, request):
    return Work(tool, request.param)


of_one_picture = pytest.mark.parametrize("work", ["one"], indirect=True)
of_many_files = pytest.mark.parametrize("work", ["many"], indirect=True)
into_one_file = pytest.mark.parametrize("work", ["raw", "y4m"], indirect=True)


# --- Signals. ---------------------------------------------------------------------------------------

def stopped_by(number, kind):
    """What may be said. Of many frames an interrupt lets those end that are begun."""
    at_once = f"korvex2: stopped by {number.name}; no unfinished file is left\n"
    if number != signal.SIGINT or kind == "one":
        return re.escape(at_once)
    in_peace = (r"; the \d+ frames of 30 that were begun are finished; the same command with --resume goes on"
                if kind == "many" else
                rf" after \d+ frames of 120; out/all.{kind} is not written, .*--resume can go on")
    return re.escape(at_once) + f"|korvex2: stopped by SIGINT{in_peace}\n"


@pytest.mark.parametrize("number", STOPPING)
def test_a_signal_at_any_moment_leaves_whole_files_or_none(work, number):
    stopped = told = 0
    for process in work.started(MOMENTS):
        process.send_signal(number)
        message = said(process)
        if process.returncode != 0:
            stopped += 1
            assert process.returncode == -number  # a shell calls it 128 + number
            assert message == "" or re.fullmatch(stopped_by(number, work.kind), message), message
            told += message != ""  # the first ones come before main()
        work.check(process.returncode == 0)
    assert 0 < told <= stopped


def test_a_signal_leaves_the_old_output(work):
    for moment, process in enumerate(work.started(MOMENTS, old=b"old")):
        process.send_signal(signal.SIGTERM if moment % 2 else signal.SIGINT)
        said(process)
        work.check(process.returncode == 0, old=b"old")


def test_two_signals_at_once(work):
    for process in work.started(5):
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=120)
        assert process.returncode in (0, -signal.SIGINT, -signal.SIGTERM)
        work.check(process.returncode == 0)


def test_two_interrupts(work):
    for process in work.started(5):
        process.send_signal(signal.SIGINT)
        time.sleep(work.seconds / 50)
        process.send_signal(signal.SIGINT)
        said(process)
        assert process.returncode in (0, -signal.SIGINT)
        work.check(process.returncode == 0)


def test_ignored_signals_stay_ignored(work):
    work.prepare()
    process = work.start(ignored=[signal.SIGHUP, signal.SIGINT])  # as nohup does, and a shell in the background
    for _ in range(20):
        time.sleep(work.seconds / 40)
        process.send_signal(signal.SIGHUP)
        process.send_signal(signal.SIGINT)
    assert said(process) == "" and process.returncode == 0
    work.check(True)


def test_a_killed_run_leaves_no_part_under_the_final_name(work):
    for process in work.started(MOMENTS):
        process.kill()
        process.communicate(timeout=120)
        for path in work.out.iterdir():
            if path.name not in work.whole:
                assert is_temporary(path.name)
                path.unlink()
        work.check(process.returncode == 0)


@of_many_files
def test_resume_makes_what_a_killed_run_did_not(work):
    work.prepare()
    process = work.start()
    time.sleep(work.seconds / 2)
    process.kill()
    process.communicate(timeout=120)
    assert work.through(arguments=[*work.arguments, "--resume"]).returncode == 0
    found = work.outputs()
    assert {name: content for name, content in found.items() if not is_temporary(name)} == work.whole


@of_one_picture
def test_what_a_killed_run_left_is_in_nobodys_way(work):
    """Even where every process has the same number, as the first one in a container has."""
    work.prepare()
    process = subprocess.Popen(
        ["sh", "-c", 'touch "out/.out.png.$$-0.tmp" "out/.out.png.$$-1.tmp"; exec "$@"', "sh", TOOL, *work.arguments],
        cwd=work.folder, stdout=subprocess.DEVNULL)
    assert process.wait(120) == 0
    assert (work.out / "out.png").read_bytes() == work.whole["out.png"]


# --- Disks. -----------------------------------------------------------------------------------------

def limit_files(ignored, size):
    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN if ignored else signal.SIG_DFL)
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    return limit


def check_cannot_write(work, result, reason):
    """Of many files each is a matter of its own; one file is said once, however many frames it takes."""
    assert result.returncode == 1
    lines = result.stderr.splitlines()
    if work.kind == "many":
        failed = re.fullmatch(r"korvex2: (\d+) of 30 frames failed", lines.pop())
        assert failed and len(lines) == int(failed[1]) == FILES - len(work.outputs()) > 0
        output = r"frame \d+ of in.raw: cannot write .*out/\d+\.png"
    else:
        assert len(lines) == 1 and work.outputs() == {}
        output = f"cannot write .*{work.output}"
    for line in lines:
        assert re.fullmatch(f"korvex2: {output}: {reason}", line), line
    work.check(False)


@pytest.mark.parametrize("ignored", [True, False])
@pytest.mark.parametrize("size", [20000, 200000])  # within one frame, and after some
def test_a_limit_on_files(work, ignored, size):
    work.prepare()
    result = work.through(preexec_fn=limit_files(ignored, size))
    if work.kind == "many" and size == 200000:
        assert result.returncode == 0
        work.check(True)
    else:
        check_cannot_write(work, result, "File too large")


@pytest.mark.parametrize("output", ["out.ppm", "out.raw", "out.tif", "out.npy"])
@of_one_picture
def test_a_limit_on_files_of_other_kinds(work, output):
    work.prepare()
    result = work.through(arguments=work.with_output(f"out/{output}"), preexec_fn=limit_files(True, 100000))
    assert (result.returncode, result.stderr) == (1, f"korvex2: cannot write out/{output}: File too large\n")
    work.check(False)
    assert work.outputs() == {}


def in_a_small_disk(work, options, old=None):
    """Runs in a mount namespace of its own, in which `out` is a file system with these options; what it holds in the
    end is in the real folder afterwards."""
    work.prepare(old)
    work.out.rename(work.folder / "before")
    for name in ("out", "after"):
        (work.folder / name).mkdir()
    result = work.through(
        "unshare", "--mount", "sh", "-c",
        f'mount -t tmpfs -o {options} small out || exit 99; {"" if old is None else "cp before/* out;"} "$@"; '
        'code=$?; cp -a out/. after; exit $code', "sh")
    shutil.rmtree(work.folder / "before")
    work.out.rmdir()
    (work.folder / "after").rename(work.out)
    if result.returncode in (1, 99) and "korvex2" not in result.stderr:
        pytest.skip("SKIPPED: may not mount a file system: " + result.stderr.strip())
    return result


@pytest.mark.parametrize("size", ["64k", "512k"])
def test_a_full_disk_holds_no_part_of_a_file(work, size):
    check_cannot_write(work, in_a_small_disk(work, f"size={size}"), "No space left on device")


def test_a_full_disk_leaves_the_old_output(work):
    result = in_a_small_disk(work, "size=256k", old=b"old")
    assert result.returncode == 1 and "No space left" in result.stderr
    work.check(False, old=b"old")
    assert b"old" in work.outputs().values()


def test_a_read_only_folder(work):
    check_cannot_write(work, in_a_small_disk(work, "ro"), "Read-only file system")
    assert work.outputs() == {}


def test_a_folder_without_inodes(work):
    check_cannot_write(work, in_a_small_disk(work, "nr_inodes=1"), "No space left on device")
    assert work.outputs() == {}


@into_one_file
def test_a_full_standard_output_ends_the_batch(work):
    arguments = work.with_output(f"{work.kind}:-")
    result = work.through("sh", "-c", '"$@" >/dev/full', "sh", arguments=arguments)
    assert result.returncode == 1
    assert result.stderr == "korvex2: cannot write standard output: No space left on device\n"


# --- Folders and inputs that change under the run. ----------------------------------------------------

FOLDER_GONE = ("the folder {} was removed or replaced meanwhile, and the frames in it went along; the same command "
               "with --resume makes what is missing")
REMOVED = "cannot write {}: it was removed before it was complete"


def tells_of_the_removal(work, message):
    """Of many files those that were complete went along too."""
    reasons = [REMOVED.format(work.output)]
    if work.kind == "many":
        among = REMOVED.format(r"out/\d+.png") + "; others of the folder may be gone too, which .*--resume makes"
        reasons = [FOLDER_GONE.format("out"), among]
    return any(re.fullmatch(f"korvex2: {reason}\n", message) for reason in reasons)


@pytest.mark.parametrize("replaced", [False, True])
@pytest.mark.parametrize("at_one_blow", [False, True])
def test_an_output_folder_that_is_removed_meanwhile(work, at_one_blow, replaced):
    removed = 0
    for _ in range(3):
        work.prepare()
        process = work.start()
        seen = wait_for(work, process, is_temporary if work.kind != "many" else work.whole.__contains__)
        if seen and at_one_blow:
            work.out.rename(work.folder / "away")
        elif seen:
            shutil.rmtree(work.out, ignore_errors=True)  # which a run that writes on may hinder
        gone = not work.out.exists() and process.poll() is None
        if gone and replaced:
            work.out.mkdir()
        message = said(process)
        shutil.rmtree(work.folder / "away", ignore_errors=True)
        if gone:
            removed += 1
            assert process.returncode == 1
            assert tells_of_the_removal(work, message), message
            assert work.out.exists() == replaced
            assert not replaced or work.outputs().items() <= work.whole.items()
    assert removed > 0


@of_many_files
@pytest.mark.parametrize("jobs", [1, 8])
def test_a_folder_that_is_removed_after_its_last_frame(work, jobs):
    work.prepare()
    os.truncate(work.folder / work.input, 5 * WIDTH * HEIGHT)
    (work.folder / "later.raw").write_bytes(INPUTS["in.raw"])
    work.arguments = [*work.with_output("later.raw"), "out/{name}/{frame}.png"]
    work.arguments[work.arguments.index(FILES)] = "all"
    process = work.start("--jobs", str(jobs))
    while not (work.out / "later").exists() and process.poll() is None:
        time.sleep(0.0005)
    (work.out / "in").rename(work.folder / "away")
    assert said(process) == f"korvex2: {FOLDER_GONE.format('out/in')}\n" and process.returncode == 1
    assert names(work.out) == ["later"]


def test_an_input_that_was_truncated_before(work):
    work.prepare()
    os.truncate(work.folder / work.input, 1000)
    assert check_tells_of_the_truncation(work, work.start()) == 1


def test_an_input_that_is_truncated_at_any_moment(work):
    for process in work.started(MOMENTS, until=0.5):
        os.truncate(work.folder / work.input, 1000)
        assert check_tells_of_the_truncation(work, process) in (0, 1)


def check_tells_of_the_truncation(work, process):
    """If it failed; the exit code."""
    _, message = process.communicate(timeout=120)
    work.check(process.returncode == 0)
    lines = message.splitlines()
    if process.returncode == 0:
        return 0
    if work.kind != "one":
        last = lines.pop()
        assert re.match(r"korvex2: \d+ of \d+ frames failed", last), last
        assert work.kind == "many" or work.outputs() == {}
    assert lines
    for line in lines:
        assert work.input in line and re.search("became shorter|truncated|has 1000 bytes|do not fit", line), line
    return process.returncode


def test_an_input_that_is_removed_meanwhile(work):
    """An open file is read to its end. Of a file of many frames each is opened by itself."""
    for process in work.started(4):
        (work.folder / work.input).unlink()
        _, message = process.communicate(timeout=120)
        work.check(process.returncode == 0)
        assert (process.returncode, message == "") in [(0, True), (1, False)]
        assert f"cannot read {work.input}: No such file" in message or process.returncode == 0
