"""Communities with shares."""

from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any, Dict, Hashable, Iterator, List, Optional, Union

from . import _vorl
from ._files import replacing
from ._frames import frame
from ._inputs import class_of, network_of, vertex_names
from ._labels import Labels
from ._progress import shown
from ._view import Page, page_or_file, title_of

if TYPE_CHECKING:
    import numpy as np


class Community(Mapping):  # type: ignore[type-arg]
    """Nodes with their shares in one community, a mapping that can't be changed.

    Attributes
    ----------
    id : int or None
        The number that the cluster has in a hierarchy or file, if it has one.
    """

    __slots__ = ("_shares", "id")

    def __init__(self, shares: Dict[Hashable, float], id: Optional[int] = None) -> None:
        self._shares = shares
        self.id = id

    def __getitem__(self, node: Hashable) -> float:
        return self._shares[node]

    def __iter__(self) -> Iterator[Hashable]:
        return iter(self._shares)

    def __len__(self) -> int:
        return len(self._shares)

    def __contains__(self, node: object) -> bool:
        return node in self._shares

    def __repr__(self) -> str:
        shown = ", ".join(
            repr(node) if share == 1 else f"{node!r}: {share:.3g}"
            for node, share in list(self._shares.items())[:8]
        )
        return f"Community({shown}{', ...' if len(self) > 8 else ''})"


class Clustering(Sequence):  # type: ignore[type-arg]
    """Communities of a network: a sequence of mappings from nodes to shares.

    Communities are numbered from 0. Those that `vorl.communities` finds stand by falling weight,
    and isolated nodes come last, each a community of its own. The shares of a node, in (0, 1], add
    up to 1.

    Made by `vorl.communities`, `vorl.read_clusters`, `Hierarchy.cut` and `vorl.clustering`.

    Examples
    --------
    >>> import vorl
    >>> found = vorl.clustering([{"a", "b"}, {"b", "c"}])
    >>> len(found), found[0]["b"], found.shares["b"]
    (2, 0.5, {0: 0.5, 1: 0.5})
    """

    def __init__(
        self,
        ends: Any,
        members: Any,
        shares: Any,
        labels: Labels,
        *,
        nodes: Any = None,
        ids: Any = None,
        isolated: int = 0,
        scores: Optional[Dict[str, Any]] = None,
    ) -> None:
        self._ends = ends
        self._members = members
        self._parts = shares
        self._labels = labels
        self._nodes = nodes
        self._ids = ids
        self._communities: List[Optional[Community]] = [None] * len(ends)
        #: How many of the communities, the last ones, are isolated nodes.
        self.isolated = isolated
        #: Figures of the answer by name, see `vorl.communities`; empty where there are none.
        self.scores: Dict[str, Any] = dict(scores or {})
        self._shares: Optional[Dict[Hashable, Dict[int, float]]] = None

    def __len__(self) -> int:
        return len(self._ends)

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self[i] for i in range(*index.indices(len(self)))]
        place = range(len(self))[index]
        found = self._communities[place]
        if found is None:
            part = slice(int(self._ends[place - 1]) if place else 0, int(self._ends[place]))
            nodes = self._labels.of(self._members[part])
            id = None if self._ids is None else int(self._ids[place])
            found = Community(dict(zip(nodes, self._parts[part].tolist())), id)
            self._communities[place] = found
        return found

    @property
    def nodes(self) -> List[Hashable]:
        """The nodes, by ascending number; those of no community among them if they are known."""
        return self._labels.of(self._node_ids())

    @property
    def shares(self) -> Dict[Hashable, Dict[int, float]]:
        """For each node its share in each of its communities, the largest first."""
        if self._shares is None:
            ids, communities, parts = self._rows()
            shares: Dict[Hashable, Dict[int, float]] = {node: {} for node in self.nodes}
            for node, community, part in zip(
                self._labels.of(ids), communities.tolist(), parts.tolist()
            ):
                shares[node][community] = part
            self._shares = shares
        return self._shares

    @property
    def membership(self) -> Dict[Hashable, int]:
        """For each node the community of its largest share, the first one of equal shares."""
        return {node: next(iter(own)) for node, own in self.shares.items() if own}

    @property
    def sizes(self) -> "np.ndarray[Any, Any]":
        """Numbers of nodes, shared ones in parts: float64, one for each community."""
        import numpy as np

        counts = np.diff(self._ends.astype(np.int64), prepend=0)
        of = np.repeat(np.arange(len(self)), counts)
        return np.bincount(of, weights=self._parts, minlength=len(self))

    @property
    def overlapping(self) -> bool:
        """Whether a node is in several communities."""
        return len(self._members) > len(self._covered())

    def _covered(self) -> Any:
        import numpy as np

        return np.unique(self._members)

    def _node_ids(self) -> Any:
        return self._covered() if self._nodes is None else self._nodes

    def _rows(self) -> Any:
        """Memberships by ascending node, the largest share first: ids, communities, shares."""
        import numpy as np

        counts = np.diff(self._ends.astype(np.int64), prepend=0)
        of = np.repeat(np.arange(len(self)), counts)
        order = np.lexsort((of, -self._parts, self._members))
        return self._members[order], of[order], self._parts[order]

    def to_frame(self, library: str = "pandas") -> Any:
        """A table with the columns node, community and share, a row for each membership.

        Parameters
        ----------
        library : {"pandas", "polars"}
            Whose DataFrame it is.
        """
        ids, communities, shares = self._rows()
        columns = {"node": self._column(ids), "community": communities, "share": shares}
        return frame(columns, library)

    def _column(self, ids: Any) -> Any:
        return ids.astype("int64") if not self._labels.names else self._labels.of(ids)

    def to_series(self) -> Any:
        """The `membership` as a pandas Series with the nodes as its index."""
        import pandas

        membership = self.membership
        index = pandas.Index(list(membership), name="node", tupleize_cols=False)
        return pandas.Series(list(membership.values()), index=index, name="community")

    def write(self, path: Union[str, "os.PathLike[str]"]) -> None:
        """Writes the communities as the program does.

        ``.cnl`` is a community a line, ``.tsv`` and ``.csv`` a membership a line below a line of
        names. With ``.gz`` or ``.zst`` behind that, the file is packed. It appears under its name
        when it is whole.

        Raises
        ------
        ValueError
            For another extension, and if two nodes have the same text.
        OSError
            If the file can't be written.
        """
        name = os.fsdecode(path)
        kind = os.path.splitext(_vorl.plain_name(name))[1].lower()
        separators = {".cnl": "", ".tsv": "\t", ".csv": ","}
        if kind not in separators:
            raise ValueError(f"path: {name!r} is to end in .cnl, .tsv or .csv, .gz or .zst behind it")
        data = _vorl.clusters_text(
            self._ends, self._members, self._parts, len(self._node_ids()), self._labels.texts(),
            separators[kind], name,
        )
        with replacing(name) as temporary:
            with open(temporary, "wb") as file:
                file.write(data)

    def view(
        self,
        G: Any,
        path: Optional[Union[str, "os.PathLike[str]"]] = None,
        *,
        title: Optional[str] = None,
        weight: Optional[str] = "weight",
        directed: Optional[bool] = None,
        sum_duplicates: Optional[bool] = None,
        source: str = "source",
        target: str = "target",
        format: Optional[str] = None,
        progress: Any = False,
    ) -> Optional[Page]:
        """Shows the communities and their network as a page to zoom and search in.

        Parameters
        ----------
        G : path, graph, matrix, table or arrays
            The network, as of `vorl.communities`.
        path : path, optional
            Where to write: a page as ``.html``, or the map alone as ``.svg``.
        title : str, optional
            What the page is called; a file's name if it isn't given.
        weight, directed, sum_duplicates, source, target, format, progress
            As of `vorl.communities`.

        Returns
        -------
        Page or None
            A page that a notebook shows, with its text as ``.html``; None if it was written.

        Raises
        ------
        ValueError
            If the network lacks a node of the communities.
        """
        network = network_of(
            G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
            target=target, format=format,
        )
        members, names = network.members_of(self)
        if network.labels is not None:
            names = network.labels.texts()

        def picture(svg: bool) -> str:
            with shown(progress) as tell:
                text: str = _vorl.view_clusters(
                    network.native, self._ends, members, self._parts, names, title_of(title, G),
                    svg, tell,
                )
            return text

        return page_or_file(path, picture)

    def plot(self, network: Any = None, ax: Any = None, **options: Any) -> Any:
        """Draws the sizes of the communities, or with a networkx graph the network itself.

        Parameters
        ----------
        network : networkx.Graph, optional
            The network; each node is a pie of its shares.
        ax : matplotlib.axes.Axes, optional
            Where to draw; a new figure's if it isn't given.
        **options
            ``pos`` for the positions of the nodes, ``seed`` for those that are sought,
            ``labels=True`` for names, ``radius`` of a node.

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plots import draw_network, draw_sizes

        if network is None:
            return draw_sizes(self, ax, **options)
        return draw_network(self, network, ax, **options)

    def to_cdlib(self, graph: Any, method: str = "vorl") -> Any:
        """A `NodeClustering` of cdlib, in which shares aren't kept."""
        from cdlib import NodeClustering

        return NodeClustering(
            [list(one) for one in self],
            graph=graph,
            method_name=method,
            overlap=self.overlapping,
        )

    def to_igraph(self, graph: Any) -> Any:
        """A `VertexClustering` of igraph, or a `VertexCover` where nodes are in several."""
        import igraph

        names = vertex_names(graph)
        index = None if names is None else {name: i for i, name in enumerate(names)}
        place = index.__getitem__ if index is not None else int
        if self.overlapping:
            return igraph.VertexCover(graph, [sorted(map(place, one)) for one in self])
        membership = [0] * graph.vcount()
        for community, one in enumerate(self):
            for node in one:
                membership[place(node)] = community
        return igraph.VertexClustering(graph, membership)

    def __repr__(self) -> str:
        found = len(self) - self.isolated
        nodes = len(self._node_ids())
        text = f"{found} communit{'y' if found == 1 else 'ies'} of {nodes} node{'s' * (nodes != 1)}"
        shared = len(self._members) - len(self._covered())
        if shared:
            text += ", overlapping"
        if self.isolated:
            text += f"; {self.isolated} isolated"
        return f"<vorl.Clustering: {text}>"

    def _repr_html_(self) -> str:
        from html import escape

        rows = []
        sizes = self.sizes
        for i, one in enumerate(self[:10]):
            nodes = ", ".join(
                escape(str(node)) + ("" if share == 1 else f" ({share:.2g})")
                for node, share in list(one.items())[:10]
            )
            more = ", …" if len(one) > 10 else ""
            rows.append(f"<tr><td>{i}</td><td>{sizes[i]:.6g}</td><td>{nodes}{more}</td></tr>")
        if len(self) > 10:
            rows.append(f"<tr><td>…</td><td></td><td>{len(self) - 10} more</td></tr>")
        return (
            f"<p>{escape(repr(self)[1:-1])}</p><table><thead><tr><th>community</th><th>size</th>"
            f"<th>nodes</th></tr></thead><tbody>{''.join(rows)}</tbody></table>"
        )

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Clustering):
            return NotImplemented
        return len(self) == len(other) and all(a == b for a, b in zip(self, other))

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Any:
        return _restored, (
            self._ends, self._members, self._parts, self._labels, self._nodes, self._ids,
            self.isolated, self.scores,
        )


def _restored(
    ends: Any, members: Any, shares: Any, labels: Labels, nodes: Any, ids: Any, isolated: int,
    scores: Dict[str, Any],
) -> Clustering:
    return Clustering(
        ends, members, shares, labels, nodes=nodes, ids=ids, isolated=isolated, scores=scores
    )


def clustering(communities: Any) -> Clustering:
    """A `Clustering` of whatever tells communities.

    Parameters
    ----------
    communities : Clustering, iterable of iterables of nodes, mapping, or an object of a package
        Sets of nodes; mappings from nodes to shares; one mapping or pandas Series from each node
        to its community; a `Community` alone; the root of a `Hierarchy`;
        cdlib's `NodeClustering`; igraph's `VertexClustering` and `VertexCover`. Where shares aren't
        told, a node belongs evenly to its communities.

    Returns
    -------
    Clustering

    Examples
    --------
    >>> import vorl
    >>> vorl.clustering({"a": 0, "b": 0, "c": 1})
    <vorl.Clustering: 2 communities of 3 nodes>
    """
    import numpy as np

    if isinstance(communities, Clustering):
        return communities
    from ._hierarchy import Hierarchy

    if isinstance(communities, Hierarchy):
        return communities.root
    if isinstance(communities, Community):
        communities = [communities]
    if class_of(communities, "pandas", "Series"):
        communities = communities.to_dict()
    if class_of(communities, "cdlib", "Clustering"):
        communities = communities.communities
    elif class_of(communities, "igraph", "VertexClustering", "VertexCover"):
        names = vertex_names(communities.graph)
        communities = [
            one if names is None else [names[i] for i in one] for one in communities if one
        ]
    elif isinstance(communities, Mapping):
        groups: Dict[Any, List[Hashable]] = {}
        for node, community in communities.items():
            groups.setdefault(community, []).append(node)
        communities = list(groups.values())
    if isinstance(communities, (str, bytes)) or not hasattr(communities, "__iter__"):
        raise TypeError(f"communities: {type(communities).__name__} tells no communities")
    groups_of: List[Any] = []
    for one in communities:
        if isinstance(one, (str, bytes)) or not hasattr(one, "__iter__"):
            raise TypeError(f"communities: {one!r} is no collection of nodes")
        groups_of.append(one if isinstance(one, Mapping) else dict.fromkeys(one))
    nodes = list(dict.fromkeys(node for one in groups_of for node in one))
    labels, ids = Labels.of_nodes(nodes)
    id_of = dict(zip(nodes, ids.tolist()))
    count: Dict[Hashable, int] = {}
    for one in groups_of:
        for node in one:
            count[node] = count.get(node, 0) + 1
    shares = [
        1 / count[node] if share is None else share
        for one in groups_of
        for node, share in one.items()
    ]
    parts = np.array(shares, np.float32)
    wrong = np.flatnonzero(~((parts > 0) & np.isfinite(parts)))
    if len(wrong):
        raise ValueError(f"communities: the share of a node is {shares[wrong[0]]!r}, "
                         "a number above 0 is expected")
    return Clustering(
        np.cumsum([len(one) for one in groups_of], dtype=np.uint64),
        np.array([id_of[node] for one in groups_of for node in one], np.uint32),
        parts,
        labels,
    )
