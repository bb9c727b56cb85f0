// The network inside of clusters: where its nodes are, and how they and their links are drawn.
import { Colours, isDeep } from "./colours.js";
import { Model, Part, Piece } from "./model.js";
import { Painter } from "./painter.js";
import { Camera, Shown, Spot, touches } from "./shown.js";
import { LETTER, Room, shortened } from "./texts.js";

interface Look {
    level: number;
    colours: string[];
    pies: ([string, number][] | null)[];
    /** By falling degree. */
    order: number[];
    /** Those with pies. */
    shared: number[];
    links: Map<string, number[]>;
    /** The highest degree. */
    most: number;
}

const NAMES = 150;
/** How many bundles are drawn for each part of a cluster, the heaviest. */
const BUNDLES = 2;

/** Below this part of their cluster's radius, links would lie under the dots. */
const LINKED = 45;

export class Pieces {
    private readonly looks = new Map<number, Look>();
    /** When to leave the rest of the work to the next picture. */
    private until = Infinity;
    /** Whether something was left to it. */
    incomplete = false;

    constructor(
        private readonly model: Model,
        private readonly colours: Colours,
    ) {}

    begin(patience: number) {
        this.until = performance.now() + patience;
        this.incomplete = false;
    }

    /** Whether a piece can be drawn now, if need be after some work. */
    isReady(piece: Piece, level: number): boolean {
        if (this.looks.get(piece.cluster)?.level !== level && performance.now() > this.until) {
            this.incomplete = true;
            return false;
        }
        this.lookOf(piece, level);
        return true;
    }

    draw(to: Painter, camera: Camera, shown: Shown, piece: Piece) {
        const { model } = this;
        const look = this.lookOf(piece, shown.level);
        const at = this.positions(camera, shown, piece);
        const r = camera.scale * model.r[piece.cluster]!;
        const crowd = Math.sqrt(piece.ends.length / 2 + 1);
        const alpha = shown.blend * Math.max(0.08, Math.min(0.6, r / crowd / 24));
        const linked = r >= (shown.moves && piece.ends.length < 4000 ? 120 : LINKED);
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
            if (!look.pies[i] || radius < 2) append(dots, look.colours[i]!, x, y, radius);
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
        if (shown.blend === 1 && !shown.moves) this.drawNames(to, camera, shown, piece, look, at);
    }

    /** The weights between the parts of clusters that are no pieces. */
    drawBundles(to: Painter, camera: Camera, shown: Shown, cluster = 0) {
        const { model } = this;
        const r = camera.scale * model.r[cluster]!;
        const bundles = model.bundles.get(cluster);
        if (!bundles || r < 40) return;
        const x = camera.x + camera.scale * model.x[cluster]!;
        const y = camera.y + camera.scale * model.y[cluster]!;
        if (!touches(camera, x, y, r)) return;
        const parts = model.parts(cluster);
        // Of what one is deep inside they would only be in the way.
        const fade = shown.blend * Math.min(1, Math.min(camera.width, camera.height) / r) ** 2;
        const most = bundles[0]!.weight;
        for (let i = Math.min(bundles.length, BUNDLES * parts.length) - 1; i >= 0 && fade > 0.05; --i) {
            const { a, b, weight } = bundles[i]!;
            const part = Math.sqrt(weight / most);
            // Bent towards the middle of what they are in.
            const midX = ((model.x[a]! + model.x[b]!) / 2) * 0.6 + model.x[cluster]! * 0.4;
            const midY = ((model.y[a]! + model.y[b]!) / 2) * 0.6 + model.y[cluster]! * 0.4;
            const [ax, ay] = this.edge(camera, a, midX, midY);
            const [bx, by] = this.edge(camera, b, midX, midY);
            const least = camera.scale * Math.min(model.r[a]!, model.r[b]!);
            const width = Math.max(0.4, part * Math.min(6, 0.3 * least));
            to.curve(
                ax,
                ay,
                camera.x + camera.scale * midX,
                camera.y + camera.scale * midY,
                bx,
                by,
                this.colours.base(a),
                (0.05 + 0.4 * part ** 2) * fade,
                width,
            );
        }
        for (const part of parts) this.drawBundles(to, camera, shown, part);
    }

    /** Where on the screen the way to a point leaves a cluster. */
    private edge(camera: Camera, cluster: number, toX: number, toY: number): [number, number] {
        const { model } = this;
        const [x, y] = [model.x[cluster]!, model.y[cluster]!];
        const part = Math.min(1, model.r[cluster]! / Math.max(1e-12, Math.hypot(toX - x, toY - y)));
        return [camera.x + camera.scale * (x + (toX - x) * part), camera.y + camera.scale * (y + (toY - y) * part)];
    }

    /** The node of a piece that is at a point of the screen; -1 for none. */
    nodeAt(camera: Camera, shown: Shown, piece: Piece, px: number, py: number): number {
        const look = this.lookOf(piece, shown.level);
        const at = this.positions(camera, shown, piece);
        let best = -1;
        let least = Infinity;
        for (let i = 0; i < piece.nodes.length; ++i) {
            const way = Math.hypot(at[2 * i]! - px, at[2 * i + 1]! - py);
            const reach = Math.max(6, this.radius(camera, shown, piece, look, i) + 2);
            if (way <= reach && way < least) [best, least] = [piece.nodes[i]!, way];
        }
        return best;
    }

    /** Where those nodes of a piece are that a test is true for. */
    spots(camera: Camera, shown: Shown, piece: Piece, wanted: (node: number) => boolean): Spot[] {
        const at = this.positions(camera, shown, piece);
        const look = this.lookOf(piece, shown.level);
        const found: Spot[] = [];
        piece.nodes.forEach((node, i) => {
            if (wanted(node)) found.push([at[2 * i]!, at[2 * i + 1]!, this.radius(camera, shown, piece, look, i)]);
        });
        return found;
    }

    private drawNames(to: Painter, camera: Camera, shown: Shown, piece: Piece, look: Look, at: Float32Array) {
        const room = new Room();
        let count = 0;
        for (const i of look.order) {
            if (count >= NAMES) break;
            const radius = this.radius(camera, shown, piece, look, i);
            const [x, y] = [at[2 * i]!, at[2 * i + 1]!];
            if (!touches(camera, x, y, 0)) continue;
            const name = shortened(this.model.nodeName(piece.nodes[i]!), 24);
            const size = radius >= 8 ? Math.min(13, Math.max(9, radius * 0.8)) : 10;
            const wide = name.length * size * LETTER;
            const inside = wide < 2 * radius - 2;
            if (!inside && radius < 3.5) continue;
            const top = inside ? y : y - radius - size * 0.7;
            if (!room.take(x, top, wide, size)) continue;
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

    private radius(camera: Camera, shown: Shown, piece: Piece, look: Look, i: number): number {
        const r = camera.scale * this.model.r[piece.cluster]!;
        const most = (r * 0.46) / Math.sqrt(piece.nodes.length);
        const own = most * (0.4 + 0.6 * Math.sqrt(this.model.degree[piece.nodes[i]!]! / look.most));
        const dot = this.model.unit * camera.scale;
        return Math.max(1.2, dot + (own - dot) * shown.blend);
    }

    /** Where the nodes of a piece are, x and y of each. */
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

    private lookOf(piece: Piece, level: number): Look {
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
            append(links, common ? this.colours.shade(common[0]) : this.colours.neutral, link);
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
}

/** Adds to the list of a colour. */
export function append(lists: Map<string, number[]>, colour: string, ...values: number[]) {
    listOf(lists, colour).push(...values);
}

export function listOf(lists: Map<string, number[]>, colour: string): number[] {
    let list = lists.get(colour);
    if (!list) lists.set(colour, (list = []));
    return list;
}
