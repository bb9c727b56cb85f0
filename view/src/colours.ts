// The colours of clusters and nodes, on light and on dark ground.
import { Model } from "./model.js";

export interface Theme {
    dark: boolean;
    ground: string;
    ink: string;
    faint: string;
}

export const LIGHT: Theme = { dark: false, ground: "#ffffff", ink: "#1d2125", faint: "#8b9299" };
export const DARK: Theme = { dark: true, ground: "#14171a", ink: "#eceff1", faint: "#7c858d" };

function channels(colour: string): number[] {
    return [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));
}

/** The colour with a part of another one in it. */
export function mixed(colour: string, other: string, part: number): string {
    const b = channels(other);
    return (
        "#" +
        channels(colour)
            .map((value, i) => Math.round(value + (b[i]! - value) * part))
            .map((value) => value.toString(16).padStart(2, "0"))
            .join("")
    );
}

/** Whether white letters are read better on the colour than black ones. */
export function isDeep(colour: string): boolean {
    const [r, g, b] = channels(colour).map((value) => (value / 255) ** 2.2);
    return 0.2126 * r! + 0.7152 * g! + 0.0722 * b! < 0.32;
}

/** Clusters have one colour on all levels. Parts of those that have colours of their own differ a
 * little in lightness. */
export class Colours {
    private readonly shades: (string | undefined)[] = [];
    private readonly ordinals: Uint32Array;

    constructor(
        private readonly model: Model,
        readonly theme: Theme,
    ) {
        this.ordinals = new Uint32Array(model.clusters);
        for (let i = 0; i < model.clusters; ++i)
            model.parts(i).forEach((part, ordinal) => (this.ordinals[part] = ordinal));
    }

    get neutral(): string {
        return this.of(255);
    }
    /** The colour of the community that the cluster is in. */
    base(cluster: number): string {
        return this.of(cluster === 0 ? 255 : this.model.colour[cluster]!);
    }
    shade(cluster: number): string {
        return (this.shades[cluster] ??= this.shadeOf(cluster));
    }

    private of(place: number): string {
        const palette = this.model.facts.palette;
        const pair = palette[Math.min(place, palette.length - 1)]!;
        return pair[this.theme.dark ? 1 : 0];
    }
    private shadeOf(cluster: number): string {
        const { model } = this;
        const at = model.standing(model.facts.level)[cluster]!;
        if (at < 0 || at === cluster || model.colour[cluster] === 255) return this.base(cluster);
        const own = this.shade(model.parent[cluster]!);
        const by = [0, 0.28, -0.22, 0.14, -0.12][this.ordinals[cluster]! % 5]!;
        return by < 0 ? mixed(own, "#000000", -by) : mixed(own, "#ffffff", by);
    }
}
