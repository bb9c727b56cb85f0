"""The names that nodes have for the caller, and the numbers that they have for the library."""

from __future__ import annotations

from typing import Any, Dict, Hashable, List, Optional, Sequence

Label = Hashable

#: The largest number that a node can bear.
MAX_ID = 2**32 - 2
#: The numbers from here on stand for names where there are any.
FIRST_NAME = 2**31


class Labels:
    """Nodes by their ids: the ids from the largest one downwards stand for names, if there are any.

    All other ids are the numbers that the caller's nodes are.
    """

    def __init__(self, names: Sequence[Label] = ()) -> None:
        self.names = names
        self._ids: Optional[Dict[Label, int]] = None

    @staticmethod
    def read(names: Sequence[str]) -> "Labels":
        """Those of a file, in which large numbers are names, too."""
        return Labels([int(name) if name.isascii() and name.isdigit() and str(int(name)) == name
                       else name for name in names])

    @staticmethod
    def of_nodes(nodes: Sequence[Label]) -> Any:
        """Labels for nodes, and their ids as an array."""
        import numpy as np

        count = len(nodes)
        top = MAX_ID
        if not all(type(node) is int and 0 <= node <= MAX_ID for node in nodes):
            top = FIRST_NAME - 1
        names = [n for n in nodes if not (type(n) is int and 0 <= n <= top)]
        if not names:
            return Labels(), np.array(nodes, np.uint32)
        if len(names) > FIRST_NAME - 2:
            raise ValueError("G: there are too many nodes")
        labels = Labels(names[::-1])
        first = MAX_ID + 1 - len(names)
        if len(names) == count:
            return labels, np.arange(first, MAX_ID + 1, dtype=np.uint32)
        ids = np.empty(count, np.uint32)
        for i, node in enumerate(nodes):
            if type(node) is int and 0 <= node <= top:
                ids[i] = node
            else:
                ids[i] = first
                first += 1
        return labels, ids

    def of(self, ids: Any) -> List[Label]:
        """The nodes of an array of ids."""
        names = self.names
        if not names:
            return list(ids.tolist())
        first = MAX_ID - len(names)
        return [names[MAX_ID - i] if i > first else i for i in ids.tolist()]

    def id(self, label: Label) -> int:
        """The id of a node; KeyError if there can be none."""
        if self.names:
            if self._ids is None:
                self._ids = {name: MAX_ID - i for i, name in enumerate(self.names)}
            if label in self._ids:
                return self._ids[label]
        top = FIRST_NAME - 1 if self.names else MAX_ID
        if isinstance(label, bool) or not hasattr(label, "__index__"):
            raise KeyError(label)
        number = int(label.__index__())
        if not 0 <= number <= top:
            raise KeyError(label)
        return number

    def texts(self) -> List[str]:
        """The names as texts, for a file."""
        texts = [str(name) for name in self.names]
        for text in texts:
            try:
                text.encode()
            except UnicodeEncodeError:
                raise ValueError(f"the name {text!r} of a node can't stand in a file") from None
        return texts

    def __reduce__(self) -> Any:
        return Labels, (self.names,)
