#!/usr/bin/python3
"""Measures vorl beside other packages, in turn, and writes a page with tables and a picture.

Each run is a process of its own on one core with one thread. What is done is kept in a file, so
that a stopped run goes on where it was; a new build of vorl starts afresh.
"""
import argparse
import hashlib
import json
import math
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import threading
import time

import networks
import report
import worker

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORKER = pathlib.Path(worker.__file__).resolve()

PROGRAM = ROOT / "build/bench/vorl"
DEBIAN = "/usr/bin/python3"
# The two roads of vorl, each a program of its own here, by name and title.
OWN = {"vorl": "vorl cluster", "vorl-communities": "vorl communities"}
# Contender: where its package comes from, its method, its title, whether it takes arcs.
CONTENDERS = {
    "igraph-louvain": ("PyPI", "igraph-louvain", "Louvain, igraph", False),
    "igraph-leiden": ("PyPI", "igraph-leiden", "Leiden, igraph", False),
    "leidenalg": ("PyPI", "leidenalg", "Leiden, leidenalg", True),
    "igraph-labels": ("PyPI", "igraph-labels", "label propagation, igraph", True),
    "igraph-infomap": ("PyPI", "igraph-infomap", "Infomap, igraph", True),
    "networkit-louvain": ("PyPI", "networkit-louvain", "Louvain, networkit", False),
    "networkit-leiden": ("PyPI", "networkit-leiden", "Leiden, networkit", False),
    "networkit-labels": ("PyPI", "networkit-labels", "label propagation, networkit", False),
    "infomap": ("PyPI", "infomap", "Infomap", True),
    "debian-louvain": ("Debian", "igraph-louvain", "Louvain, igraph", False),
    "debian-leidenalg": ("Debian", "leidenalg", "Leiden, leidenalg", True),
    "debian-labels": ("Debian", "igraph-labels", "label propagation, igraph", True),
    "debian-infomap": ("Debian", "igraph-infomap", "Infomap, igraph", True),
}


# The peak memory of a process covers that of its parent at the fork, so the parent is a small one.
LAUNCH = ["/bin/sh", "-c", '"$@"; exit $?', "sh"]


# A level is judged if it has less than this share of the clusters of the one judged before.
LEVEL_STEP = 0.9
# So many of these have their modularity measured, which takes longer than the rest.
UPPER_LEVELS = 8


class Failed(Exception):
    pass


def execute(command, core, limit=None):
    """Runs a command on one core; returns its output and the seconds of processor time."""
    def settle():
        os.setsid()
        os.sched_setaffinity(0, {core})

    environment = dict(os.environ, OMP_NUM_THREADS="1", PYTHONDONTWRITEBYTECODE="1")
    with tempfile.TemporaryFile("w+") as out, tempfile.TemporaryFile("w+") as err:
        process = subprocess.Popen(LAUNCH + list(map(str, command)), stdin=subprocess.DEVNULL,
                                   stdout=out, stderr=err, preexec_fn=settle, env=environment)
        late = threading.Event()

        def stop():
            late.set()
            os.killpg(process.pid, signal.SIGKILL)

        timer = threading.Timer(limit, stop) if limit else None
        if timer:
            timer.start()
        try:
            _, status, usage = os.wait4(process.pid, 0)
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            raise
        finally:
            if timer:
                timer.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        out.seek(0)
        err.seek(0)
        if late.is_set():
            raise Failed("stopped after %g s" % limit)
        if process.returncode != 0:
            lines = err.read().strip().splitlines()
            raise Failed(lines[-1] if lines else "exit code %d" % process.returncode)
        return out.read(), usage.ru_utime + usage.ru_stime


class Bench:
    def __init__(self, options):
        self.options = options
        self.vorl = options.vorl
        self.folder = options.folder / ("quick" if options.quick else "full")
        self.folder.mkdir(parents=True, exist_ok=True)
        self.records = self.folder / "runs.jsonl"
        self.done = []
        self.versions = {}

    def python(self, source):
        return DEBIAN if source == "Debian" else self.options.venv / "bin/python"

    def contenders(self):
        """Those whose packages are there and that were asked for, with their versions."""
        chosen = []
        for name, (source, method, _, _) in CONTENDERS.items():
            if self.options.only and not any(word in name for word in self.options.only):
                continue
            try:
                self.versions[name] = execute([self.python(source), WORKER, "--version", method],
                                              self.options.core)[0].strip()
                chosen.append(name)
            except (Failed, OSError) as error:
                print("%s is left out: %s" % (name, error), flush=True)
        return chosen

    def program(self):
        """A hash of what the program is made of, so that a commit elsewhere doesn't count."""
        parts = [self.vorl]
        if self.vorl == PROGRAM:
            parts = [ROOT / "CMakeLists.txt", ROOT / "CMakePresets.json"]
            for folder in ("include", "export", "lib", "app"):
                parts += sorted(file for file in (ROOT / folder).rglob("*") if file.is_file())
        digest = hashlib.sha256()
        for part in parts:
            digest.update(b"%s %d\n" % (part.name.encode(), part.stat().st_size))
            digest.update(part.read_bytes())
        return digest.hexdigest()[:16]

    def start(self):
        """Takes up the records of an earlier run with the same program."""
        program = self.program()
        if self.records.exists():
            lines = self.records.read_text().splitlines()
            head = json.loads(lines[0])
            if head["program"] == program:
                self.done = [json.loads(line) for line in lines[1:]]
                print("%d runs are there already" % len(self.done), flush=True)
                return
            self.records.rename(self.records.with_name("runs-%s.jsonl" % head["program"]))
        self.records.write_text(json.dumps({"program": program}) + "\n")

    def has(self, network, contender, repeat):
        return any(run["network"] == network.name and run["contender"] == contender and
                   (run["repeat"] == repeat or run.get("failed")) for run in self.done)

    def keep(self, record):
        self.done.append(record)
        with open(self.records, "a") as out:
            out.write(json.dumps(record) + "\n")

    def quality(self, network, clusters, modularity=True):
        """Measures of the clusters of a file, by vorl for all alike."""
        core = self.options.core
        measures = {}
        if modularity:
            found = json.loads(execute([self.vorl, "evaluate", network.file, clusters, "--json"],
                                       core)[0])
            measures.update(clusters=found["clusters"], modularity=found["modularity"])
        if network.truth:
            found = json.loads(execute([self.vorl, "compare", clusters, network.truth, "--json",
                                        "--nodes", "second"], core)[0])
            measures.update(nmi=found["nmi_max"], f1=found["f1"])
        return measures

    def levels(self, network, folder):
        """Measures of the levels from the finest one up, but of those that are much alike."""
        files = sorted(folder.glob("**/*.cnl"))
        chosen, last = [], None
        for file in files:
            with open(file) as lines:
                count = sum(not line.startswith("#") for line in lines)
            if last is None or count < LEVEL_STEP * last or file == files[-1]:
                chosen.append(file)
                last = count
        upper = chosen[-UPPER_LEVELS:]
        found = [self.quality(network, file, file in upper) for file in chosen]
        return {"levels": found, "height": len(files)}

    def run_vorl(self, network, repeat, scratch):
        text, cpu = execute([self.vorl, "cluster", network.file, "--json"], self.options.core,
                            self.options.limit)
        found = json.loads(text)
        record = {"read": found["seconds"]["read"], "cluster": found["seconds"]["build"],
                  "peak": found["peak_memory_bytes"], "base": 0, "cpu": cpu}
        if repeat == 0:  # all runs give the same clusters
            root, levels = scratch / "root.cnl", scratch / "levels"
            for what, output in (("root", root), ("per-level", levels / "level.cnl")):
                levels.mkdir(exist_ok=True)
                execute([self.vorl, "cluster", network.file, "-q", "-o", output, "--levels", what],
                        self.options.core)
            record["root"] = self.quality(network, root)
            record.update(self.levels(network, levels))
        return record

    def run_communities(self, network, repeat, scratch):
        clusters = scratch / "communities.cnl"
        text, cpu = execute([self.vorl, "communities", network.file, "--json", "--threads", 1,
                             "-o", clusters], self.options.core, self.options.limit)
        found = json.loads(text)
        record = {"read": found["seconds"]["read"], "cluster": found["seconds"]["communities"],
                  "peak": found["peak_memory_bytes"], "base": 0, "cpu": cpu}
        if repeat == 0:  # all runs give the same communities
            record["root"] = self.quality(network, clusters)
            record.update(levels=[record["root"]], height=1)
        return record

    def run_peer(self, contender, network, repeat, scratch):
        source, method, _, _ = CONTENDERS[contender]
        text, cpu = execute([self.python(source), WORKER, method, network.plain, scratch,
                             repeat + 1], self.options.core, self.options.limit)
        record = json.loads(text)
        record["cpu"] = cpu
        record.update(self.levels(network, scratch))
        record["root"] = record["levels"][-1]
        return record

    def measure(self, contender, network, repeat):
        if self.has(network, contender, repeat):
            return
        record = {"network": network.name, "contender": contender, "repeat": repeat,
                  "when": time.strftime("%Y-%m-%d %H:%M"), "load": os.getloadavg()[0],
                  "version": self.versions[contender]}
        with tempfile.TemporaryDirectory(dir=self.folder) as scratch:
            try:
                folder = pathlib.Path(scratch)
                if contender == "vorl":
                    record.update(self.run_vorl(network, repeat, folder))
                elif contender in OWN:
                    record.update(self.run_communities(network, repeat, folder))
                else:
                    record.update(self.run_peer(contender, network, repeat, folder))
                print("%-14s %-18s read %9.4f s  cluster %9.4f s  %7.1f MiB" %
                      (network.name, contender, record["read"], record["cluster"],
                       record["peak"] / 2**20), flush=True)
            except Failed as error:
                record["failed"] = str(error)
                print("%-14s %-18s %s" % (network.name, contender, error), flush=True)
        self.keep(record)

    def run(self):
        self.start()
        version = execute([self.vorl, "--version"], self.options.core)[0].strip()
        self.versions.update(dict.fromkeys(OWN, version))
        contenders = list(OWN) + self.contenders()
        measured = []
        for network in networks.networks(self.options.folder / "networks", ROOT / "data",
                                         self.options.quick, self.options.largest,
                                         self.options.without, self.options.networks):
            measured.append(network)
            networks.warm(network)
            for repeat in range(self.options.repeat):
                for contender in contenders:
                    if contender in OWN or not network.directed or CONTENDERS[contender][3]:
                        self.measure(contender, network, repeat)
        titles = {name: (title, source) for name, (source, _, title, _) in CONTENDERS.items()}
        report.write(self.options.out, self.options, measured, OWN, titles, self.done)
        print("written: %s, %s" % (self.options.out, self.options.out.with_suffix(".svg")))


def parse():
    folder = ROOT / "build/peers"
    parser = argparse.ArgumentParser(prog="./dev bench peers", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("networks", nargs="*", type=pathlib.Path, metavar="NETWORK",
                        help="further files of links, .nse or .nsa, each link once; NAME.cnl "
                        "beside one is its truth")
    parser.add_argument("--quick", action="store_true", help="small networks only")
    parser.add_argument("--below", type=float, default=math.inf, dest="largest", metavar="LINKS",
                        help="leave out the made networks with that many links or more")
    parser.add_argument("--without", type=lambda text: text.split(","), default=[],
                        metavar="WORD,...",
                        help="leave out the made networks with one of the words in their names: "
                        "planted, mixed, overlap, rmat")
    parser.add_argument("--repeat", type=int, default=3, help="runs of each program (3)")
    parser.add_argument("--limit", type=float, default=1800, metavar="S",
                        help="seconds after which a run is stopped (1800)")
    parser.add_argument("--only", type=lambda text: text.split(","), metavar="WORD,...",
                        help="only the peers with one of the words in their names: " +
                        ", ".join(CONTENDERS))
    parser.add_argument("--core", type=int, default=max(os.sched_getaffinity(0)),
                        help="the core to run on (the last one)")
    parser.add_argument("--fresh", action="store_true", help="forget the runs of before")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "docs/performance.md",
                        help="the page to write; the picture goes beside it")
    parser.add_argument("--vorl", type=pathlib.Path, default=PROGRAM)
    parser.add_argument("--venv", type=pathlib.Path, default=folder / "venv",
                        help="virtual environment with the packages of PyPI")
    options = parser.parse_args()
    options.folder = folder
    if options.repeat < 1:
        parser.error("--repeat must be at least 1")
    for file in options.networks:
        if file.suffix not in (".nse", ".nsa") or not file.is_file():
            parser.error("%s: a file of links, .nse or .nsa, is expected" % file)
    if options.fresh:
        shutil.rmtree(folder / ("quick" if options.quick else "full"), ignore_errors=True)
    return options


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        Bench(parse()).run()
    except KeyboardInterrupt:
        raise SystemExit("stopped; the same command goes on from here")
