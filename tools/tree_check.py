"""What the checks of the source tree share: their command line, and the test of the check itself.

A check is a function that takes the root of a tree and returns its problems, as lines of text, with the number of
places that it has looked at. Its self-tests are small trees: a name, {path: text}, and the problems to be found.
"""

import os
import sys
import tempfile


def self_test(name, check, trees):
    failures = 0
    for tree, files, expected in trees:
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.join(root, os.path.dirname(path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            problems, _ = check(root)
        if problems != expected:
            failures += 1
            print(f"{tree}: expected {expected}, got {problems}", file=sys.stderr)
    print(f"{name} --self-test: {len(trees)} trees, {failures} failures")
    return 1 if failures else 0


def run(check, trees, what, verdict):
    """Does what the command line asks for, and returns the exit status; a tree without such places is a failure."""
    name = os.path.basename(sys.argv[0])
    arguments = sys.argv[1:]
    if arguments == ["--self-test"]:
        return self_test(name, check, trees)
    root = arguments[0] if arguments else os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    problems, count = check(root)
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{name}: {count} {what}, {'not ' if problems else ''}{verdict}")
    return 1 if problems or count == 0 else 0
