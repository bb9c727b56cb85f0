"""Drawings by matplotlib."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Dict, Hashable, List, Tuple

if TYPE_CHECKING:
    from ._clustering import Clustering
    from ._hierarchy import Hierarchy


def _axes(ax: Any) -> Any:
    if ax is not None:
        return ax
    import matplotlib.pyplot as plt

    return plt.subplots()[1]


def _colours(count: int, name: str = "tab20") -> List[Any]:
    import matplotlib

    colours = matplotlib.colormaps[name]
    return [colours(i % colours.N if colours.N < 256 else i / max(1, count)) for i in range(count)]


def draw_sizes(clustering: "Clustering", ax: Any, **options: Any) -> Any:
    """Bars of the sizes of communities."""
    ax = _axes(ax)
    sizes = clustering.sizes
    ax.bar(range(len(sizes)), sizes, **options)
    ax.set_xlabel("community")
    ax.set_ylabel("nodes")
    return ax


def draw_network(
    clustering: "Clustering",
    network: Any,
    ax: Any,
    *,
    pos: Any = None,
    seed: int = 1,
    labels: bool = False,
    radius: float = 0.03,
) -> Any:
    """A network with nodes as pies of their shares."""
    import networkx
    from matplotlib.patches import Circle, Wedge

    ax = _axes(ax)
    if pos is None:
        pos = networkx.spring_layout(network, seed=seed)
    colours = _colours(len(clustering))
    networkx.draw_networkx_edges(network, pos, ax=ax, edge_color="0.8")
    for node, own in clustering.shares.items():
        if node not in pos:
            continue
        place = tuple(pos[node])
        if len(own) == 1:
            ax.add_patch(Circle(place, radius, color=colours[next(iter(own))], zorder=3))
            continue
        angle = 90.0
        for community, share in own.items():
            end = angle + 360 * share
            ax.add_patch(Wedge(place, radius, angle, end, color=colours[community], zorder=3))
            angle = end
    if labels:
        networkx.draw_networkx_labels(network, pos, ax=ax, font_size=7)
    ax.set_aspect("equal")
    ax.set_axis_off()
    return ax


def draw_levels(hierarchy: "Hierarchy", ax: Any, *, cmap: str = "tab20") -> Any:
    """An icicle: a row for each level, a bar for each cluster, as wide as its nodes."""
    ax = _axes(ax)
    levels = list(hierarchy.levels)
    if not levels:
        raise ValueError("the hierarchy has no clusters")
    # Nodes stand so that clusters of each level are side by side, the root's first.
    key: Dict[Hashable, List[int]] = {}
    for level in reversed(levels):
        for node, community in level.membership.items():
            key.setdefault(node, []).append(community)
    order = sorted(key, key=lambda node: key[node])
    place = {node: i for i, node in enumerate(order)}
    palette = _colours(len(levels[-1]), cmap)
    for height, level in enumerate(levels):
        member = level.membership
        runs: List[Tuple[int, int, int]] = []
        for node in order:
            if node not in member:
                continue
            at = place[node]
            if runs and runs[-1][2] == member[node] and runs[-1][1] == at:
                runs[-1] = (runs[-1][0], at + 1, member[node])
            else:
                runs.append((at, at + 1, member[node]))
        for begin, end, _ in runs:
            root = key[order[begin]][0]
            ax.barh(height, end - begin, left=begin, height=1, color=palette[root],
                    edgecolor="white", linewidth=0.5)
    ax.set_xlim(0, len(order))
    ax.set_xlabel("nodes")
    ax.set_ylabel("level")
    return ax
