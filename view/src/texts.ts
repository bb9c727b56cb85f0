// Texts in pictures: cut where there is no room for them, left out where others are.
import { Painter } from "./painter.js";

/** Width of a letter as a part of its height, on average. */
export const LETTER = 0.58;

export function shortened(text: string, most: number): string {
    const letters = [...text];
    return letters.length <= most ? text : letters.slice(0, most - 1).join("") + "…";
}

/** A text in a circle, cut where it would be too small to be read. */
export function fitted(to: Painter, x: number, y: number, r: number, text: string, style: { colour: string }) {
    const least = 7;
    const letters = Math.max(2, Math.floor((1.8 * r) / (least * LETTER)));
    const cut = shortened(text, letters);
    if (cut.length < text.length && cut.length < 4) return;
    const size = Math.min(16, r, (1.75 * r) / (Math.max(1.6, [...cut].length) * LETTER));
    if (size < least * 0.9) return;
    to.text(x, y, size, cut, style);
}

/** The room that texts have taken. */
export class Room {
    private readonly boxes = new Map<number, [number, number, number, number][]>();

    /** Takes the room around a point, unless some of it is taken. */
    take(x: number, y: number, width: number, height: number): boolean {
        const box: [number, number, number, number] = [x - width / 2, y - height / 2, x + width / 2, y + height / 2];
        const fields = [...this.fields(box)];
        for (const field of fields)
            for (const other of this.boxes.get(field) ?? [])
                if (other[0] < box[2] && other[2] > box[0] && other[1] < box[3] && other[3] > box[1]) return false;
        for (const field of fields) {
            const list = this.boxes.get(field);
            if (list) list.push(box);
            else this.boxes.set(field, [box]);
        }
        return true;
    }

    private *fields([x0, y0, x1, y1]: [number, number, number, number]): Iterable<number> {
        const side = 64;
        for (let x = Math.floor(x0 / side); x <= Math.floor(x1 / side); ++x)
            for (let y = Math.floor(y0 / side); y <= Math.floor(y1 / side); ++y) yield x * 4096 + y;
    }
}
