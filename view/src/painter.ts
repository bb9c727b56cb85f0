// What pictures are drawn with: on a canvas, or as SVG.

export interface TextStyle {
    colour: string;
    halo?: string;
    bold?: boolean;
    align?: "left" | "middle";
}

export interface Painter {
    circle(x: number, y: number, r: number, fill: string | null, alpha: number, stroke?: string, width?: number): void;
    rect(x: number, y: number, w: number, h: number, fill: string | null, alpha: number, stroke?: string, width?: number): void;
    /** Rectangles of one colour: x, y, width and height of each. */
    rects(at: number[], fill: string, alpha: number): void;
    /** Circles of one colour: x, y and r of each. */
    dots(at: number[], fill: string, alpha: number): void;
    /** Straight lines of one colour: both ends of each. */
    lines(at: number[], stroke: string, alpha: number, width: number): void;
    /** A line that is drawn towards a point. */
    curve(x0: number, y0: number, x: number, y: number, x1: number, y1: number, stroke: string, alpha: number, width: number): void;
    pie(x: number, y: number, r: number, parts: [string, number][], edge: string): void;
    text(x: number, y: number, size: number, text: string, style: TextStyle): void;
}

export const FONT = 'system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif';

const TURN = 2 * Math.PI;

export class CanvasPainter implements Painter {
    /** @param square  circles of a smaller radius are drawn as squares, which takes less time */
    constructor(
        private readonly to: CanvasRenderingContext2D,
        private readonly square = 1.5,
    ) {}

    circle(x: number, y: number, r: number, fill: string | null, alpha: number, stroke?: string, width = 1) {
        this.to.beginPath();
        this.to.arc(x, y, r, 0, TURN);
        this.finish(fill, alpha, stroke, width);
    }
    rect(x: number, y: number, w: number, h: number, fill: string | null, alpha: number, stroke?: string, width = 1) {
        if (fill) {
            this.to.globalAlpha = alpha;
            this.to.fillStyle = fill;
            this.to.fillRect(x, y, w, h);
        }
        if (stroke) {
            this.to.globalAlpha = fill ? Math.min(1, alpha * 4) : alpha;
            this.to.strokeStyle = stroke;
            this.to.lineWidth = width;
            this.to.strokeRect(x, y, w, h);
        }
        this.to.globalAlpha = 1;
    }
    rects(at: number[], fill: string, alpha: number) {
        this.to.globalAlpha = alpha;
        this.to.fillStyle = fill;
        for (let i = 0; i < at.length; i += 4) this.to.fillRect(at[i]!, at[i + 1]!, at[i + 2]!, at[i + 3]!);
        this.to.globalAlpha = 1;
    }
    dots(at: number[], fill: string, alpha: number) {
        this.to.globalAlpha = alpha;
        this.to.fillStyle = fill;
        this.to.beginPath();
        for (let i = 0; i < at.length; i += 3) {
            const [x, y, r] = [at[i]!, at[i + 1]!, at[i + 2]!];
            if (r < this.square) {
                this.to.rect(x - 0.89 * r, y - 0.89 * r, 1.78 * r, 1.78 * r);
            } else {
                this.to.moveTo(x + r, y);
                this.to.arc(x, y, r, 0, TURN);
            }
        }
        this.to.fill();
        this.to.globalAlpha = 1;
    }
    lines(at: number[], stroke: string, alpha: number, width: number) {
        this.to.globalAlpha = alpha;
        this.to.strokeStyle = stroke;
        this.to.lineWidth = width;
        this.to.beginPath();
        for (let i = 0; i < at.length; i += 4) {
            this.to.moveTo(at[i]!, at[i + 1]!);
            this.to.lineTo(at[i + 2]!, at[i + 3]!);
        }
        this.to.stroke();
        this.to.globalAlpha = 1;
    }
    curve(x0: number, y0: number, x: number, y: number, x1: number, y1: number, stroke: string, alpha: number, width: number) {
        this.to.globalAlpha = alpha;
        this.to.strokeStyle = stroke;
        this.to.lineWidth = width;
        this.to.beginPath();
        this.to.moveTo(x0, y0);
        this.to.quadraticCurveTo(x, y, x1, y1);
        this.to.stroke();
        this.to.globalAlpha = 1;
    }
    pie(x: number, y: number, r: number, parts: [string, number][], edge: string) {
        let from = -Math.PI / 2;
        for (const [colour, share] of parts) {
            const to = from + share * TURN;
            this.to.fillStyle = colour;
            this.to.beginPath();
            this.to.moveTo(x, y);
            this.to.arc(x, y, r, from, to);
            this.to.fill();
            from = to;
        }
        this.circle(x, y, r, null, 1, edge, Math.max(0.75, r / 8));
    }
    text(x: number, y: number, size: number, text: string, style: TextStyle) {
        this.to.font = `${style.bold ? "600 " : ""}${size}px ${FONT}`;
        this.to.textAlign = style.align === "left" ? "left" : "center";
        this.to.textBaseline = "middle";
        if (style.halo) {
            this.to.strokeStyle = style.halo;
            this.to.lineWidth = 3;
            this.to.lineJoin = "round";
            this.to.globalAlpha = 0.85;
            this.to.strokeText(text, x, y);
            this.to.globalAlpha = 1;
        }
        this.to.fillStyle = style.colour;
        this.to.fillText(text, x, y);
    }

    private finish(fill: string | null, alpha: number, stroke: string | undefined, width: number) {
        if (fill) {
            this.to.globalAlpha = alpha;
            this.to.fillStyle = fill;
            this.to.fill();
        }
        if (stroke) {
            this.to.globalAlpha = fill ? Math.min(1, alpha * 4) : alpha;
            this.to.strokeStyle = stroke;
            this.to.lineWidth = width;
            this.to.stroke();
        }
        this.to.globalAlpha = 1;
    }
}

export function escaped(text: string): string {
    return text
        .replace(/[\u0000-\u0008\u000b\u000c\u000e-\u001f\ufffe\uffff]/g, "\ufffd")
        .replace(/[&<>"]/g, (c) => ({ "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" })[c]!);
}

const short = (value: number) => String(Math.round(value * 100) / 100);

export class SvgPainter implements Painter {
    private readonly pieces: string[] = [];

    constructor(
        private readonly width: number,
        private readonly height: number,
        private readonly ground: string,
    ) {}

    circle(x: number, y: number, r: number, fill: string | null, alpha: number, stroke?: string, width = 1) {
        this.add(`<circle cx="${short(x)}" cy="${short(y)}" r="${short(r)}"`, fill, alpha, stroke, width);
    }
    rect(x: number, y: number, w: number, h: number, fill: string | null, alpha: number, stroke?: string, width = 1) {
        this.add(
            `<rect x="${short(x)}" y="${short(y)}" width="${short(w)}" height="${short(h)}"`,
            fill,
            alpha,
            stroke,
            width,
        );
    }
    rects(at: number[], fill: string, alpha: number) {
        this.pieces.push(`<g fill="${fill}" fill-opacity="${short(alpha)}">`);
        for (let i = 0; i < at.length; i += 4)
            this.pieces.push(
                `<rect x="${short(at[i]!)}" y="${short(at[i + 1]!)}" width="${short(at[i + 2]!)}" height="${short(at[i + 3]!)}"/>`,
            );
        this.pieces.push("</g>");
    }
    dots(at: number[], fill: string, alpha: number) {
        this.pieces.push(`<g fill="${fill}" opacity="${short(alpha)}">`);
        for (let i = 0; i < at.length; i += 3)
            this.pieces.push(`<circle cx="${short(at[i]!)}" cy="${short(at[i + 1]!)}" r="${short(at[i + 2]!)}"/>`);
        this.pieces.push("</g>");
    }
    lines(at: number[], stroke: string, alpha: number, width: number) {
        const path: string[] = [];
        for (let i = 0; i < at.length; i += 4)
            path.push(`M${short(at[i]!)} ${short(at[i + 1]!)}L${short(at[i + 2]!)} ${short(at[i + 3]!)}`);
        this.pieces.push(
            `<path d="${path.join("")}" fill="none" stroke="${stroke}" stroke-opacity="${short(alpha)}" stroke-width="${short(width)}"/>`,
        );
    }
    curve(x0: number, y0: number, x: number, y: number, x1: number, y1: number, stroke: string, alpha: number, width: number) {
        this.pieces.push(
            `<path d="M${short(x0)} ${short(y0)}Q${short(x)} ${short(y)} ${short(x1)} ${short(y1)}" fill="none" stroke="${stroke}" stroke-opacity="${short(alpha)}" stroke-width="${short(width)}"/>`,
        );
    }
    pie(x: number, y: number, r: number, parts: [string, number][], edge: string) {
        let from = -Math.PI / 2;
        for (const [colour, share] of parts) {
            const to = from + share * TURN;
            const [x0, y0] = [x + r * Math.cos(from), y + r * Math.sin(from)];
            const [x1, y1] = [x + r * Math.cos(to), y + r * Math.sin(to)];
            this.pieces.push(
                share > 0.9999
                    ? `<circle cx="${short(x)}" cy="${short(y)}" r="${short(r)}" fill="${colour}"/>`
                    : `<path d="M${short(x)} ${short(y)}L${short(x0)} ${short(y0)}A${short(r)} ${short(r)} 0 ${share > 0.5 ? 1 : 0} 1 ${short(x1)} ${short(y1)}Z" fill="${colour}"/>`,
            );
            from = to;
        }
        this.circle(x, y, r, null, 1, edge, Math.max(0.75, r / 8));
    }
    text(x: number, y: number, size: number, text: string, style: TextStyle) {
        const halo = style.halo
            ? ` stroke="${style.halo}" stroke-width="3" stroke-linejoin="round" paint-order="stroke"`
            : "";
        this.pieces.push(
            `<text x="${short(x)}" y="${short(y + size * 0.35)}" font-size="${short(size)}" fill="${style.colour}"${halo}` +
                `${style.bold ? ' font-weight="600"' : ""}${style.align === "left" ? "" : ' text-anchor="middle"'}>${escaped(text)}</text>`,
        );
    }

    /** The whole picture. */
    document(title: string): string {
        return (
            `<svg xmlns="http://www.w3.org/2000/svg" width="${this.width}" height="${this.height}" viewBox="0 0 ${this.width} ${this.height}" font-family="${escaped(FONT)}">` +
            `<title>${escaped(title)}</title><rect width="100%" height="100%" fill="${this.ground}"/>` +
            this.pieces.join("\n") +
            "</svg>\n"
        );
    }

    private add(begin: string, fill: string | null, alpha: number, stroke: string | undefined, width: number) {
        const edge = stroke
            ? ` stroke="${stroke}" stroke-opacity="${short(fill ? Math.min(1, alpha * 4) : alpha)}" stroke-width="${short(width)}"`
            : "";
        this.pieces.push(`${begin} fill="${fill ?? "none"}"${fill ? ` fill-opacity="${short(alpha)}"` : ""}${edge}/>`);
    }
}
