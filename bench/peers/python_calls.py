#!/usr/bin/env python3
"""Measures calls from Python beside the program and beside igraph, and writes a table.

Each call runs in a process of its own, which has made its matrix or graph before. The peak is that
of the call above what the process held when it began, so the matrix or graph isn't in it.
"""
import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BEGIN = "<!-- python: `./dev bench python` writes the table below -->"
END = "<!-- python: end -->"
MIB = 1 << 20


def resident(field):
    for line in open("/proc/self/status"):
        if line.startswith(field):
            return int(line.split()[1]) * 1024
    raise LookupError(field)


def measured(call):
    """Seconds of a call, and bytes at its peak above those before it."""
    pathlib.Path("/proc/self/clear_refs").write_text("5")  # the peak begins anew
    before = resident("VmRSS:")
    start = time.perf_counter()
    found = call()
    seconds = time.perf_counter() - start
    return {"seconds": seconds, "peak": resident("VmHWM:") - before, "communities": len(found)}


def scipy_matrix(file):
    import numpy
    import scipy.sparse

    import vorl

    ends = numpy.loadtxt(file, numpy.uint32, comments="#").T
    nodes = int(ends.max()) + 1
    half = scipy.sparse.coo_matrix((numpy.ones(len(ends[0]), numpy.float32), tuple(ends)),
                                   (nodes, nodes))
    matrix = (half + half.T).tocsr()
    del ends, half
    return measured(lambda: vorl.communities(matrix, threads=1))


def networkx_graph(file):
    import networkx

    return networkx.read_edgelist(file, nodetype=int, data=False)


def vorl_of_networkx(file):
    import vorl

    graph = networkx_graph(file)
    return measured(lambda: vorl.communities(graph, threads=1))


def igraph_of_networkx(file):
    import random

    import igraph

    graph = networkx_graph(file)
    random.seed(1)
    return measured(lambda: igraph.Graph.from_networkx(graph).community_leiden("modularity"))


CALLS = {"scipy matrix, vorl.communities": scipy_matrix,
         "networkx graph, vorl.communities": vorl_of_networkx,
         "networkx graph, igraph from_networkx and Leiden": igraph_of_networkx}


def program(vorl, file):
    summary = json.loads(subprocess.check_output(
        [vorl, "communities", file, "--threads", "1", "--json", "-o", "/dev/null"]))
    seconds = summary["seconds"]
    return {"seconds": seconds["read"] + seconds["communities"],
            "peak": summary["peak_memory_bytes"], "communities": summary["communities"]}


def best_of(runs, run):
    found = [run() for _ in range(runs)]
    return min(found, key=lambda one: one["seconds"])


def import_seconds(runs):
    def seconds(code):
        start = time.perf_counter()
        subprocess.check_call([sys.executable, "-c", code])
        return time.perf_counter() - start

    return statistics.median(seconds("import vorl") - seconds("pass") for _ in range(runs))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--vorl", type=pathlib.Path, default=ROOT / "build/bench/vorl")
    parser.add_argument("--runs", type=int, default=2)
    parser.add_argument("--nodes", type=int, nargs="*", default=[100000, 1000000],
                        help="of the planted networks, ten times as many links")
    parser.add_argument("--one", nargs=2, metavar=("CALL", "FILE"), help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.one:
        print(json.dumps(CALLS[options.one[0]](options.one[1])))
        return

    import networks

    lines = ["| Links | Call | Time | Peak | Communities |", "|---:|---|---:|---:|---:|"]
    folder = ROOT / "build/peers/networks"
    folder.mkdir(parents=True, exist_ok=True)
    for nodes in options.nodes:
        label = "%dm" % (nodes // 100000) if nodes >= 100000 else "%dk" % (nodes // 100)
        network = networks.planted(folder, "planted-" + label, "", nodes)
        networks.warm(network)
        rows = {"program `vorl communities`, with reading":
                best_of(options.runs, lambda: program(options.vorl, network.file))}
        for name in CALLS:
            if "networkx" in name and network.links > 2e6:
                continue
            rows[name] = best_of(options.runs, lambda: json.loads(subprocess.check_output(
                [sys.executable, __file__, "--one", name, network.plain])))
        for name, row in rows.items():
            lines.append("| %s | %s | %.2f s | %.0f MiB, %.0f bytes a link | %s |" % (
                format(network.links, ","), name, row["seconds"], row["peak"] / MIB,
                row["peak"] / network.links, format(row["communities"], ",")))
            print(lines[-1], flush=True)
    lines += ["", "`import vorl` takes %.3f s beyond the start of Python." % import_seconds(9)]
    print(lines[-1])

    page = ROOT / "docs/performance.md"
    text = page.read_text()
    first, last = text.index(BEGIN) + len(BEGIN), text.index(END)
    page.write_text(text[:first] + "\n\n" + "\n".join(lines) + "\n\n" + text[last:])


if __name__ == "__main__":
    main()
