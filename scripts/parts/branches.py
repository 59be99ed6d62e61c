"""Sums up the branches that gcovr counted: branches.py REPORT.json FAILED PART=PERCENT...

Prints each line of which a branch was never taken ('-' for that one, '+' for those that were), the files, and the parts;
a part is a file, a folder with its slash, or `library` for all but the platform. Fails where a part has less than its
share, or where runs of programs failed.

A branch that only an exception takes leads to destructors and out: the allocation walks of the tests, not these figures,
tell about those. They are left out here and not by gcovr itself, which knows them only in code that ran: an instance of a
template that one source makes and never calls would bring its own back. The instances of a template are one.
"""

import json
import sys


def branches(line):
    return [branch["count"] > 0 for branch in line["branches"] if not branch["throw"]]


def parts_of(name):
    yield name
    yield name.split("/")[0] + "/"
    if not name.startswith("platform/"):
        yield "library"


def main(report, failed, *kept):
    failed, passed = int(failed), 0
    taken, existing = {}, {}
    with open(report, encoding="utf-8") as file:
        files = sorted(json.load(file)["files"], key=lambda each: each["file"])
    for each in files:
        name = each["file"]
        with open(name, encoding="utf-8") as file:
            source = file.read().split("\n")
        for line in each["lines"]:
            seen = branches(line)
            for part in parts_of(name):
                taken[part] = taken.get(part, 0) + sum(seen)
                existing[part] = existing.get(part, 0) + len(seen)
            if not all(seen):
                number = line["line_number"]
                marks = "".join("+" if was else "-" for was in seen)
                print(f"{name}:{number}: {marks} {source[number - 1].strip()[:100]}")
    for each in files:
        name = each["file"]
        if existing.get(name):
            print(f"{name:<60} {existing[name]:5} branches {existing[name] - taken[name]:4} missed")
    for wanted in kept:
        part, percent = wanted.split("=")
        share = 100 * taken.get(part, 0) / existing[part] if existing.get(part) else 0
        print(f"{part:<60} {taken.get(part, 0)} of {existing.get(part, 0)} branches, {share:.1f} %, kept {percent} %")
        if share < float(percent):
            failed += 1
        else:
            passed += 1
    print(f"{passed} passed, {failed} failed")
    return failed != 0


sys.exit(main(*sys.argv[1:]))
