// The hierarchy: clusters inside each other, the places of nodes in them, and who owns what.
import { Arrays, Facts } from "./data.js";

/** Something with a share. */
export type Part = [number, number];

export interface Piece {
    cluster: number;
    nodes: Uint32Array;
    /** In the circle of radius 1. */
    x: Float32Array;
    y: Float32Array;
    /** Pairs of places among the nodes. */
    ends: Uint32Array;
    weight: Float32Array | null;
    /** How many there are; not all need be drawn. */
    links: number;
}

export interface Bundle {
    a: number;
    b: number;
    weight: number;
}

/** Cluster 0 is the whole network; the others have numbers in the order of a walk, parts behind
 * what they are in. A place is that of a node in a cluster that owns it. */
export class Model {
    readonly facts: Facts;
    readonly title: string;
    readonly clusters: number;
    readonly id: Uint32Array;
    readonly parent: Uint32Array;
    readonly level: Uint32Array;
    readonly members: Uint32Array;
    readonly size: Float32Array;
    readonly x: Float32Array;
    readonly y: Float32Array;
    readonly r: Float32Array;
    readonly colour: Uint8Array;
    /** End of the clusters inside of each. */
    readonly end: Uint32Array;
    /** The first place of each, and behind the last cluster the end of all. */
    readonly place: Uint32Array;
    /** End of a cluster's own places. */
    readonly own: Uint32Array;

    readonly unit: number;
    readonly placeNode: Uint32Array;
    readonly placeShare: Float32Array;
    readonly placeX: Float32Array;
    readonly placeY: Float32Array;
    readonly placeCluster: Uint32Array;

    readonly nodeId: Uint32Array;
    readonly degree: Uint32Array;
    readonly weight: Float32Array | null;
    readonly pieces: Piece[];
    /** The piece that is a cluster, or that it is in; -1 for none. */
    readonly pieceOf: Int32Array;
    readonly bundles: Map<number, Bundle[]>;

    private readonly names: string[] | null;
    private readonly firstOfNode: Uint32Array;
    private readonly placesOfNode: Uint32Array;
    private readonly sharedOwners = new Map<number, Part[]>();
    private readonly sharedParts = new Map<number, Part[]>();
    private readonly standings = new Map<number, Int32Array>();
    private tops: Int32Array | null = null;

    constructor(data: Arrays) {
        this.facts = data.facts;
        this.title = new TextDecoder().decode(data.bytes("title"));
        this.id = data.numbers("cluster.id");
        this.parent = data.numbers("cluster.parent");
        this.level = data.numbers("cluster.level");
        this.members = data.numbers("cluster.members");
        this.size = data.floats("cluster.size");
        this.x = data.floats("cluster.x");
        this.y = data.floats("cluster.y");
        this.r = data.floats("cluster.r");
        this.colour = data.bytes("cluster.colour");
        const own = data.numbers("cluster.own");
        const count = (this.clusters = own.length);
        this.place = new Uint32Array(count + 1);
        this.own = new Uint32Array(count);
        this.end = new Uint32Array(count);
        for (let i = 0; i < count; ++i) {
            this.place[i + 1] = this.own[i] = this.place[i]! + own[i]!;
            this.end[i] = i + 1;
        }
        for (let i = count - 1; i > 0; --i) {
            const parent = this.parent[i]!;
            if (this.end[i]! > this.end[parent]!) this.end[parent] = this.end[i]!;
        }
        this.unit = data.floats("place.unit")[0]!;
        this.placeNode = data.numbers("place.node");
        this.placeShare = data.floats("place.share");
        const places = this.placeNode.length;
        this.placeCluster = new Uint32Array(places);
        this.placeX = new Float32Array(places);
        this.placeY = new Float32Array(places);
        const x = data.shorts("place.x");
        const y = data.shorts("place.y");
        for (let i = 0; i < count; ++i)
            for (let j = this.place[i]!; j < this.own[i]!; ++j) {
                this.placeCluster[j] = i;
                this.placeX[j] = this.x[i]! + this.r[i]! * (x[j]! / 32767 - 1);
                this.placeY[j] = this.y[i]! + this.r[i]! * (y[j]! / 32767 - 1);
            }

        this.nodeId = data.numbers("node.id");
        this.degree = data.numbers("node.degree");
        this.weight = data.has("node.weight") ? data.floats("node.weight") : null;
        this.names = data.has("node.names")
            ? new TextDecoder().decode(data.bytes("node.names")).split("\0")
            : null;
        const nodes = this.nodeId.length;
        this.firstOfNode = new Uint32Array(nodes + 2);
        for (let i = 0; i < places; ++i) this.firstOfNode[this.placeNode[i]! + 2]!++;
        for (let i = 2; i < nodes + 2; ++i) this.firstOfNode[i]! += this.firstOfNode[i - 1]!;
        this.placesOfNode = new Uint32Array(places);
        for (let i = 0; i < places; ++i)
            this.placesOfNode[this.firstOfNode[this.placeNode[i]! + 1]!++] = i;

        const sharers = data.numbers("shared.cluster");
        const owners = data.numbers("shared.owner");
        const shares = data.floats("shared.share");
        const append = (to: Map<number, Part[]>, key: number, part: Part) => {
            const list = to.get(key);
            if (list) list.push(part);
            else to.set(key, [part]);
        };
        for (let i = 0; i < sharers.length; ++i) {
            append(this.sharedOwners, sharers[i]!, [owners[i]!, shares[i]!]);
            append(this.sharedParts, owners[i]!, [sharers[i]!, shares[i]!]);
        }
        this.pieces = this.piecesOf(data);
        this.pieceOf = new Int32Array(count).fill(-1);
        this.pieces.forEach((piece, i) =>
            this.pieceOf.fill(i, piece.cluster, this.end[piece.cluster]!),
        );
        this.bundles = new Map();
        const a = data.numbers("bundle.a");
        const b = data.numbers("bundle.b");
        const weight = data.floats("bundle.weight");
        for (let i = 0; i < a.length; ++i) {
            const inside = this.parent[a[i]!]!;
            const list = this.bundles.get(inside) ?? [];
            list.push({ a: a[i]!, b: b[i]!, weight: weight[i]! });
            this.bundles.set(inside, list);
        }
    }

    get nodes(): number {
        return this.nodeId.length;
    }
    get levels(): number {
        return this.facts.levels.length;
    }

    nodeName(node: number): string {
        return this.names?.[node] || String(this.nodeId[node]);
    }
    clusterName(cluster: number): string {
        return cluster === 0 ? this.title : `Cluster ${this.id[cluster]}`;
    }
    placesOf(node: number): Uint32Array {
        return this.placesOfNode.subarray(this.firstOfNode[node]!, this.firstOfNode[node + 1]!);
    }
    /** The place of a node's largest share. */
    home(node: number): number {
        const places = this.placesOf(node);
        let best = places[0]!;
        for (const place of places)
            if (this.placeShare[place]! > this.placeShare[best]!) best = place;
        return best;
    }
    /** The clusters directly inside, the largest first. */
    parts(cluster: number): number[] {
        const list: number[] = [];
        for (let i = cluster + 1; i < this.end[cluster]!; i = this.end[i]!) list.push(i);
        return list;
    }
    /** Number of places inside. */
    places(cluster: number): number {
        return this.place[this.end[cluster]!]! - this.place[cluster]!;
    }
    /** From the whole down to the cluster. */
    path(cluster: number): number[] {
        const list = [cluster];
        while (list[0] !== 0) list.unshift(this.parent[list[0]!]!);
        return list;
    }
    owners(cluster: number): Part[] {
        return (
            this.sharedOwners.get(cluster) ??
            (this.parent[cluster] === 0 ? [] : [[this.parent[cluster]!, 1]])
        );
    }
    /** The clusters of a level that hold each cluster on the map; -1 for those above. */
    standing(level: number): Int32Array {
        let at = this.standings.get(level);
        if (at) return at;
        at = new Int32Array(this.clusters).fill(-1);
        for (let i = 1; i < this.clusters; ++i) {
            if (this.level[i]! > level) continue;
            const above = at[this.parent[i]!]!;
            at[i] = above < 0 ? i : above;
        }
        this.standings.set(level, at);
        return at;
    }
    /** The clusters that stand at a level, largest first. */
    clustersAt(level: number): number[] {
        const list: number[] = [];
        this.standing(level).forEach((at, i) => {
            if (at === i) list.push(i);
        });
        // One that is in several larger ones stands if these are all above.
        return list
            .filter((i) => this.owners(i).every(([owner]) => this.level[owner]! > level))
            .sort((a, b) => this.size[b]! - this.size[a]! || a - b);
    }
    /** The clusters of a level that a node is in, the largest share first. */
    holders(node: number, level: number): Part[] {
        const found = new Map<number, number>();
        const climb = (cluster: number, share: number) => {
            if (cluster === 0 || this.level[cluster]! > level) return;
            const owners = this.owners(cluster).filter(([owner]) => this.level[owner]! <= level);
            if (owners.length === 0) found.set(cluster, (found.get(cluster) ?? 0) + share);
            else for (const [owner, part] of owners) climb(owner, share * part);
        };
        for (const place of this.placesOf(node))
            climb(this.placeCluster[place]!, this.placeShare[place]!);
        return [...found].sort((a, b) => b[1] - a[1] || a[0] - b[0]);
    }
    /** All clusters that a node is in, from the lowest level up. */
    ancestors(node: number): Part[] {
        const found = new Map<number, number>();
        const climb = (cluster: number, share: number) => {
            if (cluster === 0) return;
            found.set(cluster, (found.get(cluster) ?? 0) + share);
            for (const [owner, part] of this.owners(cluster)) climb(owner, share * part);
        };
        for (const place of this.placesOf(node))
            climb(this.placeCluster[place]!, this.placeShare[place]!);
        return [...found].sort(
            (a, b) => this.level[a[0]]! - this.level[b[0]]! || b[1] - a[1] || a[0] - b[0],
        );
    }
    /** The nodes of a cluster with their shares in it, also of parts that stand elsewhere. */
    membersOf(cluster: number): Map<number, number> {
        const found = new Map<number, number>();
        const add = (at: number, share: number) => {
            for (let i = this.place[at]!; i < this.own[at]!; ++i) {
                const node = this.placeNode[i]!;
                found.set(node, (found.get(node) ?? 0) + share * this.placeShare[i]!);
            }
            for (const part of this.parts(at))
                if (at === 0 || !this.sharedOwners.has(part)) add(part, share);
            if (at !== 0)
                for (const [part, inside] of this.sharedParts.get(at) ?? []) add(part, share * inside);
        };
        add(cluster, 1);
        return found;
    }
    /** The nodes of most links on the map of a cluster, at most three. */
    top(cluster: number): number[] {
        const most = 3;
        if (!this.tops) {
            const tops = (this.tops = new Int32Array(most * this.clusters).fill(-1));
            const put = (into: number, node: number) => {
                for (let i = most * into; i < most * into + most && node >= 0; ++i) {
                    if (tops[i] === node) return;
                    if (tops[i]! < 0 || this.degree[tops[i]!]! < this.degree[node]!) {
                        const former = tops[i]!;
                        tops[i] = node;
                        node = former;
                    }
                }
            };
            for (let i = this.clusters - 1; i >= 0; --i) {
                for (let j = this.place[i]!; j < this.own[i]!; ++j) put(i, this.placeNode[j]!);
                if (i > 0) for (let j = 0; j < most; ++j) put(this.parent[i]!, tops[most * i + j]!);
            }
        }
        return [...this.tops.subarray(most * cluster, most * cluster + most)].filter((n) => n >= 0);
    }
    /** Nodes whose names have the text in them, those that begin with it first. */
    search(text: string, most: number): number[] {
        const wanted = text.trim().toLowerCase();
        if (!wanted) return [];
        const ranks: number[][] = [[], [], []];
        for (let node = 0; node < this.nodes && ranks[0]!.length < most; ++node) {
            const name = this.nodeName(node).toLowerCase();
            const at = name.indexOf(wanted);
            if (at < 0) continue;
            const rank = ranks[name === wanted ? 0 : at === 0 ? 1 : 2]!;
            if (rank.length < most) rank.push(node);
        }
        return ranks.flat().slice(0, most);
    }

    private piecesOf(data: Arrays): Piece[] {
        const clusters = data.numbers("piece.cluster");
        const links = data.numbers("piece.links");
        const x = data.shorts("piece.x");
        const y = data.shorts("piece.y");
        const counts = data.numbers("piece.counts");
        const others = data.numbers("piece.ends");
        const weights = data.has("piece.weight") ? data.floats("piece.weight") : null;
        const drawn = data.numbers("piece.drawn");
        const seen = new Int32Array(this.nodes).fill(-1);
        const pieces: Piece[] = [];
        let node = 0;
        let link = 0;
        clusters.forEach((cluster, index) => {
            const nodes: number[] = [];
            for (let i = this.place[cluster]!; i < this.place[this.end[cluster]!]!; ++i) {
                const own = this.placeNode[i]!;
                if (seen[own] === index) continue;
                seen[own] = index;
                nodes.push(own);
            }
            const piece: Piece = {
                cluster,
                nodes: Uint32Array.from(nodes),
                x: new Float32Array(nodes.length),
                y: new Float32Array(nodes.length),
                ends: new Uint32Array(2 * drawn[index]!),
                weight: weights ? weights.subarray(link, link + drawn[index]!) : null,
                links: links[index]!,
            };
            let at = 0;
            for (let i = 0; i < nodes.length; ++i, ++node) {
                piece.x[i] = x[node]! / 32767 - 1;
                piece.y[i] = y[node]! / 32767 - 1;
                for (let j = 0; j < counts[node]!; ++j) {
                    piece.ends[at++] = i;
                    piece.ends[at++] = others[link++]!;
                }
            }
            pieces.push(piece);
        });
        return pieces;
    }
}
