"""The kill test's work: see scripts/kill-test."""

import hashlib
import datetime
import http.server
import json
import os
import plistlib
import random
import re
import shutil
import signal
import socketserver
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time

GROUPS = ["Sun", "Graphs", "Aurora", "Earth", "Alerts"]
FILES_PER_GROUP = 40
TEMPORARY = re.compile(r"^(.+)\.[A-Za-z0-9]{6}$")
WIND = "wind.json"  # one-minute solar-wind rows of the Now group, merged into the history
WIND_MINUTES = 2 * 1440


def wind_speed(version, minute):
    """Version 0 has speeds 300-399, version 1 500-599: a history holding both is a torn merge."""
    return 300 + 200 * version + minute % 100


def wind_file(version):
    # Newest first, as the provider writes it, ending at the last whole minute (the history keeps
    # only recent rows).
    end = datetime.datetime.now(datetime.timezone.utc).replace(second=0, microsecond=0)
    rows = []
    for minute in range(WIND_MINUTES):
        stamp = (end - datetime.timedelta(minutes=minute)).strftime("%Y-%m-%dT%H:%M:%S")
        rows.append({"time_tag": stamp, "active": True, "source": "ACE",
                     "proton_speed": wind_speed(version, minute), "proton_density": 5.0,
                     "proton_temperature": 90000, "overall_quality": 0})
    return (bytes(json.dumps(rows), "ascii"))


def make_versions(root):
    """Two complete versions of every file; a data file must always equal one of them."""
    rng = random.Random(7)
    digests = {}
    for version in (0, 1):
        folder = os.path.join(root, f"v{version}")
        os.makedirs(folder)
        for group in GROUPS:
            for i in range(FILES_PER_GROUP):
                name = f"{group.lower()}{i:02d}.bin"
                size = rng.randint(20_000, 600_000)
                data = bytes([version + 1]) * 16 + os.urandom(size)
                with open(os.path.join(folder, name), "wb") as f:
                    f.write(data)
                digests.setdefault(name, set()).add(hashlib.sha256(data).hexdigest())
        data = wind_file(version)
        with open(os.path.join(folder, WIND), "wb") as f:
            f.write(data)
        digests.setdefault(WIND, set()).add(hashlib.sha256(data).hexdigest())
    return digests


def write_definitions(folder, base_url):
    os.makedirs(folder)
    for group in GROUPS:
        nodes = {}
        for i in range(FILES_PER_GROUP):
            name = f"{group.lower()}{i:02d}.bin"
            nodes[f"Node{i}"] = {"URL": base_url, "SourceFileName": name, "DestFileName": name,
                                 "NodeName": name, "NodeTitle": name, "FileType": 1}
        if group == "Alerts":
            root = nodes
        else:
            root = {"Domain0": dict(DomainName=group, **nodes)}
        with open(os.path.join(folder, f"Data{group}.plist"), "wb") as f:
            plistlib.dump(root, f)
    wind = {"URL": base_url, "SourceFileName": WIND, "DestFileName": WIND, "NodeName": "Wind",
            "NodeTitle": "Wind", "FileType": 1, "DataKind": "solar-wind"}
    with open(os.path.join(folder, "DataNow.plist"), "wb") as f:
        plistlib.dump({"Node0": wind}, f)


def check_history(data):
    """The history is sound and every merge in it whole: its solar-wind speeds all come from one
    version of the file. Returns (rows, torn, problem)."""
    path = os.path.join(data, "History.sqlite")
    if not os.path.exists(path):
        return 0, False, None
    try:
        db = sqlite3.connect(path, timeout=10)
        problem = db.execute("PRAGMA integrity_check").fetchone()[0]
        speeds = [row[0] for row in db.execute(
            "SELECT value FROM samples JOIN series ON series.id = samples.series "
            "WHERE series.kind = 'solar-wind' AND series.name = 'speed'")]
        db.close()
    except sqlite3.Error as error:
        return 0, False, str(error)
    versions = {int(speed >= 500) for speed in speeds}
    return len(speeds), len(versions) > 1, None if problem == "ok" else problem


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True
    cut_off = 0  # transfers whose client was killed while they were under way

    def handle_error(self, request, client_address):
        if isinstance(sys.exc_info()[1], (ConnectionResetError, BrokenPipeError)):
            Server.cut_off += 1
        else:
            super().handle_error(request, client_address)


def serve(root):
    state = {"version": 0}

    class Handler(http.server.SimpleHTTPRequestHandler):
        def translate_path(self, path):
            return os.path.join(root, f"v{state['version']}", os.path.basename(path))

        def log_message(self, *args):
            pass

        def copyfile(self, source, outputfile):
            # In small pieces with short pauses, as over a real link, so that the kills land in
            # the middle of transfers, not only between them.
            while True:
                piece = source.read(32768)
                if not piece:
                    break
                outputfile.write(piece)
                time.sleep(0.002)

    server = Server(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server, state


def check_data(data, digests):
    """Every data file equals a complete version; returns (files, partial, leftovers)."""
    files = partial = 0
    leftovers = []
    for name in os.listdir(data):
        path = os.path.join(data, name)
        if name in digests:
            files += 1
            with open(path, "rb") as f:
                if hashlib.sha256(f.read()).hexdigest() not in digests[name]:
                    partial += 1
                    print(f"PARTIAL: {name}", flush=True)
        elif TEMPORARY.match(name) and TEMPORARY.match(name).group(1) in digests:
            leftovers.append(name)
    return files, partial, leftovers


def check_history_version(data):
    db = sqlite3.connect(os.path.join(data, "History.sqlite"), timeout=10)
    speed = db.execute("SELECT value FROM samples JOIN series ON series.id = samples.series "
                       "WHERE series.kind = 'solar-wind' AND series.name = 'speed'").fetchone()
    db.close()
    return int(speed[0] >= 500) if speed else None


def main():
    binary, rounds = sys.argv[1], int(sys.argv[2])
    work = tempfile.mkdtemp(prefix="vantorel-kill-")
    try:
        digests = make_versions(os.path.join(work, "served"))
        server, state = serve(os.path.join(work, "served"))
        base = f"http://127.0.0.1:{server.server_address[1]}/"
        definitions = os.path.join(work, "definitions")
        write_definitions(definitions, base)
        data = os.path.join(work, "data")
        home = os.path.join(work, "home")
        env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, ".config"),
                   XDG_DATA_HOME=os.path.join(home, ".local", "share"))
        env.pop("DISPLAY", None)
        command = [binary, "fetch", "--definitions", definitions, "--data-dir", data,
                   "--timeout", "20"]

        rng = random.Random(11)
        transfers = partial_total = torn_total = 0
        history_problems = []
        leftovers_seen = set()
        for round_number in range(rounds):
            state["version"] = round_number % 2
            process = subprocess.Popen(command, env=env, stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL)
            time.sleep(rng.uniform(0.05, 1.5))
            process.send_signal(signal.SIGKILL)
            out, _ = process.communicate()
            transfers += out.count(b"Successful")
            files, partial, leftovers = check_data(data, digests)
            partial_total += partial
            leftovers_seen.update(leftovers)
            rows, torn, problem = check_history(data)
            torn_total += torn
            if problem:
                history_problems.append(problem)
            print(f"round {round_number + 1}/{rounds}: killed after {transfers} transfers in all,"
                  f" {files} data files, {partial} partial, {len(leftovers)} temporary,"
                  f" history {rows} speeds{' TORN' if torn else ''}"
                  f"{' DAMAGED: ' + problem if problem else ''}", flush=True)

        # A temporary file as a write killed long ago would leave it; the next start removes it.
        planted = os.path.join(data, "sun00.bin.Xy12Zq")
        with open(planted, "wb") as f:
            f.write(b"half a file")
        old = time.time() - 3600
        os.utime(planted, (old, old))
        finished = subprocess.run(command, env=env, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, timeout=600)
        files, partial, leftovers = check_data(data, digests)
        partial_total += partial
        rows, torn, problem = check_history(data)
        server.shutdown()
        # After a run that was not killed, the history holds the whole last version.
        final_history_ok = (rows == WIND_MINUTES and not torn and not problem
                            and check_history_version(data) == state["version"])

        print(f"{rounds} kills, {transfers} transfers completed before them, "
              f"{Server.cut_off} cut off in the middle; final run exit "
              f"{finished.returncode}, {files} data files, {partial_total} partial files seen, "
              f"temporary files seen after kills: {len(leftovers_seen)}, left after the next "
              f"start: {len(leftovers)}; history: {torn_total} torn merges, "
              f"{len(history_problems)} damaged, after the last run {rows} speeds "
              f"({'whole' if final_history_ok else 'WRONG'})")
        ok = (partial_total == 0 and finished.returncode == 0 and not leftovers
              and files == len(digests) and not os.path.exists(planted)
              and torn_total == 0 and not history_problems and final_history_ok)
        print("PASS" if ok else "FAIL")
        return 0 if ok else 1
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
