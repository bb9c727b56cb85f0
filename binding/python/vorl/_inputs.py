"""The roads by which a network comes in.

numpy is imported when the first network comes, and no other package at all: an object of one tells
by its class that the package is there.
"""

from __future__ import annotations

import os
import sys
from itertools import chain
from typing import Any, Callable, Dict, Hashable, List, Optional, Sequence, Tuple, Union

from . import _vorl
from ._labels import MAX_ID, Labels

Weight = Union[None, str]

class Network:
    """A network as the library takes it, with the names of its nodes; None if a file has them."""

    def __init__(self, native: Any, labels: Optional[Labels]) -> None:
        self.native = native
        self.labels = labels

    def members_of(self, clusters: Any) -> Tuple[Any, List[str]]:
        """The members of a `Clustering` as ids of the network, and names that a file has to match."""
        members = clusters._members
        if self.labels is None:
            return members, clusters._labels.texts()
        import numpy as np

        ids = []
        for node in clusters._labels.of(members):
            try:
                ids.append(self.labels.id(node))
            except KeyError:
                raise ValueError(f"clustering: the network has no node {node!r}") from None
        return np.array(ids, np.uint32), []


def class_of(obj: Any, package: str, *names: str) -> bool:
    """Whether an object is of one of the classes of a package, which needn't be there."""
    for kind in type(obj).__mro__:
        if kind.__name__ in names and (kind.__module__ or "").split(".")[0] == package:
            return True
    return False


def network_of(
    graph: Any,
    *,
    weight: Weight = "weight",
    directed: Optional[bool] = None,
    sum_duplicates: Optional[bool] = None,
    source: str = "source",
    target: str = "target",
    format: Optional[str] = None,
) -> Network:
    """The network of whatever a caller has."""
    if weight is not None and not isinstance(weight, str):
        raise TypeError(f"weight: a name or None is expected, not {type(weight).__name__}")
    if directed is not None and not isinstance(directed, bool):
        raise TypeError(f"directed: True, False or None is expected, not {directed!r}")
    if isinstance(graph, Network):
        return graph
    if isinstance(graph, (str, os.PathLike)):
        return _of_path(graph, weight, directed, bool(sum_duplicates), format)
    if format is not None:
        raise ValueError("format: it is told of files only")
    if class_of(graph, "networkx", "Graph"):
        return _of_networkx(graph, weight, directed)
    if class_of(graph, "igraph", "Graph", "GraphBase"):
        return _of_igraph(graph, weight, directed)
    if class_of(graph, "scipy", "spmatrix", "sparray", "_spbase"):
        return _of_matrix(graph, weight, directed)
    if class_of(graph, "pandas", "DataFrame") or class_of(graph, "polars", "DataFrame"):
        columns = list(graph.columns)
    elif class_of(graph, "pyarrow", "Table", "RecordBatch"):
        columns = list(graph.schema.names)
    else:
        return _of_arrays(graph, directed, bool(sum_duplicates))
    return _of_table(graph, columns, source, target, weight, directed, bool(sum_duplicates))


def _of_path(
    path: Any, weight: Weight, directed: Optional[bool], sum_duplicates: bool, format: Optional[str]
) -> Network:
    name = os.fspath(path)
    if isinstance(name, bytes):
        name = os.fsdecode(name)
    if format is not None and format not in _vorl.NETWORK_FORMATS:
        raise ValueError(
            f"format: {format!r}, one of {', '.join(_vorl.NETWORK_FORMATS)} is expected"
        )
    with open(name, "rb"):
        pass  # a missing file is an OSError, as everywhere in Python
    return Network(_vorl.FileInput(name, format or "", weight, directed, sum_duplicates), None)


def _of_networkx(graph: Any, weight: Weight, directed: Optional[bool]) -> Network:
    import numpy as np

    nodes = list(graph)
    index = {node: i for i, node in enumerate(nodes)}
    own = graph.is_directed()
    many = graph.is_multigraph()
    degrees = np.fromiter((len(row) for _, row in graph.adjacency()), np.int64, len(nodes))
    total = int(degrees.sum())
    targets = np.fromiter(
        map(index.__getitem__, chain.from_iterable(row for _, row in graph.adjacency())),
        np.uint32,
        total,
    )
    sources = np.repeat(np.arange(len(nodes), dtype=np.uint32), degrees)
    keep = None if own else targets >= sources
    weights = None
    if weight is not None and total:
        rows = chain.from_iterable(row.values() for _, row in graph.adjacency())
        ties = chain.from_iterable(ds.values() for ds in rows) if many else rows
        _require_weight(weight, lambda: any(weight in d for d in ties))
    if weight is not None or many:
        data = chain.from_iterable(row.values() for _, row in graph.adjacency())
        if many:
            values = (
                sum(_number(d.get(weight, 1), weight) for d in ds.values())
                if weight is not None
                else len(ds)
                for ds in data
            )
        else:
            values = (d.get(weight, 1) for d in data)
        weights = _weights(values, total, weight)
    if keep is not None:
        sources, targets = sources[keep], targets[keep]
        weights = None if weights is None else weights[keep]
    return _numbered(sources, targets, weights, nodes, own if directed is None else directed)


def _require_weight(weight: str, found: Callable[[], bool]) -> None:
    """Refuses a name that no link has; "weight" may be lacking, as it isn't asked for."""
    if weight != "weight" and not found():
        raise ValueError(f"weight: no link has an attribute {weight!r}")


def _number(value: Any, name: Weight) -> float:
    try:
        return float(value)
    except (TypeError, ValueError):
        raise TypeError(f"weight: {value!r} of the attribute {name!r} is no number") from None


def _weights(values: Any, count: int, name: Weight) -> Any:
    """Weights as an array, None where all are 1."""
    import numpy as np

    # The library refuses what is infinite at 32 bits.
    with np.errstate(over="ignore"):
        if not hasattr(values, "dtype"):
            try:
                values = np.fromiter(values, np.float32, count)
            except (TypeError, ValueError) as err:
                raise TypeError(f"weight: the attribute {name!r} is to be a number: {err}") from None
        elif values.dtype.kind not in "biuf":
            raise TypeError(f"weight: numbers are expected, not {values.dtype}")
        values = np.ascontiguousarray(values, np.float32)
    return None if bool((values == 1).all()) else values


def _numbered(
    sources: Any,
    targets: Any,
    weights: Any,
    nodes: Sequence[Hashable],
    directed: bool,
    sum_duplicates: bool = False,
) -> Network:
    """A network of links between positions in a list of nodes."""
    import numpy as np

    labels, ids = Labels.of_nodes(nodes)
    count = len(nodes)
    if count and not bool((ids == np.arange(count, dtype=np.uint32)).all()):
        sources, targets = ids[sources], ids[targets]
    return Network(_arrays(sources, targets, weights, ids, directed, sum_duplicates), labels)


def _arrays(
    sources: Any, targets: Any, weights: Any, ids: Any, directed: bool, sum_duplicates: bool
) -> Any:
    import numpy as np

    def plain(array: Any, kind: Any) -> Any:
        return None if array is None else np.ascontiguousarray(array, kind)

    return _vorl.ArrayInput(
        plain(sources, np.uint32),
        plain(targets, np.uint32),
        plain(weights, np.float32),
        plain(ids, np.uint32),
        directed,
        sum_duplicates,
    )


def vertex_names(graph: Any) -> Optional[List[Hashable]]:
    """The names of an igraph's vertices, if it has any; those of networkx where it came from there."""
    for attribute in ("name", "_nx_name"):
        if attribute in graph.vs.attributes():
            return list(graph.vs[attribute])
    return None


def _of_igraph(graph: Any, weight: Weight, directed: Optional[bool]) -> Network:
    import numpy as np

    edges = graph.ecount()
    ends = np.fromiter(chain.from_iterable(graph.get_edgelist()), np.uint32, 2 * edges)
    ends = ends.reshape(edges, 2)
    weights = None
    if weight is not None and edges:
        _require_weight(weight, lambda: weight in graph.es.attributes())
    if weight is not None and weight in graph.es.attributes():
        weights = _weights(iter(graph.es[weight]), edges, weight)
    names = vertex_names(graph)
    if names is None:
        names = list(range(graph.vcount()))
    elif len(set(names)) != len(names):
        raise ValueError("G: vertices have the same name")
    own = bool(graph.is_directed()) if directed is None else directed
    return _numbered(ends[:, 0], ends[:, 1], weights, names, own, graph.has_multiple())


def _of_matrix(matrix: Any, weight: Weight, directed: Optional[bool]) -> Network:
    import numpy as np

    rows, columns = matrix.shape
    if rows != columns:
        raise ValueError(f"G: a square matrix is expected, not one of shape {matrix.shape}")
    if matrix.dtype.kind not in "biuf":
        raise TypeError(f"G: a matrix of numbers is expected, not of {matrix.dtype}")
    matrix = matrix.tocsr()
    if not matrix.has_canonical_format:
        matrix = matrix.copy()
        matrix.sum_duplicates()
    ends = matrix.indptr.astype(np.int64, copy=False)
    targets = matrix.indices.astype(np.uint32, copy=False)
    weights = None
    if weight is not None:
        weights = _weights(matrix.data, len(targets), weight)
    both_ways = not directed and _vorl.symmetric(ends, targets, weights)
    if directed is None:
        directed = not both_ways
    sources = np.repeat(np.arange(rows, dtype=np.uint32), np.diff(ends))
    keep = None
    if weight is None and not matrix.data.all():
        keep = matrix.data != 0
    if both_ways:
        keep = targets >= sources if keep is None else keep & (targets >= sources)
    if keep is not None:
        sources, targets = sources[keep], targets[keep]
        weights = None if weights is None else weights[keep]
    ids = np.arange(rows, dtype=np.uint32)
    return Network(_arrays(sources, targets, weights, ids, directed, False), Labels())


def _of_table(
    table: Any,
    columns: List[str],
    source: str,
    target: str,
    weight: Weight,
    directed: Optional[bool],
    sum_duplicates: bool,
) -> Network:
    for argument, name in (("source", source), ("target", target)):
        if name not in columns:
            raise ValueError(f"{argument}: the table has no column {name!r}, but {columns}")
    if class_of(table, "pyarrow", "RecordBatch"):
        import pyarrow

        table = pyarrow.Table.from_batches([table])
    weights = None
    if weight is not None and weight in columns:
        weights = _column(table[weight])
    elif weight is not None and weight != "weight":
        raise ValueError(f"weight: the table has no column {weight!r}, but {columns}")
    return _of_ends(_column(table[source]), _column(table[target]), weights, directed,
                    sum_duplicates)


def _column(column: Any) -> Any:
    """A column as an array, without missing values."""
    nulls = getattr(column, "null_count", 0)
    if callable(nulls):
        nulls = nulls()
    if hasattr(column, "isna"):
        nulls = int(column.isna().sum())
    if nulls:
        name = getattr(column, "name", None)
        raise ValueError(f"G: values are missing{f' in the column {name!r}' if name else ''}")
    return column.to_numpy()


def _of_arrays(graph: Any, directed: Optional[bool], sum_duplicates: bool) -> Network:
    """Sources and targets, rows of links, or an edge index."""
    import numpy as np

    if isinstance(graph, tuple) and len(graph) in (2, 3):
        parts = [_as_array(part) for part in graph]
        if any(part.ndim != 1 for part in parts):
            raise ValueError("G: sources, targets and weights are to be of one dimension")
        return _of_ends(parts[0], parts[1], parts[2] if len(parts) == 3 else None, directed,
                        sum_duplicates)
    if isinstance(graph, (list, set, frozenset)) or (
        hasattr(graph, "__iter__") and not hasattr(graph, "__array__")
        and not hasattr(graph, "shape") and not isinstance(graph, (bytes, memoryview, dict))
    ):
        return _of_links(list(graph), directed, sum_duplicates)
    array = _as_array(graph)
    if array.ndim != 2 or array.dtype == object and array.size == 0:
        raise TypeError(
            f"G: {type(graph).__name__} is no network; a path, a graph of networkx or igraph, a "
            "scipy matrix, a table, links of shape (m, 2) or (m, 3), an edge index of shape "
            "(2, m), or (sources, targets[, weights]) is expected"
        )
    rows, columns = array.shape
    index = rows == 2 and (columns not in (2, 3) or class_of(graph, "torch", "Tensor"))
    if index:
        return _of_ends(array[0], array[1], None, directed, sum_duplicates)
    if columns not in (2, 3):
        raise ValueError(
            f"G: an array of shape (m, 2), (m, 3) or (2, m) is expected, not {array.shape}"
        )
    weights = array[:, 2] if columns == 3 else None
    if weights is not None and weights.dtype == object:
        weights = weights.astype(np.float32)
    return _of_ends(array[:, 0], array[:, 1], weights, directed, sum_duplicates,
                    whole=columns == 3)


def _as_array(value: Any) -> Any:
    import numpy as np

    if class_of(value, "torch", "Tensor"):
        value = value.detach().cpu()
    if isinstance(value, (list, tuple)) and any(isinstance(v, (str, tuple)) for v in value[:1]):
        array = np.empty(len(value), object)
        array[:] = value
        return array
    return np.asarray(value)


def _of_links(links: List[Any], directed: Optional[bool], sum_duplicates: bool) -> Network:
    """Tuples (source, target[, weight]) of a list."""
    index: Dict[Hashable, int] = {}
    number = index.setdefault
    ends: List[Tuple[int, int]] = []
    weights: List[float] = []
    for link in links:
        try:
            src, dst, *rest = link
        except (TypeError, ValueError):
            rest = [None, None]
        if len(rest) > 1:
            raise TypeError(f"G: {link!r} is no link, (source, target[, weight]) is expected")
        try:
            ends.append((number(src, len(index)), number(dst, len(index))))
        except TypeError as err:
            raise TypeError(f"G: nodes of {link!r}: {err}") from None
        weights.append(_number(rest[0], "weight") if rest else 1.0)
    import numpy as np

    array = np.array(ends, np.uint32).reshape(len(ends), 2)
    values = _weights(iter(weights), len(weights), "weight")
    return _numbered(array[:, 0], array[:, 1], values, list(index), bool(directed), sum_duplicates)


def _of_ends(
    sources: Any,
    targets: Any,
    weights: Any,
    directed: Optional[bool],
    sum_duplicates: bool,
    whole: bool = False,
) -> Network:
    """Links between nodes of any names, in arrays.

    ``whole`` tells that numbers are whole ones though of a floating type, as in rows with weights.
    """
    import numpy as np

    lengths = {len(part) for part in (sources, targets, weights) if part is not None}
    if len(lengths) > 1:
        raise ValueError("G: sources, targets and weights are to be of one length")
    if weights is not None:
        weights = _weights(weights, len(weights), "weight")
    if whole and sources.dtype.kind == "f":
        for name, part in (("sources", sources), ("targets", targets)):
            if not bool((part == np.floor(part)).all()):
                raise ValueError(f"G: {name} of links are to be whole numbers")
        if len(sources) and max(sources.max(), targets.max()) >= 2 ** np.finfo(sources.dtype).nmant:
            raise ValueError(f"G: {sources.dtype} is too narrow for these numbers of nodes")
        sources, targets = sources.astype(np.int64), targets.astype(np.int64)
    directed = bool(directed)
    if sources.dtype.kind in "iu" and targets.dtype.kind in "iu":
        small = all(
            len(part) == 0 or (int(part.min()) >= 0 and int(part.max()) <= MAX_ID)
            for part in (sources, targets)
        )
        if small:
            native = _arrays(sources, targets, weights, None, directed, sum_duplicates)
            return Network(native, Labels())
    codes, names = _factorized(sources, targets)
    return _numbered(codes[0::2], codes[1::2], weights, names, directed, sum_duplicates)


def _factorized(sources: Any, targets: Any) -> Tuple[Any, List[Hashable]]:
    """Numbers of the nodes, link by link, in the order in which they come."""
    import numpy as np

    both = np.stack([sources, targets], axis=1).reshape(-1)
    if "pandas" in sys.modules:
        pandas = sys.modules["pandas"]
        codes, names = pandas.factorize(both, use_na_sentinel=False)
        # As integers come back times of nanoseconds from an array, but not from an index.
        return codes, (pandas.Index(names) if names.dtype.kind in "mM" else names).tolist()
    if both.dtype != object:
        names, first, codes = np.unique(both, return_index=True, return_inverse=True)
        order = np.argsort(first)
        place = np.empty(len(order), np.int64)
        place[order] = np.arange(len(order))
        names = names[order]
        return place[codes.reshape(-1)], list(names) if names.dtype.kind in "mM" else names.tolist()
    index: Dict[Hashable, int] = {}
    number = index.setdefault
    codes = np.fromiter((number(x, len(index)) for x in both.tolist()), np.int64, len(both))
    return codes, list(index)
