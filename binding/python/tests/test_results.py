"""What results hold, how they are kept, and that they are those of the program."""

import csv
import gc
import gzip
import os
import pickle
import resource
import signal
import subprocess
import sys
import threading
import time

import igraph
import networkx as nx
import numpy as np
import pytest

import vorl


@pytest.fixture
def overlap():
    cliques = nx.compose(nx.complete_graph(8), nx.relabel_nodes(nx.complete_graph(8),
                                                               lambda i: i + 7))
    return vorl.communities(nx.relabel_nodes(cliques, lambda i: f"n{i:02}"))


def test_clustering_is_a_sequence_of_mappings(overlap):
    assert len(overlap) == 2 and len(overlap[0]) == 8 and overlap[-1] is overlap[1]
    assert overlap[0]["n07"] == overlap[1]["n07"] == 0.5 and overlap[0]["n00"] == 1
    assert overlap.shares["n07"] == {0: 0.5, 1: 0.5} and overlap.membership["n07"] == 0
    assert overlap.sizes.tolist() == [7.5, 7.5] and overlap.overlapping
    assert overlap.scores["saving"] > 0 and "modularity" in overlap.scores
    with pytest.raises(IndexError):
        overlap[2]
    html = vorl.clustering([{"<b>"}])._repr_html_()
    assert "&lt;b&gt;" in html and "<b>" not in html


def test_frames(overlap):
    frame = overlap.to_frame()
    assert list(frame.columns) == ["node", "community", "share"] and len(frame) == 16
    assert frame.groupby("node")["share"].sum().eq(1).all()
    assert overlap.to_frame("polars").rows() == [tuple(row) for row in frame.values]
    assert overlap.to_series()["n14"] == 1
    hierarchy = vorl.cluster([(0, 1), (1, 2), (2, 0), (2, 3), (3, 4), (4, 5), (5, 3)])
    table = hierarchy.to_frame()
    assert list(table.columns) == ["node", "level", "cluster", "share"]
    assert np.allclose(table.groupby(["node", "level"])["share"].sum(), 1)
    assert set(table["level"]) == set(range(len(hierarchy.levels)))


def test_frames_hold_nodes_of_any_kind():
    for nodes in [(0, 0), (0, 1), (1, 0)], ["a", 2, (3, "c")], ["a", "b", "c"], [1.5, 2.5, 3.5]:
        links = [(nodes[0], nodes[1]), (nodes[1], nodes[2]), (nodes[2], nodes[0])]
        for result in vorl.communities(links), vorl.cluster(links):
            for library in "pandas", "polars":
                column = result.to_frame(library)["node"]
                assert set(column) == set(nodes), (nodes, library)


def test_clusterings_of_results(overlap):
    series = vorl.clustering(overlap.to_series())
    assert series.membership == overlap.membership
    hierarchy = vorl.cluster([(0, 1), (1, 2), (2, 0), (2, 3), (3, 4), (4, 5), (5, 3)])
    assert list(map(dict, vorl.clustering(hierarchy))) == list(map(dict, hierarchy.root))
    assert dict(vorl.clustering(overlap[0])[0]) == dict(overlap[0])
    assert repr(vorl.clustering([{"a"}])) == "<vorl.Clustering: 1 community of 1 node>"
    assert vorl.__version__.count(".") == 2
    with pytest.raises(ValueError, match="node 9 isn't in the network$"):
        vorl.evaluate([(0, 1), (1, 2)], [{0, 9}])


def test_other_packages(overlap):
    graph = igraph.Graph.Full(15)
    graph.vs["name"] = [f"n{i:02}" for i in range(15)]
    cover = overlap.to_igraph(graph)
    assert isinstance(cover, igraph.VertexCover) and vorl.clustering(cover)[1]["n07"] == 0.5
    flat = vorl.clustering([{0, 2}, {1}]).to_igraph(igraph.Graph(3))
    assert flat.membership == [0, 1, 0]
    assert [set(one) for one in vorl.clustering(flat)] == [{0, 2}, {1}]
    assert vorl.compare(flat, {0: "x", 1: "y", 2: "x"})["ari"] == 1
    named = nx.relabel_nodes(nx.path_graph(3), dict(enumerate("abc")))
    from_networkx = igraph.Graph.from_networkx(named)
    assert set(vorl.communities(from_networkx)[0]) == {"a", "b", "c"}
    back = vorl.clustering([{"a", "b"}, {"c"}]).to_igraph(from_networkx)
    assert vorl.compare(back, [{"b", "a"}, {"c"}])["ari"] == 1


@pytest.mark.parametrize("network", ["karate.nse", "lesmis.nse", "celegansneural.nsa"])
def test_files_are_those_of_the_program(network, data, program, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    given = data / network
    found = vorl.communities(given)
    for kind in ("cnl", "tsv", "csv"):
        option = "-o" if kind == "cnl" else "--table"
        program("communities", given, option, f"theirs.{kind}", "-q")
        found.write(f"ours.{kind}")
        ours = (tmp_path / f"ours.{kind}").read_bytes()
        assert ours == (tmp_path / f"theirs.{kind}").read_bytes()
        assert vorl.read_clusters(f"ours.{kind}") == found
    for levels in ("root", "all"):
        program("cluster", given, "-o", "theirs.cnl", "--levels", levels, "-q")
        built = vorl.cluster(given)
        for hierarchy in (built, pickle.loads(pickle.dumps(built))):
            hierarchy.write("ours.cnl", levels=levels)
            for kind in ("cnl", "rhb"):
                ours = (tmp_path / f"ours.{kind}").read_bytes()
                assert ours == (tmp_path / f"theirs.{kind}").read_bytes()
    assert vorl.read_clusters("ours.rhb") == built.root
    assert vorl.read_clusters("ours.rhb", level=0) != built.root
    with pytest.raises(ValueError, match="clusters without levels"):
        vorl.read_clusters("ours.tsv", level=0)
    # Nothing else is left behind.
    assert {p.name.split(".")[0] for p in tmp_path.iterdir()} == {"ours", "theirs"}


def test_names_stand_in_files(overlap, tmp_path):
    for kind in ("cnl", "csv", "csv.gz", "tsv.zst"):
        overlap.write(tmp_path / f"x.{kind}")
        assert vorl.read_clusters(tmp_path / f"x.{kind}") == overlap
    assert gzip.decompress((tmp_path / "x.csv.gz").read_bytes()) == (tmp_path / "x.csv").read_bytes()
    with open(tmp_path / "x.csv") as file:
        assert next(csv.DictReader(file)) == {"node": "n00", "community": "0", "share": "1"}
    odd = vorl.clustering([{'a "b"', "c, d"}, {1, "c, d"}])
    odd.write(tmp_path / "odd.csv")
    assert vorl.read_clusters(tmp_path / "odd.csv") == odd
    hierarchy = vorl.cluster([("a", "b"), ("b", "c"), ("c", "a")])
    hierarchy.write(tmp_path / "h.rhb")
    assert set(vorl.read_clusters(tmp_path / "h.rhb")[0]) == {"a", "b", "c"}
    with pytest.raises(ValueError, match="path: "):
        overlap.write(tmp_path / "x.txt")
    with pytest.raises(ValueError, match="alike"):
        vorl.clustering([{(1,), "(1,)"}]).write(tmp_path / "x.cnl")
    with pytest.raises(FileNotFoundError):
        overlap.write(tmp_path / "none" / "x.cnl")


def test_hierarchy_answers(data):
    graph = nx.les_miserables_graph()
    hierarchy = vorl.cluster(graph)
    top = hierarchy.levels[-1]
    assert hierarchy.root == top and len(hierarchy.cut(level=0)) >= len(top)
    sizes = [len(level) for level in hierarchy.levels]
    assert len(hierarchy.cut(n_clusters=10)) == min(sizes, key=lambda n: abs(n - 10))
    own = hierarchy.memberships("Valjean")
    for number in {one.level for one in own}:
        assert sum(one.share for one in own if one.level == number) == pytest.approx(1)
    root = {one.id for one in top if "Valjean" in one}
    assert root <= {one.cluster for one in own}
    tree = hierarchy.to_networkx()
    assert nx.is_directed_acyclic_graph(tree)
    above = {node for node in tree if tree.out_degree(node) == 0}
    assert above == {("cluster", one.id) for one in top}
    for wrong in ({"level": 99}, {"n_clusters": 0}):
        with pytest.raises(ValueError, match=next(iter(wrong))):
            hierarchy.cut(**wrong)
    assert hierarchy.cut(np.int64(10)) == hierarchy.cut(10)
    for wrong in ({"level": "top"}, {"n_clusters": 2.5}, {"n_clusters": True}):
        with pytest.raises(TypeError, match=next(iter(wrong))):
            hierarchy.cut(**wrong)
    with pytest.raises(FileNotFoundError, match="'no/where.rhb'"):
        hierarchy.write("no/where.rhb")
    with pytest.raises(KeyError):
        hierarchy.memberships("nobody")
    for wrong, kind in (({"gamma": -2}, ValueError), ({"gamma": "one"}, TypeError),
                        ({"root_max": 70000}, ValueError), ({"reduction": "hard"}, ValueError)):
        with pytest.raises(kind, match=next(iter(wrong))):
            vorl.cluster(graph, **wrong)
    assert vorl.cluster(graph, reduction="severe,skip-nodes").scores != hierarchy.scores
    assert vorl.cluster(graph, gamma=2).scores["gamma"] == 2
    with pytest.raises(TypeError, match="gamma: .*'auto'"):
        vorl.evaluate(graph, [{0, 1}], gamma="auto")


def test_pickles(overlap):
    again = pickle.loads(pickle.dumps(overlap))
    assert again == overlap and again.scores == overlap.scores and again.nodes == overlap.nodes
    hierarchy = vorl.cluster(nx.les_miserables_graph())
    kept = pickle.loads(pickle.dumps(hierarchy))
    assert list(pickle.loads(pickle.dumps(hierarchy.levels))) == list(hierarchy.levels)
    assert list(kept.levels) == list(hierarchy.levels) and kept.nodes == hierarchy.nodes
    state = hierarchy._native.state()
    state["owners"] = np.full_like(state["owners"], 10**6)
    with pytest.raises(ValueError, match="broken"):
        vorl._vorl.restored(state)


def random_links(nodes, links, seed=1):
    random = np.random.default_rng(seed)
    return random.integers(0, nodes, (2, links), np.uint32)


def test_threads_give_the_same_answers():
    graphs = [nx.les_miserables_graph(), nx.karate_club_graph(), nx.florentine_families_graph()]
    expected = [(vorl.communities(g), [list(level) for level in vorl.cluster(g).levels])
                for g in graphs]
    found = [None] * 12

    def work(i):
        g = graphs[i % 3]
        found[i] = vorl.communities(g), [list(level) for level in vorl.cluster(g).levels]

    threads = [threading.Thread(target=work, args=(i,)) for i in range(12)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(found[i] == expected[i % 3] for i in range(12))


def test_other_threads_run_meanwhile():
    turns = 0
    end = threading.Event()

    def count():
        nonlocal turns
        while not end.is_set():
            turns += 1
            time.sleep(0.001)

    thread = threading.Thread(target=count)
    thread.start()
    stages = []
    vorl.communities(random_links(20000, 200000), threads=1,
                     progress=lambda *state: stages.append(state))
    end.set()
    thread.join()
    assert turns > 20
    assert stages and all(isinstance(stage, str) and done >= 0 for stage, _, _, done in stages)


@pytest.mark.parametrize("call", ["communities", "cluster"])
def test_control_c_ends_a_call(call):
    script = f"""
import numpy as np, vorl
links = np.random.default_rng(1).integers(0, 300000, (2, 3000000), np.uint32)
print("go", flush=True)
try:
    vorl.{call}(links)
except KeyboardInterrupt:
    print("ended", flush=True)
"""
    with subprocess.Popen([sys.executable, "-c", script], stdout=subprocess.PIPE,
                          text=True) as process:
        assert process.stdout.readline() == "go\n"
        time.sleep(0.7)
        process.send_signal(signal.SIGINT)
        start = time.monotonic()
        assert process.communicate(timeout=60)[0] == "ended\n"
        assert time.monotonic() - start < 10
    assert process.returncode == 0


@pytest.mark.parametrize("tqdm", [True, False])
def test_bars(tqdm, capsys, monkeypatch):
    monkeypatch.setattr("vorl._progress.DELAY", 0)
    if not tqdm:
        monkeypatch.setitem(sys.modules, "tqdm.auto", None)
    vorl.cluster(random_links(5000, 30000), progress=True)
    shown = capsys.readouterr().err
    assert "level " in shown and ("it/s" in shown or "s/it" in shown) == tqdm
    assert shown.split("\r")[-1].strip() == ""  # nothing stays


def test_what_a_progress_raises_ends_the_call():
    def stop(*_):
        raise RuntimeError("enough")

    with pytest.raises(RuntimeError, match="enough"):
        vorl.communities(random_links(50000, 500000), progress=stop)


def test_no_leak():
    graph = nx.florentine_families_graph()

    def calls(count):
        for _ in range(count):
            found = vorl.communities(graph, threads=1)
            found.shares
            vorl.cluster(graph).root
            with pytest.raises(ValueError):
                vorl.communities([(1, 2, -1.0)])
        gc.collect()
        return int(open("/proc/self/statm").read().split()[1]) * resource.getpagesize()

    before = calls(50)
    assert calls(150) - before < 1 << 20


def test_import_takes_no_other_package():
    script = ("import sys, vorl; "
              "print([m for m in ('numpy', 'pandas', 'networkx', 'scipy') if m in sys.modules])")
    assert subprocess.check_output([sys.executable, "-c", script], text=True) == "[]\n"


def test_plots(overlap):
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")
    graph = nx.les_miserables_graph()
    ax = overlap.plot()
    assert [bar.get_height() for bar in ax.patches] == [7.5, 7.5]
    found = vorl.communities(graph)
    shared = sum(len(own) for own in found.shares.values())
    assert len(found.plot(graph).patches) == shared
    hierarchy = vorl.cluster(graph)
    widths = {}
    for bar in hierarchy.plot().patches:
        level = round(bar.get_y() + 0.5)
        widths[level] = widths.get(level, 0) + bar.get_width()
    assert set(widths.values()) == {77} and len(widths) == len(hierarchy.levels)


def test_hierarchy_around_communities(tmp_path, program):
    links = [(i, j) for c in range(4) for i in range(8 * c, 8 * c + 8) for j in range(8 * c, i)]
    network = nx.relabel_nodes(nx.Graph(links + [(0, 8), (8, 16), (16, 24)]), lambda i: f"n{i:02}")
    hierarchy = vorl.communities_hierarchy(network, threads=1)
    level = hierarchy.levels[hierarchy.communities_level]
    assert vorl.compare(level, vorl.communities(network))["nmi_max"] == 1
    assert hierarchy.communities_level < len(hierarchy.levels)
    assert pickle.loads(pickle.dumps(hierarchy)).communities_level == hierarchy.communities_level
    nx.write_edgelist(nx.Graph(links), tmp_path / "cliques.nse", data=False)
    around = vorl.communities_hierarchy(tmp_path / "cliques.nse")
    around.write(tmp_path / "ours.rhb")
    program("communities", tmp_path / "cliques.nse", "--hierarchy", tmp_path / "program.rhb")
    assert (tmp_path / "ours.rhb").read_bytes() == (tmp_path / "program.rhb").read_bytes()
    assert vorl.cluster(network).communities_level is None


def test_pages_are_those_of_the_program(tmp_path, program, data):
    file = data / "lesmis.nse"
    hierarchy = vorl.cluster(file)
    hierarchy.write(tmp_path / "x.rhb")
    found = vorl.communities(file)
    found.write(tmp_path / "x.cnl")
    for result, clusters in ((hierarchy, "x.rhb"), (found, "x.cnl")):
        for kind in ("html", "svg"):
            program("view", file, tmp_path / clusters, "--title", "Mine", "-o",
                    tmp_path / f"program.{kind}")
            result.view(file, tmp_path / f"ours.{kind}", title="Mine")
            ours = (tmp_path / f"ours.{kind}").read_bytes()
            assert ours == (tmp_path / f"program.{kind}").read_bytes(), (clusters, kind)
        page = result.view(file, title="Mine")
        assert page.html.encode() == ours or kind == "svg"
        assert "srcdoc=" in page._repr_html_() and "<script" not in page._repr_html_()
    named = nx.relabel_nodes(nx.karate_club_graph(), lambda i: f"member {i}")
    for result in (vorl.communities(named), vorl.communities_hierarchy(named)):
        svg = tmp_path / "named.svg"
        assert result.view(named, svg) is None and "member 7" in svg.read_text()
        with pytest.raises(ValueError, match="path: "):
            result.view(named, tmp_path / "x.pdf")
        with pytest.raises(ValueError, match="no node|aren't those"):
            result.view(nx.path_graph(3))
    with pytest.raises(ValueError, match="level: 99"):
        hierarchy.view(file, level=99)


def test_stubs_and_annotations(tmp_path):
    api = pytest.importorskip("mypy.api")
    use = tmp_path / "use.py"
    use.write_text("import vorl\n"
                   "found: vorl.Clustering = vorl.communities([(1, 2)])\n"
                   "level: vorl.Clustering = vorl.cluster('x').cut(3)\n"
                   "vorl.communities([], threads='two')\n")
    options = ["--ignore-missing-imports", "--cache-dir", str(tmp_path / "cache")]
    place = os.path.dirname(os.path.dirname(vorl.__file__))
    if os.path.basename(place) != "site-packages":
        os.environ["MYPYPATH"] = place
        options.append("--no-site-packages")
    out, _, _ = api.run([*options, str(use)])
    assert "use.py:4: error" in out and out.count("error:") == 1, out


ODD_NAMES = [" ", "a\tb", "a\rb", "é", "007", "4294967296", "-1", '"', '""', "a,b", "a;b", "#x", "%",
             "'", "it's", "nan", "node", "community", "1.5", "\u2028", "\ufeff", "/Nodes", "5>",
             "a>b:0.5", "*Vertices", "{", "}", "x" * 5000]


def alike(result):
    return sorted(sorted((str(node), round(share, 5)) for node, share in one.items())
                  for one in result)


@pytest.mark.parametrize("name", ODD_NAMES)
def test_odd_names_come_back_from_files(name, tmp_path):
    links = [(name, "b"), ("b", "c"), ("c", name), ("c", "d"), ("d", "e"), ("e", "f"), ("f", "d")]
    found, tall = vorl.communities(links), vorl.cluster(links)
    for end in ("cnl", "tsv", "csv", "cnl.gz", "tsv.zst"):
        found.write(tmp_path / f"found.{end}")
        assert alike(vorl.read_clusters(tmp_path / f"found.{end}")) == alike(found), end
    tall.write(tmp_path / "tall.rhb")
    read = vorl.read_clusters(tmp_path / "tall.rhb")
    assert alike(read.root if hasattr(read, "root") else read) == alike(tall.root)
    for kept in (found, tall):
        again = pickle.loads(pickle.dumps(kept))
        assert alike(getattr(again, "root", again)) == alike(getattr(kept, "root", kept))


@pytest.mark.parametrize("name", ["", "a\nb", "a\0b", "\ud800"])
def test_names_that_no_file_can_hold_are_refused(name, tmp_path):
    links = [(name, "b"), ("b", "c"), ("c", name)]
    for result, ends in (vorl.communities(links), ("cnl", "tsv")), (vorl.cluster(links), ("rhb",)):
        for end in ends:
            with pytest.raises(ValueError, match="can't stand in a file"):
                result.write(tmp_path / f"x.{end}")
    assert not list(tmp_path.iterdir())
