// Where things are on the screen, and what is under the pointer.
import { Model } from "./model.js";
import { Pieces } from "./pieces.js";
import { Camera, Hit, Shown, Spot } from "./shown.js";
import { Rect, Tiling } from "./tiling.js";

/** Clusters that have more nodes of their own are told, and not these. */
const MANY = 20000;

export class Spots {
    constructor(
        private readonly model: Model,
        private readonly pieces: Pieces,
        private readonly tiling: Tiling,
    ) {}

    /** Whether a cluster is no circle, but nodes among others in the network. */
    isDissolved(cluster: number, shown: Shown): boolean {
        const index = this.model.pieceOf[cluster]!;
        return shown.blend > 0.5 && index >= 0 && this.model.pieces[index]!.cluster !== cluster;
    }

    circle(camera: Camera, cluster: number): Spot {
        const { x, y, r } = this.model;
        return [camera.x + camera.scale * x[cluster]!, camera.y + camera.scale * y[cluster]!, camera.scale * r[cluster]!];
    }

    /** Where those nodes of the network are drawn that are in a part of a piece. */
    inside(camera: Camera, shown: Shown, cluster: number): Spot[] {
        const { model } = this;
        const [first, last] = [model.place[cluster]!, model.place[model.end[cluster]!]!];
        const inside = (node: number) => model.placesOf(node).some((place) => place >= first && place < last);
        const piece = model.pieces[model.pieceOf[cluster]!]!;
        return this.pieces.spots(camera, shown, piece, inside);
    }

    /** Where a node is drawn, each of its places. */
    places(camera: Camera, shown: Shown, node: number): Spot[] {
        const { model } = this;
        const found: Spot[] = [];
        if (node < 0) return found;
        const drawn = new Set<number>();
        for (const place of model.placesOf(node)) {
            const cluster = model.placeCluster[place]!;
            const index = model.pieceOf[cluster]!;
            if (shown.mode === "rectangles") {
                this.tiling.eachCell(cluster, (at, x0, y0, x1, y1) => {
                    if (at === place)
                        found.push([
                            camera.x + (camera.scale * (x0 + x1)) / 2,
                            camera.y + (camera.scale * (y0 + y1)) / 2,
                            (camera.scale * Math.min(x1 - x0, y1 - y0)) / 2,
                        ]);
                });
            } else if (shown.mode === "network" && index >= 0) {
                if (drawn.has(index)) continue;
                drawn.add(index);
                found.push(...this.pieces.spots(camera, shown, model.pieces[index]!, (other) => other === node));
            } else {
                found.push([
                    camera.x + camera.scale * model.placeX[place]!,
                    camera.y + camera.scale * model.placeY[place]!,
                    camera.scale * model.unit * Math.sqrt(model.placeShare[place]!),
                ]);
            }
        }
        return found;
    }

    /** What is at a point of the screen. */
    at(camera: Camera, shown: Shown, px: number, py: number): Hit {
        const x = (px - camera.x) / camera.scale;
        const y = (py - camera.y) / camera.scale;
        return shown.mode === "rectangles" ? this.inRectangles(camera, x, y) : this.inCircles(camera, shown, x, y, px, py);
    }

    private inRectangles(camera: Camera, x: number, y: number): Hit {
        const { model, tiling } = this;
        const within = ([x0, y0, x1, y1]: Rect) => x >= x0 && x < x1 && y >= y0 && y < y1;
        let cluster = 0;
        for (;;) {
            tiling.tile(cluster);
            const part = model.parts(cluster).find((at) => within(tiling.rect(at)));
            if (part === undefined) break;
            cluster = part;
        }
        let found = -1;
        if (model.own[cluster]! - model.place[cluster]! < MANY)
            tiling.eachCell(cluster, (place, x0, y0, x1, y1) => {
                if (within([x0, y0, x1, y1]) && (x1 - x0) * camera.scale > 4) found = place;
            });
        return found < 0 ? { kind: "cluster", cluster } : { kind: "node", node: model.placeNode[found]!, cluster };
    }

    private inCircles(camera: Camera, shown: Shown, x: number, y: number, px: number, py: number): Hit {
        const { model } = this;
        const within = (cluster: number) =>
            (x - model.x[cluster]!) ** 2 + (y - model.y[cluster]!) ** 2 <= model.r[cluster]! ** 2;
        let cluster = 0;
        for (;;) {
            const index = model.pieceOf[cluster]!;
            if (shown.mode === "network" && index >= 0 && within(cluster)) {
                const piece = model.pieces[index]!;
                const node = this.pieces.nodeAt(camera, shown, piece, px, py);
                return node >= 0 ? { kind: "node", node, cluster: piece.cluster } : { kind: "cluster", cluster: piece.cluster };
            }
            const part = model.parts(cluster).find(within);
            if (part === undefined) break;
            cluster = part;
        }
        if (model.unit * camera.scale >= 2)
            for (let i = model.place[cluster]!; i < model.own[cluster]!; ++i) {
                const r = model.unit * Math.sqrt(model.placeShare[i]!);
                if ((x - model.placeX[i]!) ** 2 + (y - model.placeY[i]!) ** 2 <= r * r)
                    return { kind: "node", node: model.placeNode[i]!, cluster };
            }
        return { kind: "cluster", cluster };
    }
}
