"""The characters of Les Misérables: communities, overlaps, the hierarchy, and a comparison."""

import sys

import networkx as nx

import vorl

graph = nx.les_miserables_graph()  # how often two characters meet, as the weight of their link

found = vorl.communities(graph)
print(f"{len(found)} communities save {found.scores['saving']:.0f} bits")
for number, community in enumerate(found):
    print(f"{number}: {', '.join(list(community)[:4])} ... ({found.sizes[number]:.1f})")

print("Who stands between them:")
for character, shares in found.shares.items():
    if len(shares) > 1:
        print(f"  {character}: " + ", ".join(f"{part:.2f} in {at}" for at, part in shares.items()))

hierarchy = vorl.cluster(graph)
for level, clusters in enumerate(hierarchy.levels):
    likeness = vorl.compare(clusters, found)
    print(f"level {level}: {len(clusters)} clusters, overlapping NMI {likeness['nmi_max']:.3f}")

measured = vorl.evaluate(graph, found)
print(f"modularity {measured['modularity']:.3f}, conductance {measured['conductance']:.3f}")

# The truth is known of another network: who went with whom when a club split.
club = nx.karate_club_graph()
sides = dict(club.nodes("club"))
print(f"karate club, F1 of the two sides: {vorl.compare(vorl.communities(club), sides)['f1']:.3f}")

if len(sys.argv) > 1:
    found.plot(graph, labels=True).figure.savefig(sys.argv[1])
