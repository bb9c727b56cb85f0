// What is shown, and where from.
import { Chosen } from "./chosen.js";

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
    focus: number;
    marked: number;
    chosen: Chosen;
    hovered: Hit | null;
    /** While the camera moves, what takes long is left out. */
    moves: boolean;
}

export type Hit = { kind: "cluster"; cluster: number } | { kind: "node"; node: number; cluster: number };

/** x, y and radius on the screen. */
export type Spot = [x: number, y: number, r: number];

export function touches(camera: Camera, x: number, y: number, r: number): boolean {
    return x + r >= 0 && y + r >= 0 && x - r <= camera.width && y - r <= camera.height;
}
