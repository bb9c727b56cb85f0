"""Hierarchies of clusters."""

from __future__ import annotations

import operator
import os
from collections.abc import Sequence
from typing import Any, Dict, Hashable, Iterator, List, NamedTuple, Optional, Union

from ._clustering import Clustering
from ._files import replacing
from ._frames import frame
from ._inputs import network_of
from ._labels import Labels
from ._progress import shown
from ._view import Page, page_or_file, title_of

SHARES = {"none": 0, "uneven": 1, "full": 2}


class Membership(NamedTuple):
    """What a node has in a cluster, directly or by those between them."""

    level: int
    cluster: int
    share: float


class Levels(Sequence):  # type: ignore[type-arg]
    """The levels of a hierarchy from the lowest on, each a `Clustering` that is made when asked for.

    It has the clusters that stand at the level: those formed there, and those carried past it.
    """

    def __init__(self, native: Any, labels: Labels) -> None:
        self._native = native
        self._labels = labels
        self._count = len(native.levels())

    def __len__(self) -> int:
        return self._count

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self[i] for i in range(*index.indices(self._count))]
        ids, ends, members, shares, _ = self._native.cut(range(self._count)[index])
        return Clustering(
            ends, members, shares, self._labels, nodes=self._native.sorted_nodes(), ids=ids
        )

    def __repr__(self) -> str:
        return f"<{self._count} levels>"

    def __reduce__(self) -> Any:
        return _restored_levels, (self._native.state(), self._labels)


class Hierarchy:
    """A hierarchy of overlapping clusters, of `vorl.cluster` or `vorl.communities_hierarchy`.

    A cluster has an id, the level on which it was formed, and owners on higher levels, in which it
    has shares that add up to 1; so does a node.

    Attributes
    ----------
    scores : dict
        ``modularity`` of the root, the ``gamma`` of the build (-1: found for each pair), the
        ``estimated_gamma``, mean ``conductance`` of the root, number of ``clusters``.
    communities_level : int or None
        The index of the level of the communities, of a hierarchy around communities.
    """

    def __init__(
        self, native: Any, labels: Labels, communities_level: Optional[int] = None
    ) -> None:
        self._native = native
        self._labels = labels
        self.communities_level = communities_level
        self.scores: Dict[str, Any] = native.score()

    @property
    def levels(self) -> Levels:
        """The levels, the lowest first: a sequence of `Clustering`."""
        return Levels(self._native, self._labels)

    @property
    def root(self) -> Clustering:
        """The clusters on top of the hierarchy.

        Raises
        ------
        ValueError
            If no cluster was formed, as in a network without links.
        """
        self._require_levels()
        root: Clustering = self.levels[-1]
        return root

    @property
    def nodes(self) -> List[Hashable]:
        """The nodes in the order of the network."""
        return self._labels.of(self._native.nodes())

    def _require_levels(self) -> None:
        if not self._native.levels():
            raise ValueError("the hierarchy has no clusters")

    def memberships(self, node: Hashable) -> List[Membership]:
        """The clusters that hold a node, those of lower levels first.

        Parameters
        ----------
        node : hashable

        Returns
        -------
        list of Membership
            ``(level, cluster, share)``: the level on which the cluster was formed, its id, and the
            share of the node in it, in (0, 1].

        Raises
        ------
        KeyError
            If there is no such node.
        """
        try:
            found = self._native.memberships(self._labels.id(node))
        except (KeyError, ValueError):
            raise KeyError(node) from None
        return [Membership(*one) for one in found]

    def cut(self, n_clusters: Optional[int] = None, *, level: Optional[int] = None) -> Clustering:
        """The clusters that stand at a level.

        Parameters
        ----------
        n_clusters : int, optional
            The level with nearly as many clusters is taken, the lower of two.
        level : int, optional
            The level, 0 being the lowest; -1 the highest.

        Returns
        -------
        Clustering
        """
        if (n_clusters is None) == (level is None):
            raise TypeError("cut() takes either n_clusters or level")
        for name, value in (("n_clusters", n_clusters), ("level", level)):
            if isinstance(value, bool) or value is not None and not hasattr(value, "__index__"):
                raise TypeError(f"{name}: a whole number is expected, not {value!r}")
        self._require_levels()
        if level is None:
            n_clusters = operator.index(n_clusters or 0)
            if n_clusters < 1:
                raise ValueError(f"n_clusters: {n_clusters}, a number from 1 on is expected")
            level = self._native.nearest_level(n_clusters)
        try:
            found: Clustering = self.levels[level]
        except IndexError:
            raise ValueError(f"level: {level}, there are {len(self.levels)} levels") from None
        return found

    def to_frame(self, library: str = "pandas") -> Any:
        """A table with the columns node, level, cluster and share.

        It has a row for each node and each cluster that stands at a level and holds it.
        """
        import numpy as np

        ids: List[Any] = []
        levels: List[Any] = []
        clusters: List[Any] = []
        shares: List[Any] = []
        for number, level in enumerate(self.levels):
            members, places, parts = level._rows()
            ids.append(members)
            levels.append(np.full(len(members), number))
            clusters.append(level._ids[places].astype(np.int64))
            shares.append(parts)
        def joined(parts: List[Any], kind: Any) -> Any:
            return np.concatenate(parts) if parts else np.empty(0, kind)

        nodes = joined(ids, np.uint32)
        columns = {
            "node": nodes.astype(np.int64) if not self._labels.names else self._labels.of(nodes),
            "level": joined(levels, np.int64),
            "cluster": joined(clusters, np.int64),
            "share": joined(shares, np.float32),
        }
        return frame(columns, library)

    def to_networkx(self) -> Any:
        """A `networkx.DiGraph` of links from nodes and clusters to their owners.

        Nodes keep their names, a cluster is ``("cluster", id)`` with the attribute ``level``; a
        link has the attribute ``share``.
        """
        import networkx

        ids, levels, items, owners, shares = self._native.owners()
        names: List[Hashable] = list(self.nodes)
        graph = networkx.DiGraph()
        graph.add_nodes_from(names)
        for id, level in zip(ids.tolist(), levels.tolist()):
            graph.add_node(("cluster", id), level=level)
            names.append(("cluster", id))
        for item, owner, share in zip(items.tolist(), owners.tolist(), shares.tolist()):
            graph.add_edge(names[item], names[owner], share=share)
        return graph

    def write(
        self,
        path: Union[str, "os.PathLike[str]"],
        *,
        levels: str = "root",
        shares: str = "full",
        max_share: bool = False,
    ) -> None:
        """Writes the hierarchy, byte for byte as the program ``vorl cluster`` does.

        Parameters
        ----------
        path : path
            ``.rhb`` for the description of the hierarchy; ``.cnl`` for clusters, beside which the
            description is written as ``.rhb``.
        levels : {"root", "all"}
            For ``.cnl``: those at the root, or each cluster once.
        shares : {"full", "uneven", "none"}
            For ``.cnl``: which shares are told, and with ``"full"`` the ids of clusters, too.
        max_share : bool
            For ``.cnl``: a node goes only to the clusters of its largest share.

        Raises
        ------
        ValueError
            If two nodes have the same text, or if there are no clusters.
        OSError
            If a file can't be written.
        """
        name = os.fsdecode(path)
        kind = os.path.splitext(name)[1].lower()
        if kind not in (".rhb", ".cnl"):
            raise ValueError(f"path: {name!r} is to end in .rhb or .cnl")
        if levels not in ("all", "root"):
            raise ValueError(f"levels: {levels!r}, all or root is expected")
        if shares not in SHARES:
            raise ValueError(f"shares: {shares!r}, one of {', '.join(SHARES)} is expected")
        names = self._labels.texts()
        self._require_levels()
        with replacing(name) as temporary:
            if kind == ".rhb":
                self._native.describe(temporary, names)
            else:
                self._native.write(temporary, names, levels == "root", bool(max_share), SHARES[shares])

    def view(
        self,
        G: Any,
        path: Optional[Union[str, "os.PathLike[str]"]] = None,
        *,
        title: Optional[str] = None,
        level: Optional[int] = None,
        all_levels: bool = False,
        weight: Optional[str] = "weight",
        directed: Optional[bool] = None,
        sum_duplicates: Optional[bool] = None,
        source: str = "source",
        target: str = "target",
        format: Optional[str] = None,
        progress: Any = False,
    ) -> Optional[Page]:
        """Shows the hierarchy and its network as a page to zoom and search in.

        Parameters
        ----------
        G : path, graph, matrix, table or arrays
            The network, as of `vorl.communities`.
        path : path, optional
            Where to write: a page as ``.html``, or the map alone as ``.svg``.
        title : str, optional
            What the page is called; a file's name if it isn't given.
        level : int, optional
            The level to begin with, whose clusters have colours of their own; by itself that of the
            communities, else the one of highest modularity.
        all_levels : bool
            Whether levels that hardly differ from the one below are shown, too.
        weight, directed, sum_duplicates, source, target, format, progress
            As of `vorl.communities`.

        Returns
        -------
        Page or None
            A page that a notebook shows, with its text as ``.html``; None if it was written.

        Raises
        ------
        ValueError
            If the nodes of the network aren't those of the hierarchy, and for a wrong level.
        """
        self._require_levels()
        network = network_of(
            G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
            target=target, format=format,
        )
        labels = self._labels
        if network.labels is not None and list(network.labels.names) != list(labels.names):
            raise ValueError("G: its nodes aren't those of the hierarchy, or in another order")
        if level is None:
            level = self.communities_level
        elif not -len(self.levels) <= level < len(self.levels):
            raise ValueError(f"level: {level}, there are {len(self.levels)} levels")
        else:
            level = range(len(self.levels))[level]

        def picture(svg: bool) -> str:
            with shown(progress) as tell:
                text: str = self._native.view(
                    network.native, labels.texts(), title_of(title, G), level, bool(all_levels),
                    svg, tell,
                )
            return text

        return page_or_file(path, picture)

    def plot(self, ax: Any = None, **options: Any) -> Any:
        """Draws the levels as an icicle, the root on top: each node as wide as its share.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; a new figure's if it isn't given.
        **options
            ``cmap``, a name of matplotlib's.

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plots import draw_levels

        return draw_levels(self, ax, **options)

    def __iter__(self) -> Iterator[Clustering]:
        return iter(self.levels)

    def __repr__(self) -> str:
        formed = [one[0] for one in self._native.levels()]
        return (
            f"<vorl.Hierarchy: {sum(formed)} clusters on {len(formed)} levels over "
            f"{len(self._native.nodes())} nodes>"
        )

    def _repr_html_(self) -> str:
        from html import escape

        rows = "".join(
            f"<tr><td>{i}</td><td>{formed}</td><td>{height}</td></tr>"
            for i, (formed, height) in reversed(list(enumerate(self._native.levels())))
        )
        return (
            f"<p>{escape(repr(self)[1:-1])}</p><table><thead><tr><th>level</th><th>clusters formed"
            f"</th><th>items</th></tr></thead><tbody>{rows}</tbody></table>"
        )

    def __reduce__(self) -> Any:
        return _restored, (self._native.state(), self._labels, self.communities_level)


def _restored_levels(state: Any, labels: Labels) -> Levels:
    return _restored(state, labels, None).levels


def _restored(state: Any, labels: Labels, communities_level: Optional[int]) -> Hierarchy:
    from . import _vorl

    return Hierarchy(_vorl.restored(state), labels, communities_level)
