"""Communities of tables of PySpark.

>>> import vorl.spark
>>> found = vorl.spark.communities(links)        # doctest: +SKIP

The session must have vorl-spark.jar, by `spark.jars` or `--jars`. The package itself needs neither
pyspark nor numpy to be imported.
"""

from __future__ import annotations

from typing import Any, Optional

__all__ = ["communities", "hierarchy"]

_PACKAGE = "info.quenta.vorl.spark"


def _java(links: Any, name: str) -> Any:
    jvm = getattr(links.sparkSession, "_jvm", None)
    if jvm is None:
        raise TypeError("links should be a table of a session with a JVM, Spark Connect has none")
    try:
        loader = jvm.java.lang.Thread.currentThread().getContextClassLoader()
        loader.loadClass(f"{_PACKAGE}.{name}")
    except Exception as err:
        raise ImportError(
            "the session lacks vorl-spark.jar: start it with spark.jars or --jars"
        ) from err
    return getattr(getattr(jvm, _PACKAGE), name)


def _options(
    links: Any,
    shares: bool,
    starts: int,
    links_of_task: Optional[int],
    checkpoints: Optional[str],
) -> Any:
    options = _java(links, "CommunitiesOptions").DEFAULT.withShares(shares).withStarts(starts)
    if links_of_task is not None:
        options = options.withLinksOfTask(links_of_task)
    return options if checkpoints is None else options.withCheckpoints(checkpoints)


def _table(links: Any, table: Any) -> Any:
    return type(links)(table, links.sparkSession)


def communities(
    links: Any,
    *,
    shares: bool = True,
    starts: int = 0,
    links_of_task: Optional[int] = None,
    checkpoints: Optional[str] = None,
) -> Any:
    """The communities of a network: a table (node, cluster, share).

    links:         a table (src, dst[, weight]), ids are whole numbers or strings; directions don't
                   count, and the weights of all rows of a pair are added up
    shares:        whether a node may belong to several communities
    starts:        from how many starts to search, 0: the smaller the network, the more
    links_of_task: a network of up to so many links is left to one task
    checkpoints:   folder of a file system that all executors reach; needed on a cluster
    """
    options = _options(links, shares, starts, links_of_task, checkpoints)
    return _table(links, _java(links, "Communities").run(links._jdf, options))


def hierarchy(
    links: Any,
    found: Any,
    *,
    links_of_task: Optional[int] = None,
    checkpoints: Optional[str] = None,
) -> Any:
    """What lies inside and above communities: a table (node, level, cluster, share).

    found: what `communities` gave for the links
    """
    options = _options(links, True, 0, links_of_task, checkpoints)
    return _table(links, _java(links, "Levels").of(links._jdf, found._jdf, options))
