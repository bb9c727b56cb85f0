// A picture as a list of steps, which are drawn a few at a time.
import { Painter, TextStyle } from "./painter.js";

/** Dots or lines that one step has at most. */
const STEP = 400;

export class Recorder implements Painter {
    private readonly steps: ((to: Painter) => void)[] = [];
    /** About how many microseconds each takes without a graphics processor. */
    private readonly costs: number[] = [];
    private next = 0;
    /** Of all steps. */
    cost = 0;

    /** @param most  lengths and areas of what reaches beyond this many pixels cost no more */
    constructor(private readonly most: number) {}

    /** Draws as many of the steps that are left as the budget is for, at least one. Returns whether
     * none is left. */
    play(to: Painter, budget: number): boolean {
        while (this.next < this.steps.length && budget > 0) {
            budget -= this.costs[this.next]!;
            this.steps[this.next++]!(to);
        }
        return this.next === this.steps.length;
    }

    circle(x: number, y: number, r: number, fill: string | null, alpha: number, stroke?: string, width?: number) {
        const side = Math.min(2 * r, this.most);
        this.add(20 + (fill ? (side * side) / 400 : 0) + (stroke ? side : 0), (to) => to.circle(x, y, r, fill, alpha, stroke, width));
    }
    rect(x: number, y: number, w: number, h: number, fill: string | null, alpha: number, stroke?: string, width?: number) {
        const area = Math.min(w, this.most) * Math.min(h, this.most);
        this.add(4 + (fill ? area / 1000 : 0) + (stroke ? 10 : 0), (to) => to.rect(x, y, w, h, fill, alpha, stroke, width));
    }
    rects(at: number[], fill: string, alpha: number) {
        for (let i = 0; i < at.length; i += 4 * STEP) {
            const some = at.slice(i, i + 4 * STEP);
            this.add(some.length / 2, (to) => to.rects(some, fill, alpha));
        }
    }
    dots(at: number[], fill: string, alpha: number) {
        for (let i = 0; i < at.length; i += 3 * STEP) {
            const some = at.slice(i, i + 3 * STEP);
            let cost = 0;
            for (let j = 2; j < some.length; j += 3) cost += 3 + Math.min(some[j]!, this.most);
            this.add(cost, (to) => to.dots(some, fill, alpha));
        }
    }
    lines(at: number[], stroke: string, alpha: number, width: number) {
        for (let i = 0; i < at.length; i += 4 * STEP) {
            const some = at.slice(i, i + 4 * STEP);
            let cost = 0;
            for (let j = 0; j < some.length; j += 4)
                cost += 4 + Math.min(this.most, Math.abs(some[j]! - some[j + 2]!) + Math.abs(some[j + 1]! - some[j + 3]!)) / 10;
            this.add(cost, (to) => to.lines(some, stroke, alpha, width));
        }
    }
    curve(x0: number, y0: number, x: number, y: number, x1: number, y1: number, stroke: string, alpha: number, width: number) {
        const length = Math.min(this.most, Math.abs(x1 - x0) + Math.abs(y1 - y0));
        this.add(20 + (length * (1 + width)) / 10, (to) => to.curve(x0, y0, x, y, x1, y1, stroke, alpha, width));
    }
    pie(x: number, y: number, r: number, parts: [string, number][], edge: string) {
        this.add(60, (to) => to.pie(x, y, r, parts, edge));
    }
    text(x: number, y: number, size: number, text: string, style: TextStyle) {
        this.add(style.halo ? 120 : 40, (to) => to.text(x, y, size, text, style));
    }

    private add(cost: number, step: (to: Painter) => void) {
        this.steps.push(step);
        this.costs.push(cost);
        this.cost += cost;
    }
}
