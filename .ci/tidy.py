#!/usr/bin/env python3
"""clang-tidy over what a change touches, or over everything: `./run lint [--all]` calls it.

A source is looked at by itself. Of a header clang-tidy sees what a source makes of it, so a changed header stands for
one source that includes it.
"""

import argparse
import json
import os
import re
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
SOURCES = (".cpp", ".c")
HEADERS = (".h", ".def", ".in")
FEW_COMMITS = 20
NOISE = re.compile(r"^(\d+ warnings?\b.*|Suppressed .*|Use -header-filter.*)\n", re.M)


def git(*arguments, root=ROOT):
    done = subprocess.run(["git", "-C", root, *arguments], capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else ""


def base(root=ROOT):
    """What the working tree is compared with, and why: where it left main; on main itself the last release; in a clone
    that knows neither some commits back. Nothing, if there is no such commit: then everything counts as changed."""
    head = git("rev-parse", "HEAD", root=root)
    for main in ("origin/main", "main"):
        fork = git("merge-base", "HEAD", main, root=root)
        if fork and fork != head:
            return fork, f"where this branch left {main}"
    release = git("describe", "--tags", "--abbrev=0", "HEAD^", root=root)
    if release:
        return release, f"the last release, {release}"
    back = git("rev-parse", "--verify", "--quiet", f"HEAD~{FEW_COMMITS}", root=root)
    if back:
        return back, f"{FEW_COMMITS} commits ago: this clone knows no other main and no release"
    return "", "nothing: this clone knows no other main, no release, and too few commits"


def changed(since, root=ROOT):
    """Files of the tree that differ from a commit, or all of them."""
    if not since:
        listed = git("ls-files", "--cached", "--others", "--exclude-standard", root=root)
    else:
        listed = git("diff", "--name-only", "--diff-filter=d", since, root=root)
        listed += "\n" + git("ls-files", "--others", "--exclude-standard", root=root)
    return sorted({name for name in listed.splitlines() if (Path(root) / name).is_file()})


def includes(database, jobs):
    """The files of the tree that each source of the compilation database includes."""
    done = subprocess.run(["clang-scan-deps-19", "-compilation-database", database, "-format=make", "-j", str(jobs)],
                          capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"lint: clang-scan-deps fails:\n{done.stderr}")
    found = {}
    for rule in done.stdout.replace("\\\n", " ").splitlines():
        paths = [Path(os.path.normpath(path)) for path in rule.partition(":")[2].split()]
        inside = [str(path.relative_to(ROOT)) for path in paths if path.is_relative_to(ROOT)]
        if inside:
            found.setdefault(inside[0], set()).update(inside)
    return found


def units(files, graph):
    """Sources to look at for these files, and the files that none of them stands for."""
    chosen = {name for name in files if name in graph}
    orphans = [name for name in files if name.endswith(SOURCES) and name not in graph]
    for header in files:
        if not header.endswith(HEADERS) or any(header in graph[name] for name in chosen):
            continue
        users = [name for name, used in graph.items() if header in used]
        if users:
            own = [name for name in users if Path(name).stem == Path(header).stem.removesuffix("-inl")]
            chosen.add(min(own or users, key=lambda name: (len(graph[name]), name)))
        elif header.endswith(".h"):
            orphans.append(header)
    return sorted(chosen), orphans


def tidy(build, name):
    done = subprocess.run(["clang-tidy-19", "-p", build, "--quiet", name], cwd=ROOT, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return name, done.returncode == 0, NOISE.sub("", done.stdout)


def main():
    parser = argparse.ArgumentParser(description="clang-tidy over changed sources, or over all")
    parser.add_argument("--build", type=Path, required=True, help="the build folder with compile_commands.json")
    parser.add_argument("--all", action="store_true", help="every source that the build knows")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    database = (arguments.build / "compile_commands.json").resolve()
    known = {os.path.relpath(entry["file"], ROOT) for entry in json.loads(database.read_text())}
    known = {name for name in known if not name.startswith(("build", "../"))}
    if arguments.all:
        wanted = sorted(known)
        orphans = [name for name in git("ls-files", "*.cpp", "*.c").splitlines() if name not in known]
        print(f"lint: clang-tidy on all {len(wanted)} sources", flush=True)
    else:
        since, reason = base()
        files = changed(since)
        graph = {name: used for name, used in includes(database, arguments.jobs).items() if name in known}
        wanted, orphans = units(files, graph)
        print(f"lint: compared with {reason}; {len(files)} files differ: clang-tidy on {len(wanted)} sources",
              flush=True)
        if ".clang-tidy" in files:
            print("lint: the checks themselves changed: ./run lint --all shows what they say of the other sources")
    if orphans:
        print("lint: no clang-tidy on what this build does not compile:", *orphans, flush=True)

    begin = time.monotonic()
    failed = []
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for name, good, output in pool.map(lambda name: tidy(arguments.build, name), wanted):
            if not good:
                failed.append(name)
                print(f"--- {name}\n{output}", flush=True)
    seconds = time.monotonic() - begin
    print(f"lint: clang-tidy took {seconds:.0f} s; {len(failed)} of {len(wanted)} sources fail", *failed)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
