"""Fails where a function is too long, or a file of the follower, and names it; and when the median function is.

For scripts/lint, which runs it in the project's folder. Lines are counted from a function's name to its last brace.
"""

import collections
import statistics
import subprocess
import sys

LONGEST = 40
LONGEST_IN_FOLLOWER = 30
LONGEST_MEDIAN = 6
LONGEST_FILE_IN_FOLLOWER = 300
LONGEST_CYCLE = 250
CYCLE = "follower/path_follower.cpp"  # is to be read from top to bottom

Function = collections.namedtuple("Function", "lines file begin name")


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def functions(files):
    tags = output_of("ctags", "-x", "--language-force=C++", "--c++-kinds=f", "--fields=+ne",
                     "--_xformat=%{line}\t%{end}\t%F\t%N", "-L", "-", input=files)
    for begin, end, file, name in (tag.split("\t") for tag in tags.splitlines()):
        yield Function(int(end) - int(begin) + 1, file, int(begin), name)


def is_too_long(function):
    return function.lines > (LONGEST_IN_FOLLOWER if function.file.startswith("follower/") else LONGEST)


def long_files(files):
    for file in filter(lambda name: name.startswith("follower/"), files):
        with open(file, encoding="utf-8") as source:
            lines = sum(1 for _ in source)
        if lines > LONGEST_FILE_IN_FOLLOWER or (file == CYCLE and lines >= LONGEST_CYCLE):
            yield f"{file} has {lines} lines"


def complaints():
    files = output_of("git", "ls-files", "*.h", "*.cpp")
    found = sorted(functions(files), reverse=True)
    for function in filter(is_too_long, found):
        yield f"{function.file}:{function.begin}: {function.name} has {function.lines} lines"
    median = statistics.median(function.lines for function in found)
    if median > LONGEST_MEDIAN:
        yield f"the median function has {median:g} lines"
    yield from long_files(files.split())


def main():
    found = list(complaints())
    for complaint in found:
        print(complaint, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
