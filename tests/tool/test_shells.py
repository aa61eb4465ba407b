"""completions and man: what the tool tells shells and man about itself."""

import re
import shutil
import subprocess

import pytest

FORMATS = ["mono8", "mono12", "mono16", "rgb8", "rgbu", "rgb16", "bgr", "bgru", "bgr16", "bgru16", "yuv411", "yuv422",
           "yuv444", "raw8", "raw12", "raw16"]
TILES = ["rggb", "grbg", "gbrg", "bggr", "none"]


def need(program):
    if shutil.which(program) is None:
        pytest.skip(f"SKIPPED: there is no {program}")


def commands(tool):
    listed = tool.succeeds("--help").split("Subcommands:\n")[1].split("\n\n")[0].split("Examples:")[0]
    names = re.findall(r"^  (\S+)", listed, re.M)
    assert {"convert", "guess", "diff", "completions", "man"} <= set(names)
    return names


def options(tool, command):
    """The long options that its help names."""
    return set(re.findall(r"^  (?:-\w,)?(--[\w-]+)", tool.succeeds(command, "--help"), re.M))


def in_bash(tool, line):
    words = line.split(" ")
    script = tool.succeeds("completions", "bash") + (
        f"COMP_WORDS=({' '.join(repr(word) for word in words)}); COMP_CWORD={len(words) - 1}; _korvex2; "
        'printf "%s\\n" "${COMPREPLY[@]}"')
    result = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True, cwd=tool.folder,
                            timeout=60)
    assert result.stderr == ""
    return result.stdout.split()


def in_fish(tool, line):
    script = tool.succeeds("completions", "fish") + f"complete -C '{line}'\n"
    result = subprocess.run(["fish", "--no-config"], input=script, capture_output=True, text=True, cwd=tool.folder,
                            timeout=60, env={"HOME": str(tool.folder), "PATH": "/usr/bin:/bin"})
    assert result.stderr == ""
    return [offer.split("\t")[0] for offer in result.stdout.splitlines()]


def in_zsh(tool, line):
    """What the completion offers is caught where it is handed to zsh."""
    words = line.split(" ")
    script = tool.succeeds("completions", "zsh").replace("#compdef korvex2", "", 1)
    quoted = " ".join(f"'{word}'" for word in words)
    script = ("compdef() { }\n_describe() { print -l -- ${${(P)2}%%:*} }\n_arguments() { print -l -- \"$@\" }\n"
              "compadd() { shift; print -l -- $@ }\n" + script
              + f"\nwords=({quoted}); CURRENT={len(words)}; _korvex2\n")
    result = subprocess.run(["zsh", "-f", "-c", script], capture_output=True, text=True, cwd=tool.folder, timeout=60)
    assert result.stderr == ""
    return result.stdout.splitlines()


@pytest.mark.parametrize("shell, complete", [("bash", in_bash), ("fish", in_fish)])
def test_commands_options_and_names_complete(tool, shell, complete):
    need(shell)
    names = commands(tool)
    assert set(complete(tool, "korvex2 ")) >= set(names)
    assert complete(tool, "korvex2 demo") == ["demosaic-compare"]
    assert set(complete(tool, "korvex2 convert --to mono")) == {"mono8", "mono12", "mono16"}
    assert set(complete(tool, "korvex2 convert --from ")) == set(FORMATS)
    assert set(complete(tool, "korvex2 guess x.bin --format ra")) == {"raw8", "raw12", "raw16"}
    assert set(complete(tool, "korvex2 mosaic --tile ")) == set(TILES)
    assert "hq_linear" in complete(tool, "korvex2 convert a b --method h")
    assert set(complete(tool, "korvex2 completions ")) >= {"bash", "zsh", "fish"}
    for command in names:
        offered = set(complete(tool, f"korvex2 {command} --"))
        assert {name for name in offered if name.startswith("--")} >= options(tool, command), command


def test_files_complete_in_fish(tool):
    need("fish")
    (tool.folder / "frame.raw").write_bytes(b"")
    assert in_fish(tool, "korvex2 convert fra") == ["frame.raw"]


def test_zsh(tool):
    need("zsh")
    names = commands(tool)
    assert in_zsh(tool, "korvex2 ") == names
    assert "--version" in in_zsh(tool, "korvex2 --")
    for command in names:
        offered = in_zsh(tool, f"korvex2 --quiet {command} ")
        for name in options(tool, command):
            assert any(spec.startswith(name + "[") for spec in offered), (command, name)
    specs = in_zsh(tool, "korvex2 convert ")
    assert any(spec.startswith("--to[") and spec.endswith(f":({' '.join(FORMATS)})") for spec in specs)
    assert [spec for spec in specs if spec.startswith(":")][0].endswith(":_files")
    script = tool.succeeds("completions", "zsh")
    loads = "autoload -Uz compinit; compinit -u -d dump; eval \"$1\"; print $_comps[korvex2]"
    check = subprocess.run(["zsh", "-f", "-c", loads, "zsh", script], capture_output=True, text=True,
                           cwd=tool.folder, timeout=60)
    assert check.stdout == "_korvex2\n", check.stderr


def test_an_unknown_shell(tool):
    message = tool.fails(2, "completions", "tcsh")
    assert "bash" in message and "korvex2 completions --help" in message
    tool.fails(2, "completions")


def rendered(page, program):
    need(program[0])
    result = subprocess.run(program, input=page, capture_output=True, text=True, timeout=60,
                            env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "MANWIDTH": "100"})
    assert result.returncode == 0 and result.stderr == "", result.stderr
    return result.stdout


@pytest.mark.parametrize("program", [["groff", "-man", "-Tutf8", "-ww", "-P-cbou"], ["mandoc", "-Tutf8", "-Wwarning"]])
def test_the_man_page_renders_without_a_warning(tool, program):
    page = tool.succeeds("man")
    text = re.sub(".\b", "", rendered(page, program))
    for command in commands(tool):
        assert f"korvex2 {command}" in text
        for name in options(tool, command) - {"--help"}:
            assert name in text
    assert "korvex2 guess mystery.bin --sheet sheet.png" in text


def test_the_man_page_shows_examples_as_they_are(tool):
    text = re.sub(".\b", "", rendered(tool.succeeds("man"), ["mandoc", "-Tascii", "-O", "width=120"]))
    for line in tool.succeeds("diff", "--help").split("Examples:")[1].splitlines():
        assert line.strip() in text
