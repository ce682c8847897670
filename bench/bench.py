#!/usr/bin/python3
"""Runs every Vantorel benchmark and prints each figure against its baseline and goal.

Called by bench/run, which installs what is needed and builds first:

    bench.py --build BUILD-FOLDER [--rounds N] [--only NAME,...] [--scratch FOLDER]

The measurements (see bench/README.md for what each one means):
  startup    time to the main window shown, and peak memory, against a bare Qt program
  transfers  `vantorel fetch` of 300 files against curl, one at a time and five in parallel
  image      selecting a node with a 4096 x 4096 JPEG until the picture is in the view,
             against QImageReader decoding the file at the same size alone
  reformat   reformatting 10 MB bulletins against Python's str.replace with the same passes
  stall      the longest gap between ticks of a 1-ms timer while five large transfers run and
             the views are switched

Everything runs on a display of its own (Xvfb) and a web server of its own (nginx on 127.0.0.1),
both started here and stopped at the end. Results also go to BUILD/bench-work/results.json.
"""

import argparse
import json
import os
import platform
import pwd
import resource
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
sys.path.insert(0, str(HERE))
sys.dont_write_bytecode = True  # no __pycache__ in the source tree
import make_data  # noqa: E402

PYTHON = "/usr/bin/python3"


def log(message):
    print(f"[bench] {message}", file=sys.stderr, flush=True)


def median(values):
    return statistics.median(values) if values else float("nan")


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def fresh(path):
    shutil.rmtree(path, ignore_errors=True)
    path.mkdir(parents=True)
    return path


class Machine:
    """What the machine is and what it was doing."""

    @staticmethod
    def describe():
        cpu = "unknown"
        for line in Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                cpu = line.split(":", 1)[1].strip()
                break
        qt = subprocess.run(["dpkg-query", "-W", "-f=${Version}", "libqt6core6"],
                            capture_output=True, text=True).stdout.strip()
        mem_kb = int(next(l for l in Path("/proc/meminfo").read_text().splitlines()
                          if l.startswith("MemTotal")).split()[1])
        git = ["git", "-C", str(ROOT)]
        commit = subprocess.run(git + ["rev-parse", "--short", "HEAD"], capture_output=True,
                                text=True).stdout.strip()
        changed = subprocess.run(git + ["status", "--porcelain", "--", "src"], capture_output=True,
                                 text=True).stdout.splitlines()
        return {"cpu": cpu, "cores": os.cpu_count(), "memory_gb": round(mem_kb / 1024 / 1024, 1),
                "kernel": platform.release(), "qt": qt, "python": platform.python_version(),
                "commit": commit, "uncommitted_src_files": len(changed)}

    @staticmethod
    def activity():
        fuzzers = subprocess.run(["pgrep", "-fa", "fuzz"], capture_output=True, text=True).stdout
        fuzzers = [l for l in fuzzers.splitlines() if "pgrep" not in l and "bench.py" not in l]
        compilers = subprocess.run(["pgrep", "-c", "cc1plus"], capture_output=True, text=True).stdout
        return {"load": os.getloadavg(), "fuzzers": len(fuzzers),
                "compilers": int(compilers.strip() or 0)}


class Display:
    """A private X server."""

    def __init__(self, work):
        read, write = os.pipe()
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
             "-noreset"], pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        number = b""
        while not number.endswith(b"\n"):
            chunk = os.read(read, 16)
            if not chunk:
                raise RuntimeError("Xvfb did not start")
            number += chunk
        os.close(read)
        self.name = f":{int(number)}"

    def stop(self):
        self.process.terminate()
        self.process.wait(timeout=10)


class Server:
    """nginx on the loopback interface, serving the benchmark files."""

    def __init__(self, work, www, port, big_rate):
        self.folder = fresh(work / "nginx")
        (self.folder / "tmp").mkdir()
        user = f"user {pwd.getpwuid(0).pw_name};\n" if os.geteuid() == 0 else ""
        tmp = self.folder / "tmp"
        config = f"""{user}worker_processes 1;
daemon off;
pid {self.folder}/nginx.pid;
error_log {self.folder}/error.log warn;
events {{ worker_connections 512; }}
http {{
    access_log off;
    sendfile on;
    tcp_nopush on;
    tcp_nodelay on;
    keepalive_requests 100000;
    keepalive_timeout 120s;
    default_type application/octet-stream;
    client_body_temp_path {tmp}/body;
    proxy_temp_path {tmp}/proxy;
    fastcgi_temp_path {tmp}/fastcgi;
    uwsgi_temp_path {tmp}/uwsgi;
    scgi_temp_path {tmp}/scgi;
    server {{
        listen 127.0.0.1:{port};
        root {www};
        # The large files arrive at a steady rate per transfer, as over a real link, so that
        # they are still arriving while the views are switched.
        location /big/ {{ limit_rate {big_rate}; }}
    }}
}}
"""
        (self.folder / "nginx.conf").write_text(config)
        self.process = subprocess.Popen(
            ["nginx", "-p", str(self.folder), "-c", str(self.folder / "nginx.conf"),
             "-e", str(self.folder / "error.log")],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        deadline = time.monotonic() + 10
        while True:
            try:
                socket.create_connection(("127.0.0.1", port), timeout=1).close()
                break
            except OSError:
                if time.monotonic() > deadline or self.process.poll() is not None:
                    raise RuntimeError(f"nginx did not start; see {self.folder}/error.log")
                time.sleep(0.05)

    def stop(self):
        self.process.send_signal(signal.SIGQUIT)
        try:
            self.process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


class Bench:
    def __init__(self, args):
        self.build = Path(args.build).resolve()
        self.bin = self.build / "bin"
        self.rounds = args.rounds
        self.work = self.build / "bench-work"
        self.work.mkdir(parents=True, exist_ok=True)
        self.data = self.build / "bench-data"
        self.scratch = Path(args.scratch).resolve() if args.scratch else self.work / "scratch"
        self.results = {"machine": Machine.describe(), "activity_before": Machine.activity()}
        self.rows = []
        self.port = free_port()
        runtime = fresh(self.work / "runtime")
        runtime.chmod(0o700)
        # Every program runs in a home of its own: settings, caches and data never touch the user's.
        self.env = {k: v for k, v in os.environ.items()
                    if not k.startswith(("QT_", "XDG_", "DBUS_", "SESSION_MANAGER", "DESKTOP_"))}
        self.env.update({"HOME": str(self.work / "home"), "XDG_RUNTIME_DIR": str(runtime),
                         "XDG_CACHE_HOME": str(self.work / "home" / ".cache"),
                         "XDG_DATA_HOME": str(self.work / "home" / ".local" / "share"),
                         "LC_ALL": "C.UTF-8"})
        (self.work / "home").mkdir(exist_ok=True)

    # --- helpers -----------------------------------------------------------------------------

    def gui_env(self, config):
        env = dict(self.env, DISPLAY=self.display.name, QT_QPA_PLATFORM="xcb",
                   XDG_CONFIG_HOME=str(fresh(config)))
        return env

    def harness(self, *arguments, env=None, timeout=600):
        command = [str(self.bin / "vantorel-bench-harness"), *map(str, arguments)]
        done = subprocess.run(command, env=env or self.env, capture_output=True, text=True,
                              timeout=timeout)
        if done.returncode != 0:
            log(f"{' '.join(command)} failed ({done.returncode}):\n{done.stderr}")
        lines = [l for l in done.stdout.splitlines() if l.startswith("{")]
        return json.loads(lines[-1]) if lines else None

    def row(self, figure, ours, baseline, unit, goal_text, ratio=None, met=None, note=""):
        self.rows.append({"figure": figure, "vantorel": ours, "baseline": baseline, "unit": unit,
                          "ratio": ratio, "goal": goal_text, "met": met, "note": note})

    # --- start-up ------------------------------------------------------------------------------

    def bench_startup(self):
        """Process start to the main window drawn, measured from outside by the X server's
        events, for the real executable and for the bare program, alternately."""
        probe = str(self.bin / "vantorel-bench-startup")
        # Every item's data is there, as after `vantorel fetch` of all five groups.
        fresh(self.fetched_data)
        for group in make_data.GROUPS:
            for path in (self.data / "www" / "g" / group).iterdir():
                shutil.copy(path, self.fetched_data)
        programs = {
            "vantorel": [str(self.bin / "vantorel"), "--definitions", str(self.data / "defs-fetch"),
                         "--data-dir", str(self.fetched_data)],
            "bare": [str(self.bin / "vantorel-bench-bare")],
        }
        runs = {name: [] for name in programs}
        for attempt in range(self.rounds * 2 + 1):
            order = list(programs) if attempt % 2 == 0 else list(reversed(programs))
            for name in order:
                env = self.gui_env(self.work / f"config-startup-{name}")
                done = subprocess.run([probe, "--settle", "1000", "--", *programs[name]], env=env,
                                      capture_output=True, text=True, timeout=120)
                if done.returncode != 0:
                    raise RuntimeError(f"start-up probe failed for {name}: {done.stderr}")
                result = json.loads(done.stdout.strip().splitlines()[-1])
                if attempt > 0:  # the first of each warms the caches
                    runs[name].append(result)
        shown = {n: median([r["shown_ms"] for r in runs[n]]) for n in runs}
        mapped = {n: median([r["mapped_ms"] for r in runs[n]]) for n in runs}
        peak = {n: median([r["peak_rss_kb"] for r in runs[n]]) / 1024 for n in runs}
        cpu = {n: median([r["shown_cpu_ms"] for r in runs[n]]) for n in runs}
        self.results["startup"] = {"runs": runs, "shown_ms": shown, "mapped_ms": mapped,
                                   "shown_cpu_ms": cpu, "peak_rss_mb": peak}
        ratio = shown["vantorel"] / shown["bare"]
        self.row("Start-up: process start to main window shown", shown["vantorel"], shown["bare"],
                 "ms", "<= 1.5 x bare Qt", ratio, ratio <= 1.5,
                 f"mapped at {mapped['vantorel']:.0f} / {mapped['bare']:.0f} ms; processor time "
                 f"until shown {cpu['vantorel']:.0f} / {cpu['bare']:.0f} ms")
        extra = peak["vantorel"] - peak["bare"]
        self.row("Memory: peak resident size after start-up", peak["vantorel"], peak["bare"],
                 "MB", "<= bare + 30 MB", f"+{extra:.1f} MB", extra <= 30)

    # --- transfers -----------------------------------------------------------------------------

    def bench_transfers(self):
        expected = {e["name"]: e["size"] for entries in self.manifest["groups"].values()
                    for e in entries}
        total = sum(expected.values())
        out = self.scratch / "fetch-out"
        curl_cfg = (self.data / "curl.cfg").read_text().replace("OUTPUT", str(out))
        (self.work / "curl.cfg").write_text(curl_cfg)
        curl = ["curl", "--silent", "--show-error", "--fail", "-K", str(self.work / "curl.cfg")]
        commands = {
            "vantorel": [str(self.bin / "vantorel"), "fetch", "--definitions",
                         str(self.data / "defs-fetch"), "--data-dir", str(out), "--timeout", "60"],
            "curl one at a time": curl,
            "curl five in parallel": curl[:1] + ["--parallel", "--parallel-max", "5",
                                                 "--parallel-immediate"] + curl[1:],
        }
        times = {name: [] for name in commands}
        # Processor time (user and system) beside the wall clock: on a busy machine the wall
        # clock also counts waiting for a processor.
        cpu_times = {name: [] for name in commands}
        for attempt in range(self.rounds + 1):
            names = list(commands)
            names = names[attempt % 3:] + names[:attempt % 3]
            for name in names:
                fresh(out)
                env = dict(self.env, XDG_CONFIG_HOME=str(fresh(self.work / "config-fetch")))
                before = resource.getrusage(resource.RUSAGE_CHILDREN)
                start = time.perf_counter()
                done = subprocess.run(commands[name], env=env, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.PIPE, text=True, timeout=600)
                elapsed = time.perf_counter() - start
                after = resource.getrusage(resource.RUSAGE_CHILDREN)
                cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
                got = {p.name: p.stat().st_size for p in out.iterdir()}
                if done.returncode != 0 or got != expected:
                    raise RuntimeError(f"{name} did not fetch every file ({done.returncode}): "
                                       f"{done.stderr[-2000:]}")
                if attempt > 0:
                    times[name].append(elapsed)
                    cpu_times[name].append(cpu)
        fresh(out)
        med = {n: median(t) for n, t in times.items()}
        med_cpu = {n: median(t) for n, t in cpu_times.items()}
        self.results["transfers"] = {"times_s": times, "median_s": med, "cpu_s": cpu_times,
                                     "median_cpu_s": med_cpu, "files": len(expected),
                                     "bytes": total,
                                     "group_bytes": {g: sum(e["size"] for e in entries)
                                                     for g, entries in
                                                     self.manifest["groups"].items()}}
        mb = total / 1e6
        for name, goal, limit in (("curl one at a time", "<= 1.0 x curl sequential", 1.0),
                                  ("curl five in parallel", "<= 1.3 x curl --parallel 5", 1.3)):
            ratio = med["vantorel"] / med[name]
            self.row(f"Transfers: fetch {len(expected)} files ({mb:.0f} MB) vs {name}",
                     med["vantorel"] * 1000, med[name] * 1000, "ms", goal, ratio, ratio <= limit,
                     f"{mb / med['vantorel']:.0f} vs {mb / med[name]:.0f} MB/s; processor time "
                     f"{med_cpu['vantorel'] * 1000:.0f} vs {med_cpu[name] * 1000:.0f} ms")

    # --- image display -------------------------------------------------------------------------

    def bench_image(self):
        images = self.data / "images"
        big, small = images / "sun-4096.jpg", images / "sun-512.jpg"
        if not big.exists() or not small.exists():
            images.mkdir(parents=True, exist_ok=True)
            for path, side in ((big, 4096), (small, 512)):
                self.harness("make-jpeg", path, side, env=self.gui_env(self.work / "config-jpeg"))
                if not path.exists():
                    raise RuntimeError("cannot make the test images")
        defs = fresh(self.work / "defs-image")
        base = f"http://127.0.0.1:{self.port}/none/"
        for group in make_data.GROUPS:
            if group == "Sun":
                nodes = [make_data.node(big.name, "Large", base, big.name, 0),
                         make_data.node(small.name, "Small", base, small.name, 0)]
            else:
                nodes = [make_data.node(f"{group}.dat", group, base, "x", 1 if group == "Alerts" else 0)]
            make_data.write_plist(defs / f"Data{group}.plist", make_data.group_root(group, nodes))
        data = fresh(self.work / "data-image")
        shutil.copy(big, data)
        shutil.copy(small, data)
        result = self.harness("image", defs, data, big.name, small.name, self.rounds * 5,
                              env=self.gui_env(self.work / "config-image"))
        if not result or not result["ok"]:
            raise RuntimeError("the image measurement failed")
        self.results["image"] = result
        ours, alone = result["in_view_median_ms"], result["decode_alone_median_ms"]
        ratio = ours / alone
        self.row("Image display: select a 4096x4096 JPEG node until the image is in the view",
                 ours, alone, "ms", "<= 1.3 x QImageReader at 800x800", ratio, ratio <= 1.3,
                 f"{result['file_bytes'] / 1e6:.1f} MB file; painted on screen after "
                 f"{result['painted_median_ms']:.1f} ms")

    # --- reformatting --------------------------------------------------------------------------

    def bench_reformat(self):
        folder = self.work / "reformat"
        if self.harness("reformat-input", folder, 10) is None and not (folder / "passes.json").exists():
            raise RuntimeError("cannot make the bulletins")
        ours, theirs = {}, {}
        for _ in range(2):
            result = self.harness("reformat", folder, self.rounds)
            for kind, r in result.items():
                ours.setdefault(kind, []).extend(r["times_ms"])
            done = subprocess.run([PYTHON, str(HERE / "reformat_baseline.py"), str(folder),
                                   str(self.rounds)], env=self.env, capture_output=True, text=True,
                                  check=True)
            baseline = json.loads(done.stdout)
            for kind, r in baseline.items():
                if not r["same_output"]:
                    raise RuntimeError(f"Python and Vantorel disagree on the {kind} bulletin")
                theirs.setdefault(kind, []).extend(r["times_ms"])
        self.results["reformat"] = {"vantorel_ms": ours, "python_ms": theirs}
        labels = {"daily": "daily report (29 passes)", "highlights": "weekly highlights (11 passes)",
                  "other": "other reports (5 passes)"}
        for kind in ("daily", "highlights", "other"):
            a, b = median(ours[kind]), median(theirs[kind])
            self.row(f"Reformat a 10 MB bulletin: {labels[kind]}", a, b, "ms",
                     "<= 1.0 x Python str.replace", a / b, a <= b)

    # --- stalls --------------------------------------------------------------------------------

    def bench_stall(self):
        runs = []
        for attempt in range(3):
            data = fresh(self.work / "data-stall")
            shutil.copy(self.data / "www" / "text" / "RSGA.txt", data)
            result = self.harness("stall", self.data / "defs-stall", data, 3000, 250,
                                  env=self.gui_env(self.work / "config-stall"), timeout=300)
            if not result or not result["ok"]:
                raise RuntimeError(f"the stall measurement failed: {result}")
            runs.append(result)
        self.results["stall"] = runs
        worst = max(runs, key=lambda r: r["transfers"]["max_gap_ms"])
        during = worst["transfers"]["max_gap_ms"]
        idle = max(r["idle"]["max_gap_ms"] for r in runs)
        switching = max(r["switching"]["max_gap_ms"] for r in runs)
        seconds = median([r["transfers"]["transfers_ms"] for r in runs]) / 1000
        busy = max(r["transfers"]["max_busy_ms"] for r in runs)
        blocked = max(r["transfers"].get("max_blocked_ms", 0.0) for r in runs)
        self.row("Longest main-thread gap (1-ms timer): 5 large transfers + view switches",
                 during, idle, "ms", "< 16 ms (baseline: idle)", during / idle, during < 16,
                 f"worst of 3 runs of {seconds:.1f} s; switching views alone: {switching:.1f} ms; "
                 f"the main thread's own work within one gap at most {busy:.1f} ms, its sleeping "
                 f"(disk, locks, X server) at most {blocked:.1f} ms")

    # --- the providers' JSON data and the history ------------------------------------------

    def bench_history(self):
        command = [str(self.bin / "vantorel-bench-history"), str(self.work / "history"),
                   str(self.rounds * 3)]
        done = subprocess.run(command, env=self.env, capture_output=True, text=True, timeout=900,
                              check=True)
        result = json.loads(done.stdout.splitlines()[-1])
        self.results["history"] = result
        frame = 16.0
        check = result["check_median_ms"]
        self.row("Main thread: unpack and check a 1-day 1-minute solar-wind download",
                 check, frame, "ms", "< 16 ms (one frame)", check / frame, check < frame,
                 f"{result['gzip_bytes'] / 1e3:.0f} KB gzip, {result['plain_bytes'] / 1e6:.1f} MB "
                 f"unpacked")
        merge = result["merge_median_ms"]
        hand_over = result["hand_over_median_ms"]
        self.row("Main thread: hand that day to the history (1-minute rows, 90-day history)",
                 hand_over, frame, "ms", "< 16 ms (one frame)", hand_over / frame,
                 hand_over < frame,
                 f"the history's own thread then reads the file in "
                 f"{result['parse_median_ms']:.1f} ms and merges its {result['samples_per_day']} "
                 f"samples into {result['history_rows']} rows ({result['history_bytes'] / 1e6:.0f} "
                 f"MB) in {merge:.1f} ms; {result['recorded_median_ms']:.1f} ms in all")

    # --- the Now view's charts -----------------------------------------------------------------

    def bench_nowcharts(self):
        result = self.harness("nowcharts", self.work / "nowcharts", self.rounds,
                              env=self.gui_env(self.work / "config-nowcharts"), timeout=1800)
        if result is None:
            raise RuntimeError("the chart benchmark failed")
        self.results["nowcharts"] = result
        frame = 16.0
        ranges = result["ranges"]
        widest = ranges["2160h"]
        step = widest["step_median_ms"]
        others = ", ".join(f"{name}: {r['step_median_ms']:.1f} ms" for name, r in ranges.items())
        self.row("Main thread: the longest step of redrawing the Now charts at the 90-day range",
                 step, frame, "ms", "< 16 ms (one frame)", step / frame, step < frame,
                 f"every range: {others}; the main thread's own time in that step "
                 f"{widest['step_busy_median_ms']:.1f} ms, in the whole redraw (four steps) "
                 f"{widest['redraw_median_ms']:.1f} ms ({widest['redraw_busy_median_ms']:.1f} ms "
                 f"its own); the history's thread read and thinned the 90 days "
                 f"({result['history_rows']} one-minute rows) in {widest['query_median_ms']:.0f} "
                 f"ms to {widest['points']} points for {result['columns']} columns; moving the "
                 f"cursor: {widest['cursor_median_ms']:.1f} ms")
        whole = widest["redraw_busy_median_ms"]
        self.row("Main thread: its own time for the whole redraw at the 90-day range (4 steps)",
                 whole, frame, "ms", "< 16 ms (one frame)", whole / frame, whole < frame,
                 "processor time of the main thread, without the waits for a processor that a "
                 f"busy machine adds (wall clock {widest['redraw_median_ms']:.1f} ms)")

    # --- all -----------------------------------------------------------------------------------

    def run(self, only):
        self.manifest = None
        self.fetched_data = self.work / "data-fetched"
        self.scratch.mkdir(parents=True, exist_ok=True)
        log(f"making test data in {self.data}")
        made = subprocess.run([PYTHON, str(HERE / "make_data.py"), str(self.data), str(self.port)],
                              capture_output=True, text=True, check=True)
        self.manifest = json.loads((self.data / "manifest.json").read_text())
        self.results["data"] = json.loads(made.stdout)
        self.display = Display(self.work)
        self.server = Server(self.work, self.data / "www", self.port, "8m")
        try:
            steps = [("transfers", self.bench_transfers), ("startup", self.bench_startup),
                     ("image", self.bench_image), ("reformat", self.bench_reformat),
                     ("stall", self.bench_stall), ("history", self.bench_history),
                     ("nowcharts", self.bench_nowcharts)]
            for name, step in steps:
                if only and name not in only:
                    continue
                log(f"measuring {name}")
                step()
        finally:
            self.server.stop()
            self.display.stop()
        self.results["activity_after"] = Machine.activity()
        self.results["rows"] = self.rows
        (self.work / "results.json").write_text(json.dumps(self.results, indent=1))

    def print_table(self):
        m = self.results["machine"]
        before, after = self.results["activity_before"], self.results["activity_after"]
        print(f"Machine: {m['cpu']}, {m['cores']} cores, {m['memory_gb']} GB; kernel {m['kernel']}; "
              f"Qt {m['qt']}; Python {m['python']}")
        print(f"Source: commit {m['commit']}, {m['uncommitted_src_files']} uncommitted files in src/")
        print(f"Load average before/after: {before['load'][0]:.2f} / {after['load'][0]:.2f}; "
              f"fuzzers running: {before['fuzzers']} / {after['fuzzers']}; "
              f"compilers running: {before['compilers']} / {after['compilers']}")
        print(f"Rounds: {self.rounds} (medians); details in {self.work / 'results.json'}")
        print()
        header = ("Figure", "Vantorel", "Baseline", "Ratio", "Goal", "Result")
        lines = []
        for r in self.rows:
            ratio = r["ratio"] if isinstance(r["ratio"], str) else f"{r['ratio']:.2f} x"
            lines.append((r["figure"], f"{r['vantorel']:.1f} {r['unit']}",
                          f"{r['baseline']:.1f} {r['unit']}", ratio, r["goal"],
                          "met" if r["met"] else "MISSED"))
        widths = [max(len(str(x[i])) for x in [header] + lines) for i in range(len(header))]
        fmt = " | ".join(f"{{:{'<' if i in (0, 4) else '>'}{w}}}" for i, w in enumerate(widths))
        print(fmt.format(*header))
        print("-+-".join("-" * w for w in widths))
        for line in lines:
            print(fmt.format(*line))
        notes = [(r["figure"], r["note"]) for r in self.rows if r["note"]]
        if notes:
            print()
            for figure, note in notes:
                print(f"  {figure}: {note}")
        missed = sum(1 for r in self.rows if not r["met"])
        print()
        print(f"{len(self.rows) - missed} goals met, {missed} missed.")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", required=True)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", default="", help="comma-separated: " +
                        "startup,transfers,image,reformat,stall,history,nowcharts")
    parser.add_argument("--scratch", help="where fetched files are written (default: in BUILD)")
    args = parser.parse_args()
    only = {x for x in args.only.split(",") if x}
    bench = Bench(args)
    bench.run(only)
    bench.print_table()


if __name__ == "__main__":
    main()
