"""Tables of other packages."""

from __future__ import annotations

from typing import Any, Dict

#: Types of nodes that polars has columns of.
PLAIN = (int, float, str, bytes)


def frame(columns: Dict[str, Any], library: str) -> Any:
    """A DataFrame of the columns, of which ``node`` may be a list of any objects."""
    if library == "pandas":
        import pandas

        return pandas.DataFrame(columns)
    if library == "polars":
        import polars

        nodes = columns["node"]
        if isinstance(nodes, list):
            types = {type(node) for node in nodes}
            if len(types) > 1 or not types <= set(PLAIN):
                columns = {**columns, "node": polars.Series("node", nodes, dtype=polars.Object)}
        return polars.DataFrame(columns)
    raise ValueError(f"library: {library!r}, pandas or polars is expected")
