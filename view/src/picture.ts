// What is drawn: circles, rectangles or the network, seen from where the camera is.
import { treemapSquarify, HierarchyRectangularNode } from "d3-hierarchy";
import { Colours, isDeep } from "./colours.js";
import { Model, Part, Piece } from "./model.js";
import { Painter } from "./painter.js";

export type Mode = "circles" | "network" | "rectangles";

/** Where a point of the picture comes to lie: at x + scale * its own place. */
export interface Camera {
    x: number;
    y: number;
    scale: number;
    width: number;
    height: number;
}

export interface Shown {
    mode: Mode;
    level: number;
    /** How far circles have become the network, from 0 to 1. */
    blend: number;
    selectedCluster: number;
    marked: number;
    hovered: Hit | null;
    /** While the camera moves, what takes long is left out. */
    moves: boolean;
}

export type Hit = { kind: "cluster"; cluster: number } | { kind: "node"; node: number; cluster: number };

interface PieceLook {
    level: number;
    colours: string[];
    pies: ([string, number][] | null)[];
    order: number[];
    /** Those with pies. */
    shared: number[];
    links: Map<string, number[]>;
    most: number;
}

/** Dots smaller than this aren't drawn by themselves. */
const DOT = 1.1;

export class Picture {
    private readonly looks = new Map<number, PieceLook>();
    private readonly rects: Float64Array;
    private readonly tiled: Uint8Array;
    private side = 1;
    /** When to leave the rest of the work to the next picture. */
    private until = Infinity;
    /** Whether something was left to it. */
    incomplete = false;

    constructor(
        readonly model: Model,
        readonly colours: Colours,
    ) {
        this.rects = new Float64Array(4 * model.clusters);
        this.tiled = new Uint8Array(model.clusters);
    }

    /** The rectangle of the whole has the height 2 and this ratio of its sides. */
    setRatio(ratio: number) {
        if (Math.abs(ratio - this.side) < 1e-3) return;
        this.side = ratio;
        this.tiled.fill(0);
    }

    /** Middle and half of the width and of the height of a cluster. */
    box(cluster: number, mode: Mode): [number, number, number, number] {
        if (mode !== "rectangles") {
            const r = this.model.r[cluster]!;
            return [this.model.x[cluster]!, this.model.y[cluster]!, r, r];
        }
        for (const above of this.model.path(cluster)) this.tile(above);
        const [x0, y0, x1, y1] = this.rects.subarray(4 * cluster, 4 * cluster + 4);
        return [(x0! + x1!) / 2, (y0! + y1!) / 2, (x1! - x0!) / 2, (y1! - y0!) / 2];
    }

    /** @param patience  milliseconds after which clusters are drawn without what is in them, if
     * that isn't known yet */
    draw(to: Painter, camera: Camera, shown: Shown, patience = Infinity) {
        this.until = performance.now() + patience;
        this.incomplete = false;
        if (shown.mode === "rectangles") this.drawRectangles(to, camera, shown);
        else this.drawCircles(to, camera, shown);
    }

    // Circles and network.

    private drawCircles(to: Painter, camera: Camera, shown: Shown) {
        const { model } = this;
        const standing = model.standing(shown.level);
        const dots = new Map<string, number[]>();
        const small = new Map<string, number[]>();
        const names: [number, number, number, string, string][] = [];
        const labels: number[] = [];
        const pieces: Piece[] = [];
        const calm = 1 - shown.blend;
        const unit = model.unit * camera.scale;
        const visit = (cluster: number) => {
            const x = camera.x + camera.scale * model.x[cluster]!;
            const y = camera.y + camera.scale * model.y[cluster]!;
            const r = camera.scale * model.r[cluster]!;
            if (r < 0.5 || !touches(camera, x, y, r)) return;
            const at = standing[cluster]!;
            const piece = model.pieceOf[cluster]!;
            const isPiece = piece >= 0 && model.pieces[piece]!.cluster === cluster;
            const inPiece = piece >= 0 && !isPiece;
            if (cluster === 0) {
                to.circle(x, y, r, this.colours.neutral, 0.05, this.colours.neutral, 1);
            } else if (!inPiece || calm > 0) {
                const fade = inPiece ? calm : 1;
                const colour = at < 0 ? this.colours.neutral : this.colours.shade(cluster);
                const alpha = (at < 0 ? 0.07 : at === cluster ? 0.22 : 0.1) * fade;
                if (r < 4) append(small, colour, x, y, r);
                else to.circle(x, y, r, colour, alpha, colour, at === cluster ? 1.5 : 0.75);
            }
            if (at === cluster && r > 18) labels.push(cluster);
            if (r < 4) return;
            if (isPiece && shown.blend > 0 && r > 24) {
                if (this.isKnown(model.pieces[piece]!, shown.level)) pieces.push(model.pieces[piece]!);
                if (shown.blend === 1) return;
            }
            for (let part = cluster + 1; part < model.end[cluster]!; part = model.end[part]!) visit(part);
            if (unit < DOT) return;
            if (piece >= 0 && shown.blend > 0 && r > 24) return;
            for (let i = model.place[cluster]!; i < model.own[cluster]!; ++i) {
                const atX = camera.x + camera.scale * model.placeX[i]!;
                const atY = camera.y + camera.scale * model.placeY[i]!;
                const radius = unit * Math.sqrt(model.placeShare[i]!);
                if (!touches(camera, atX, atY, radius)) continue;
                const colour = this.placeColour(cluster, at);
                append(dots, colour, atX, atY, radius);
                if (radius > 7) names.push([atX, atY, radius, model.nodeName(model.placeNode[i]!), colour]);
                if (radius > 4 && model.placeShare[i]! < 0.9995) {
                    names.push([atX, atY, radius, "", colour]);
                }
            }
        };
        visit(0);
        for (const [colour, at] of small) to.dots(at, colour, 0.45);
        if (shown.blend > 0) this.drawBundles(to, camera, shown);
        const alpha = Math.min(1, (unit - DOT) / 1.5 + 0.25);
        for (const [colour, at] of dots) to.dots(at, colour, alpha);
        for (const [x, y, r, name, colour] of names) {
            if (name === "") to.circle(x, y, r - 0.75, null, 0.9, this.colours.theme.ink, 1.5);
            else fitted(to, x, y, r, name, { colour: isDeep(colour) ? "#ffffff" : "#14171a" });
        }
        for (const piece of pieces) this.drawPiece(to, camera, shown, piece);
        this.drawMarks(to, camera, shown);
        this.drawLabels(to, camera, shown, labels);
    }

    private placeColour(cluster: number, at: number): string {
        return at >= 0 ? this.colours.shade(at) : this.colours.base(cluster);
    }

    private drawBundles(to: Painter, camera: Camera, shown: Shown) {
        const { model } = this;
        const visit = (cluster: number) => {
            const r = camera.scale * model.r[cluster]!;
            const bundles = model.bundles.get(cluster);
            if (!bundles || r < 40) return;
            const x = camera.x + camera.scale * model.x[cluster]!;
            const y = camera.y + camera.scale * model.y[cluster]!;
            if (!touches(camera, x, y, r)) return;
            // Of what one is deep inside they would only be in the way.
            const fade = shown.blend * Math.min(1, Math.min(camera.width, camera.height) / r);
            let most = 0;
            for (const bundle of bundles) most = Math.max(most, bundle.weight);
            for (let i = bundles.length - 1; i >= 0; --i) {
                const { a, b, weight } = bundles[i]!;
                const part = Math.sqrt(weight / most);
                const [ax, ay] = [camera.x + camera.scale * model.x[a]!, camera.y + camera.scale * model.y[a]!];
                const [bx, by] = [camera.x + camera.scale * model.x[b]!, camera.y + camera.scale * model.y[b]!];
                const least = camera.scale * Math.min(model.r[a]!, model.r[b]!);
                const width = Math.max(0.4, part * Math.min(8, 0.35 * least));
                // Bent towards the middle of what they are in.
                const midX = ((ax + bx) / 2) * 0.6 + x * 0.4;
                const midY = ((ay + by) / 2) * 0.6 + y * 0.4;
                to.curve(ax, ay, midX, midY, bx, by, this.colours.base(a), (0.06 + 0.44 * part ** 2) * fade, width);
            }
            for (const part of model.parts(cluster)) visit(part);
        };
        visit(0);
    }

    private drawPiece(to: Painter, camera: Camera, shown: Shown, piece: Piece) {
        const { model } = this;
        const look = this.lookOf(piece, shown.level);
        const at = this.positions(camera, shown, piece);
        const r = camera.scale * model.r[piece.cluster]!;
        const crowd = Math.sqrt(piece.ends.length / 2 + 1);
        const alpha = shown.blend * Math.max(0.08, Math.min(0.6, r / crowd / 24));
        // In a small circle they would lie below the dots.
        const linked = r >= (shown.moves && piece.ends.length < 4000 ? 120 : 45);
        for (const [colour, links] of linked ? look.links : []) {
            const lines: number[] = [];
            for (const link of links) {
                const [a, b] = [piece.ends[2 * link]!, piece.ends[2 * link + 1]!];
                lines.push(at[2 * a]!, at[2 * a + 1]!, at[2 * b]!, at[2 * b + 1]!);
            }
            const inside = colour !== this.colours.neutral;
            to.lines(lines, colour, inside ? alpha : alpha * 0.6, inside ? 1.2 : 0.8);
        }
        const dots = new Map<string, number[]>();
        for (const i of look.order) {
            const radius = this.radius(camera, shown, piece, look, i);
            const [x, y] = [at[2 * i]!, at[2 * i + 1]!];
            if (!touches(camera, x, y, radius)) continue;
            const pie = look.pies[i];
            if (!pie || radius < 2) append(dots, look.colours[i]!, x, y, radius);
        }
        const ground = this.colours.theme.ground;
        if (piece.nodes.length <= 600 && !shown.moves) {
            const rims: number[] = [];
            for (const list of dots.values())
                for (let i = 0; i < list.length; i += 3) rims.push(list[i]!, list[i + 1]!, list[i + 2]! + 1);
            to.dots(rims, ground, 1);
        }
        for (const [colour, list] of dots) to.dots(list, colour, 1);
        for (const i of look.shared) {
            const pie = look.pies[i];
            const radius = this.radius(camera, shown, piece, look, i);
            const [x, y] = [at[2 * i]!, at[2 * i + 1]!];
            if (pie && radius >= 2 && touches(camera, x, y, radius)) {
                to.circle(x, y, radius + 2, ground, 1);
                to.pie(x, y, radius + 1, pie, this.colours.theme.ink);
            }
        }
        if (shown.blend === 1 && !shown.moves) this.drawNodeNames(to, camera, shown, piece, look, at);
    }

    private drawNodeNames(to: Painter, camera: Camera, shown: Shown, piece: Piece, look: PieceLook, at: Float32Array) {
        const taken: [number, number, number, number][] = [];
        let count = 0;
        for (const i of look.order) {
            if (count >= 150) break;
            const radius = this.radius(camera, shown, piece, look, i);
            const [x, y] = [at[2 * i]!, at[2 * i + 1]!];
            if (!touches(camera, x, y, 0)) continue;
            const name = shortened(this.model.nodeName(piece.nodes[i]!), 24);
            const size = radius >= 8 ? Math.min(13, Math.max(9, radius * 0.8)) : 10;
            const wide = name.length * size * 0.58;
            const inside = wide < 2 * radius - 2;
            if (!inside && radius < 3.5) continue;
            const top = inside ? y : y - radius - size * 0.7;
            const box: [number, number, number, number] = [x - wide / 2, top - size / 2, x + wide / 2, top + size / 2];
            if (taken.some((o) => o[0] < box[2] && o[2] > box[0] && o[1] < box[3] && o[3] > box[1])) continue;
            taken.push(box);
            ++count;
            const deep = look.pies[i] ? true : isDeep(look.colours[i]!);
            to.text(
                x,
                top,
                size,
                name,
                inside
                    ? { colour: deep ? "#ffffff" : "#14171a" }
                    : { colour: this.colours.theme.ink, halo: this.colours.theme.ground },
            );
        }
    }

    private radius(camera: Camera, shown: Shown, piece: Piece, look: PieceLook, i: number): number {
        const r = camera.scale * this.model.r[piece.cluster]!;
        const most = (r * 0.46) / Math.sqrt(piece.nodes.length);
        const own = most * (0.4 + 0.6 * Math.sqrt(this.model.degree[piece.nodes[i]!]! / look.most));
        const dot = this.model.unit * camera.scale;
        return Math.max(1.2, dot + (own - dot) * shown.blend);
    }

    /** Where the nodes of a piece lie, x and y of each. */
    private positions(camera: Camera, shown: Shown, piece: Piece): Float32Array {
        const { model } = this;
        const at = new Float32Array(2 * piece.nodes.length);
        const cluster = piece.cluster;
        const [first, last] = [model.place[cluster]!, model.place[model.end[cluster]!]!];
        for (let i = 0; i < piece.nodes.length; ++i) {
            let x = model.x[cluster]! + model.r[cluster]! * 0.96 * piece.x[i]!;
            let y = model.y[cluster]! + model.r[cluster]! * 0.96 * piece.y[i]!;
            if (shown.blend < 1) {
                let home = model.home(piece.nodes[i]!);
                if (home < first || home >= last)
                    home = model.placesOf(piece.nodes[i]!).find((p) => p >= first && p < last)!;
                x = model.placeX[home]! + (x - model.placeX[home]!) * shown.blend;
                y = model.placeY[home]! + (y - model.placeY[home]!) * shown.blend;
            }
            at[2 * i] = camera.x + camera.scale * x;
            at[2 * i + 1] = camera.y + camera.scale * y;
        }
        return at;
    }

    /** Whether a piece can be drawn now, if need be after some work. */
    private isKnown(piece: Piece, level: number): boolean {
        if (this.looks.get(piece.cluster)?.level !== level && performance.now() > this.until) {
            this.incomplete = true;
            return false;
        }
        this.lookOf(piece, level);
        return true;
    }

    private lookOf(piece: Piece, level: number): PieceLook {
        let look = this.looks.get(piece.cluster);
        if (look?.level === level) return look;
        const { model } = this;
        const held: Part[][] = [...piece.nodes].map((node) => model.holders(node, level));
        const colourOf = (node: number, parts: Part[]) =>
            parts.length ? this.colours.shade(parts[0]![0]) : this.colours.base(model.placeCluster[model.home(node)]!);
        const links = new Map<string, number[]>();
        const colours = held.map((parts, i) => colourOf(piece.nodes[i]!, parts));
        for (let link = 0; link < piece.ends.length / 2; ++link) {
            const a = held[piece.ends[2 * link]!]!;
            const b = held[piece.ends[2 * link + 1]!]!;
            const common = a.find(([cluster]) => b.some(([other]) => other === cluster));
            const colour = common ? this.colours.shade(common[0]) : this.colours.neutral;
            const list = links.get(colour) ?? [];
            list.push(link);
            links.set(colour, list);
        }
        const order = [...piece.nodes.keys()].sort(
            (a, b) => model.degree[piece.nodes[b]!]! - model.degree[piece.nodes[a]!]!,
        );
        // Links between clusters lie below those inside.
        const sorted = new Map([...links].sort((a) => (a[0] === this.colours.neutral ? -1 : 1)));
        look = {
            level,
            colours,
            pies: held.map((parts) =>
                parts.length > 1 ? parts.map(([cluster, share]) => [this.colours.shade(cluster), share]) : null,
            ),
            order,
            shared: order.filter((i) => held[i]!.length > 1),
            links: sorted,
            most: Math.max(1, ...order.slice(0, 1).map((i) => model.degree[piece.nodes[i]!]!)),
        };
        this.looks.set(piece.cluster, look);
        return look;
    }

    /** Rings around the places of what is marked. */
    private drawMarks(to: Painter, camera: Camera, shown: Shown) {
        const { model } = this;
        const ink = this.colours.theme.ink;
        const ring = (x: number, y: number, r: number) => {
            to.circle(x, y, r + 2.5, null, 1, this.colours.theme.ground, 4);
            to.circle(x, y, r + 2.5, null, 1, ink, 2);
        };
        if (shown.selectedCluster > 0) {
            const c = shown.selectedCluster;
            const inPiece = model.pieceOf[c]! >= 0 && model.pieces[model.pieceOf[c]!]!.cluster !== c;
            if (!inPiece || shown.blend < 0.5)
                to.circle(
                    camera.x + camera.scale * model.x[c]!,
                    camera.y + camera.scale * model.y[c]!,
                    Math.max(5, camera.scale * model.r[c]!),
                    null,
                    1,
                    ink,
                    2,
                );
        }
        for (const [x, y, r] of this.placesOnScreen(camera, shown, shown.marked)) ring(x, y, Math.max(3, r));
        if (shown.hovered?.kind === "node")
            for (const [x, y, r] of this.placesOnScreen(camera, shown, shown.hovered.node))
                to.circle(x, y, Math.max(3, r) + 1.5, null, 1, ink, 1.5);
    }

    /** Where a node is drawn: x, y and r of each of its places. */
    placesOnScreen(camera: Camera, shown: Shown, node: number): [number, number, number][] {
        const { model } = this;
        const found: [number, number, number][] = [];
        if (node < 0) return found;
        const drawn = new Set<number>();
        for (const place of model.placesOf(node)) {
            const cluster = model.placeCluster[place]!;
            const index = model.pieceOf[cluster]!;
            if (shown.mode === "rectangles") {
                const cell = this.cells(cluster).find(([i]) => i === place);
                if (!cell) continue;
                const [, x0, y0, x1, y1] = cell;
                found.push([
                    camera.x + (camera.scale * (x0 + x1)) / 2,
                    camera.y + (camera.scale * (y0 + y1)) / 2,
                    (camera.scale * Math.min(x1 - x0, y1 - y0)) / 2,
                ]);
            } else if (shown.mode === "network" && index >= 0) {
                if (drawn.has(index)) continue;
                drawn.add(index);
                const piece = model.pieces[index]!;
                const i = piece.nodes.indexOf(node);
                const at = this.positions(camera, shown, piece);
                found.push([at[2 * i]!, at[2 * i + 1]!, this.radius(camera, shown, piece, this.lookOf(piece, shown.level), i)]);
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

    private drawLabels(to: Painter, camera: Camera, shown: Shown, clusters: number[]) {
        const { model } = this;
        const { ink, ground } = this.colours.theme;
        for (const cluster of clusters) {
            const piece = model.pieceOf[cluster]!;
            if (shown.blend > 0.5 && piece >= 0 && model.pieces[piece]!.cluster !== cluster) continue;
            const r = camera.scale * model.r[cluster]!;
            const x = camera.x + camera.scale * model.x[cluster]!;
            const y = camera.y + camera.scale * model.y[cluster]!;
            const name = String(model.id[cluster]);
            const size = Math.max(10, Math.min(20, r / 4));
            if (name.length * size * 0.6 > 1.6 * r) continue;
            const top = y - r + size * 0.2;
            to.text(x, Math.max(top, Math.min(y, 16)), size, name, { colour: ink, halo: ground, bold: true });
        }
    }

    // Rectangles.

    private tile(cluster: number) {
        if (this.tiled[cluster]) return;
        this.tiled[cluster] = 1;
        if (cluster === 0) this.rects.set([-this.side, -1, this.side, 1], 0);
        const parts = this.model.parts(cluster);
        if (parts.length === 0) return;
        const values = parts.map((part) => this.mass(part));
        const rest = this.ownMass(cluster);
        const children = values.map((value) => ({ value, x0: 0, y0: 0, x1: 0, y1: 0 }));
        if (rest > 0) children.push({ value: rest, x0: 0, y0: 0, x1: 0, y1: 0 });
        const [x0, y0, x1, y1] = this.inner(cluster);
        squarify(children, x0, y0, x1, y1);
        parts.forEach((part, i) => {
            const child = children[i]!;
            this.rects.set([child.x0, child.y0, child.x1, child.y1], 4 * part);
            this.tiled[part] = 0;
        });
        if (rest > 0) this.rest.set(cluster, children[children.length - 1]!);
        else this.rest.delete(cluster);
    }
    private readonly rest = new Map<number, Cell>();

    private inner(cluster: number): [number, number, number, number] {
        const [x0, y0, x1, y1] = this.rects.subarray(4 * cluster, 4 * cluster + 4) as unknown as number[];
        const edge = 0.012 * Math.min(x1! - x0!, y1! - y0!);
        const top = cluster === 0 ? edge : Math.min(0.07 * (y1! - y0!), 4 * edge + 0.02 * (y1! - y0!));
        return [x0! + edge, y0! + top, x1! - edge, y1! - edge];
    }
    private mass(cluster: number): number {
        let sum = 0;
        for (let i = this.model.place[cluster]!; i < this.model.place[this.model.end[cluster]!]!; ++i)
            sum += this.model.placeShare[i]!;
        return sum;
    }
    private ownMass(cluster: number): number {
        let sum = 0;
        for (let i = this.model.place[cluster]!; i < this.model.own[cluster]!; ++i) sum += this.model.placeShare[i]!;
        return sum;
    }
    /** The rectangles of a cluster's own places, in rows. */
    private cells(cluster: number): [place: number, x0: number, y0: number, x1: number, y1: number][] {
        const { model } = this;
        const [first, last] = [model.place[cluster]!, model.own[cluster]!];
        if (first === last) return [];
        for (const above of model.path(cluster)) this.tile(above);
        const rest = this.rest.get(cluster);
        const [x0, y0, x1, y1] = rest ? [rest.x0, rest.y0, rest.x1, rest.y1] : this.inner(cluster);
        const count = last - first;
        const columns = Math.max(1, Math.min(count, Math.round(Math.sqrt((count * (x1 - x0)) / Math.max(1e-12, y1 - y0)))));
        const rows = Math.ceil(count / columns);
        const list: [number, number, number, number, number][] = [];
        for (let i = 0; i < count; ++i) {
            const row = Math.floor(i / columns);
            const inRow = row === rows - 1 ? count - row * columns : columns;
            const column = i - row * columns;
            const w = (x1 - x0) / inRow;
            const h = (y1 - y0) / rows;
            list.push([first + i, x0 + column * w, y0 + row * h, x0 + (column + 1) * w, y0 + (row + 1) * h]);
        }
        return list;
    }

    private drawRectangles(to: Painter, camera: Camera, shown: Shown) {
        const { model } = this;
        const standing = model.standing(shown.level);
        const ground = this.colours.theme.ground;
        const labels: [number, number, number, number, number][] = [];
        const visit = (cluster: number) => {
            const [x0, y0, x1, y1] = this.rects.subarray(4 * cluster, 4 * cluster + 4) as unknown as number[];
            const x = camera.x + camera.scale * x0!;
            const y = camera.y + camera.scale * y0!;
            const w = camera.scale * (x1! - x0!);
            const h = camera.scale * (y1! - y0!);
            if (w < 0.5 || h < 0.5 || x > camera.width || y > camera.height || x + w < 0 || y + h < 0) return;
            const at = standing[cluster]!;
            const colour = at < 0 ? this.colours.neutral : this.colours.shade(cluster);
            if (cluster === 0 || at < 0) to.rect(x, y, w, h, this.colours.neutral, 0.1, this.colours.neutral, 0.75);
            else to.rect(x, y, w, h, colour, at === cluster ? 0.4 : 0.2, ground, at === cluster ? 2 : 1);
            if (at === cluster) labels.push([cluster, x, y, w, h]);
            if (Math.min(w, h) < 6) return;
            this.tile(cluster);
            for (const part of model.parts(cluster)) visit(part);
            const own = model.own[cluster]! - model.place[cluster]!;
            if (own === 0 || (w * h) / own < 30) return;
            for (const [place, cx0, cy0, cx1, cy1] of this.cells(cluster)) {
                const [cx, cy] = [camera.x + camera.scale * cx0, camera.y + camera.scale * cy0];
                const [cw, ch] = [camera.scale * (cx1 - cx0), camera.scale * (cy1 - cy0)];
                if (cx > camera.width || cy > camera.height || cx + cw < 0 || cy + ch < 0) continue;
                const dot = this.placeColour(cluster, at);
                to.rect(cx + 0.5, cy + 0.5, Math.max(0.5, cw - 1), Math.max(0.5, ch - 1), dot, 0.9);
                const r = Math.min(cw, ch * 1.6) / 2;
                if (r > 8)
                    fitted(to, cx + cw / 2, cy + ch / 2, Math.min(cw / 2, 60), model.nodeName(model.placeNode[place]!), {
                        colour: isDeep(dot) ? "#ffffff" : "#14171a",
                    });
            }
        };
        this.tile(0);
        visit(0);
        for (const [x, y, r] of this.placesOnScreen(camera, shown, shown.marked)) {
            to.circle(x, y, Math.max(4, r), null, 1, ground, 4);
            to.circle(x, y, Math.max(4, r), null, 1, this.colours.theme.ink, 2);
        }
        for (const [cluster, x, y, w, h] of labels) {
            const name = String(model.id[cluster]);
            const size = Math.max(10, Math.min(20, h / 8));
            if (name.length * size * 0.6 < w - 4 && h > size * 1.4)
                to.text(x + 5, y + size * 0.75, size, name, {
                    colour: this.colours.theme.ink,
                    halo: ground,
                    bold: true,
                    align: "left",
                });
        }
    }

    // What is under the pointer.

    hit(camera: Camera, shown: Shown, px: number, py: number): Hit {
        const { model } = this;
        const x = (px - camera.x) / camera.scale;
        const y = (py - camera.y) / camera.scale;
        if (shown.mode === "rectangles") {
            let cluster = 0;
            const inside = (part: number) => {
                const [x0, y0, x1, y1] = this.rects.subarray(4 * part, 4 * part + 4) as unknown as number[];
                return x >= x0! && x < x1! && y >= y0! && y < y1!;
            };
            for (;;) {
                this.tile(cluster);
                const part = model.parts(cluster).find(inside);
                if (part === undefined) break;
                cluster = part;
            }
            const own = model.own[cluster]! - model.place[cluster]!;
            if (own > 0 && own < 20000)
                for (const [place, x0, y0, x1, y1] of this.cells(cluster))
                    if (x >= x0 && x < x1 && y >= y0 && y < y1 && (x1 - x0) * camera.scale > 4)
                        return { kind: "node", node: model.placeNode[place]!, cluster };
            return { kind: "cluster", cluster };
        }
        const within = (cluster: number) =>
            (x - model.x[cluster]!) ** 2 + (y - model.y[cluster]!) ** 2 <= model.r[cluster]! ** 2;
        let cluster = 0;
        for (;;) {
            const index = model.pieceOf[cluster]!;
            if (shown.mode === "network" && index >= 0 && within(cluster)) {
                const piece = model.pieces[index]!;
                const look = this.lookOf(piece, shown.level);
                const at = this.positions(camera, shown, piece);
                let best = -1;
                let least = Infinity;
                for (let i = 0; i < piece.nodes.length; ++i) {
                    const way = Math.hypot(at[2 * i]! - px, at[2 * i + 1]! - py);
                    const reach = Math.max(6, this.radius(camera, shown, piece, look, i) + 2);
                    if (way <= reach && way < least) [best, least] = [i, way];
                }
                return best >= 0
                    ? { kind: "node", node: piece.nodes[best]!, cluster: piece.cluster }
                    : { kind: "cluster", cluster: piece.cluster };
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

interface Cell {
    value: number;
    x0: number;
    y0: number;
    x1: number;
    y1: number;
}

function squarify(children: Cell[], x0: number, y0: number, x1: number, y1: number) {
    const value = children.reduce((sum, child) => sum + child.value, 0);
    const parent = { value, children } as unknown as HierarchyRectangularNode<unknown>;
    treemapSquarify(parent, x0, y0, x1, y1);
}

function touches(camera: Camera, x: number, y: number, r: number): boolean {
    return x + r >= 0 && y + r >= 0 && x - r <= camera.width && y - r <= camera.height;
}

function append(lists: Map<string, number[]>, colour: string, ...values: number[]) {
    let list = lists.get(colour);
    if (!list) lists.set(colour, (list = []));
    list.push(...values);
}

export function shortened(text: string, most: number): string {
    const letters = [...text];
    return letters.length <= most ? text : letters.slice(0, most - 1).join("") + "…";
}

/** A text in a circle, cut where it would be too small to be read. */
function fitted(to: Painter, x: number, y: number, r: number, text: string, style: { colour: string }) {
    const least = 7;
    const letters = Math.max(2, Math.floor((1.8 * r) / (least * 0.58)));
    const cut = shortened(text, letters);
    if (cut.length < text.length && cut.length < 4) return;
    const size = Math.min(16, r, (1.75 * r) / (Math.max(1.6, [...cut].length) * 0.58));
    if (size < least * 0.9) return;
    to.text(x, y, size, cut, style);
}
