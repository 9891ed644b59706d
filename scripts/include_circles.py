"""Fails where a folder includes one that includes it, directly or through others, and names the includes of the circle.

For scripts/lint, which runs it in the project's folder.
"""

import collections
import pathlib
import posixpath
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)
SEARCHED = ("", "include", "src", "platform/include", "platform/src", "follower/include")


def includes(files):
    """Folder -> included folder -> one of the includes, as text."""
    graph = collections.defaultdict(dict)
    for file in files:
        for name in INCLUDE.findall(pathlib.Path(file).read_text(encoding="utf-8")):
            found = [path for path in (posixpath.join(root, name) for root in SEARCHED) if path in files]
            if found and posixpath.dirname(found[0]) != posixpath.dirname(file):
                graph[posixpath.dirname(file)][posixpath.dirname(found[0])] = f"{file} includes {found[0]}"
    return graph


def way(graph, start, goal):
    """The folders on a shortest way from `start` to `goal`, both included; empty when there is none."""
    ways = collections.deque([[start]])
    seen = {start}
    while ways:
        folders = ways.popleft()
        if folders[-1] == goal:
            return folders
        for folder in sorted(graph[folders[-1]].keys() - seen):
            seen.add(folder)
            ways.append(folders + [folder])
    return []


def main():
    files = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], check=True, stdout=subprocess.PIPE, text=True).stdout
    graph = includes(set(files.split()))
    circles = {}
    for folder in sorted(graph):
        for included in sorted(graph[folder]):
            back = way(graph, included, folder)
            if back:
                circles.setdefault(frozenset(back), [folder] + back)
    for circle in circles.values():
        print("a circle of folders: " + " -> ".join(circle), file=sys.stderr)
        for folder, included in zip(circle, circle[1:]):
            print("  " + graph[folder][included], file=sys.stderr)
    return 1 if circles else 0


if __name__ == "__main__":
    sys.exit(main())
