// What is drawn: circles, rectangles or the network, seen from where the camera is.
import { Colours, isDeep } from "./colours.js";
import { Model, Piece } from "./model.js";
import { Painter } from "./painter.js";
import { append, listOf, Pieces } from "./pieces.js";
import { Camera, Mode, Shown, Spot, touches } from "./shown.js";
import { Spots } from "./spots.js";
import { fitted, LETTER, Room } from "./texts.js";
import { Rect, Tiling } from "./tiling.js";

/** Dots smaller than this aren't drawn by themselves. */
const DOT = 1.1;
/** Circles smaller than this are drawn without what is in them. */
const SMALL = 4;
/** Pieces smaller than this stay circles. */
const PIECE = 14;
/** A cell of the treemap has so many square pixels, or isn't drawn. */
const CELL = 40;

type Label = [name: string, x: number, y: number, size: number];

export class Picture {
    private readonly pieces: Pieces;
    private readonly tiling: Tiling;
    readonly spots: Spots;

    constructor(
        private readonly model: Model,
        private readonly colours: Colours,
    ) {
        this.pieces = new Pieces(model, colours);
        this.tiling = new Tiling(model);
        this.spots = new Spots(model, this.pieces, this.tiling);
    }

    get ground(): string {
        return this.colours.theme.ground;
    }

    /** Whether the last picture lacks something that takes longer. */
    get incomplete(): boolean {
        return this.pieces.incomplete;
    }

    /** The whole as a rectangle has this ratio of its sides. */
    setRatio(ratio: number) {
        this.tiling.setRatio(ratio);
    }

    /** Middle and half of the width and of the height of a cluster. */
    box(cluster: number, mode: Mode): [number, number, number, number] {
        if (mode !== "rectangles") {
            const r = this.model.r[cluster]!;
            return [this.model.x[cluster]!, this.model.y[cluster]!, r, r];
        }
        const [x0, y0, x1, y1] = this.tiling.of(cluster);
        return [(x0 + x1) / 2, (y0 + y1) / 2, (x1 - x0) / 2, (y1 - y0) / 2];
    }

    /** @param patience  milliseconds after which clusters are drawn without what is in them, if
     * that isn't known yet */
    draw(to: Painter, camera: Camera, shown: Shown, patience = Infinity) {
        this.pieces.begin(patience);
        if (shown.mode === "rectangles") this.drawRectangles(to, camera, shown);
        else this.drawCircles(to, camera, shown);
    }

    // Circles and network.

    private drawCircles(to: Painter, camera: Camera, shown: Shown) {
        const { model } = this;
        const standing = model.standing(shown.level);
        const dots = new Map<string, number[]>();
        const small = new Map<string, number[]>();
        const names: [...Spot, name: string, colour: string][] = [];
        const rings: Spot[] = [];
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
                if (r < SMALL) append(small, colour, x, y, r);
                else to.circle(x, y, r, colour, alpha, colour, at === cluster ? 1.5 : 0.75);
            }
            if (at === cluster && r > 18 && (!inPiece || shown.blend <= 0.5)) labels.push(cluster);
            if (r < SMALL) return;
            if (isPiece && shown.blend > 0 && r > PIECE) {
                if (this.pieces.isReady(model.pieces[piece]!, shown.level)) pieces.push(model.pieces[piece]!);
                if (shown.blend === 1) return;
            }
            for (let part = cluster + 1; part < model.end[cluster]!; part = model.end[part]!) visit(part);
            if (unit < DOT || (piece >= 0 && shown.blend > 0 && r > PIECE)) return;
            const colour = this.placeColour(cluster, at);
            const list = listOf(dots, colour);
            for (let i = model.place[cluster]!; i < model.own[cluster]!; ++i) {
                const atX = camera.x + camera.scale * model.placeX[i]!;
                const atY = camera.y + camera.scale * model.placeY[i]!;
                const radius = unit * Math.sqrt(model.placeShare[i]!);
                if (!touches(camera, atX, atY, radius)) continue;
                list.push(atX, atY, radius);
                if (radius > 7) names.push([atX, atY, radius, model.nodeName(model.placeNode[i]!), colour]);
                if (radius > 4 && model.placeShare[i]! < 0.9995) rings.push([atX, atY, radius]);
            }
        };
        visit(0);
        for (const [colour, at] of small) to.dots(at, colour, 0.45);
        if (shown.blend > 0) this.pieces.drawBundles(to, camera, shown);
        const alpha = Math.min(1, (unit - DOT) / 1.5 + 0.25);
        for (const [colour, at] of dots) to.dots(at, colour, alpha);
        for (const [x, y, r] of rings) to.circle(x, y, r - 0.75, null, 0.9, this.colours.theme.ink, 1.5);
        for (const [x, y, r, name, colour] of names)
            fitted(to, x, y, r, name, { colour: isDeep(colour) ? "#ffffff" : "#14171a" });
        for (const piece of pieces) this.pieces.draw(to, camera, shown, piece);
        this.drawMarks(to, camera, shown);
        this.drawLabels(
            to,
            labels.map((cluster): Label => {
                const r = camera.scale * model.r[cluster]!;
                const y = camera.y + camera.scale * model.y[cluster]!;
                const size = Math.max(10, Math.min(20, r / 4));
                const name = String(model.id[cluster]);
                const top = Math.max(y - r + size * 0.2, Math.min(y, 16));
                return [name.length * size * 0.6 > 1.6 * r ? "" : name, camera.x + camera.scale * model.x[cluster]!, top, size];
            }),
        );
    }

    private placeColour(cluster: number, at: number): string {
        return at >= 0 ? this.colours.shade(at) : this.colours.base(cluster);
    }

    /** Names of clusters, the larger first, where there is room for them. */
    private drawLabels(to: Painter, labels: Label[]) {
        const { ink, ground } = this.colours.theme;
        const room = new Room();
        for (const [name, x, y, size] of labels.sort((a, b) => b[3] - a[3]))
            if (name !== "" && room.take(x, y, name.length * size * 0.6, size))
                to.text(x, y, size, name, { colour: ink, halo: ground, bold: true });
    }

    // What is marked.

    private drawMarks(to: Painter, camera: Camera, shown: Shown) {
        const { ink, ground } = this.colours.theme;
        const ring = (x: number, y: number, r: number, width = 2) => {
            to.circle(x, y, r, null, 1, ground, width + 2);
            to.circle(x, y, r, null, 1, ink, width);
        };
        if (shown.focus > 0 && !this.spots.isDissolved(shown.focus, shown)) {
            const [x, y, r] = this.spots.circle(camera, shown.focus);
            to.circle(x, y, Math.max(5, r), null, 1, ink, 2);
        }
        for (const cluster of shown.chosen.clusters) {
            if (this.spots.isDissolved(cluster, shown)) {
                for (const [x, y, r] of this.spots.inside(camera, shown, cluster)) ring(x, y, r + 1.5, 1.5);
            } else {
                const [x, y, r] = this.spots.circle(camera, cluster);
                ring(x, y, Math.max(5, r), 3);
            }
        }
        for (const node of [shown.marked, ...shown.chosen.nodes])
            for (const [x, y, r] of this.spots.places(camera, shown, node)) ring(x, y, Math.max(3, r) + 2.5);
    }

    /** A ring around what is under the pointer, which is drawn apart since it changes often. */
    drawHovered(to: Painter, camera: Camera, shown: Shown) {
        if (shown.hovered?.kind === "node")
            for (const [x, y, r] of this.spots.places(camera, shown, shown.hovered.node))
                to.circle(x, y, Math.max(3, r) + 1.5, null, 1, this.colours.theme.ink, 1.5);
    }

    // Rectangles.

    private drawRectangles(to: Painter, camera: Camera, shown: Shown) {
        const { model, tiling } = this;
        const standing = model.standing(shown.level);
        const { ground, ink } = this.colours.theme;
        const labels: [cluster: number, rect: Rect][] = [];
        const cells = new Map<string, number[]>();
        const names: [...Spot, place: number, ink: { colour: string }][] = [];
        const onScreen = ([x0, y0, x1, y1]: Rect): Rect => [
            camera.x + camera.scale * x0,
            camera.y + camera.scale * y0,
            camera.scale * (x1 - x0),
            camera.scale * (y1 - y0),
        ];
        const isSeen = ([x, y, w, h]: Rect) => x <= camera.width && y <= camera.height && x + w >= 0 && y + h >= 0;
        const visit = (cluster: number) => {
            const rect = onScreen(tiling.rect(cluster));
            const [x, y, w, h] = rect;
            if (w < 0.5 || h < 0.5 || !isSeen(rect)) return;
            const at = standing[cluster]!;
            const colour = at < 0 ? this.colours.neutral : this.colours.shade(cluster);
            if (cluster === 0 || at < 0) to.rect(x, y, w, h, this.colours.neutral, 0.1, this.colours.neutral, 0.75);
            else to.rect(x, y, w, h, colour, at === cluster ? 0.4 : 0.2, ground, at === cluster ? 2 : 1);
            // The name of a single node says enough.
            if (at === cluster && model.members[cluster]! > 1) labels.push([cluster, rect]);
            if (Math.min(w, h) < 6) return;
            tiling.tile(cluster);
            for (const part of model.parts(cluster)) visit(part);
            const own = model.own[cluster]! - model.place[cluster]!;
            if (own === 0 || (w * h) / own < CELL) return;
            const dot = this.placeColour(cluster, at);
            const ink = { colour: isDeep(dot) ? "#ffffff" : "#14171a" };
            const list = listOf(cells, dot);
            tiling.eachCell(cluster, (place, x0, y0, x1, y1) => {
                const [cx, cy] = [camera.x + camera.scale * x0, camera.y + camera.scale * y0];
                const [cw, ch] = [camera.scale * (x1 - x0), camera.scale * (y1 - y0)];
                if (cx > camera.width || cy > camera.height || cx + cw < 0 || cy + ch < 0) return;
                list.push(cx + 0.5, cy + 0.5, Math.max(0.5, cw - 1), Math.max(0.5, ch - 1));
                if (Math.min(cw, ch * 1.6) > 16) names.push([cx + cw / 2, cy + ch / 2, Math.min(cw / 2, 60), place, ink]);
            });
        };
        tiling.tile(0);
        visit(0);
        for (const [colour, list] of cells) to.rects(list, colour, 0.9);
        for (const [x, y, r, place, ink] of names) fitted(to, x, y, r, model.nodeName(model.placeNode[place]!), ink);
        for (const cluster of shown.chosen.clusters) {
            const [x, y, w, h] = onScreen(tiling.of(cluster));
            to.rect(x, y, w, h, null, 1, ground, 5);
            to.rect(x, y, w, h, null, 1, ink, 3);
        }
        for (const node of [shown.marked, ...shown.chosen.nodes])
            for (const [x, y, r] of this.spots.places(camera, shown, node)) {
                to.circle(x, y, Math.max(4, r), null, 1, ground, 4);
                to.circle(x, y, Math.max(4, r), null, 1, ink, 2);
            }
        for (const [cluster, [x, y, w, h]] of labels) {
            const name = String(model.id[cluster]);
            const size = Math.max(10, Math.min(20, h / 8));
            if (name.length * size * LETTER < w - 4 && h > size * 1.4)
                to.text(x + 5, y + size * 0.75, size, name, { colour: ink, halo: ground, bold: true, align: "left" });
        }
    }
}
