"""Files of other packages mean to the program what they mean to these, and the other way round."""

import csv
import io
import json

import igraph
import networkx as nx
import pytest
import scipy.io
import scipy.sparse as sp

NAMES = ["Ann Lee", 'the "A" & <B>', "Größe", "x,y;z"]


def network(data, name, named):
    """The links of a network of the data, some of its nodes with names."""
    links = []
    for line in (data / name).read_text().splitlines():
        if not line.startswith("#"):
            a, b, *w = line.split()
            links.append((a, b, float(w[0]) if w else 1.0))
    if named:
        order = dict.fromkeys(node for a, b, _ in links for node in (a, b))
        names = {node: f"{NAMES[i % 4]} {i}" if i % 3 else node for i, node in enumerate(order)}
        links = [(names[a], names[b], w) for a, b, w in links]
    return links


def alike(links, directed):
    return sorted((str(a), str(b), float(w)) if directed else (*sorted((str(a), str(b))), float(w))
                  for a, b, w in links)


def as_read(program, file):
    rows = list(csv.reader(io.StringIO(program("convert", file, "-", "--to", "list").stdout.decode()),
                           delimiter="\t"))
    assert rows[0][:2] == ["source", "target"]
    return [(a, b, float(w[0]) if w else 1.0) for a, b, *w in rows[1:]]


def write_csv(file, links):
    with open(file, "w", newline="") as out:
        csv.writer(out).writerows([("source", "target", "weight"), *links])


def of_networkx(graph):
    return [(a, b, w if w is not None else 1) for a, b, w in graph.edges(data="weight")]


def of_igraph(graph, name="name"):
    weights = graph.es["weight"] if "weight" in graph.es.attributes() else [1] * graph.ecount()
    return [(graph.vs[e.source][name], graph.vs[e.target][name], w)
            for e, w in zip(graph.es, weights)]


def write_json(graph, file):
    file.write_text(json.dumps(nx.node_link_data(graph, edges="links")))


def read_json(file):
    return nx.node_link_graph(json.loads(file.read_text()), edges="links")


NETWORKX = {
    "graphml": (nx.write_graphml, nx.read_graphml),
    "gml": (nx.write_gml, nx.read_gml),
    "json": (write_json, read_json),
    "net": (nx.write_pajek, nx.read_pajek),
}
# The attributes that hold the names of nodes.
IGRAPH = {"graphml": "id", "gml": "label", "net": "name"}

CASES = [("lesmis.nse", False), ("celegansneural.nsa", True), ("karate.nse", False)]


@pytest.mark.parametrize("named", [False, True])
@pytest.mark.parametrize("kind", NETWORKX)
@pytest.mark.parametrize("name, directed", CASES)
def test_networkx(tmp_path, program, data, name, directed, kind, named):
    links = network(data, name, named and kind != "net")
    graph = nx.DiGraph() if directed else nx.Graph()
    graph.add_weighted_edges_from(links)
    write, read = NETWORKX[kind]
    file = tmp_path / f"theirs.{kind}"
    write(graph, file)
    assert alike(as_read(program, file), directed) == alike(of_networkx(graph), directed)

    # The same communities as from a table, and links that come back from our file.
    table = tmp_path / "table.csv"
    write_csv(table, links)
    direction = ["--directed"] if directed else []
    clusters = [program("communities", "-q", "--table", "-", *arguments).stdout
                for arguments in ([file], [table, *direction])]
    assert clusters[0] == clusters[1]
    ours = tmp_path / f"ours.{kind}"
    program("convert", "-q", table, ours, *direction)
    back = read(ours)
    assert back.is_directed() == directed or kind == "net"
    assert alike(of_networkx(back), directed) == alike(of_networkx(graph), directed)


@pytest.mark.parametrize("kind", IGRAPH)
@pytest.mark.parametrize("name, directed", CASES)
def test_igraph(tmp_path, program, data, name, directed, kind):
    links = network(data, name, kind == "graphml")
    # It leaves references in the ids of nodes as they are.
    links = [(a.replace("&", "+"), b.replace("&", "+"), w) for a, b, w in links]
    graph = igraph.Graph.TupleList(links, directed=directed, weights=True)
    file = tmp_path / f"theirs.{kind}"
    if kind == "gml":
        graph.vs["label"] = graph.vs["name"]
    if kind == "net":
        graph.vs["id"] = graph.vs["name"]
    graph.write(str(file), format={"net": "pajek"}.get(kind, kind))
    assert alike(as_read(program, file), directed) == alike(of_igraph(graph), directed)

    table = tmp_path / "table.csv"
    write_csv(table, links)
    ours = tmp_path / f"ours.{kind}"
    program("convert", "-q", table, ours, *(["--directed"] if directed else []))
    back = igraph.Graph.Read(str(ours), format={"net": "pajek"}.get(kind, kind))
    assert back.is_directed() == directed
    assert alike(of_igraph(back, IGRAPH[kind]), directed) == alike(of_igraph(graph), directed)


@pytest.mark.parametrize("write", [nx.write_edgelist, nx.write_weighted_edgelist])
def test_lists_of_networkx(tmp_path, program, write):
    graph = nx.les_miserables_graph()
    graph = nx.relabel_nodes(graph, {node: node.replace(" ", "_") for node in graph})
    file = tmp_path / "list.txt"
    write(graph, file)
    assert alike(as_read(program, file), False) == alike(of_networkx(graph), False)


@pytest.mark.parametrize("symmetric", [False, True])
def test_matrices_of_scipy(tmp_path, program, symmetric):
    matrix = sp.random(40, 40, 0.1, random_state=1)
    if symmetric:
        matrix = matrix + matrix.T
    links = [(i + 1, j + 1, w) for i, j, w in zip(*sp.find(matrix))]
    if symmetric:
        links = [link for link in links if link[0] <= link[1]]
    links = [(a, b, float(f"{w:.7g}")) for a, b, w in links]
    file = tmp_path / "theirs.mtx"
    scipy.io.mmwrite(file, matrix, symmetry="symmetric" if symmetric else "general")
    assert [link[:2] for link in alike(as_read(program, file), not symmetric)] == \
        [link[:2] for link in alike(links, not symmetric)]
    ours = tmp_path / "ours.mtx"
    program("convert", "-q", file, ours)
    back = scipy.io.mmread(ours)
    assert abs(back - matrix).max() < 1e-6
