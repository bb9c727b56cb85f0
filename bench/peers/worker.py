"""Runs one method of one package once: `worker.py METHOD NETWORK FOLDER SEED`.

NETWORK is a list of links without a header. The clusters go into FOLDER, a file for each level from
the finest one up, and what was measured goes to the standard output as JSON. Writing the clusters
is in no figure. Each package reads the file with its own fastest reader. Before the clock starts it
has read and clustered a triangle, so that what a package loads at its first call isn't counted.
"""
import json
import pathlib
import random
import resource
import sys
import time


def peak_memory():
    """In bytes, of this process so far."""
    return 1024 * resource.getrusage(resource.RUSAGE_SELF).ru_maxrss


class Igraph:
    def __init__(self, seed):
        import igraph

        self.igraph = igraph
        self.version = igraph.__version__
        random.seed(seed)

    def read(self, path, directed, weighted):
        if weighted:
            self.graph = self.igraph.Graph.Read_Ncol(path, names=True, weights=True,
                                                     directed=directed)
            self.weights = "weight"
        else:
            self.graph = self.igraph.Graph.Read_Edgelist(path, directed=directed)
            self.weights = None

    def levels(self):
        """Memberships as lists by vertex; run after the clock has stopped."""
        names = self.graph.vs["name"] if self.weights else range(self.graph.vcount())
        linked = [degree > 0 for degree in self.graph.degree()]
        for membership in self.memberships:
            yield [(int(name), cluster)
                   for name, cluster, has in zip(names, membership, linked) if has]

    def keep(self, *clusterings):
        self.memberships = [clustering.membership for clustering in clusterings]


class IgraphLouvain(Igraph):
    def cluster(self):
        self.keep(*self.graph.community_multilevel(weights=self.weights, return_levels=True))


class IgraphLeiden(Igraph):
    def cluster(self):
        self.keep(self.graph.community_leiden(objective_function="modularity",
                                              weights=self.weights, n_iterations=2))


class IgraphLabels(Igraph):
    def cluster(self):
        self.keep(self.graph.community_label_propagation(weights=self.weights))


class IgraphInfomap(Igraph):
    def cluster(self):
        self.keep(self.graph.community_infomap(edge_weights=self.weights, trials=1))


class Leidenalg(Igraph):
    def __init__(self, seed):
        super().__init__(seed)
        import leidenalg

        self.leidenalg = leidenalg
        self.seed = seed
        self.version = leidenalg.version
        if not isinstance(self.version, str):
            self.version = leidenalg.__version__

    def cluster(self):
        self.keep(self.leidenalg.find_partition(
            self.graph, self.leidenalg.ModularityVertexPartition, weights=self.weights,
            n_iterations=2, seed=self.seed))


class Networkit:
    def __init__(self, seed):
        import networkit

        self.networkit = networkit
        self.version = networkit.__version__
        networkit.setNumberOfThreads(1)
        networkit.setSeed(seed, False)

    def read(self, path, directed, weighted):
        self.graph = self.networkit.graphio.EdgeListReader(" ", 0, directed=directed).read(path)

    def levels(self):
        partition = self.algorithm.getPartition()
        yield [(node, partition[node]) for node in self.graph.iterNodes()
               if self.graph.degree(node) > 0]


class NetworkitLouvain(Networkit):
    def cluster(self):
        self.algorithm = self.networkit.community.PLM(self.graph).run()


class NetworkitLeiden(Networkit):
    def cluster(self):
        self.algorithm = self.networkit.community.ParallelLeiden(self.graph).run()


class NetworkitLabels(Networkit):
    def cluster(self):
        self.algorithm = self.networkit.community.PLP(self.graph).run()


class Infomap:
    def __init__(self, seed):
        import infomap

        self.infomap = infomap
        self.seed = seed
        self.version = infomap.__version__

    def read(self, path, directed, weighted):
        self.algorithm = self.infomap.Infomap(silent=True, num_trials=1, seed=self.seed,
                                              directed=directed)
        self.algorithm.read_file(path)

    def cluster(self):
        self.algorithm.run()

    def levels(self):
        modules = self.algorithm.get_multilevel_modules()
        for depth in reversed(range(max(map(len, modules.values())))):
            yield [(node, path[:depth + 1]) for node, path in modules.items()]


METHODS = {
    "igraph-louvain": IgraphLouvain,
    "igraph-leiden": IgraphLeiden,
    "igraph-labels": IgraphLabels,
    "igraph-infomap": IgraphInfomap,
    "leidenalg": Leidenalg,
    "networkit-louvain": NetworkitLouvain,
    "networkit-leiden": NetworkitLeiden,
    "networkit-labels": NetworkitLabels,
    "infomap": Infomap,
}


def write_clusters(path, memberships):
    clusters = {}
    for node, cluster in memberships:
        clusters.setdefault(cluster, []).append(node)
    with open(path, "w") as out:
        for nodes in clusters.values():
            out.write(" ".join(map(str, nodes)) + "\n")


def warm_up(method, folder, directed, weighted):
    triangle = pathlib.Path(folder) / "triangle"
    triangle.write_text("".join("%d %d%s\n" % (a, b, " 1" if weighted else "")
                                for a, b in ((0, 1), (1, 2), (0, 2))))
    run = method(1)
    run.read(str(triangle), directed, weighted)
    run.cluster()
    triangle.unlink()


def main():
    if sys.argv[1] == "--version":
        print(METHODS[sys.argv[2]](1).version)
        return
    method, network, folder, seed = sys.argv[1:]
    directed = network.endswith(".arcs")
    with open(network) as lines:
        weighted = len(lines.readline().split()) > 2
    warm_up(METHODS[method], folder, directed, weighted)
    run = METHODS[method](int(seed))
    base = peak_memory()
    start = time.perf_counter()
    run.read(network, directed, weighted)
    loaded = time.perf_counter()
    run.cluster()
    done = time.perf_counter()
    peak = peak_memory()
    for index, level in enumerate(run.levels()):
        write_clusters(pathlib.Path(folder) / ("level-%03d.cnl" % index), level)
    json.dump({"read": loaded - start, "cluster": done - loaded, "peak": peak, "base": base},
              sys.stdout)


if __name__ == "__main__":
    main()
