// Where the picture is seen from: moved by wheel, drag, pinch, keys and flights.
import { select } from "d3-selection";
import "d3-transition";
import { zoom, zoomIdentity, ZoomTransform } from "d3-zoom";
import { Camera } from "./shown.js";

export class Flight {
    private transform = zoomIdentity;
    private width = 1;
    private height = 1;
    private readonly behaviour = zoom<HTMLCanvasElement, unknown>();
    private readonly calm = matchMedia("(prefers-reduced-motion: reduce)");

    constructor(
        private readonly canvas: HTMLCanvasElement,
        moved: () => void,
    ) {
        this.behaviour
            .scaleExtent([0.5, 1e6])
            .clickDistance(6)
            .on("zoom", (event: { transform: ZoomTransform }) => {
                this.transform = event.transform;
                moved();
            });
        select(canvas).call(this.behaviour).on("dblclick.zoom", null);
    }

    resize(width: number, height: number) {
        this.width = width;
        this.height = height;
    }
    get ratio(): number {
        return this.width / this.height;
    }
    /** Half of a picture of height 2 in pixels, before it is enlarged. */
    private get unit(): number {
        return (Math.min(this.width, this.height) / 2) * 0.94;
    }
    get camera(): Camera {
        const { k, x, y } = this.transform;
        return {
            x: x + (k * this.width) / 2,
            y: y + (k * this.height) / 2,
            scale: k * this.unit,
            width: this.width,
            height: this.height,
        };
    }
    /** Shows what lies around a point in so much of its own lengths. */
    flyTo([x, y, halfWidth, halfHeight]: [number, number, number, number], part: number, duration: number): Promise<void> {
        const k = Math.min(
            (this.width * part) / (2 * halfWidth * this.unit),
            (this.height * part) / (2 * halfHeight * this.unit),
            1e6,
        );
        const to = zoomIdentity
            .translate(this.width / 2 - k * (this.width / 2 + x * this.unit), this.height / 2 - k * (this.height / 2 + y * this.unit))
            .scale(k);
        return this.moveTo(to, duration);
    }
    zoomBy(factor: number) {
        const { k, x, y } = this.transform;
        const [cx, cy] = [this.width / 2, this.height / 2];
        const to = zoomIdentity.translate(cx - (cx - x) * factor, cy - (cy - y) * factor).scale(k * factor);
        void this.moveTo(to, 200);
    }

    private moveTo(to: ZoomTransform, duration: number): Promise<void> {
        const canvas = select(this.canvas);
        if (duration === 0 || this.calm.matches) {
            canvas.interrupt();
            this.behaviour.transform(canvas, to);
            return Promise.resolve();
        }
        const transition = canvas.transition().duration(duration);
        this.behaviour.transform(transition, to);
        return transition.end().catch(() => undefined);
    }
}
