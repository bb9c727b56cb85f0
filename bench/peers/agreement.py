#!/usr/bin/python3
"""Compares the communities that vorl and its peers find with known ones, and writes a table.

Networks are made with planted communities, or bundled ones whose groups are known by themselves.
Each program runs once, peers with the seed 1. Nothing is timed here, so anything else may run.
"""
import argparse
import json
import pathlib
import subprocess
import tempfile

import networks

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORKER = pathlib.Path(__file__).with_name("worker.py")
BEGIN = "<!-- agreement: `./dev bench agreement` writes the table below -->"
END = "<!-- agreement: end -->"
PEERS = {"igraph-leiden": "Leiden", "igraph-infomap": "Infomap",
         "igraph-labels": "label propagation"}
# What is asked of the generator, with the words of the table.
PLANTED = {
    "mu .3": dict(nodes=10000, seed=1),
    "mu .3, 100,000 nodes": dict(nodes=100000, seed=1),
    "mu .5": dict(nodes=10000, mu=0.5, seed=2),
    "mu .6": dict(nodes=10000, mu=0.6, seed=3),
    "mu .65": dict(nodes=10000, mu=0.65, seed=8),
    "mu .7": dict(nodes=10000, mu=0.7, seed=29),
    "mu .3, 1,000 nodes in two": dict(nodes=10000, overlapping=1000, seed=4),
    "mu .2, 2,000 nodes in three": dict(nodes=10000, mu=0.2, overlapping=2000, memberships=3,
                                        seed=9),
    "mu .4, 3,000 nodes in two": dict(nodes=10000, degree=25, mu=0.4, overlapping=3000, seed=33),
    "mu .3, mean degree 8": dict(nodes=10000, degree=8, mu=0.3, seed=5),
    "mu .4, sizes 50 to 1,000": dict(nodes=20000, mu=0.4, communities=(50, 1000), most_links=200,
                                     seed=10),
    "mu .6, sizes 100 to 2,000": dict(nodes=20000, degree=30, mu=0.6, communities=(100, 2000),
                                      most_links=300, seed=34),
    "mu .4, sizes 8 to 30": dict(nodes=10000, degree=15, mu=0.4, communities=(8, 30), most_links=40,
                                 seed=11),
}
BUNDLED = {"football": "football, conferences", "karate": "karate, factions"}


def run(*command):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True,
                          text=True).stdout


def agreement(vorl, clusters, truth):
    """Overlapping NMI over the larger entropy, and mean F1."""
    found = json.loads(run(vorl, "compare", clusters, truth, "--json", "--nodes", "second"))
    return found["nmi_max"], found["f1"]


def measured(options, network, scratch):
    """The agreement of each program by its title, and the number of shared nodes found."""
    clusters = scratch / "clusters.cnl"
    summary = json.loads(run(options.vorl, "communities", network.file, "-o", clusters, "--json"))
    row = {"vorl communities": agreement(options.vorl, clusters, network.truth)}
    for method, title in PEERS.items():
        for file in scratch.glob("level-*.cnl"):
            file.unlink()
        run(options.venv / "bin/python", WORKER, method, network.plain, scratch, 1)
        row[title] = agreement(options.vorl, max(scratch.glob("level-*.cnl")), network.truth)
    return row, summary["communities"], summary["shared_nodes"]


def table(rows):
    titles = list(rows[0][1])
    lines = ["| Network | " + " | ".join(titles) + " | communities, known | shared |",
             "|---|" + "---:|" * (len(titles) + 2)]
    for name, row, known, found, shared in rows:
        best = max(value for value, _ in row.values())
        cells = ["**%.3f** / %.3f" % cell if cell[0] == best else "%.3f / %.3f" % cell
                 for cell in row.values()]
        lines.append("| %s | %s | %s, %s | %s |" % (name, " | ".join(cells), format(found, ","),
                                                    format(known, ","), format(shared, ",")))
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vorl", type=pathlib.Path, default=ROOT / "build/bench/vorl")
    parser.add_argument("--venv", type=pathlib.Path, default=ROOT / "build/peers/venv")
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "build/agreement")
    parser.add_argument("--page", type=pathlib.Path, default=ROOT / "docs/performance.md")
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)

    cases = [(title, networks.planted(options.folder, "planted-%d" % number, title, **asked))
             for number, (title, asked) in enumerate(PLANTED.items(), 1)]
    cases += [(title, networks.bundled(options.folder, ROOT / "data", name + ".nse", title))
              for name, title in BUNDLED.items()]
    rows = []
    with tempfile.TemporaryDirectory() as scratch:
        for title, network in cases:
            known = sum(not line.startswith("#") for line in network.truth.open())
            row, found, shared = measured(options, network, pathlib.Path(scratch))
            rows.append((title, row, known, found, shared))
            print(title, {name: "%.3f" % value for name, (value, _) in row.items()}, flush=True)
    page = options.page.read_text()
    before, rest = page.split(BEGIN)
    options.page.write_text(before + BEGIN + "\n\n" + table(rows) + "\n\n" + END +
                            rest.split(END)[1])


if __name__ == "__main__":
    main()
