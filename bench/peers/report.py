"""The page of what was measured: tables, what is lost to whom, and the picture."""
import os
import pathlib
import platform
import re
import statistics
import sys
import textwrap

import chart

MARK = "<!-- measured: `./dev bench peers` writes all below this line -->"
# Differences below these are no loss and no win.
SAME_TIME = 1.1
SAME_MEMORY = 1.1
SAME_MODULARITY = 0.002
SAME_AGREEMENT = 0.005


def first_match(path, pattern, default="unknown"):
    try:
        found = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
    except OSError:
        return default
    return found.group(1) if found else default


def machine():
    memory = int(first_match("/proc/meminfo", r"MemTotal:\s+(\d+)", "0")) / 2**20
    return "%s, %d cores, %.0f GiB of memory; %s, Linux %s" % (
        first_match("/proc/cpuinfo", r"model name\s*: (.*)"), os.cpu_count(), memory,
        first_match("/etc/os-release", r'PRETTY_NAME="(.*)"'), platform.release())


def seconds(value):
    return "%.2f" % value if value >= 10 else "%.3f" % value if value >= 0.1 else "%.3g" % value


def grouped(value):
    return format(value, ",")


class Figures:
    """Medians of the runs of one program on one network."""

    def __init__(self, runs):
        good = [run for run in runs if "failed" not in run]
        self.failed = next((run["failed"] for run in runs if "failed" in run), None)
        self.runs = len(good)
        if not good:
            return
        self.read = statistics.median(run["read"] for run in good)
        self.cluster = statistics.median(run["cluster"] for run in good)
        both = [run["read"] + run["cluster"] for run in good]
        self.both = statistics.median(both)
        self.spread = max(both) / min(both)
        self.peak = max(run["peak"] for run in good)
        self.base = max(run["base"] for run in good)
        judged = [run for run in good if "root" in run]
        self.clusters = int(statistics.median(run["root"]["clusters"] for run in judged))
        self.levels = max(run["height"] for run in judged)

        def root(measure):
            found = [run["root"].get(measure) for run in judged]
            return None if None in found else statistics.median(found)

        def best(measure, by):
            found = [max(run["levels"] + [run["root"]], key=lambda level: level.get(by, -1)).get(
                measure) for run in judged]
            return None if None in found else statistics.median(found)

        self.modularity = root("modularity")
        self.best_modularity = best("modularity", "modularity")
        self.nmi, self.f1 = root("nmi"), root("f1")
        self.best_nmi, self.best_f1 = best("nmi", "nmi"), best("f1", "nmi")


class Page:
    def __init__(self, options, networks, own, titles, runs):
        """`own` are the titles of the programs of vorl; ratios are those to the first of them."""
        self.options = options
        self.networks = networks
        self.runs = runs
        self.versions = {run["contender"]: run["version"] for run in runs}
        self.own = [name for name in own if name in self.versions]
        self.peers = [name for name in titles if name in self.versions]
        self.names = self.own + self.peers
        self.titles = {name: own[name] for name in self.own}
        for name in self.peers:
            title, source = titles[name]
            title += " " + self.versions[name]
            if title in self.titles.values():
                title += " (%s)" % source
            self.titles[name] = title
        self.figures = {}
        for network in networks:
            for name in self.names:
                mine = [run for run in runs
                        if run["network"] == network.name and run["contender"] == name]
                if mine:
                    self.figures[network.name, name] = Figures(mine)
        self.lines = []

    def at(self, network, name):
        """The figures, None where there was no run that ended."""
        found = self.figures.get((network.name, name))
        return found if found and found.runs else None

    def line(self, text=""):
        self.lines.append(text)

    def prose(self, text):
        self.line(textwrap.fill(text, 100, subsequent_indent="  " if text[:2] == "- " else "",
                                break_long_words=False, break_on_hyphens=False))

    def table(self, head, rows):
        self.line("| " + " | ".join(head) + " |")
        self.line("|---" + "|---:" * (len(head) - 1) + "|")
        for row in rows:
            self.line("| " + " | ".join(row) + " |")
        self.line()

    def circumstances(self):
        dates = sorted(run["when"] for run in self.runs)
        loads = [run["load"] for run in self.runs]
        words = sys.argv[1:]
        self.line("## Measured")
        self.line()
        if self.options.quick:
            self.prose("**Small networks only** (`--quick`): fixed costs weigh heavily here, and "
                       "nothing follows from these figures for large networks.")
            self.line()
        self.prose("- When: %s to %s" % (dates[0], dates[-1]))
        self.prose("- Command: `%s`" % " ".join(["./dev bench peers"] + words))
        self.prose("- Machine: " + machine())
        self.prose("- Load of the machine when a run began, 1 being the run before itself: %.1f in "
                   "the median, %.1f at most%s" %
                   (statistics.median(loads), max(loads),
                    ". **Others were at work: the times are rough.**"
                    if statistics.median(loads) > 1.5 else ""))
        self.prose("- Program: " + self.versions[self.own[0]])
        self.prose("- Peers: " + "; ".join(self.titles[name] for name in self.peers))
        counts = sorted({found.runs for found in self.figures.values() if found.runs})
        self.prose("- Runs of each program on each network: " + " or ".join(map(str, counts)))
        spreads = sorted(found.spread for found in self.figures.values()
                         if found.runs > 1 and found.both > 0.1)
        if spreads:
            self.prose("- Slowest to fastest run of one program on one network, where it takes "
                       "over 0.1 s: %.2f in the median, %.2f at most" %
                       (statistics.median(spreads), spreads[-1]))
        self.line()

    def growth(self):
        series = [network for network in self.networks if network.size]
        if len(series) < 2:
            return
        self.line("### Time against size")
        self.line()
        self.prose("Networks with planted communities, 0.3 of the links leave them. In brackets: "
                   "how many times as long as `vorl cluster`.")
        self.line()
        picture = chart.draw([self.titles[name] for name in self.own], [
            (title, [(self.titles[name], points) for name in self.names
                     if (points := [(network.links, getattr(found, what)) for network in series
                                    if (found := self.at(network, name))])])
            for title, what in (("clustering", "cluster"), ("reading and clustering", "both"))])
        file = self.options.out.with_suffix(".svg")
        file.write_text(picture)
        self.line("![Seconds against links, for vorl and its peers](%s)" % file.name)
        self.line()
        for what, title in (("cluster", "Seconds to cluster"),
                            ("both", "Seconds to read and cluster")):
            rows = []
            for name in self.names:
                cells = []
                for network in series:
                    found, first = self.at(network, name), self.at(network, self.own[0])
                    cell = seconds(getattr(found, what)) if found else "–"
                    if found and first and name != self.own[0]:
                        cell += " (%.2g)" % (getattr(found, what) / getattr(first, what))
                    cells.append(cell)
                rows.append([self.titles[name]] + cells)
            self.table([title] + [grouped(network.links) + " links" for network in series], rows)
        self.prose("For each link record (an edge is two):")
        self.line()
        rows = []
        for name in self.own:
            for network in series:
                found = self.at(network, name)
                if found:
                    records = 2 * network.links
                    rows.append([self.titles[name], grouped(network.links),
                                 "%.0f" % (1e9 * found.cluster / records),
                                 "%.0f" % (1e9 * found.both / records),
                                 "%.0f" % (found.peak / records),
                                 "%.0f" % ((found.peak - network.file.stat().st_size) / records)])
        self.table(["Program", "Links", "ns to cluster", "ns with reading", "bytes at the peak",
                    "bytes above the size of the file"], rows)

    def losses(self):
        self.line("### Where vorl loses")
        self.line()
        self.prose("The best peer of those that are more than %g times as fast, take more than %g "
                   "times less memory, or have a modularity higher by more than %g or an "
                   "overlapping NMI higher by more than %g, and how many do. Memory counts what "
                   "the interpreter and the modules of a peer take before it reads." %
                   (SAME_TIME, SAME_MEMORY, SAME_MODULARITY, SAME_AGREEMENT))
        self.line()
        for name in self.own:
            self.losses_of(name)

    def losses_of(self, name):
        rows = []
        for network in self.networks:
            vorl = self.at(network, name)
            if not vorl:
                rows.append([network.name, "no result: " +
                             self.figures[network.name, name].failed] + [""] * 4)
                continue

            def beaten(gain, margin, show):
                """`gain` tells how much better another one is, in the sense of the margin."""
                found = [(gain(other), self.titles[peer]) for peer in self.peers
                         if (other := self.at(network, peer)) and gain(other) > margin]
                if not found:
                    return ""
                best, title = max(found)
                return "%s %s; %d of %d peers" % (title, show % best, len(found), peers)

            peers = sum(self.at(network, peer) is not None for peer in self.peers)
            rows.append([
                network.name,
                beaten(lambda other: vorl.cluster / other.cluster, SAME_TIME, "%.3g times"),
                beaten(lambda other: vorl.both / other.both, SAME_TIME, "%.3g times"),
                beaten(lambda other: vorl.peak / other.peak, SAME_MEMORY, "%.3g times"),
                beaten(lambda other: other.modularity - vorl.modularity, SAME_MODULARITY,
                       "+%.3f"),
                beaten(lambda other: other.best_nmi - vorl.best_nmi, SAME_AGREEMENT, "+%.3f")
                if network.truth else "–"])
        self.table([self.titles[name], "Clustering", "With reading", "Memory", "Modularity of the root",
                    "NMI of the best level"], rows)

    def network(self, network):
        self.line("### %s" % network.name)
        self.line()
        self.prose("%s nodes, %s %s: %s." % (grouped(network.nodes), grouped(network.links),
                                             "arcs" if network.directed else "edges",
                                             network.about))
        self.line()
        base = self.titles[self.own[0]]
        head = ["Program", "Read, s", "Cluster, s", "Both, s", "Cluster, × " + base,
                "Both, × " + base, "Peak, MiB", "of it before", "Clusters", "Levels", "Modularity",
                "of the best level"]
        if network.truth:
            head += ["NMI, best level", "F1, best level", "NMI, root", "F1, root"]
        first = self.at(network, self.own[0])
        rows = []
        for name in self.names:
            found = self.figures.get((network.name, name))
            if not found:
                continue
            if not found.runs:
                rows.append([self.titles[name], found.failed] + [""] * (len(head) - 2))
                continue
            row = [self.titles[name], seconds(found.read), seconds(found.cluster),
                   seconds(found.both)]
            for what in ("cluster", "both"):
                row.append("%.2f" % (getattr(found, what) / getattr(first, what)) if first else "–")
            row += ["%.1f" % (found.peak / 2**20),
                    "%.1f" % (found.base / 2**20) if found.base else "–", grouped(found.clusters),
                    str(found.levels), "%.4f" % found.modularity, "%.4f" % found.best_modularity]
            if network.truth:
                row += ["%.3f" % value
                        for value in (found.best_nmi, found.best_f1, found.nmi, found.f1)]
            rows.append(row)
        self.table(head, rows)

    def text(self):
        self.circumstances()
        self.growth()
        self.losses()
        self.line("## Network by network")
        self.line()
        for network in self.networks:
            self.network(network)
        return "\n".join(self.lines)


def write(path, options, networks, own, titles, runs):
    """Renews what is below the mark of the page, and keeps what is above it."""
    before = "# Performance\n\n"
    if path.exists() and MARK in path.read_text():
        before = path.read_text().split(MARK)[0]
    path.parent.mkdir(parents=True, exist_ok=True)
    page = Page(options, networks, own, titles, runs)
    path.write_text(before + MARK + "\n\n" + page.text())
