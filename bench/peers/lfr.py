"""Networks with planted communities, after Lancichinetti, Fortunato and Radicchi.

The degrees of the nodes follow a power law with the exponent -2 between a lower end that is fitted
to the asked mean and 5 times the mean; the sizes of the communities follow one with -1 between the
mean degree and 10 times that, if nothing else is asked for. Each node has the share 1 - mu of its links inside its communities.
Some nodes may belong to several communities, among which their inner links are split evenly.

Links are drawn as a configuration model inside each community and between communities, and
repaired by swaps, so that there are no loops, no repeated links and no link between communities
that joins members of one community; the few that can't be repaired are left out.

Written for these benchmarks from the papers:
  Lancichinetti, Fortunato, Radicchi: Benchmark graphs for testing community detection
    algorithms. Phys. Rev. E 78, 046110 (2008).
  Lancichinetti, Fortunato: Benchmarks for testing community detection algorithms on directed and
    weighted graphs with overlapping communities. Phys. Rev. E 80, 016118 (2009).
"""
import random

import numpy as np

DEGREES_EXPONENT = 2
SIZES_EXPONENT = 1


def power_law(rng, count, exponent, low, high):
    """Whole numbers in [low, high] with P(k) ~ k**-exponent; a broken `low` mixes both ends."""
    base = int(np.floor(low))
    k = np.arange(base, high + 1)
    p = k ** -float(exponent)
    p[0] *= base + 1 - low
    return rng.choice(k, size=count, p=p / p.sum())


def lower_end(mean, exponent, high):
    """The (broken) lower end for which power_law has the asked mean."""
    def value(low):
        base = int(np.floor(low))
        k = np.arange(base, high + 1)
        p = k ** -float(exponent)
        p[0] *= base + 1 - low
        return (k * p).sum() / p.sum()
    lo, hi = 1.0, float(high)
    if not value(lo) <= mean <= high:
        raise ValueError("no power law with exponent %g up to %d has the mean %g" %
                         (exponent, high, mean))
    for _ in range(60):
        mid = (lo + hi) / 2
        lo, hi = (mid, hi) if value(mid) < mean else (lo, mid)
    return lo


def community_sizes(rng, total, exponent, low, high):
    """Sizes that add up to total; the last ones are grown or cut to fit."""
    if total < low:
        raise ValueError("fewer memberships than the smallest community has")
    sizes = power_law(rng, total // low + 1, exponent, low, high)
    cut = int(np.searchsorted(np.cumsum(sizes), total))
    sizes = sizes[:cut + 1].tolist()
    spare = sum(sizes) - total
    while spare > 0:  # take the surplus from communities that stay large enough
        room = [i for i, s in enumerate(sizes) if s > low]
        if not room:  # all at the minimum: break one up among the others
            last = sizes.pop()
            spare -= last
            for i in range(-spare):
                sizes[i % len(sizes)] += 1
            break
        for i in room[:spare]:
            sizes[i] -= 1
            spare -= 1
    return np.array(sizes)


def assign(rnd, inner, node, sizes):
    """A community for each membership, so that its inner degree is below the community's size.

    Memberships go by falling inner degree to a random free slot of the communities that are
    large enough. Where none is left, the slot comes from the largest free one and the inner
    degree is cut. Returns the communities; cuts `inner` in place.
    """
    by_size = np.argsort(-sizes, kind="stable").tolist()
    size = sizes.tolist()
    comm = [-1] * len(inner)
    of_node = {}
    slots, opened = [], 0
    want = inner.tolist()
    who = node.tolist()
    for m in np.argsort(-inner, kind="stable").tolist():
        while opened < len(by_size) and (size[by_size[opened]] > want[m] or not slots):
            slots.extend([by_size[opened]] * size[by_size[opened]])
            opened += 1
        mine = of_node.setdefault(who[m], [])
        for tries in range(200):
            at = rnd.randrange(len(slots))
            if slots[at] not in mine:
                break
            if tries == 100:  # only own communities are left here: open the next ones
                while opened < len(by_size) and by_size[opened] in mine:
                    opened += 1
                if opened < len(by_size):
                    slots.extend([by_size[opened]] * size[by_size[opened]])
                    opened += 1
        comm[m] = slots[at]
        mine.append(slots[at])
        slots[at] = slots[-1]
        slots.pop()
    comm = np.array(comm)
    np.minimum(inner, sizes[comm] - 1, out=inner)
    return comm


def swap_repair(rnd, pairs):
    """Makes the pairs of one community a simple graph by random swaps; what can't be is dropped."""
    have, bad = set(), []
    good = []
    for a, b in pairs:
        e = (a, b) if a < b else (b, a)
        if a == b or e in have:
            bad.append((a, b))
        else:
            have.add(e)
            good.append(e)
    for a, b in bad:
        for _ in range(200 if good else 0):
            at = rnd.randrange(len(good))
            c, d = good[at]
            if rnd.random() < 0.5:
                c, d = d, c
            e = (a, c) if a < c else (c, a)
            f = (b, d) if b < d else (d, b)
            if a != c and b != d and e != f and e not in have and f not in have:
                have.remove(good[at])
                have.add(e)
                have.add(f)
                good[at] = e
                good.append(f)
                break
    return good


def inner_links(rng, rnd, inner, node, comm, k):
    """The links inside the k communities; one stub of each odd community is dropped."""
    order = np.argsort(comm, kind="stable")
    ends = np.searchsorted(comm[order], np.arange(k + 1))
    src, dst = [], []
    for c in range(k):
        members = order[ends[c]:ends[c + 1]]
        stubs = np.repeat(node[members], inner[members])
        stubs = rng.permutation(stubs)[:len(stubs) // 2 * 2].tolist()
        good = swap_repair(rnd, zip(stubs[::2], stubs[1::2]))
        if good:
            a, b = zip(*good)
            src.extend(a)
            dst.extend(b)
    return np.array(src, np.int64), np.array(dst, np.int64)


def share_community(table, a, b):
    """Whether the nodes a[i] and b[i] have a community in common; table: n rows, -1 is none."""
    same = np.zeros(len(a), bool)
    for x in range(table.shape[1]):
        for y in range(table.shape[1]):
            same |= (table[a, x] == table[b, y]) & (table[a, x] >= 0)
    return same


def outer_links(rng, outer, table, rounds=200):
    """Links between nodes that share no community: a random matching, the faults drawn again."""
    n = len(outer)
    stubs = rng.permutation(np.repeat(np.arange(n), outer))
    stubs = stubs[:len(stubs) // 2 * 2]
    a, b = stubs[::2].copy(), stubs[1::2].copy()
    for turn in range(rounds):
        key = np.minimum(a, b) * n + np.maximum(a, b)
        bad = share_community(table, a, b) | (a == b)
        _, first = np.unique(key, return_index=True)
        again = np.ones(len(key), bool)
        again[first] = False
        bad |= again
        if not bad.any() or turn == rounds - 1:
            break
        fix = np.flatnonzero(bad)
        take = np.unique(np.concatenate([fix, rng.integers(0, len(a), 2 * len(fix) + 2)]))
        b[take] = rng.permutation(b[take])
    return a[~bad], b[~bad]


def planted_network(nodes, degree=20, mu=0.3, overlapping=0, memberships=2, seed=1,
                    most_links=None, communities=None):
    """The ends of the links as two arrays, and the communities as lists of nodes.

    `overlapping` nodes have `memberships` communities each, all others one. No node has more than
    `most_links`, and the sizes of communities lie in the range `communities`.
    """
    rng = np.random.default_rng(seed)
    rnd = random.Random(seed)
    high = min(most_links or int(5 * degree), nodes - 1)
    low = lower_end(degree, DEGREES_EXPONENT, high)
    degrees = power_law(rng, nodes, DEGREES_EXPONENT, low, high)
    # The broken part of the inner degree is drawn at random, so that the mean mixing is met.
    exact = (1 - mu) * degrees
    inner = np.floor(exact).astype(np.int64)
    inner += rng.random(nodes) < exact - inner
    times = np.ones(nodes, np.int64)
    times[rng.permutation(nodes)[:overlapping]] = memberships
    node = np.repeat(np.arange(nodes), times)
    nth = np.arange(len(node)) - np.repeat(np.cumsum(times) - times, times)
    share = inner[node] // times[node] + (nth < inner[node] % times[node])
    least, most = communities or (max(2, int(degree)), min(int(10 * degree), nodes // 2))
    sizes = community_sizes(rng, len(node), SIZES_EXPONENT, least, most)
    comm = assign(rnd, share, node, sizes)
    table = np.full((nodes, times.max()), -1, np.int64)
    table[node, nth] = comm

    src, dst = inner_links(rng, rnd, share, node, comm, len(sizes))
    key = np.unique(np.minimum(src, dst) * nodes + np.maximum(src, dst))
    outer_src, outer_dst = outer_links(rng, degrees - inner, table)
    src = np.concatenate([key // nodes, np.minimum(outer_src, outer_dst)])
    dst = np.concatenate([key % nodes, np.maximum(outer_src, outer_dst)])
    order = np.argsort(comm, kind="stable")
    ends = np.cumsum(np.bincount(comm, minlength=len(sizes)))[:-1]
    return src, dst, [c.tolist() for c in np.split(node[order], ends)]
