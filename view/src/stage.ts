// The canvas, and when what is drawn on it. A picture that takes long is drawn over several frames,
// out of sight; meanwhile, and while the camera moves, former ones are shown from where it is.
import { CanvasPainter } from "./painter.js";
import { Picture } from "./picture.js";
import { Recorder } from "./recorder.js";
import { Camera, Shown } from "./shown.js";

interface Snapshot {
    canvas: HTMLCanvasElement;
    camera: Camera;
    /** Of what is shown; -1 if something lacks. */
    version: number;
}

interface Work {
    recorder: Recorder;
    painter: CanvasPainter;
    snapshot: Snapshot;
}

/** Milliseconds that pass between two frames if nothing takes long, and if something does. */
const SHORT = 24;
const LONG = 40;
const LEAST = 2000;
const MOST = 200000;

export class Stage {
    private readonly context: CanvasRenderingContext2D;
    private last: Snapshot | null = null;
    /** The last that has all of the map on it. */
    private whole: Snapshot | null = null;
    private work: Work | null = null;
    private canvases: HTMLCanvasElement[] = [];
    private version = 0;
    /** Microseconds of drawing in a frame, which go by how long frames take. */
    private budget = 12000;
    /** Whether the last picture took more than a frame. */
    heavy = false;

    constructor(private readonly canvas: HTMLCanvasElement) {
        this.context = canvas.getContext("2d")!;
    }

    resize() {
        const { clientWidth, clientHeight } = this.canvas;
        this.canvas.width = Math.round(clientWidth * devicePixelRatio);
        this.canvas.height = Math.round(clientHeight * devicePixelRatio);
        this.forget();
    }

    /** What is shown has changed, and not only from where; what was drawn stands in for it. */
    change() {
        ++this.version;
        this.work = null;
    }

    /** Nothing that was drawn can stand in for what is to be shown. */
    forget() {
        this.change();
        this.last = this.whole = null;
    }

    /** Draws what a frame has time for. Returns whether something is left to draw. */
    frame(picture: Picture, camera: Camera, shown: Shown): boolean {
        // On paper there is none of it.
        if (this.canvas.width === 0 || this.canvas.height === 0) return false;
        const isOpen = () =>
            !(this.last?.version === this.version && same(this.last.camera, camera)) && !this.waits(shown);
        if (isOpen()) this.proceed(picture, camera, shown);
        this.show(picture, camera, shown);
        return isOpen();
    }

    /** What takes long is drawn where the camera comes to rest. */
    private waits(shown: Shown): boolean {
        return shown.moves && this.heavy && this.last !== null;
    }

    private proceed(picture: Picture, camera: Camera, shown: Shown) {
        if (!this.work || !same(this.work.snapshot.camera, camera)) {
            this.work = this.prepared(picture, camera, shown);
            this.heavy = this.work.recorder.cost > this.budget;
            if (this.waits(shown)) return;
        }
        const { recorder, painter, snapshot } = this.work;
        this.measure(Math.min(this.budget, recorder.cost));
        if (!recorder.play(painter, this.budget)) return;
        this.last = snapshot;
        this.work = null;
        const { x, y, width, height, scale } = camera;
        if (2 * scale <= Math.max(width, height) && x >= 0 && x <= width && y >= 0 && y <= height) this.whole = snapshot;
    }

    private prepared(picture: Picture, camera: Camera, shown: Shown): Work {
        const recorder = new Recorder(Math.max(camera.width, camera.height));
        picture.draw(recorder, camera, shown, 12);
        const canvas = this.spare();
        const context = canvas.getContext("2d")!;
        const ratio = devicePixelRatio;
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.fillStyle = picture.ground;
        context.fillRect(0, 0, camera.width, camera.height);
        return {
            recorder,
            painter: new CanvasPainter(context, shown.moves ? 3.5 : 1.5),
            snapshot: { canvas, camera, version: picture.incomplete ? -1 : this.version },
        };
    }

    /** A canvas that nothing is on. */
    private spare(): HTMLCanvasElement {
        const { width, height } = this.canvas;
        const used = [this.last?.canvas, this.whole?.canvas];
        let canvas = this.canvases.find((other) => !used.includes(other) && other.width === width && other.height === height);
        if (!canvas) {
            canvas = document.createElement("canvas");
            canvas.width = width;
            canvas.height = height;
            this.canvases = [canvas, ...this.canvases.filter((other) => used.includes(other))];
        }
        return canvas;
    }

    private show(picture: Picture, camera: Camera, shown: Shown) {
        // What isn't finished is better than nothing.
        const latest = this.last ?? this.work?.snapshot;
        this.context.setTransform(1, 0, 0, 1, 0, 0);
        if (!latest || !same(latest.camera, camera)) {
            this.context.fillStyle = picture.ground;
            this.context.fillRect(0, 0, this.canvas.width, this.canvas.height);
            if (this.whole) this.put(this.whole, camera);
        }
        if (latest) this.put(latest, camera);
        const ratio = devicePixelRatio;
        this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
        picture.drawHovered(new CanvasPainter(this.context), camera, shown);
    }

    private put({ canvas, camera: from }: Snapshot, to: Camera) {
        const times = to.scale / from.scale;
        const ratio = devicePixelRatio;
        this.context.drawImage(
            canvas,
            (to.x - from.x * times) * ratio,
            (to.y - from.y * times) * ratio,
            canvas.width * times,
            canvas.height * times,
        );
    }

    /** Frames shall come often, however fast the machine is. */
    private measure(spent: number) {
        const begin = performance.now();
        requestAnimationFrame(() => {
            const passed = performance.now() - begin;
            if (passed > LONG) this.budget = Math.max(LEAST, this.budget * 0.7);
            else if (passed < SHORT && spent > 0.6 * this.budget) this.budget = Math.min(MOST, this.budget * 1.3);
        });
    }
}

function same(a: Camera, b: Camera): boolean {
    return a.x === b.x && a.y === b.y && a.scale === b.scale && a.width === b.width && a.height === b.height;
}
