#!/usr/bin/python3
"""Test data for the benchmarks: the files a loopback web server holds, and the group definition
files and curl configurations that point at them.

    make_data.py DATA-FOLDER PORT

Everything is made from fixed seeds, so every run measures the same bytes. The served files are
kept between runs (they are only remade when the recipe changes); the definition files, which
carry the port, are written anew each time.

What is made, under DATA-FOLDER:
  www/g/GROUP/...      300 files, 60 per group, of 50 KB to 4 MB (sizes spread evenly on a
                       logarithmic scale, the spread of real solar images, plots and bulletins)
  www/big/...          five large files, one per group, for the stall measurement
  www/text/RSGA.txt    a real bulletin, for the Alerts view while large transfers run
  defs-fetch/          definitions naming the 300 files, in five groups (and an empty Now group)
  defs-stall/          definitions naming one large file per group (and a bulletin in Alerts)
  curl-*.cfg           the 300 addresses for curl, with where each goes (OUTPUT is a placeholder)
  manifest.json        the files, their groups and sizes
"""

import json
import plistlib
import random
import shutil
import sys
from pathlib import Path

GROUPS = ["Sun", "Graphs", "Aurora", "Earth", "Alerts"]
FILES_PER_GROUP = 60
DOMAINS_PER_GROUP = 4
SMALLEST = 50 * 1024
LARGEST = 4 * 1024 * 1024
BIG_FILE = 32 * 1024 * 1024
SEED = 9
RECIPE = f"v2 seed={SEED} files={FILES_PER_GROUP} sizes={SMALLEST}-{LARGEST} big={BIG_FILE}"


def node(dest, name, url, source, file_type):
    return {
        "URL": url,
        "SourceFileName": source,
        "DestFileName": dest,
        "NodeName": name,
        "NodeTitle": f"Benchmark item {name}",
        "DataSource": "http://127.0.0.1/",
        "Description": "",
        "FileType": file_type,
    }


def as_picture(data):
    """The bytes with a JPEG signature in front, of the same size: the application refuses a
    picture item's body that does not start like a picture."""
    signature = b"\xff\xd8\xff\xe0"
    return signature + data[len(signature):]


def write_plist(path, root):
    path.parent.mkdir(parents=True, exist_ok=True)
    with open(path, "wb") as f:
        plistlib.dump(root, f, fmt=plistlib.FMT_XML)


def group_root(group, nodes):
    """The definition file's root: Alerts is flat, the image groups have domains."""
    if group == "Alerts":
        return {f"Node{i}": n for i, n in enumerate(nodes)}
    root = {}
    per_domain = -(-len(nodes) // DOMAINS_PER_GROUP)
    for d in range(DOMAINS_PER_GROUP):
        chunk = nodes[d * per_domain:(d + 1) * per_domain]
        if not chunk:
            break
        domain = {"DomainName": f"{group} {d + 1}"}
        domain.update({f"Node{i}": n for i, n in enumerate(chunk)})
        root[f"Domain{d}"] = domain
    return root


def make_files(data, fixtures):
    """The served files; kept when they were made by the same recipe."""
    www = data / "www"
    stamp = data / "recipe.txt"
    manifest_path = data / "manifest.json"
    if stamp.exists() and stamp.read_text() == RECIPE and manifest_path.exists():
        return json.loads(manifest_path.read_text())
    shutil.rmtree(www, ignore_errors=True)
    rng = random.Random(SEED)
    manifest = {"groups": {}, "big": {}}
    for group in GROUPS:
        folder = www / "g" / group
        folder.mkdir(parents=True)
        extension = "txt" if group == "Alerts" else "jpg"
        entries = []
        for i in range(FILES_PER_GROUP):
            # Log-uniform between the smallest and the largest size.
            size = int(SMALLEST * (LARGEST / SMALLEST) ** rng.random())
            name = f"{group.lower()}-{i:03d}.{extension}"
            body = rng.randbytes(size)
            (folder / name).write_bytes(as_picture(body) if extension == "jpg" else body)
            entries.append({"name": name, "size": size})
        manifest["groups"][group] = entries
    (www / "big").mkdir(parents=True)
    for group in GROUPS:
        name = f"big-{group.lower()}.dat"
        (www / "big" / name).write_bytes(as_picture(rng.randbytes(BIG_FILE)))
        manifest["big"][group] = {"name": name, "size": BIG_FILE}
    (www / "text").mkdir(parents=True)
    shutil.copy(fixtures / "bulletins" / "rsga-20251218.txt", www / "text" / "RSGA.txt")
    manifest_path.write_text(json.dumps(manifest, indent=1))
    stamp.write_text(RECIPE)
    return manifest


def make_definitions(data, manifest, port):
    base = f"http://127.0.0.1:{port}"
    for group in GROUPS:
        file_type = 1 if group == "Alerts" else 0
        nodes = [node(e["name"], e["name"], f"{base}/g/{group}/", e["name"], file_type)
                 for e in manifest["groups"][group]]
        write_plist(data / "defs-fetch" / f"Data{group}.plist", group_root(group, nodes))

        big = manifest["big"][group]
        stall_nodes = [node(big["name"], f"Large {group}", f"{base}/big/", big["name"], file_type)]
        if group == "Alerts":
            # The report shown in the Alerts view comes first; the large file downloads beside it.
            stall_nodes.insert(0, node("RSGA.txt", "RSGA", f"{base}/text/", "RSGA.txt", 1))
        write_plist(data / "defs-stall" / f"Data{group}.plist", group_root(group, stall_nodes))

    # The Now group's own definitions would send the runs to the providers' servers: it is
    # defined empty here, so that every figure depends on the loopback server alone. The Now
    # view's costs have benchmarks of their own (history, nowcharts).
    for folder in ("defs-fetch", "defs-stall"):
        write_plist(data / folder / "DataNow.plist", {})

    lines = []
    for group in GROUPS:
        for e in manifest["groups"][group]:
            lines.append(f'url = "{base}/g/{group}/{e["name"]}"\noutput = "OUTPUT/{e["name"]}"\n')
    (data / "curl.cfg").write_text("".join(lines))


def main():
    data = Path(sys.argv[1])
    port = int(sys.argv[2])
    fixtures = Path(__file__).resolve().parent.parent / "tests" / "fixtures"
    data.mkdir(parents=True, exist_ok=True)
    manifest = make_files(data, fixtures)
    make_definitions(data, manifest, port)
    total = sum(e["size"] for entries in manifest["groups"].values() for e in entries)
    print(json.dumps({"files": sum(len(v) for v in manifest["groups"].values()), "bytes": total}))


if __name__ == "__main__":
    main()
