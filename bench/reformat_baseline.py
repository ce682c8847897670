#!/usr/bin/python3
"""The baseline for report reformatting: Python's str.replace applying the same passes.

    reformat_baseline.py FOLDER RUNS

FOLDER holds what `vantorel-bench-harness reformat-input` wrote (the bulletins and passes.json,
the pass tables taken from the application itself) and, once `vantorel-bench-harness reformat`
has run, the application's results, which this script compares with its own. Prints one line of
JSON with the times in milliseconds.
"""

import json
import statistics
import sys
import time
from pathlib import Path


def main():
    folder = Path(sys.argv[1])
    runs = int(sys.argv[2])
    tables = json.loads((folder / "passes.json").read_text(encoding="utf-8"))
    result = {}
    for kind, table in tables.items():
        text = (folder / f"{kind}.in.txt").read_text(encoding="utf-8")
        passes = [(search, replacement) for search, replacement in table["passes"]]

        def transform(source):
            for search, replacement in passes:
                source = source.replace(search, replacement)
            return source

        output = transform(text)
        times = []
        for _ in range(runs):
            start = time.perf_counter()
            output = transform(text)
            times.append((time.perf_counter() - start) * 1000.0)
        ours = folder / f"{kind}.vantorel.txt"
        same = ours.exists() and ours.read_text(encoding="utf-8") == output
        result[kind] = {"characters": len(text), "times_ms": times,
                        "median_ms": statistics.median(times), "same_output": same}
    print(json.dumps(result))


if __name__ == "__main__":
    main()
