package info.quenta.vorl.spark;

import java.io.Serializable;

/**
 * What an item holds.
 *
 * @param inner weight inside, both directions counted
 * @param total all weight of its nodes
 * @param nodes their number
 */
record Holding(double inner, double total, double nodes) implements Serializable {
    Holding plus(Holding other) {
        return new Holding(inner + other.inner, total + other.total, nodes + other.nodes);
    }

    Holding minus(Holding other) {
        return new Holding(inner - other.inner, total - other.total, nodes - other.nodes);
    }

    Holding withInner(double more) { return new Holding(inner + more, total, nodes); }
}
