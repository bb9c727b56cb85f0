#!/usr/bin/env python3
"""Draws a network with its clusters as SVG, a colour for each cluster:

    draw_network.py NETWORK CLUSTERS [LABELS] > PICTURE.svg

NETWORK is a list of links, CLUSTERS and LABELS are clusters, one a line. A node of several clusters
becomes a pie of its shares; its label is the number of its line in LABELS. Links inside a cluster
are dark. The places are found by springs and repulsion (T. M. J. Fruchterman, E. M. Reingold,
Softw. Pract. Exp. 21, 1129 (1991)), from a fixed start, so that the picture is the same each time.
"""
import math
import random
import sys

WIDTH, HEIGHT, RADIUS, STEPS = 800, 640, 9, 600
COLOURS = ["#4e79a7", "#f28e2b", "#76b7b2", "#e15759", "#59a14f", "#edc948", "#b07aa1", "#ff9da7",
           "#9c755f", "#b6992d", "#d4a6c8", "#8cd17d", "#bab0ac"]


def rows(name):
    with open(name) as file:
        return [line for line in file if line.strip() and not line.startswith("#")]


def read_links(name):
    return [tuple(map(int, row.split()[:2])) for row in rows(name)]


def read_clusters(name):
    """The clusters of each node, as pairs of cluster and share (None if not stated)."""
    clusters = {}
    for number, row in enumerate(rows(name)):
        for word in row.split(">")[-1].split():
            node, _, share = word.partition(":")
            clusters.setdefault(int(node), []).append((number, float(share) if share else None))
    return clusters


def places(nodes, links):
    rng = random.Random(1)
    at = {node: complex(rng.random(), rng.random()) for node in nodes}
    spring = math.sqrt(1 / len(nodes))
    for step in range(STEPS):
        move = dict.fromkeys(nodes, 0j)
        for i, a in enumerate(nodes):
            for b in nodes[i + 1:]:
                way = at[a] - at[b]
                push = way * spring ** 2 / max(abs(way) ** 2, 1e-9)
                move[a] += push
                move[b] -= push
        for a, b in links:
            way = at[a] - at[b]
            pull = way * abs(way) / spring
            move[a] -= pull
            move[b] += pull
        reach = 0.1 * (1 - step / STEPS)
        for node in nodes:
            # A weak pull to the middle keeps components together.
            go = move[node] + (complex(0.5, 0.5) - at[node]) * 0.5
            at[node] += go / max(abs(go), 1e-9) * min(abs(go), reach)
    left, top = min(p.real for p in at.values()), min(p.imag for p in at.values())
    wide = (max(p.real for p in at.values()) - left) or 1
    high = (max(p.imag for p in at.values()) - top) or 1
    edge = 2 * RADIUS
    return {node: (edge + (p.real - left) / wide * (WIDTH - 2 * edge),
                   edge + (p.imag - top) / high * (HEIGHT - 2 * edge)) for node, p in at.items()}


def draw_node(x, y, clusters):
    shares = [share if share is not None else 1 / len(clusters) for _, share in clusters]
    if len(clusters) < 2:
        colour = COLOURS[clusters[0][0] % len(COLOURS)] if clusters else "#fff"
        return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{RADIUS}" fill="{colour}"/>'
    parts, angle = [], 0.0
    for (cluster, _), share in zip(clusters, shares):
        end = angle + 2 * math.pi * share / sum(shares)
        parts.append(f'<path d="M{x:.1f},{y:.1f} L{x + RADIUS * math.sin(angle):.1f},'
                     f'{y - RADIUS * math.cos(angle):.1f} A{RADIUS},{RADIUS} 0 '
                     f'{int(end - angle > math.pi)} 1 {x + RADIUS * math.sin(end):.1f},'
                     f'{y - RADIUS * math.cos(end):.1f} Z" '
                     f'fill="{COLOURS[cluster % len(COLOURS)]}"/>')
        angle = end
    return "".join(parts)


def main():
    links = [(a, b) for a, b in read_links(sys.argv[1]) if a != b]
    clusters = read_clusters(sys.argv[2])
    labels = read_clusters(sys.argv[3]) if len(sys.argv) > 3 else {}
    nodes = sorted({node for link in links for node in link} | set(clusters))
    at = places(nodes, links)
    print(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
          f'font-family="sans-serif" font-size="9" text-anchor="middle">')
    print(f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>')
    for a, b in links:
        inside = {c for c, _ in clusters.get(a, [])} & {c for c, _ in clusters.get(b, [])}
        print(f'<line x1="{at[a][0]:.1f}" y1="{at[a][1]:.1f}" x2="{at[b][0]:.1f}" '
              f'y2="{at[b][1]:.1f}" stroke="{"#888" if inside else "#ddd"}"/>')
    for node in nodes:
        x, y = at[node]
        print(draw_node(x, y, clusters.get(node, [])))
        if node in labels:
            print(f'<text x="{x:.1f}" y="{y + 3:.1f}">{labels[node][0][0] + 1}</text>')
    print("</svg>")


if __name__ == "__main__":
    main()
