"""Communities and hierarchies of networks, with nodes that belong to several.

>>> import vorl
>>> found = vorl.communities([("a", "b"), ("b", "c"), ("c", "a")])
>>> found.membership
{'a': 0, 'b': 0, 'c': 0}

`communities` finds the communities of a network: of a file, of a graph of networkx or igraph, of a
scipy matrix, a table of pandas, polars or pyarrow, or of arrays. The nodes keep their names.
`cluster` builds the whole hierarchy, `communities_hierarchy` the one around the communities.
`compare` tells how alike two clusterings are, `evaluate`
measures one on a network, `read_clusters` reads files, and `clustering` takes sets of nodes.

numpy is needed for all of them, but not to import the package; no other package is.
"""

from ._clustering import Clustering, Community, clustering
from ._errors import InputError, InputWarning, MemoryLimitError
from ._functions import (
    cluster,
    communities,
    communities_hierarchy,
    compare,
    evaluate,
    read_clusters,
)
from ._hierarchy import Hierarchy, Levels, Membership
from ._view import Page
from ._vorl import version as __version__

__all__ = [
    "Clustering",
    "Community",
    "Hierarchy",
    "InputError",
    "InputWarning",
    "Levels",
    "Membership",
    "MemoryLimitError",
    "Page",
    "cluster",
    "clustering",
    "communities",
    "communities_hierarchy",
    "compare",
    "evaluate",
    "read_clusters",
]
