"""bench/compare.py: which rows it names, and its exit codes."""

import pytest

from documents import contest, row, run, write

PLACE = "rgb8_to_bgr/1920x1080/hot"


def compare(tmp_path, before, after, *options):
    return run("compare.py", *options, write(tmp_path, "before.json", before), write(tmp_path, "after.json", after))


@pytest.mark.parametrize("after, code, named", [
    (0.100, 0, None), (0.109, 0, None), (0.092, 0, None), (0.112, 1, "slower  +12.0%"), (0.080, 0, "faster  -20.0%")])
def test_a_row_that_moved_by_more_than_a_tenth_is_named(tmp_path, after, code, named):
    result = compare(tmp_path, contest(PLACE, ours=0.1), contest(PLACE, ours=after))
    assert result.returncode == code, result.stderr
    if named is None:
        assert PLACE not in result.stdout
    else:
        assert f"{named}  {PLACE}/ours" in result.stdout
    assert "1 rows compared" in result.stdout


def test_the_threshold_is_an_option(tmp_path):
    before, after = contest(PLACE, ours=0.1), contest(PLACE, ours=0.12)
    assert compare(tmp_path, before, after, "--threshold", 25).returncode == 0
    assert compare(tmp_path, before, after, "--threshold", 19).returncode == 1


def test_the_worst_row_comes_first(tmp_path):
    before = contest("a_to_b/1x1/hot", ours=1, fresh=1) + contest("c_to_d/1x1/hot", ours=1)
    after = contest("a_to_b/1x1/hot", ours=1.5, fresh=0.5) + contest("c_to_d/1x1/hot", ours=3)
    lines = compare(tmp_path, before, after).stdout.splitlines()
    assert [line.split()[-1] for line in lines[:3]] == ["c_to_d/1x1/hot/ours", "a_to_b/1x1/hot/ours",
                                                        "a_to_b/1x1/hot/fresh"]
    assert lines[3] == "3 rows compared: 2 slower, 1 faster by more than 10 %"


def test_other_libraries_do_not_count_unless_asked(tmp_path):
    before = contest(PLACE, ours=0.1, memcpy=0.1, libyuv=0.1, literal=1)
    after = contest(PLACE, ours=0.1, memcpy=0.1, libyuv=0.2, literal=2)
    assert compare(tmp_path, before, after).returncode == 0
    result = compare(tmp_path, before, after, "--all")
    assert result.returncode == 1
    assert "/libyuv" in result.stdout and "/literal" in result.stdout and "4 rows compared" in result.stdout


def test_per_memcpy_forgives_a_slower_machine(tmp_path):
    before = contest(PLACE, ours=0.2, memcpy=0.1)
    after = contest(PLACE, ours=0.4, memcpy=0.2)
    assert compare(tmp_path, before, after).returncode == 1
    assert compare(tmp_path, before, after, "--per-memcpy").returncode == 0


def test_rows_of_one_file_are_counted_and_failures_left_out(tmp_path):
    broken = row("x_to_y/1x1/hot/ours", 1, error_occurred=True, error_message="our bytes differ")
    result = compare(tmp_path, contest(PLACE, ours=0.1) + [broken],
                     contest(PLACE, ours=0.1) + contest("x_to_y/1x1/hot", ours=9))
    assert result.returncode == 0
    assert "1 rows compared" in result.stdout and "1 in one file only" in result.stdout


def test_any_benchmark_compares_and_repetitions_by_their_median(tmp_path):
    before = [row("hq_linear/RAW8_BGR8", value) for value in (1, 2, 100)]
    after = [row("hq_linear/RAW8_BGR8", value) for value in (1, 5, 6)]
    after.append(row("hq_linear/RAW8_BGR8", 1, run_type="aggregate"))
    result = compare(tmp_path, before, after)
    assert result.returncode == 1 and "+150.0%" in result.stdout


def test_units_are_understood(tmp_path):
    before, after = contest(PLACE, ours=0.1), contest(PLACE, ours=0.1)
    after[0].update(real_time=0.1, time_unit="ms")
    assert compare(tmp_path, before, after).returncode == 0


def test_files_that_do_not_compare(tmp_path):
    result = compare(tmp_path, contest(PLACE, ours=1), contest("other/1x1/hot", ours=1))
    assert result.returncode == 2 and "no row in common" in result.stderr
    result = run("compare.py", tmp_path / "missing.json", tmp_path / "missing.json")
    assert result.returncode == 2 and "missing.json" in result.stderr
    for text in ("{", "[]", "{}"):
        (tmp_path / "bad.json").write_text(text)
        result = run("compare.py", tmp_path / "bad.json", tmp_path / "bad.json")
        assert result.returncode == 2 and "bad.json" in result.stderr
