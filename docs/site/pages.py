"""The Markdown pages of the repository: which there are, their headings, links and blocks of code."""

import re
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FENCE = re.compile(r"^(```+|~~~+)\s*([\w+-]*)\s*$")
HEADING = re.compile(r"^(#{1,6})\s+(.*?)\s*#*$")
LINK = re.compile(r"(?<![\\`])(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^()\s]+)\)")
CODE_SPAN = re.compile(r"(`+)(?:(?!\1).)+?\1")


def pages():
    """Every page, relative to the root of the repository."""
    found = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("*/README.md"), *ROOT.glob("tools/*/README.md")]
    hidden = ("build", "out")
    return sorted({page.relative_to(ROOT) for page in found if page.relative_to(ROOT).parts[0] not in hidden})


@dataclass
class Line:
    number: int  # from 1
    text: str
    code: bool  # inside a block of code, its fences included


def lines(text):
    fence = None
    for number, line in enumerate(text.splitlines(), 1):
        match = FENCE.match(line)
        if fence is None and match:
            fence = match.group(1)
            yield Line(number, line, True)
        elif fence is not None:
            yield Line(number, line, True)
            if line.strip() == fence:
                fence = None
        else:
            yield Line(number, line, False)


def slug(heading):
    """The anchor that forges make of a heading."""
    text = LINK.sub(r"\2", heading).replace("`", "").strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def headings(text):
    """Level, text and anchor of each heading."""
    seen = {}
    for line in lines(text):
        match = HEADING.match(line.text)
        if match and not line.code:
            anchor = slug(match.group(2))
            seen[anchor] = seen.get(anchor, -1) + 1
            yield len(match.group(1)), match.group(2), anchor + (f"-{seen[anchor]}" if seen[anchor] else "")


@dataclass
class Link:
    line: int
    path: str  # empty within the page
    anchor: str


def is_relative(target):
    return not re.match(r"[a-z]+:", target)


def links(text):
    """The links and pictures of a page that lead into the repository."""
    for line in lines(text):
        if line.code:
            continue
        for match in LINK.finditer(CODE_SPAN.sub(lambda span: "`" + "x" * (len(span.group()) - 2) + "`", line.text)):
            if is_relative(match.group(3)):
                path, _, anchor = match.group(3).partition("#")
                yield Link(line.number, path, anchor)


@dataclass
class Block:
    line: int  # of the first line of code
    language: str
    code: str
    after: int  # lines between this block and the one before


def blocks(text):
    """The fenced blocks of code."""
    opening, body, end = None, [], 0
    for line in lines(text):
        if line.code and opening is None:
            opening, body = line, []
        elif line.code and re.match(r"^(```+|~~~+)$", line.text.strip()):
            yield Block(opening.number + 1, FENCE.match(opening.text).group(2), "".join(f"{x}\n" for x in body),
                        opening.number - end - 1)
            opening, end = None, line.number
        elif line.code:
            body.append(line.text)
