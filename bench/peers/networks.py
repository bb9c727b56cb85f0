"""The networks to measure on: made ones, bundled ones, and files that the caller names."""
import dataclasses
import pathlib
import shutil

import numpy as np

import lfr

LINES = 1 << 20


@dataclasses.dataclass
class Network:
    name: str
    about: str
    file: pathlib.Path  # as vorl reads it
    plain: pathlib.Path  # without header, for the peers; ends in .edges or .arcs
    truth: pathlib.Path | None
    nodes: int
    links: int
    size: int = 0  # place in the series of growing networks, 0 if it is none of it

    @property
    def directed(self):
        return self.plain.suffix == ".arcs"


def header_of(path):
    """Nodes and links that the first line tells, or counts where there is no such line."""
    with open(path) as lines:
        words = lines.readline().replace(",", " ").split()
        if "Nodes:" in words and {"Edges:", "Arcs:"} & set(words):
            return (int(words[words.index("Nodes:") + 1]),
                    int(words[words.index("Edges:" if "Edges:" in words else "Arcs:") + 1]))
        lines.seek(0)
        nodes, links = set(), 0
        for line in lines:
            if line.strip() and not line.startswith("#"):
                nodes.update(line.split()[:2])
                links += 1
    return len(nodes), links


def whole(path, write):
    """Writes a file at once, so that a broken run leaves no half of it."""
    part = path.with_name(path.name + ".part")
    with open(part, "w") as out:
        write(out)
    part.rename(path)


def write_links(path, nodes, src, dst):
    order = np.lexsort((dst, src))

    def write(out):
        out.write("# Nodes: %d, Edges: %d, Weighted: 0\n" % (nodes, len(src)))
        for at in range(0, len(order), LINES):
            part = order[at:at + LINES]
            out.write("".join(["%d %d\n" % pair
                               for pair in zip(src[part].tolist(), dst[part].tolist())]))

    whole(path, write)


def write_clusters(path, clusters, nodes):
    def write(out):
        out.write("# Clusters: %d, Nodes: %d, Fuzzy: 0, Numbered: 0\n" % (len(clusters), nodes))
        for members in clusters:
            out.write(" ".join(map(str, members)) + "\n")

    whole(path, write)


def rmat(scale, factor, seed=1):
    """Links with a heavy tail of degrees and no planted communities.

    Each link chooses a quadrant of the adjacency matrix in each of `scale` rounds, with the
    probabilities of the Graph500 benchmark; see Chakrabarti, Zhan, Faloutsos: R-MAT: A recursive
    model for graph mining. SIAM SDM (2004).
    """
    rng = np.random.default_rng(seed)
    a, b, c = 0.57, 0.19, 0.19
    n = 1 << scale
    src = np.zeros(n * factor, np.int64)
    dst = np.zeros_like(src)
    for _ in range(scale):
        x = rng.random(len(src))
        src = 2 * src + (x >= a + b)
        dst = 2 * dst + ((x >= a) & (x < a + b) | (x >= a + b + c))
    label = rng.permutation(n)
    src, dst = label[src], label[dst]
    src, dst = np.minimum(src, dst), np.maximum(src, dst)
    key = np.unique((src * n + dst)[src != dst])
    return key // n, key % n


def prepared(folder, name, about, file, size=0):
    """The network of a file with its plain copy, and the truth that lies beside it."""
    suffix = ".arcs" if file.suffix == ".nsa" else ".edges"
    plain = folder / (name + suffix)
    if not plain.exists() or plain.stat().st_mtime < file.stat().st_mtime:
        with open(file) as lines:
            whole(plain, lambda out: out.writelines(
                line for line in lines if line.strip() and not line.startswith("#")))
    truth = file.with_suffix(".cnl")
    nodes, links = header_of(file)
    return Network(name, about, file, plain, truth if truth.exists() else None, nodes, links, size)


def planted(folder, name, about, nodes, size=0, **options):
    file = folder / (name + ".nse")
    if not file.exists():
        print("making", name, flush=True)
        src, dst, clusters = lfr.planted_network(nodes, **options)
        write_clusters(file.with_suffix(".cnl"), clusters, nodes)
        write_links(file, nodes, src, dst)
    return prepared(folder, name, about, file, size)


def heavy_tailed(folder, name, about, scale, factor):
    file = folder / (name + ".nse")
    if not file.exists():
        print("making", name, flush=True)
        src, dst = rmat(scale, factor)
        write_links(file, len(np.unique(np.concatenate([src, dst]))), src, dst)
    return prepared(folder, name, about, file)


def bundled(folder, data, name, about):
    return prepared(folder, pathlib.Path(name).stem, about, data / name)


def networks(folder, data, quick, largest, without, files):
    """All that is to be measured, the small ones first; made files stay in the folder.

    Made ones are left out that have about `largest` links or more, or a word of `without` in their
    names.
    """
    def wanted(name, links):
        return links < largest and not any(word in name for word in without)

    folder.mkdir(parents=True, exist_ok=True)
    yield bundled(folder, data, "football.nse", "games of football teams, known conferences")
    yield bundled(folder, data, "celegansneural.nsa", "neurons, weighted arcs")
    yield bundled(folder, data, "netscience.nse", "co-authors, weighted, many components")
    yield bundled(folder, data, "power.nse", "power grid")
    sizes = [("10k", 1000), ("30k", 3000), ("100k", 10000)]
    if not quick:
        sizes += [("300k", 30000), ("1m", 100000), ("3m", 300000), ("10m", 1000000)]
    for label, nodes in sizes:
        if wanted("planted-" + label, 10 * nodes):
            yield planted(folder, "planted-" + label,
                          "planted communities, 0.3 of the links leave them", nodes, nodes)
    nodes, label = (3000, "30k") if quick else (100000, "1m")
    if wanted("mixed-" + label, 10 * nodes):
        yield planted(folder, "mixed-" + label, "planted communities, 0.5 of the links leave them",
                      nodes, mu=0.5)
    if wanted("overlap-" + label, 10 * nodes):
        yield planted(folder, "overlap-" + label,
                      "planted communities, a tenth of the nodes belongs to two of them", nodes,
                      overlapping=nodes // 10)
    scale, label = (12, "50k") if quick else (16, "900k")
    if wanted("rmat-" + label, 16 << scale):
        yield heavy_tailed(folder, "rmat-" + label,
                           "a few hubs with most of the links, no communities", scale, 16)
    for file in files:
        yield prepared(folder, file.stem, "file of the caller", file)


def warm(network):
    """Reads the files once, so that each run finds them in memory."""
    for file in (network.file, network.plain):
        with open(file, "rb") as data, open("/dev/null", "wb") as nothing:
            shutil.copyfileobj(data, nothing)
