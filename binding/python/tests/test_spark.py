"""Communities of tables of PySpark; all but the first test wants pyspark and VORL_SPARK_JAR."""

import os
import subprocess
import sys

import pytest
import vorl


def test_import_asks_for_no_package():
    code = "import sys, vorl.spark; print({'pyspark', 'py4j', 'numpy'} & set(sys.modules))"
    assert subprocess.check_output([sys.executable, "-c", code], text=True) == "set()\n"


def test_tables_give_what_arrays_give():
    import vorl.spark

    sql = pytest.importorskip("pyspark.sql")
    jar = os.environ.get("VORL_SPARK_JAR") or pytest.skip("there is no VORL_SPARK_JAR")
    builder = sql.SparkSession.builder.master("local[2]").config("spark.ui.enabled", False)
    session = builder.config("spark.jars", jar).getOrCreate()
    try:
        pairs = [(a, b) for first in (0, 7) for a in range(first, first + 8)
                 for b in range(a + 1, first + 8)]
        links = session.createDataFrame(pairs, "src long, dst long")
        found = vorl.spark.communities(links)
        shares = vorl.communities(pairs).shares
        assert {(row.node, row.cluster): row.share for row in found.collect()} == {
            (node, part): share for node in shares for part, share in shares[node].items()}
        whole = vorl.spark.communities(links, shares=False, starts=1)
        assert {row.share for row in whole.collect()} == {1.0}
        assert vorl.spark.hierarchy(links, found).columns == ["node", "level", "cluster", "share"]
        with pytest.raises(Exception, match="a link should have two ids"):
            vorl.spark.communities(links.selectExpr("src", "-dst AS dst"))
    finally:
        session.stop()
