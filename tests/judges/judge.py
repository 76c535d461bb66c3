#!/usr/bin/env python3
"""Other programs as judges of the files that tessarine writes.

usage: judge.py TESSARINE WORKDIR FILE...

Every FILE is read and written as XLSX and as ODS by the command line TESSARINE. A scripting library that reads XLSX
(openpyxl) opens our XLSX; a general-purpose spreadsheet (soffice, headless) opens both and writes what it understood
as XLSX, which the library reads. Their values are held against ours, cell by cell. What is known to differ stands in
known.tsv beside this script: file, judge, format, what differs at most, why.

Exit code 0: they agree; 1: they do not; 77: a judge is missing (which is told).
"""
import datetime
import json
import math
import os
import re
import shutil
import subprocess
import sys
import time
import warnings

SKIPPED = 77
HERE = os.path.dirname(os.path.abspath(__file__))
# Functions whose results depend on the moment or on the host; other programs compute them anew when they load.
VOLATILE = ("NOW(", "TODAY(", "RAND", "OFFSET(", "INDIRECT(", "CELL(", "INFO(")


def run(command, seconds=120):
    return subprocess.run(command, capture_output=True, text=True, timeout=seconds)


def cells_of(tessarine, path):
    """{(sheet, cell): (type, value, formula)} as the command line lists them, spilled cells left out."""
    done = run([tessarine, "cells", path, "--no-recalc", "--json"])
    if done.returncode != 0:
        raise ValueError(done.stderr.strip())
    cells = {}
    for line in done.stdout.splitlines():
        cell = json.loads(line)
        if "spill" not in cell and cell["type"] != "empty":
            cells[cell["sheet"], cell["cell"]] = (cell["type"], cell.get("value"), cell.get("formula"))
    return cells


def plain(value):
    """A value of the library as a number, a text or a Boolean."""
    from openpyxl.utils import datetime as serial
    if isinstance(value, (datetime.datetime, datetime.date, datetime.time)):
        return serial.to_excel(value)
    if isinstance(value, datetime.timedelta):
        return serial.timedelta_to_days(value) if hasattr(serial, "timedelta_to_days") else value.total_seconds() / 86400
    return value


def library_cells(path):
    """{(sheet, cell): value} as openpyxl reads a file."""
    import openpyxl
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        book = openpyxl.load_workbook(path, data_only=True)
    cells = {}
    for sheet in book.worksheets:
        for row in sheet.iter_rows():
            for cell in row:
                if cell.value is not None:
                    cells[sheet.title, cell.coordinate] = plain(cell.value)
    return cells


def unescaped(text):
    """Some readers leave the escapes for characters that XML cannot carry as they stand in the file."""
    return re.sub("_x([0-9A-Fa-f]{4})_", lambda match: chr(int(match.group(1), 16)), text)


def lines(text):
    return text.replace("\r\n", "\n").replace("\r", "\n")


def same(kind, ours, theirs):
    if kind == "number":
        if isinstance(theirs, bool) or not isinstance(theirs, (int, float)):
            return False
        # Dates pass through a type with microseconds.
        return math.isclose(ours, theirs, rel_tol=1e-9, abs_tol=1e-9)
    if kind == "boolean":
        # A spreadsheet may keep a Boolean as a formatted number.
        return theirs in (ours, int(ours), str(ours).upper())
    if kind == "text":
        return lines(ours) == lines(unescaped("" if theirs is None else str(theirs)))
    return True


def compare(ours, theirs, computes):
    """How many cells were compared, and those that differ. A judge that computes has its own idea of formulas."""
    compared, differing = 0, []
    for key, (kind, value, formula) in ours.items():
        if kind == "error" or (formula and any(name in formula.upper() for name in VOLATILE)):
            continue
        if formula and (computes or value == ""):
            continue
        compared += 1
        if not same(kind, value, theirs.get(key)):
            differing.append("%s!%s: %r against %r" % (*key, value, theirs.get(key)))
    return compared, differing


def known_differences():
    known = {}
    with open(os.path.join(HERE, "known.tsv"), encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                name, judge, form, most, _why = line.rstrip("\n").split("\t")
                known[name, judge, form] = int(most)
    return known


def written(tessarine, source, form, folder):
    """The file that tessarine writes, or the reason why there is none."""
    target = os.path.join(folder, os.path.basename(source) + "." + form)
    done = run([tessarine, "convert", source, target, "--no-recalc"])
    return (target, None) if done.returncode == 0 else (None, done.stderr.strip().splitlines()[-1:])


def resaved(files, folder, profile):
    """Lets the spreadsheet open all files in one process and write them as XLSX."""
    os.makedirs(folder, exist_ok=True)
    command = ["soffice", "-env:UserInstallation=file://" + profile, "--headless", "--convert-to",
               "xlsx:Calc MS Excel 2007 XML", "--outdir", folder]
    try:
        run(command + files, 60 + 20 * len(files))
    except subprocess.TimeoutExpired:
        print("note: the spreadsheet did not finish in time", file=sys.stderr)


def main():
    tessarine, folder, *sources = sys.argv[1:]
    try:
        import openpyxl  # noqa: F401
    except ImportError:
        print("skipped: python3-openpyxl is not installed (./dev judge installs it)")
        return SKIPPED
    has_spreadsheet = shutil.which("soffice") is not None
    if not has_spreadsheet:
        print("note: soffice is not installed, so only the library judges (./dev judge installs it)")
    folder = os.path.abspath(folder)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    known, failed, cells, outputs = known_differences(), 0, {}, {"xlsx": [], "ods": []}

    def judge(name, who, form, ours, read, computes):
        try:
            compared, differing = compare(ours, read(), computes)
        except Exception as error:  # whatever the judge stumbles over
            compared, differing = 0, ["cannot be opened: %s" % error]
        within = len(differing) <= known.get((name, who, form), 0)
        print("%s\t%s\t%s\t%d cells\t%s" % (name, who, form, compared, "agree" if not differing else
                                              "%d differ%s: %s" % (len(differing), " (known)" if within else "",
                                                                   "; ".join(differing[:3]))))
        return 0 if within else 1

    for source in sources:
        name = os.path.basename(source)
        try:
            cells[name] = cells_of(tessarine, source)
        except ValueError as error:
            print("%s\tnot read\t%s" % (name, error))
            continue
        for form in outputs:
            target, reason = written(tessarine, source, form, folder)
            if target is None:
                print("%s\tnot written as %s\t%s" % (name, form, reason))
                failed += 1
                continue
            outputs[form].append(target)
            failed += judge(name, "tessarine", form, cells[name],
                            lambda: {key: cell[1] for key, cell in cells_of(tessarine, target).items()}, False)
    for target in outputs["xlsx"]:
        name = os.path.basename(target)[:-5]
        failed += judge(name, "library", "xlsx", cells[name], lambda: library_cells(target), False)
    if has_spreadsheet:
        for form, targets in outputs.items():
            after = os.path.join(folder, "resaved-" + form)
            start = time.monotonic()
            if targets:
                resaved(targets, after, os.path.join(folder, "profile"))
            print("note: the spreadsheet took %.0f s for %d files" % (time.monotonic() - start, len(targets)))
            for target in targets:
                name = os.path.basename(target)[:-len(form) - 1]
                path = os.path.join(after, os.path.splitext(os.path.basename(target))[0] + ".xlsx")
                failed += judge(name, "spreadsheet", form, cells[name], lambda: library_cells(path), True)
    print("%d files judged, %d verdicts against us" % (len(cells), failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
