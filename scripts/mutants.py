#!/usr/bin/env python3
"""Draws small faults at random, the same for the same seed.

Usage: scripts/mutants.py COUNT SEED [PATTERN]

Prints one fault a line: file, line (from 1), what stands there, what stands in its place, between
tabs. Every line of code of a folder is as likely as any other; folders come in turn, so that each
has its share however small it is.
"""

import fnmatch
import random
import re
import subprocess
import sys

FOLDERS = {
    "library": ["common", "ccm", "color", "matrix", "platform"],
    "workbench": [
        f"workbench/{name}"
        for name in (
            "text findings tuning frames trace appearance camera studies calibration capture judging json"
            " files"
        ).split()
    ],
    "cli": ["cli"],
    "python": ["python/src", "python/imgtune"],
}

# What is replaced by what; words of one kind stand for each other.
OPERATORS = [
    (r"(?<![<>=!-])<(?![<=])(?=\s)", "<="),
    (r"(?<![<>=!-])>(?![>=])(?=\s)", ">="),
    (r"<=", "<"),
    (r"(?<![->])>=", ">"),
    (r"==", "!="),
    (r"!=", "=="),
    (r"&&", "||"),
    (r"\|\|", "&&"),
    (r"(?<=\s)\+(?=\s)", "-"),
    (r"(?<=[\w)\]]\s)-(?=\s)", "+"),
    (r"(?<=\s)\*(?=\s)", "/"),
    (r"(?<=\s)/(?=\s)", "*"),
    (r"\+\+", "--"),
    (r"\+=", "-="),
    (r"-=", "+="),
    (r"(?<=\s)>>(?=\s\d)", "<<"),
    (r"\btrue\b", "false"),
    (r"\bfalse\b", "true"),
    (r"\bTrue\b", "False"),
    (r"\bFalse\b", "True"),
    (r"\band\b", "or"),
    (r"\bor\b", "and"),
    (r"\bstd::min\b", "std::max"),
    (r"\bstd::max\b", "std::min"),
    (r"\blow\b", "high"),
    (r"\bhigh\b", "low"),
    (r"(?<=[(\s=])!(?=[\w(])", ""),
]
NUMBER = re.compile(r"(?<![\w.#%])(\d+)(\.\d+)?(?=[fUuL]{0,3}\b)(?![\w.]*[xX'])")
STATEMENT = re.compile(r"^\s+[\w.\[\]>():*-]+( [-+|&]?= |\(|\+\+|--).*;\s*$")


def code_of(line):
    """The columns of a line that are neither text nor comment."""
    kept, text = [], ""
    i = 0
    while i < len(line):
        c = line[i]
        if text:
            if c == "\\":
                i += 1
            elif c == text:
                text = ""
        elif c in "\"'" and not (c == "'" and i and line[i - 1].isalnum()):
            text = c
        elif line.startswith("//", i):
            break
        else:
            kept.append(i)
        i += 1
    return set(kept)


def faults_of(line, suffix):
    """Every fault that fits into a line."""
    bare = line.strip()
    if not bare or bare.startswith(("#", "//", "/*", "*", "using ", "namespace", "static_assert")):
        return []
    if bare.startswith(("template", "import ", "from ", '"""', "class ", "struct ", "constexpr char")):
        return []
    code = code_of(line)
    found = []
    for pattern, instead in OPERATORS:
        for match in re.finditer(pattern, line):
            if match.start() in code and (suffix == "py") >= (instead in ("True", "and", "or")):
                found.append(line[: match.start()] + instead + line[match.end() :])
    for match in NUMBER.finditer(line):
        if match.start() in code and len(match.group(1)) < 10:
            more = str(int(match.group(1)) + 1)
            found.append(line[: match.start(1)] + more + line[match.end(1) :])
    if suffix != "py" and STATEMENT.match(line) and "return" not in line:
        found.append("")
    return found


def lines_of(file):
    """The lines of code that a fault fits into; texts of several lines are left out."""
    suffix = file.rsplit(".", 1)[-1]
    inside = False
    for number, line in enumerate(open(file, encoding="utf-8").read().split("\n"), 1):
        marks = line.count('"""') + line.count('R"(') + line.count(')"')
        if inside or marks:
            inside ^= marks % 2 == 1
            continue
        if "\t" not in line and (faults := faults_of(line, suffix)):
            yield number, line, faults


def main():
    count, seed = int(sys.argv[1]), sys.argv[2]
    wanted = sys.argv[3] if len(sys.argv) > 3 else "*"
    files = subprocess.run(["git", "ls-files"], capture_output=True, text=True, check=True)
    pools = []
    for folder in [f for folders in FOLDERS.values() for f in folders]:
        pool = [
            (file, *place)
            for file in files.stdout.split()
            if file.rpartition("/")[0] == folder and fnmatch.fnmatch(file, wanted)
            if file.endswith((".cpp", ".h", ".py")) and not file.endswith("_neon.h")
            for place in lines_of(file)
        ]
        if pool:
            pools.append(pool)
    draw = random.Random(seed)
    for k in range(count):
        # By lines of code, after one of each folder.
        pool = pools[k] if k < len(pools) else draw.choices(pools, [len(p) for p in pools])[0]
        file, number, line, faults = draw.choice(pool)
        print(file, number, line, draw.choice(faults), sep="\t")


if __name__ == "__main__":
    main()
