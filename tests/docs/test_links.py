"""No link of a page is dead: neither the file nor the heading."""

from urllib.parse import unquote

import pytest
from conftest import ROOT
from pages import headings, links, pages


def test_there_are_pages():
    names = {str(page) for page in pages()}
    assert {"README.md", "docs/README.md", "docs/faq.md", "examples/README.md", "tools/korvex2/README.md"} <= names


@pytest.mark.parametrize("page", pages(), ids=str)
def test_links(page):
    for link in links((ROOT / page).read_text()):
        target = ROOT / page
        if link.path:
            target = (ROOT / page).parent / unquote(link.path)
            assert target.exists(), f"{page}:{link.line}: there is no {link.path}"
        if link.anchor:
            anchors = {anchor for _, _, anchor in headings(target.read_text())}
            assert link.anchor in anchors, f"{page}:{link.line}: {target.name} has no heading #{link.anchor}"


def test_the_table_of_contents_leads_everywhere():
    contents = {(ROOT / "docs" / link.path).resolve() for link in links((ROOT / "docs/README.md").read_text())}
    assert contents == {ROOT / page for page in pages()} - {ROOT / "docs/README.md"}


def test_every_example_is_listed():
    listed = {(ROOT / "examples" / link.path).resolve() for link in links((ROOT / "examples/README.md").read_text())}
    for example in (ROOT / "examples").rglob("*"):
        if example.suffix in (".cpp", ".py", ".sh", ".txt"):
            assert example in listed, example
