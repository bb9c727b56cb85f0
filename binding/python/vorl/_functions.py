"""The calls of the package."""

from __future__ import annotations

import os
import warnings
from typing import Any, Callable, Dict, List, Optional, TypeVar, Union

from . import _vorl
from ._clustering import Clustering, clustering
from ._errors import InputWarning
from ._hierarchy import Hierarchy
from ._inputs import network_of
from ._labels import Labels
from ._progress import shown

REDUCTIONS = {"none": 0, "accurate": 1, "mean": 2, "severe": 3}
REDUCTION_FLAGS = {"skip-nodes": 0x10, "skip-clusters": 0x20, "by-weight": 0x80}
FORMATS = {"cnl": "CNL", "table": "TABLE", "rhb": "RHB"}


# What the calls that take a network tell of it, and of how they read it.
NETWORK = """\
G : path, graph, matrix, table or arrays
        - a path of a file, see ``docs/formats.md``;
        - `networkx.Graph`, `DiGraph` and those with repeated links, whose weights are added up;
        - `igraph.Graph`, whose vertex attribute ``name``, or that of `Graph.from_networkx`, names
          the nodes if it is there;
        - a square scipy sparse matrix; a symmetric one is without directions;
        - a DataFrame of pandas or polars, or a pyarrow table, with columns of the ends of links;
        - an array of shape (m, 2) or (m, 3), a link with its weight a row, or of shape (2, m),
          such as an ``edge_index`` of torch; a list of tuples (source, target[, weight]);
        - a tuple (sources, targets[, weights]) of arrays."""
READING = """\
weight : str or None
        Name of the attribute or column of weights, 0 or above; 1 where it isn't there, but a name of
        one's own that no link has is refused. None: no weights are looked at.
    directed : bool, optional
        Whether links have directions; by itself as the object says, else not.
    sum_duplicates : bool
        Whether weights of repeated links in tables, arrays and files are added up; else the first
        one counts. The two directions of a link without directions repeat each other.
    source, target : str
        Names of columns of a table.
    format : str, optional
        Format of a file, one of those of ``docs/formats.md`` such as "nse" or "mtx", if neither
        its name nor its first lines tell it."""
PROGRESS = """\
progress : bool or callable
        Shows how far it is, by tqdm where that is installed; or is called with (stage, level or
        None, total, done)."""

Call = TypeVar("Call", bound=Callable[..., Any])


def _told(call: Call) -> Call:
    """Puts into the docstring what several calls have in common."""
    text = call.__doc__ or ""
    for place, words in (("{network}", NETWORK), ("{reading}", READING), ("{progress}", PROGRESS)):
        text = text.replace(place, words)
    call.__doc__ = text
    return call


def _number(name: str, value: Any, low: int, high: int) -> int:
    if isinstance(value, bool) or not hasattr(value, "__index__"):
        raise TypeError(f"{name}: a whole number is expected, not {value!r}")
    number = int(value.__index__())
    if not low <= number <= high:
        raise ValueError(f"{name}: {number}, a number from {low} to {high} is expected")
    return number


def _count(name: str, value: Any) -> int:
    """A count that None leaves to the library."""
    return 0 if value is None else _number(name, value, 1, 2**31 - 1)


def _flag(name: str, value: Any) -> bool:
    if not isinstance(value, bool):
        raise TypeError(f"{name}: True or False is expected, not {value!r}")
    return value


def _gamma(value: Any, other: str = "") -> float:
    """A resolution; ``other`` tells what else it might have been."""
    single = hasattr(value, "__float__") and not getattr(value, "ndim", False)
    if isinstance(value, (str, bool)) or not single:
        raise TypeError(f"gamma: {other}a number is expected, not {value!r}")
    number = float(value)
    if not 0 <= number < float("inf"):
        raise ValueError(f"gamma: {other}a number from 0 on is expected, not {number}")
    return number


def _warn(texts: List[str]) -> None:
    for text in texts:
        warnings.warn(text, InputWarning, stacklevel=3)


@_told
def communities(
    G: Any,
    *,
    shares: bool = True,
    starts: Optional[int] = None,
    threads: Optional[int] = None,
    weight: Optional[str] = "weight",
    directed: Optional[bool] = None,
    sum_duplicates: Optional[bool] = None,
    source: str = "source",
    target: str = "target",
    format: Optional[str] = None,
    progress: Any = False,
) -> Clustering:
    """The communities of a network: those that describe it in the fewest bits.

    There is nothing to set: neither a number of communities nor a resolution. A network without
    communities is one community. The directions of links are added up. The answer is the same on
    every run and machine, for any number of threads and any order of the links. It takes nearly
    linear time, and Ctrl-C ends it.

    Parameters
    ----------
    {network}
    shares : bool
        Whether a node may be in several communities.
    starts : int, optional
        From how many starts to search; by itself the more, the smaller the network is.
    threads : int, optional
        Threads to work with; all processors if not given. The answer doesn't depend on it.
    {reading}
    {progress}

    Returns
    -------
    Clustering
        With `scores`: ``modularity`` at gamma 1, mean ``conductance`` in [0, 1], the estimated
        resolution ``gamma``, ``saving``: bits that the communities save, below 0 where they may as
        well be chance, ``naming``: bits that name them, ``start``, ``starts``, ``rounds``.

    Raises
    ------
    TypeError, ValueError
        For a wrong argument, with its name.
    InputError
        For a fault of a file, with file and line.
    OSError
        If a file can't be opened.

    References
    ----------
    L. Zhang, T. P. Peixoto, Statistical inference of assortative community structures, Phys. Rev.
    Research 2, 043271 (2020), https://doi.org/10.1103/PhysRevResearch.2.043271

    Examples
    --------
    >>> import vorl
    >>> from itertools import combinations
    >>> links = [*combinations(range(8), 2), *combinations(range(7, 15), 2)]
    >>> found = vorl.communities(links)
    >>> found.shares[7]
    {0: 0.5, 1: 0.5}
    """
    _flag("shares", shares)
    starts = _count("starts", starts)
    threads = _count("threads", threads)
    network = network_of(
        G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
        target=target, format=format,
    )
    with shown(progress) as tell:
        ids, ends, members, parts, isolated, scores, texts, names = _vorl.communities(
            network.native, shares, starts, threads, tell
        )
    _warn(texts)
    labels = network.labels or Labels.read(names)
    return Clustering(ends, members, parts, labels, nodes=ids, isolated=isolated, scores=scores)


@_told
def communities_hierarchy(
    G: Any,
    *,
    starts: Optional[int] = None,
    threads: Optional[int] = None,
    weight: Optional[str] = "weight",
    directed: Optional[bool] = None,
    sum_duplicates: Optional[bool] = None,
    source: str = "source",
    target: str = "target",
    format: Optional[str] = None,
    progress: Any = False,
) -> Hierarchy:
    """The hierarchy around the communities of a network: what lies inside of each, and above.

    The communities are those of `communities`; each is clustered as by `cluster` on its own links,
    and so is the network of the communities. They stand at the level `communities_level`.

    Parameters
    ----------
    {network}
    starts, threads : int, optional
        As of `communities`.
    {reading}
    {progress}

    Returns
    -------
    Hierarchy

    Raises
    ------
    TypeError, ValueError, InputError, OverflowError, OSError
        As `communities` and `cluster`.

    Examples
    --------
    >>> import vorl
    >>> from itertools import combinations
    >>> links = [link for i in range(4) for link in combinations(range(8 * i, 8 * i + 8), 2)]
    >>> hierarchy = vorl.communities_hierarchy(links + [(0, 8), (8, 16), (16, 24)])
    >>> hierarchy.levels[hierarchy.communities_level].sizes.tolist()
    [8.0, 8.0, 8.0, 8.0]
    """
    starts = _count("starts", starts)
    threads = _count("threads", threads)
    network = network_of(
        G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
        target=target, format=format,
    )
    with shown(progress) as tell:
        native, level, texts = _vorl.communities_hierarchy(network.native, starts, threads, tell)
    _warn(texts)
    return Hierarchy(native, network.labels or Labels.read(native.names()), level)


@_told
def cluster(
    G: Any,
    gamma: Union[str, float] = "auto",
    root_max: int = 0,
    reduction: Optional[str] = None,
    *,
    weight: Optional[str] = "weight",
    directed: Optional[bool] = None,
    sum_duplicates: Optional[bool] = None,
    source: str = "source",
    target: str = "target",
    format: Optional[str] = None,
    progress: Any = False,
) -> Hierarchy:
    """The hierarchy of a network: overlapping clusters with shares, from pairs up to the root.

    Directions of links count. The result is the same on every run and machine. Two threads may call it at once; builds of
    networks that are both weighted, or both not, wait for each other.

    Parameters
    ----------
    {network}
    gamma : "auto" or float
        Resolution: by itself for each pair of items, or one from 0 on; 1 is that of the
        modularity, more means smaller clusters.
    root_max : int
        The largest wanted number of clusters at the root, up to 65535; 0: no limit.
    reduction : str, optional
        Which of the lightest links of items with many are dropped: ``"accurate"``, ``"mean"`` or
        ``"severe"``, then any of ``",skip-nodes"``, ``",skip-clusters"``, ``",by-weight"``.
    {reading}
    {progress}

    Returns
    -------
    Hierarchy

    Raises
    ------
    TypeError, ValueError
        For a wrong argument, with its name.
    InputError
        For a fault of a file, with file and line.
    OverflowError
        If the network is beyond what the engine counts; `communities` finds its communities.
    OSError
        If a file can't be opened.

    Examples
    --------
    >>> import vorl
    >>> hierarchy = vorl.cluster([(0, 1), (1, 2), (2, 0), (3, 4), (4, 5), (5, 3), (2, 3, 0.5)])
    >>> [sorted(one) for one in hierarchy.root]
    [[0, 1, 2], [3, 4, 5]]
    """
    gamma = -1.0 if isinstance(gamma, str) and gamma == "auto" else _gamma(gamma, '"auto" or ')
    root_max = _number("root_max", root_max, 0, 2**16 - 1)
    network = network_of(
        G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
        target=target, format=format,
    )
    with shown(progress) as tell:
        native, texts = _vorl.cluster(
            network.native, float(gamma), root_max, _reduction(reduction), tell
        )
    _warn(texts)
    return Hierarchy(native, network.labels or Labels.read(native.names()))


def _reduction(text: Optional[str]) -> int:
    if text is None:
        return 0
    if not isinstance(text, str):
        raise TypeError(f"reduction: a text is expected, not {text!r}")
    core, *flags = text.split(",")
    for word, words in ((core, REDUCTIONS), *((flag, REDUCTION_FLAGS) for flag in flags)):
        if word not in words:
            raise ValueError(f"reduction: {word!r}, one of {', '.join(words)} is expected")
    return REDUCTIONS[core] | sum({REDUCTION_FLAGS[flag] for flag in flags})


def compare(a: Any, b: Any) -> Dict[str, Any]:
    """How alike two clusterings are, on the nodes of either.

    Parameters
    ----------
    a, b : Clustering, path, or what `clustering` takes
        Shares don't count. A node that one of them doesn't have is in no cluster of it.

    Returns
    -------
    dict
        ``nmi_max`` and ``nmi_lfk``: overlapping normalised mutual information in both forms;
        ``f1``; ``omega`` (exact if ``omega_samples`` is 0); and of partitions, else None, ``ari``,
        ``nmi``, and ``vi`` in nats. All but ``vi`` are 1 for equal clusterings.

    References
    ----------
    A. F. McDaid, D. Greene, N. Hurley, arXiv:1110.2515 (2011). A. Lancichinetti, S. Fortunato,
    J. Kertesz, New J. Phys. 11, 033015 (2009), https://doi.org/10.1088/1367-2630/11/3/033015.
    J. Yang, J. Leskovec, WSDM (2013), https://doi.org/10.1145/2433396.2433471. L. M. Collins,
    C. W. Dent, Multivar. Behav. Res. 23, 231 (1988),
    https://doi.org/10.1207/s15327906mbr2302_6. L. Hubert, P. Arabie, J. Classif. 2, 193 (1985),
    https://doi.org/10.1007/BF01908075.

    Examples
    --------
    >>> import vorl
    >>> vorl.compare([{1, 2}, {3, 4}], [{3, 4}, {2, 1}])["ari"]
    1.0
    """
    import numpy as np

    first, second = _clusters("a", a), _clusters("b", b)
    if not first._labels.names and not second._labels.names:
        nodes = np.union1d(first._members, second._members)
        members = [np.searchsorted(nodes, one._members) for one in (first, second)]
        count = len(nodes)
    else:
        index: Dict[Any, int] = {}
        for one in (first, second):
            for node in one._labels.of(one._members):
                index.setdefault(node, len(index))
        members = [
            np.array([index[node] for node in one._labels.of(one._members)], np.uint32)
            for one in (first, second)
        ]
        count = len(index)
    x, y = (one.astype(np.uint32) for one in members)
    result: Dict[str, Any] = _vorl.compare(count, first._ends, x, second._ends, y)
    return result


def _clusters(name: str, value: Any) -> Clustering:
    if isinstance(value, (str, os.PathLike)):
        found = read_clusters(value)
    elif isinstance(value, Hierarchy):
        found = value.root
    else:
        try:
            found = clustering(value)
        except TypeError as err:
            raise TypeError(f"{name}: {str(err).replace('communities: ', '', 1)}") from None
    if not len(found._members):
        raise ValueError(f"{name}: there are no clusters")
    return found


@_told
def evaluate(
    G: Any,
    clustering: Any,
    *,
    gamma: float = 1.0,
    weight: Optional[str] = "weight",
    directed: Optional[bool] = None,
    sum_duplicates: Optional[bool] = None,
    source: str = "source",
    target: str = "target",
    format: Optional[str] = None,
) -> Dict[str, Any]:
    """Measures communities on a network.

    Parameters
    ----------
    {network}
    clustering : Clustering, path, or what `vorl.clustering` takes
        Shares of nodes count at both ends of a link. A node of no cluster adds nothing.
    gamma : float
        Resolution of the modularity, from 0 on.
    {reading}

    Returns
    -------
    dict
        Mean ``conductance`` in [0, 1], None if there is none; ``modularity`` at ``gamma``; the
        ``estimated_gamma`` and the ``modularity_at_estimated_gamma``.

    References
    ----------
    M. E. J. Newman, M. Girvan, Finding and evaluating community structure in networks, Phys. Rev. E
    69, 026113 (2004), https://doi.org/10.1103/PhysRevE.69.026113. M. E. J. Newman, Equivalence
    between modularity optimization and maximum likelihood methods for community detection, Phys.
    Rev. E 94, 052315 (2016), https://doi.org/10.1103/PhysRevE.94.052315

    Examples
    --------
    >>> import vorl
    >>> links = [(0, 1), (1, 2), (2, 0), (3, 4), (4, 5), (5, 3), (2, 3)]
    >>> round(vorl.evaluate(links, [{0, 1, 2}, {3, 4, 5}])["modularity"], 3)
    0.357
    """
    gamma = _gamma(gamma)
    found = _clusters("clustering", clustering)
    network = network_of(
        G, weight=weight, directed=directed, sum_duplicates=sum_duplicates, source=source,
        target=target, format=format,
    )
    members, names = network.members_of(found)
    result: Dict[str, Any] = _vorl.evaluate(
        network.native, found._ends, members, found._parts, names, gamma
    )
    return result


def read_clusters(
    path: Any, *, format: Optional[str] = None, level: Optional[int] = None
) -> Clustering:
    """Reads clusters of a file, also one that is packed by gzip or zstd.

    Parameters
    ----------
    path : path
        Clusters (``.cnl``), a table of nodes and clusters (``.tsv``, ``.csv``, ``.clu``, ``.json``), or a
        hierarchy (``.rhb``), of which the clusters at the root count.
    format : {"cnl", "table", "rhb"}, optional
        The format, if neither the contents nor the name tell it.
    level : int, optional
        Level of a hierarchy, 0 being the lowest; refused where a file has clusters without levels.

    Returns
    -------
    Clustering

    Raises
    ------
    InputError
        For a fault of the file, with file and line.
    OSError
        If it can't be opened.
    """
    name = os.fsdecode(os.fspath(path))
    if format is not None and format not in FORMATS:
        raise ValueError(f"format: {format!r}, one of {', '.join(FORMATS)} is expected")
    if level is not None:
        level = _number("level", level, 0, 2**32 - 2)
    with open(name, "rb"):
        pass
    kind = getattr(_vorl.ClustersFormat, FORMATS[format] if format else "UNKNOWN")
    ids, ends, members, shares, names = _vorl.read_clusters(name, kind, level, None)
    return Clustering(ends, members, shares, Labels.read(names), ids=ids)
