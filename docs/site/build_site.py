#!/usr/bin/env python3
"""Builds the site: draws formats and routes from the library's tables, makes the pictures, hands pages and public
headers to Doxygen, and looks for dead links in what comes out. Fails on any warning."""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

import format_drawings
import route_graphs
from pages import CODE_SPAN, HEADING, LINK, ROOT, headings, is_relative, lines, links, pages

ENUMERATIONS = Path("include/Korvex2Defs.h")  # whose formats come from Formats.def
HEADERS = [*sorted(path.relative_to(ROOT) for path in (ROOT / "include").glob("*.h")),
           "src/ImageConverterARMStub.h", "src/Singleton.h"]
VERSION_HEADER = Path("include/Korvex2Version.h.in")  # CMake fills the numbers in
CONTENTS = Path("docs/README.md")  # the main page
DRAWING = re.compile(r"^<!-- picture: (\S+) (.*) -->$")
# What the demosaic methods make of the chart: a detail each, at (x, y, width, height).
DETAILS = {"demosaic-star.png": "636,488,64,64", "demosaic-colours.png": "122,107,64,64"}


# --- Pictures ----------------------------------------------------------------------------------------------------

def draw(tool, folder):
    """All pictures of the pages; the photograph only where KORVEX2_DATA has one."""
    def told(command):
        return json.loads(subprocess.run([tool, command, "--json"], capture_output=True, check=True).stdout)

    def run(*arguments):
        subprocess.run([tool, "--quiet", *arguments], check=True, stdout=subprocess.DEVNULL)

    folder.mkdir(parents=True, exist_ok=True)
    for name, drawing in {**format_drawings.drawings(told("formats")), **route_graphs.drawings(told("routes"))}.items():
        (folder / name).write_text(drawing)
    chart = folder / "chart.png"
    run("chart", chart)
    for name, detail in DETAILS.items():
        run("demosaic-compare", chart, "--crop", detail, "--out", folder / name)
    photograph = Path(os.environ.get("KORVEX2_DATA", ""), "kodak", "kodim19.png")
    if photograph.is_file():
        run("demosaic-compare", photograph, "--out", folder / "demosaic-photograph.png")
    else:
        print("The page about demosaic methods gets no photograph: KORVEX2_DATA has no kodak/kodim19.png")
    for picture in (ROOT / "docs").glob("*.svg"):
        shutil.copy(picture, folder)


# --- Pages -------------------------------------------------------------------------------------------------------

def label(page, anchor=""):
    """What Doxygen knows a page or a heading by."""
    name = "page-" + re.sub(r"\W", "-", str(page.with_suffix(""))).lower()
    return f"{name}-{anchor}" if anchor else name


def title_of(page, anchor=""):
    return next(text for level, text, own in headings((ROOT / page).read_text())
                if own == anchor or (not anchor and level == 1))


def in_order():
    """The pages as the table of contents has them, which is how the site lists them."""
    listed = [Path(os.path.normpath(CONTENTS.parent / link.path)) for link in links((ROOT / CONTENTS).read_text())]
    return [CONTENTS, *dict.fromkeys(page for page in listed if page in pages())]


def example_page(path):
    """The HTML page that Doxygen makes of an example."""
    return str(path.relative_to("examples")).replace(".", "_8").replace("/", "_2") + "-example.html"


def link_on_site(page, picture, text, target):
    """A link of a page as Doxygen understands it. What is not on the site keeps its name and loses the link."""
    if not is_relative(target):
        return f"{picture}[{text}]({target})"
    path, _, anchor = target.partition("#")
    place = Path(os.path.normpath(page.parent / path)) if path else page
    if picture:
        return f"![{text}]({place.name})"
    if place in pages():
        title = title_of(place, anchor) if text in (place.name, path) else text
        return f"[{title}]({f'@ref {label(place, anchor)}' if place != CONTENTS or anchor else 'index.html'})"
    if place in examples():
        return f"[{text}]({example_page(place)})"
    return text


def with_site_links(page, text):
    code = [span.span() for span in CODE_SPAN.finditer(text)]

    def replaced(match):
        in_code = any(begin < match.start() and match.end() < end for begin, end in code)
        return match.group() if in_code else link_on_site(page, *match.groups())

    return re.sub(r"(?<![\w`%/.:\[(-])Korvex2(?![\w`/.:\])-])", "%Korvex2", LINK.sub(replaced, text))


def page_for_doxygen(page, pictures):
    """The page with the labels, links and pictures of the site, line by line, so that warnings name the right one."""
    text = (ROOT / page).read_text()
    anchors = headings(text)
    result = []
    for line in lines(text):
        drawing, heading = DRAWING.match(line.text), HEADING.match(line.text)
        if line.code:
            result.append(line.text)
        elif drawing:
            there = (pictures / drawing.group(1)).is_file()
            result.append(f'@image html {drawing.group(1)} "{drawing.group(2)}"' if there else "")
        else:
            linked = with_site_links(page, line.text)
            if heading:
                level, _, anchor = next(anchors)
                name = "mainpage" if page == CONTENTS and level == 1 else \
                    label(page) if level == 1 else label(page, anchor)
                linked += f" {{#{name}}}"
            result.append(linked)
    return "\n".join(result) + "\n"


def examples():
    return sorted(path.relative_to(ROOT) for path in (ROOT / "examples").rglob("*")
                  if path.is_file() and path.suffix in (".cpp", ".py", ".sh", ".txt"))


def example_list():
    """Makes a page of each example."""
    return "".join(f"/** @example {path.relative_to('examples')} */\n" for path in examples())


# --- The site ----------------------------------------------------------------------------------------------------

def with_formats(header):
    """The enumerations with a line for each row of Formats.def, since Doxygen sees no comments in macros."""
    rows = re.findall(r'^KORVEX2_(?:COPIED_)?FORMAT\((\w+), *(\w+),.*"([^"]*)", *"[^"]*"\)$',
                      (ROOT / "include/Formats.def").read_text(), re.M)
    lines = "".join(f"  PIXEL_FORMAT_{enumerator} = {value},  ///< {note}\n" for enumerator, value, note in rows)
    header, count = re.subn(r"#define KORVEX2_FORMAT\(enumerator.*?#include \"Formats.def\"\n", lambda _: lines, header,
                            flags=re.S)
    assert rows and count == 1
    return re.sub(r" = 1\n#define KORVEX2_FORMAT.*?#include \"Formats.def\"\n", f" = {len(rows) + 1}\n", header,
                  flags=re.S)


def run_doxygen(output, version):
    staged = output / "pages"
    numbers = dict(zip(("MAJOR", "MINOR", "PATCH"), version.split(".")))
    version_header = output / "headers" / VERSION_HEADER.stem
    version_header.parent.mkdir(exist_ok=True)
    version_header.write_text(re.sub(r"@PROJECT_VERSION_(\w+)@", lambda match: numbers[match.group(1)],
                                     (ROOT / VERSION_HEADER).read_text()))
    staged_enumeration = output / "headers" / ENUMERATIONS.name
    staged_enumeration.write_text(with_formats((ROOT / ENUMERATIONS).read_text()))
    values = {"SOURCE": ROOT, "OUTPUT": output, "PAGES": staged, "PICTURES": output / "pictures",
              "INPUT": " ".join(map(str, [*(staged / page for page in in_order()), staged / "examples.dox"])),
              "VERSION": version,
              "HEADERS": " ".join(map(str, [*(ROOT / header for header in HEADERS if header != ENUMERATIONS),
                                            version_header, staged_enumeration]))}
    template = (ROOT / "docs/site/Doxyfile.in").read_text()
    (output / "Doxyfile").write_text(re.sub(r"@(\w+)@", lambda match: str(values[match.group(1)]), template))
    result = subprocess.run(["doxygen", "Doxyfile"], cwd=output, capture_output=True, text=True)
    complaints = result.stderr.replace(f"{output}/pages/", "").replace(f"{ROOT}/", "")
    return [line for line in complaints.splitlines() if line] or [f"doxygen answered {result.returncode}"] \
        if result.returncode or result.stderr else []


def undocumented(xml):
    """Public and protected declarations without a word, which Doxygen does not miss: values of enumerations."""
    for file in sorted(xml.glob("*.xml")):
        for element in ElementTree.parse(file).iter():
            if element.tag not in ("memberdef", "enumvalue") or element.get("prot") == "private":
                continue
            words = "".join("".join(part.itertext()) for kind in ("briefdescription", "detaileddescription")
                            for part in element.findall(kind))
            if not words.strip():
                yield f"{file.stem}: {element.findtext('name')} is not documented"


class Html(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.targets, self.anchors = [], set()
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src") or (tag, name) == ("object", "data"):
                self.targets.append(value or "")


def dead_links(html):
    """Links and pictures of the site that lead nowhere."""
    parsed = {path.name: Html(path) for path in html.glob("*.html")}
    for name, page in parsed.items():
        for target in page.targets:
            file, _, anchor = unquote(target).partition("#")
            if not is_relative(target) or anchor == "nested-classes":  # Doxygen's own slip about private classes
                continue
            if file and not (html / file).is_file():
                yield f"{name}: there is no {target}"
            elif anchor and (file or name) in parsed and anchor not in parsed[file or name].anchors:
                yield f"{name}: {file or name} has no #{anchor}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", type=Path, required=True, help="the program korvex2")
    parser.add_argument("--output", type=Path, required=True, help="the folder to make the site in")
    options = parser.parse_args()
    missing = [program for program in ("doxygen", "dot") if shutil.which(program) is None]
    if missing:
        print(f"SKIPPED: the site is not built without {' and '.join(missing)}")
        return 0

    output = options.output.resolve()
    for folder in ("pictures", "pages", "html", "xml"):
        shutil.rmtree(output / folder, ignore_errors=True)
    draw(options.tool, output / "pictures")
    version = subprocess.run([options.tool, "--version"], capture_output=True, text=True, check=True).stdout.split()[-1]
    for page in pages():
        staged = output / "pages" / page
        staged.parent.mkdir(parents=True, exist_ok=True)
        staged.write_text(page_for_doxygen(page, output / "pictures"))
    (output / "pages" / "examples.dox").write_text(example_list())

    complaints = run_doxygen(output, version)
    complaints += undocumented(output / "xml")
    complaints += sorted(set(dead_links(output / "html")))
    print("\n".join(complaints) if complaints else f"{output / 'html' / 'index.html'}")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
