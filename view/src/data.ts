// The bytes of a page and the arrays in them; what is told of a page beside them.

export interface Facts {
    format: number;
    nodes: number;
    links: number;
    directed: boolean;
    weighted: boolean;
    /** Place of the level that is shown first. */
    level: number;
    /** Of each level its number in the hierarchy, and how many clusters stand there. */
    levels: [number, number][];
    /** Colours on light and on dark ground; the last one is of what has no colour. */
    palette: [string, string][];
}

type Section = [name: string, kind: string, begin: number, length: number];

/** Named arrays, as they stand in the data. */
export class Arrays {
    readonly facts: Facts;
    private readonly sections = new Map<string, { kind: string; bytes: Uint8Array }>();

    constructor(bytes: Uint8Array) {
        const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
        const length = view.getUint32(0, true);
        const table = JSON.parse(new TextDecoder().decode(bytes.subarray(4, 4 + length)));
        this.facts = table as Facts;
        for (const [name, kind, begin, size] of table.sections as Section[]) {
            const at = 4 + length + begin;
            this.sections.set(name, { kind, bytes: bytes.slice(at, at + size) });
        }
    }

    has(name: string): boolean {
        return this.sections.has(name);
    }

    bytes(name: string): Uint8Array {
        return this.of(name, "bytes");
    }
    floats(name: string): Float32Array {
        return new Float32Array(this.of(name, "float").buffer as ArrayBuffer);
    }
    shorts(name: string): Uint16Array {
        return new Uint16Array(this.of(name, "short").buffer as ArrayBuffer);
    }
    numbers(name: string): Uint32Array {
        return numbersOf(this.of(name, "number"));
    }

    private of(name: string, kind: string): Uint8Array {
        const section = this.sections.get(name);
        if (!section || section.kind !== kind) throw new Error(`the data have no ${kind} ${name}`);
        return section.bytes;
    }
}

/** Whole numbers, each told by twice its difference to the one before, in groups of 7 bits. */
export function numbersOf(bytes: Uint8Array): Uint32Array {
    let count = 0;
    for (let i = 0; i < bytes.length; ++i) if (bytes[i]! < 128) ++count;
    const values = new Uint32Array(count);
    let at = 0;
    let former = 0;
    for (let i = 0; i < count; ++i) {
        let code = 0;
        let unit = 1;
        while (bytes[at]! >= 128) {
            code += (bytes[at++]! & 127) * unit;
            unit *= 128;
        }
        code += bytes[at++]! * unit;
        former += code % 2 ? -(code + 1) / 2 : code / 2;
        values[i] = former;
    }
    return values;
}

export function bytesOfBase64(text: string): Uint8Array<ArrayBuffer> {
    const letters = atob(text);
    const bytes = new Uint8Array(letters.length);
    for (let i = 0; i < letters.length; ++i) bytes[i] = letters.charCodeAt(i);
    return bytes;
}

export async function unpacked(bytes: Uint8Array<ArrayBuffer>, packing: string): Promise<Uint8Array> {
    if (packing === "none") return bytes;
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}
