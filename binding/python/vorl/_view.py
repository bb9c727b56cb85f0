"""Pages and maps that show results."""

from __future__ import annotations

import os
from html import escape
from typing import Any, Callable, Optional, Union

from ._files import replacing


class Page:
    """A page that shows a result in any browser, and in a notebook.

    Attributes
    ----------
    html : str
        The whole page; it asks nothing of any other place.
    """

    def __init__(self, html: str) -> None:
        self.html = html

    def _repr_html_(self) -> str:
        return (
            f'<iframe srcdoc="{escape(self.html)}" sandbox="allow-scripts allow-downloads" '
            'style="width: 100%; height: 640px; border: 0" title="vorl"></iframe>'
        )

    def __repr__(self) -> str:
        return f"<vorl.Page: {len(self.html):,} characters>"


def page_or_file(
    path: Optional[Union[str, "os.PathLike[str]"]], picture: Callable[[bool], str]
) -> Optional[Page]:
    """The page, or what is written to a path.

    ``picture`` gives the map if its argument is true, else the page.
    """
    if path is None:
        return Page(picture(False))
    name = os.fsdecode(path)
    kind = os.path.splitext(name)[1].lower()
    if kind not in (".html", ".htm", ".svg"):
        raise ValueError(f"path: {name!r} is to end in .html or .svg")
    text = picture(kind == ".svg")
    with replacing(name) as temporary:
        with open(temporary, "w", encoding="utf-8", newline="") as file:
            file.write(text)
    return None


def title_of(title: Optional[str], network: Any) -> str:
    """What a page is called: the file, if the network is one."""
    if title is not None:
        if not isinstance(title, str):
            raise TypeError(f"title: a text is expected, not {title!r}")
        return title
    if isinstance(network, (str, os.PathLike)):
        return os.path.basename(os.fspath(network))
    return "network"
