"""Every road in leads to the same network, with its names and directions."""

import igraph
import networkx as nx
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest
import scipy.sparse as sp

import vorl

# Two cliques of six, joined by one light link; the names ascend as the numbers do.
LINKS = [(a, b, 2.0) for first in (0, 6) for a in range(first, first + 6)
         for b in range(a + 1, first + 6)] + [(0, 6, 0.5)]
NAMES = "abcdefghijkl"
PARTS = [set(range(6)), set(range(6, 12))]
NAMED = [set(NAMES[:6]), set(NAMES[6:])]

S, T, W = (np.array(part) for part in zip(*LINKS))
N = np.array(list(NAMES))


def graph(kind=nx.Graph, names=False):
    result = kind()
    result.add_nodes_from(NAMES if names else range(12))
    for a, b, w in LINKS:
        result.add_edge(*((NAMES[a], NAMES[b]) if names else (a, b)), weight=w)
    return result


def as_igraph(names):
    result = igraph.Graph([(a, b) for a, b, _ in LINKS])
    result.es["weight"] = list(W)
    if names:
        result.vs["name"] = list(NAMES)
    return result


def symmetric(kind):
    half = sp.coo_array((W, (S, T)), shape=(12, 12))
    return kind(half + half.T)


ROADS = {
    "networkx": lambda n: graph(names=n),
    "igraph": as_igraph,
    "links": lambda n: [(NAMES[a], NAMES[b], w) if n else (a, b, w) for a, b, w in LINKS],
    "pandas": lambda n: pd.DataFrame(
        {"source": N[S] if n else S, "target": N[T] if n else T, "weight": W}),
    "polars": lambda n: pl.DataFrame(
        {"source": N[S] if n else S, "target": N[T] if n else T, "weight": W}),
    "pyarrow": lambda n: pa.table(
        {"source": N[S] if n else S, "target": N[T] if n else T, "weight": W}),
    "arrays": lambda n: (N[S] if n else S, N[T] if n else T, W),
    "lists": lambda n: (list(N[S] if n else S), list(N[T] if n else T), list(W)),
    "rows": lambda n: np.array(LINKS) if not n else np.array(
        [(NAMES[a], NAMES[b], w) for a, b, w in LINKS], object),
    "csr": lambda n: None if n else symmetric(sp.csr_array),
    "coo": lambda n: None if n else symmetric(sp.coo_matrix),
    "csc": lambda n: None if n else symmetric(sp.csc_matrix),
}


@pytest.mark.parametrize("named", [False, True], ids=["numbers", "names"])
@pytest.mark.parametrize("road", ROADS)
def test_every_road_gives_the_same_answer(road, named):
    given = ROADS[road](named)
    if given is None:
        pytest.skip("matrices have no names")
    found = vorl.communities(given)
    assert [set(one) for one in found] == (NAMED if named else PARTS)
    measured = vorl.evaluate(given, found)
    expected = vorl.evaluate(graph(names=named), found)
    assert measured == expected
    # Weights count: without them it is another modularity.
    assert vorl.evaluate((S, T), PARTS)["modularity"] != expected["modularity"]


def test_edge_indices_and_rows_without_weights():
    expected = vorl.communities((S, T))
    for array in (np.stack([S, T]), np.stack([S, T], 1), memoryview(np.stack([S, T]))):
        assert vorl.communities(array) == expected
    both = np.concatenate([np.stack([S, T]), np.stack([T, S])], 1)
    assert vorl.communities(both) == expected  # a link both ways is one link
    assert vorl.communities(np.stack([S, T]).astype(np.uint32)) == expected


def test_directions_follow_the_object_or_the_argument():
    cycle = nx.DiGraph([(0, 1), (1, 2), (2, 0), (2, 3), (3, 4), (4, 5), (5, 3)])
    parts = [{0, 1, 2}, {3, 4, 5}]
    arcs = np.array(cycle.edges)
    directed = vorl.evaluate(cycle, parts)
    assert vorl.evaluate(arcs, parts, directed=True) == directed
    assert vorl.evaluate(igraph.Graph(arcs.tolist(), directed=True), parts) == directed
    matrix = sp.csr_array((np.ones(7), (arcs[:, 0], arcs[:, 1])), shape=(6, 6))
    assert vorl.evaluate(matrix, parts) == directed
    assert vorl.evaluate(arcs, parts) == vorl.evaluate(cycle.to_undirected(), parts)
    # An arc and the one back are two, where an edge is one.
    back = nx.DiGraph([*cycle.edges, (1, 0)])
    assert vorl.evaluate(back, parts) != directed
    assert vorl.evaluate(back, parts, directed=False) == vorl.evaluate(arcs, parts)


def test_weights_by_name_and_parallel_links():
    heavy = graph()
    for _, _, data in heavy.edges(data=True):
        data["strength"] = data.pop("weight")
    assert vorl.evaluate(heavy, PARTS, weight="strength") == vorl.evaluate(graph(), PARTS)
    assert vorl.evaluate(heavy, PARTS) == vorl.evaluate((S, T), PARTS)
    assert vorl.evaluate(graph(), PARTS, weight=None) == vorl.evaluate((S, T), PARTS)
    for typo in (graph(), nx.MultiGraph(graph()), igraph.Graph.from_networkx(graph())):
        with pytest.raises(ValueError, match="no link has an attribute 'wieght'"):
            vorl.evaluate(typo, PARTS, weight="wieght")
    many = nx.MultiGraph()
    for a, b, w in LINKS:
        many.add_edge(a, b, weight=w / 2)
        many.add_edge(b, a, weight=w / 2)
    assert vorl.evaluate(many, PARTS) == vorl.evaluate(graph(), PARTS)
    twice = (np.concatenate([S, S]), np.concatenate([T, T]), np.concatenate([W, W]))
    assert vorl.evaluate(twice, PARTS) == vorl.evaluate((S, T, W), PARTS)
    summed = vorl.evaluate((np.append(S, 0), np.append(T, 6), np.append(W, 1.5)), PARTS,
                           sum_duplicates=True)
    assert summed == vorl.evaluate((S, T, np.where(W == .5, 2, W)), PARTS)


def test_nodes_of_any_kind_come_back():
    nodes = [("x", 1), 2.5, frozenset({3}), "s", -7, 2**40, True]
    clique = nx.complete_graph(len(nodes))
    named = nx.relabel_nodes(clique, dict(enumerate(nodes)))
    named.add_node("alone")
    found = vorl.communities(named)
    assert list(found[0]) == list(named.nodes)[:-1]
    assert [type(node) for node in found[0]] == [type(node) for node in nodes]
    assert list(found[1]) == ["alone"] and found.isolated == 1
    assert found.membership["alone"] == 1 and set(found.nodes) == set(named)
    mixed = vorl.communities([(5, "a"), ("a", 7), (7, 5), (2**31, 5), (-3, 7)])
    assert {n for one in mixed for n in one} == {5, "a", 7, 2**31, -3}
    days = pd.to_datetime(["2020-01-01", "2020-01-02"]).astype("datetime64[ns]")
    dated = vorl.communities(pd.DataFrame({"source": days[:1], "target": days[1:]}))
    assert set(dated[0]) == set(days)
    large = np.array([[2**40, -1], [-1, 3], [3, 2**40]])
    assert set(vorl.communities(large)[0]) == {2**40, -1, 3}


def test_files(tmp_path, data):
    assert vorl.communities(str(data / "karate.nse")) == vorl.communities(data / "karate.nse")
    named = tmp_path / "friends.csv"
    named.write_text("from,to\nAnn,Bob\nBob,Cid\nCid,Ann\n")
    assert set(vorl.communities(named)[0]) == {"Ann", "Bob", "Cid"}
    found = vorl.evaluate(named, [{"Ann", "Bob", "Cid"}])
    assert found["conductance"] is None and found["modularity"] == 0
    with pytest.raises(ValueError, match="Dan"):
        vorl.evaluate(named, [{"Ann", "Dan"}])
    broken = tmp_path / "broken.nse"
    broken.write_text("1 2\n2 3\n3 1 x\n")
    with pytest.raises(vorl.InputError, match=r"broken\.nse:3: ") as fault:
        vorl.communities(broken)
    assert (fault.value.line, fault.value.file) == (3, str(broken))
    with pytest.raises(FileNotFoundError):
        vorl.cluster(tmp_path / "none.nse")
    twice = tmp_path / "twice.nse"
    twice.write_text("1 2\n2 1\n2 3\n")
    with pytest.warns(vorl.InputWarning, match="repeats an earlier one"):
        vorl.communities(twice)


@pytest.mark.parametrize(("given", "options", "kind", "text"), [
    (7, {}, TypeError, "G: "),
    ({}, {}, TypeError, "G: "),
    (np.zeros((3, 4)), {}, ValueError, "G: .*shape"),
    (sp.csr_array((2, 3)), {}, ValueError, "G: .*square"),
    ([(1, 2, 3, 4)], {}, TypeError, "G: .*no link"),
    (([1, 2], [3]), {}, ValueError, "G: .*one length"),
    ([(1, 2, -1.0)], {}, ValueError, "^weight: .*should be 0 or above, and finite: -1.0*$"),
    ([(1, 2, float("nan"))], {}, ValueError, "^weight: .*should be 0 or above, and finite: nan$"),
    (([1], [2], np.array([1e300])), {}, ValueError, "^weight: .* finite: inf$"),
    (-sp.eye_array(2), {}, ValueError, "^weight: .* finite: -1.0*$"),
    ([([1], 2)], {}, TypeError, "G: .*unhashable"),
    ([(1, 2, "x")], {}, TypeError, "weight: "),
    (nx.Graph([(1, 2, {"weight": "x"})]), {}, TypeError, "weight: "),
    (pd.DataFrame({"a": [1], "b": [2]}), {}, ValueError, "source: .*'a', 'b'"),
    (pd.DataFrame({"source": [1, None], "target": [2, 3]}), {}, ValueError, "missing"),
    ([(1, 2)], {"weight": 3}, TypeError, "weight: "),
    ([(1, 2)], {"directed": "yes"}, TypeError, "directed: "),
    ([(1, 2)], {"shares": 1}, TypeError, "shares: "),
    ([(1, 2)], {"starts": -1}, ValueError, "starts: "),
    ([(1, 2)], {"threads": "two"}, TypeError, "threads: "),
    ([(1, 2)], {"format": "nse"}, ValueError, "format: "),
    ([(1, 2)], {"progress": 1}, TypeError, "progress: "),
])
def test_wrong_arguments_are_told_by_name(given, options, kind, text):
    with pytest.raises(kind, match=text):
        vorl.communities(given, **options)


@pytest.mark.parametrize("given", [
    [(1, 2, 0.0)], [(1, 2, 1e-300)], nx.empty_graph(3), (S, T, np.zeros(len(S))),
    sp.csr_array((4, 4)), nx.DiGraph([(1, 2, {"weight": 0})]),
])
def test_networks_that_weigh_nothing_have_no_hierarchy(given):
    with pytest.raises(ValueError, match="G: the network has no links, or they weigh nothing"):
        vorl.cluster(given)
    # Each of the nodes is a community, or they are one.
    assert len(vorl.communities(given)) in (1, len(vorl.communities(given).nodes))


def test_weights_that_add_up_to_too_much_are_refused():
    with pytest.raises(ValueError, match="G: the weights add up to more than 3.4e38"):
        vorl.cluster([(1, 2, 3e38)])


@pytest.mark.parametrize("share", [0, -0.5, float("nan"), float("inf"), -float("inf")])
def test_shares_are_numbers_above_0(share):
    with pytest.raises(ValueError, match="^communities: the share of a node is .*above 0"):
        vorl.evaluate([(1, 2), (2, 3)], [{1: 1.0, 2: share}, {2: 0.5, 3: 1.0}])


def test_measures_are_those_of_sums_over_pairs():
    random = np.random.default_rng(5)
    for _ in range(40):
        n = int(random.integers(4, 20))
        half = np.triu(random.random((n, n)) * (random.random((n, n)) < 0.4))
        half[range(n - 1), range(1, n)] += 0.5
        weights = half + half.T  # a self link counts in both directions
        parts = [{node: 1.0 for node in range(n) if node % 3 == part} for part in range(3)]
        inner = np.array([weights[np.ix_(list(p), list(p))].sum() for p in parts])
        whole = np.array([weights[list(p)].sum() for p in parts])
        total = weights.sum()
        sides = np.minimum(whole, total - whole)
        cuts = np.divide(whole - inner, sides, out=np.zeros(3), where=sides > 0)
        sources, targets = np.nonzero(half)
        given = (sources, targets, half[sources, targets])
        gamma = float(random.random() * 2)
        found = vorl.evaluate(given, parts, gamma=gamma)
        assert np.isclose(found["modularity"],
                          (inner - gamma * whole**2 / total).sum() / total, atol=1e-6)
        assert np.isclose(found["conductance"], np.minimum(cuts, 1).mean(), atol=1e-6)
        # The order of links, their directions, and other nodes' names are no matter.
        order = random.permutation(len(sources))
        turned = (targets[order], sources[order], half[sources, targets][order])
        assert np.isclose(vorl.evaluate(turned, parts, gamma=gamma)["modularity"],
                          found["modularity"], atol=1e-6)
        named = [(f"n{a}", f"n{b}", w) for a, b, w in zip(*given)]
        again = vorl.evaluate(named, [{f"n{v}" for v in p} for p in parts], gamma=gamma)
        assert np.isclose(again["modularity"], found["modularity"], atol=1e-6)
