#!/usr/bin/python3
"""Measures communities on Apache Spark beside GraphX, Spark's own library of networks, on a planted
network: seconds, and the agreement with the planted truth. The table is written to docs/spark.md.
With --figures KIND LINKS PARTITIONS [ROWS_OF_DRIVER] prints what a network of that kind shuffles
instead.
"""
import argparse
import json
import pathlib
import subprocess
import tempfile

import networks

ROOT = pathlib.Path(__file__).resolve().parents[2]
BEGIN = "<!-- peers: `./dev bench spark` writes the table below -->"
END = "<!-- peers: end -->"
TITLES = {"task": "vorl-spark, in one task", "spread": "vorl-spark, spread out, one start",
          "labels": "GraphX, label propagation, 5 rounds", "components": "GraphX, connected components"}
# What Spark wants of a JVM; spark-submit says so by itself.
OPENED = ["java.lang", "java.lang.invoke", "java.lang.reflect", "java.io", "java.net", "java.nio",
          "java.util", "java.util.concurrent", "java.util.concurrent.atomic", "sun.nio.ch",
          "sun.nio.cs", "sun.security.action", "sun.util.calendar"]


def run(*command):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE,
                          text=True).stdout


def java(options, classes, *command):
    return run("java", "-Xmx%s" % options.memory, "-Dvorl.program=%s" % options.vorl,
               *["--add-opens=java.base/%s=ALL-UNNAMED" % name for name in OPENED],
               "-cp", class_path(options, classes), *command)


def class_path(options, classes):
    return "%s:%s:%s/*" % (classes, options.jar, options.spark)


def agreement(options, network):
    lines = ["| %s links | Seconds | Clusters | NMI |" % format(network.links, ","),
             "|---|---:|---:|---:|"]
    with tempfile.TemporaryDirectory() as folder:
        run("javac", "--release", "17", "-d", folder, "-cp", class_path(options, ""),
            ROOT / "bench/peers/SparkPeers.java")
        said = java(options, folder, "SparkPeers", network.file, folder)
        seconds = dict(line.split() for line in said.splitlines())
        for name, title in TITLES.items():
            table = pathlib.Path(folder) / (name + ".tsv")
            found = len({line.split("\t")[1] for line in table.read_text().splitlines()[1:]})
            alike = json.loads(run(options.vorl, "compare", table, network.truth, "--json"))
            lines.append("| %s | %s | %s | %.3f |" % (title, seconds[name], format(found, ","),
                                                      alike["nmi"]))
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--nodes", type=int, default=10000)
    parser.add_argument("--vorl", type=pathlib.Path, default=ROOT / "build/release/vorl")
    parser.add_argument("--spark", type=pathlib.Path, required=True, help="folder of Spark's jars")
    parser.add_argument("--jar", type=pathlib.Path, required=True, help="vorl-spark.jar")
    parser.add_argument("--tests", type=pathlib.Path,
                        default=ROOT / "build/spark/target/test-classes")
    parser.add_argument("--memory", default="2g")
    parser.add_argument("--figures", nargs="+",
                        metavar=("KIND", "LINKS PARTITIONS [ROWS_OF_DRIVER]"))
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "build/agreement")
    parser.add_argument("--page", type=pathlib.Path, default=ROOT / "docs/spark.md")
    options = parser.parse_args()
    if options.figures:
        print(java(options, options.tests, "info.quenta.vorl.spark.Figures", *options.figures))
        return
    options.folder.mkdir(parents=True, exist_ok=True)
    network = networks.planted(options.folder, "spark-%d" % options.nodes, "", options.nodes)
    table = agreement(options, network)
    print(table)
    before, rest = options.page.read_text().split(BEGIN)
    options.page.write_text(before + BEGIN + "\n\n" + table + "\n\n" + END + rest.split(END)[1])


if __name__ == "__main__":
    main()
