"""Graphs of the routes, made from the table that `korvex2 routes --json` prints."""

import subprocess

from format_drawings import FAINT, INK, Svg

PASSES = ["#ffffff", "#cfe8d5", "#e4efc2", "#fbeebd", "#f8d9b0", "#f2bfae"]  # by their number
DEMOSAIC = "#b0501e"


def is_demosaic(kernel):
    return kernel["name"].startswith("ConvertBayerImageTo")


def draw_matrix(routes):
    names = list(dict.fromkeys(route["from"] for route in routes))
    cell, row, left, top = 54, 26, 84, 84
    svg = Svg(left + cell * len(names) + 20, top + row * len(names) + 54, "Passes over the pixels, by pair of formats")
    svg.text(left - 10, top - 12, "from ↓   to →", 11, FAINT, "end")
    for index, name in enumerate(names):
        svg.text(left - 10, top + row * index + 18, name, 13, anchor="end")
        x, y = left + cell * index + cell / 2 + 4, top - 10
        svg.parts.append(f'<text transform="translate({x} {y}) rotate(-50)" font-size="13">{name}</text>')
    for route in routes:
        x, y = left + cell * names.index(route["to"]), top + row * names.index(route["from"])
        passes = len(route["kernels"])
        fill = {"copied": "#e3e3e3", "refused": "#ffffff"}.get(route["is"], PASSES[min(passes, 5)])
        svg.box(x, y, cell, row, fill, "#aaaaaa")
        mosaic = any(is_demosaic(kernel) for kernel in route["kernels"])
        text = {"copied": "copy", "refused": "–"}.get(route["is"], str(passes))
        svg.text(x + cell / 2, y + 18, text + (" d" if mosaic else ""), 12, DEMOSAIC if mosaic else INK)
    svg.text(left, top + row * len(names) + 30,
             "Passes over the pixels; d: one of them demosaics; –: refused", 12, FAINT,
             "start")
    return str(svg)


def graph_of(source, routes):
    """The routes from one format as a tree in the language of dot. A node is a format that pixels pass through, filled
    where they stay; an edge is a kernel."""
    nodes = {(): {"format": source, "ends": True}}
    edges = {}
    for route in routes:
        path = ()
        for kernel in route["kernels"]:
            step = (*path, (kernel["name"], kernel["to"]))
            nodes.setdefault(step, {"format": kernel["to"], "ends": False})
            edges[path, step] = kernel
            path = step
        if path:
            nodes[path]["ends"] = True
    number = {path: f"n{index}" for index, path in enumerate(nodes)}
    lines = [
        "digraph {",
        f'tooltip="Routes from {source}"; rankdir=LR; nodesep=0.16; ranksep=0.5; bgcolor="#ffffff";',
        'node [shape=box, style="rounded,filled", fontname="DejaVu Sans", fontsize=12, height=0.3, '
        'margin="0.12,0.04"];',
        'edge [fontname="DejaVu Sans", fontsize=10, fontcolor="#444444", color="#777777", arrowsize=0.7];']
    for path, node in nodes.items():
        fill = "#b3cdf2" if path == () else "#e3efdf" if node["ends"] else "#ffffff"
        style = "" if node["ends"] else ', style="rounded,dashed"'
        lines.append(f'{number[path]} [label="{node["format"]}", fillcolor="{fill}"{style}];')
    for (begin, end), kernel in edges.items():
        colour = f', color="{DEMOSAIC}", fontcolor="{DEMOSAIC}"' if is_demosaic(kernel) else ""
        lines.append(f'{number[begin]} -> {number[end]} [label="{kernel["name"]}"{colour}];')
    return "\n".join([*lines, "}", ""])


def dot(graph):
    return subprocess.run(["dot", "-Tsvg"], input=graph, capture_output=True, text=True, check=True).stdout


def drawings(routes):
    """File name: drawing, of the matrix and of the routes from every format."""
    result = {"routes.svg": draw_matrix(routes)}
    for source in dict.fromkeys(route["from"] for route in routes):
        result[f"routes-{source}.svg"] = dot(graph_of(source, [route for route in routes if route["from"] == source]))
    return result
