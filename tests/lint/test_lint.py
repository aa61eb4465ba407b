"""./run lint: which files count as changed, which sources stand for them, and that the rules of names refuse."""

import importlib.util
import shutil
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
SPECIFICATION = importlib.util.spec_from_file_location("tidy", ROOT / ".ci/tidy.py")
tidy = importlib.util.module_from_spec(SPECIFICATION)
SPECIFICATION.loader.exec_module(tidy)


class Repository:
    def __init__(self, folder):
        self.folder = folder
        self.git("init", "-q", "-b", "main")

    def git(self, *arguments):
        subprocess.run(["git", "-C", self.folder, "-c", "user.name=n", "-c", "user.email=e", *arguments], check=True,
                       capture_output=True)

    def commit(self, *names):
        for name in names:
            with (self.folder / name).open("a") as file:
                file.write("x\n")
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "m")


@pytest.fixture
def repository(tmp_path):
    if not shutil.which("git"):
        pytest.skip("git is missing: what a change touches is not tested")
    return Repository(tmp_path)


def differs(repository):
    since, reason = tidy.base(repository.folder)
    return tidy.changed(since, repository.folder), reason


def test_a_branch_is_compared_with_where_it_left_main(repository):
    repository.commit("old.cpp")
    repository.git("checkout", "-q", "-b", "work")
    repository.commit("new.cpp")
    (repository.folder / "unknown.cpp").write_text("")
    files, reason = differs(repository)
    assert files == ["new.cpp", "unknown.cpp"] and "left main" in reason


def test_main_is_compared_with_the_last_release(repository):
    repository.commit("old.cpp")
    repository.git("tag", "1.0.0")
    repository.commit("new.cpp", "gone.cpp")
    (repository.folder / "gone.cpp").unlink()
    files, reason = differs(repository)
    assert files == ["new.cpp"] and "1.0.0" in reason


def test_a_release_is_compared_with_the_one_before(repository):
    repository.commit("old.cpp")
    repository.git("tag", "1.0.0")
    repository.commit("new.cpp")
    repository.git("tag", "1.1.0")
    assert differs(repository)[0] == ["new.cpp"]


def test_without_a_release_some_commits_count(repository):
    for number in range(tidy.FEW_COMMITS + 1):
        repository.commit(f"{number}.cpp")
    files, reason = differs(repository)
    assert len(files) == tidy.FEW_COMMITS and "0.cpp" not in files and "commits ago" in reason


def test_never_is_nothing_compared_in_silence(repository):
    repository.commit("only.cpp")
    files, reason = differs(repository)
    assert files == ["only.cpp"] and "nothing" in reason


GRAPH = {"a.cpp": {"a.cpp", "a.h", "all.h"}, "b.cpp": {"b.cpp", "all.h", "rows.def"},
         "c.cpp": {"c.cpp", "all.h", "a.h", "c-inl.h", "b.h"}}


@pytest.mark.parametrize("files, sources, orphans", [
    (["a.cpp"], ["a.cpp"], []),
    (["a.h"], ["a.cpp"], []),
    (["b.h"], ["c.cpp"], []),
    (["c-inl.h", "all.h"], ["c.cpp"], []),
    (["rows.def"], ["b.cpp"], []),
    (["a.cpp", "all.h"], ["a.cpp"], []),
    (["elsewhere.cpp", "nobody.h", "README.md"], [], ["elsewhere.cpp", "nobody.h"])])
def test_a_header_is_looked_at_with_a_source_that_includes_it(files, sources, orphans):
    assert tidy.units(files, GRAPH) == (sources, orphans)


GOOD = """namespace Korvex2 {
constexpr int kMost = 4;
class Row {
 public:
  int Count() const { return m_count; }

 private:
  int m_count = kMost;
};
int CountOf(const Row& row) {
  return row.Count();
}
}  // namespace Korvex2
"""


@pytest.mark.parametrize("good, bad", [
    ("Korvex2", "korvex2"), ("kMost", "most"), ("Row", "row_type"), ("Count()", "count()"), ("m_count", "count_"),
    ("CountOf", "countOf")])
def test_names_are_written_in_one_way(tmp_path, good, bad):
    if not shutil.which("clang-tidy-19"):
        pytest.skip("clang-tidy-19 is missing: the rules of names are not tested")

    def answer(text):
        source = tmp_path / "source.cpp"
        source.write_text(text)
        return subprocess.run(
            ["clang-tidy-19", "--quiet", "--checks=-*,readability-identifier-naming", "--warnings-as-errors=*",
             f"--config-file={ROOT / '.clang-tidy'}", source, "--", "-std=c++20"], capture_output=True, text=True)

    assert answer(GOOD).returncode == 0, answer(GOOD).stdout
    refused = answer(GOOD.replace(good, bad))
    assert refused.returncode != 0 and "readability-identifier-naming" in refused.stdout
