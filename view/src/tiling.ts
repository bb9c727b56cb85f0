// The treemap: rectangles in rectangles, made as far as they are seen.
import { treemapSquarify, HierarchyRectangularNode } from "d3-hierarchy";
import { Model } from "./model.js";

export type Rect = [x0: number, y0: number, x1: number, y1: number];

interface Share {
    value: number;
    x0: number;
    y0: number;
    x1: number;
    y1: number;
}

export class Tiling {
    private readonly rects: Float64Array;
    private readonly tiled: Uint8Array;
    /** What is left for a cluster's own places beside its parts. */
    private readonly rest = new Map<number, Rect>();
    /** Sums of the shares of all places before each. */
    private readonly sums: Float64Array;
    private side = 1;

    constructor(private readonly model: Model) {
        this.rects = new Float64Array(4 * model.clusters);
        this.tiled = new Uint8Array(model.clusters);
        this.sums = new Float64Array(model.placeShare.length + 1);
        model.placeShare.forEach((share, i) => (this.sums[i + 1] = this.sums[i]! + share));
    }

    /** The rectangle of the whole has the height 2 and this ratio of its sides. */
    setRatio(ratio: number) {
        if (Math.abs(ratio - this.side) < 1e-3) return;
        this.side = ratio;
        this.tiled.fill(0);
    }

    /** The rectangle of a cluster. */
    of(cluster: number): Rect {
        for (const above of this.model.path(cluster)) this.tile(above);
        return this.rect(cluster);
    }

    /** The rectangle of a cluster that is in a tiled one. */
    rect(cluster: number): Rect {
        const at = 4 * cluster;
        return [this.rects[at]!, this.rects[at + 1]!, this.rects[at + 2]!, this.rects[at + 3]!];
    }

    /** Gives the parts of a cluster their rectangles in its own. */
    tile(cluster: number) {
        if (this.tiled[cluster]) return;
        this.tiled[cluster] = 1;
        if (cluster === 0) this.rects.set([-this.side, -1, this.side, 1], 0);
        const { model } = this;
        const parts = model.parts(cluster);
        if (parts.length === 0) return;
        const share = (value: number): Share => ({ value, x0: 0, y0: 0, x1: 0, y1: 0 });
        const children = parts.map((part) => share(this.mass(model.place[part]!, model.place[model.end[part]!]!)));
        const rest = this.mass(model.place[cluster]!, model.own[cluster]!);
        if (rest > 0) children.push(share(rest));
        squarify(children, this.inner(cluster));
        parts.forEach((part, i) => {
            const { x0, y0, x1, y1 } = children[i]!;
            this.rects.set([x0, y0, x1, y1], 4 * part);
            this.tiled[part] = 0;
        });
        if (rest > 0) {
            const { x0, y0, x1, y1 } = children[children.length - 1]!;
            this.rest.set(cluster, [x0, y0, x1, y1]);
        }
    }

    /** Calls a function for each of a cluster's own places with its rectangle; they stand in rows. */
    eachCell(cluster: number, visit: (place: number, x0: number, y0: number, x1: number, y1: number) => void) {
        const { model } = this;
        const [first, last] = [model.place[cluster]!, model.own[cluster]!];
        if (first === last) return;
        for (const above of model.path(cluster)) this.tile(above);
        const [x0, y0, x1, y1] = this.rest.get(cluster) ?? this.inner(cluster);
        const count = last - first;
        const columns = Math.max(1, Math.min(count, Math.round(Math.sqrt((count * (x1 - x0)) / Math.max(1e-12, y1 - y0)))));
        const rows = Math.ceil(count / columns);
        const h = (y1 - y0) / rows;
        for (let row = 0; row < rows; ++row) {
            const inRow = row === rows - 1 ? count - row * columns : columns;
            const w = (x1 - x0) / inRow;
            for (let i = 0; i < inRow; ++i)
                visit(first + row * columns + i, x0 + i * w, y0 + row * h, x0 + (i + 1) * w, y0 + (row + 1) * h);
        }
    }

    private inner(cluster: number): Rect {
        const [x0, y0, x1, y1] = this.rect(cluster);
        const edge = 0.012 * Math.min(x1 - x0, y1 - y0);
        const top = cluster === 0 ? edge : Math.min(0.07 * (y1 - y0), 4 * edge + 0.02 * (y1 - y0));
        return [x0 + edge, y0 + top, x1 - edge, y1 - edge];
    }

    /** What the places from one to before another have in all. */
    private mass(first: number, last: number): number {
        return this.sums[last]! - this.sums[first]!;
    }
}

function squarify(children: Share[], rect: Rect) {
    const value = children.reduce((sum, child) => sum + child.value, 0);
    const parent = { value, children } as unknown as HierarchyRectangularNode<unknown>;
    treemapSquarify(parent, ...rect);
}
