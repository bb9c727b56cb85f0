// What is told of a cluster or a node beside the picture.
import { Chosen } from "./chosen.js";
import { Colours } from "./colours.js";
import { shareText } from "./csv.js";
import { Model } from "./model.js";

export interface Actions {
    showCluster(cluster: number): void;
    showNode(node: number): void;
    /** Selects, or does so no longer. */
    toggleCluster(cluster: number): void;
    toggleNode(node: number): void;
    /** Nothing is selected any more. */
    clear(): void;
}

export function byId<T extends HTMLElement>(id: string): T {
    return document.getElementById(id) as T;
}

/** An element with attributes and contents; texts are texts, never markup. */
export function element<K extends keyof HTMLElementTagNameMap>(
    tag: K,
    attributes: Record<string, string> = {},
    ...contents: (Node | string)[]
): HTMLElementTagNameMap[K] {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
    made.append(...contents);
    return made;
}

export function counted(count: number, thing: string): string {
    return `${count.toLocaleString("en")} ${thing}${count === 1 ? "" : "s"}`;
}

export function rounded(value: number): string {
    return Number(value.toFixed(value < 10 ? 3 : 1)).toLocaleString("en");
}

function swatch(colour: string): HTMLElement {
    const mark = element("span", { class: "swatch", "aria-hidden": "true" });
    mark.style.background = colour;
    return mark;
}

function fact(name: string, value: string): Node[] {
    return [element("dt", {}, name), element("dd", {}, value)];
}

function button(contents: (Node | string)[], act: () => void): HTMLElement {
    const made = element("button", { type: "button", class: "row" }, ...contents);
    made.addEventListener("click", act);
    return made;
}

function list(items: HTMLElement[], more: number): HTMLElement {
    const made = element("ul", {}, ...items.map((item) => element("li", {}, item)));
    if (more > 0) made.append(element("li", { class: "more" }, `and ${more.toLocaleString("en")} more`));
    return made;
}

const MOST = 60;

/** Selects what is told, or does so no longer. */
function chooser(isChosen: boolean, act: () => void): HTMLElement {
    const made = element("button", { type: "button", class: "choose", "aria-pressed": String(isChosen) }, isChosen ? "Selected" : "Select");
    made.addEventListener("click", act);
    return made;
}

/** All that is selected together, with a way to let go of each. */
export function chosenFacts(model: Model, colours: Colours, chosen: Chosen, actions: Actions): Node[] {
    const nodes = new Set(chosen.nodes);
    for (const cluster of chosen.clusters) for (const node of model.membersOf(cluster).keys()) nodes.add(node);
    const clear = element("button", { type: "button", class: "choose" }, "Clear");
    clear.addEventListener("click", () => actions.clear());
    const row = (name: string, mark: HTMLElement[], show: () => void, leave: () => void) => {
        const without = element("button", { type: "button", class: "leave", "aria-label": `Select ${name} no longer` }, "×");
        without.addEventListener("click", leave);
        return element("div", { class: "pair" }, button([...mark, name], show), without);
    };
    const rows = [
        ...[...chosen.clusters].map((cluster) =>
            row(
                model.clusterName(cluster),
                [swatch(colours.shade(cluster))],
                () => actions.showCluster(cluster),
                () => actions.toggleCluster(cluster),
            ),
        ),
        ...[...chosen.nodes].map((node) =>
            row(model.nodeName(node), [], () => actions.showNode(node), () => actions.toggleNode(node)),
        ),
    ];
    return [
        element("div", { class: "head" }, element("h2", {}, `Selected: ${counted(nodes.size, "node")}`), clear),
        list(rows.slice(0, MOST), rows.length - MOST),
    ];
}

export function clusterFacts(model: Model, colours: Colours, cluster: number, chosen: Chosen, actions: Actions): Node[] {
    const head = element("div", { class: "head" }, element("h2", {}, swatch(colours.shade(cluster)), model.clusterName(cluster)));
    if (cluster !== 0) head.append(chooser(chosen.clusters.has(cluster), () => actions.toggleCluster(cluster)));
    const facts = element("dl");
    facts.append(...fact("Nodes", model.members[cluster]!.toLocaleString("en")));
    if (Math.abs(model.size[cluster]! - model.members[cluster]!) > 1e-4)
        facts.append(...fact("Sum of shares", rounded(model.size[cluster]!)));
    if (cluster === 0) {
        facts.append(...fact(model.facts.directed ? "Linked pairs" : "Links", model.facts.links.toLocaleString("en")));
        facts.append(...fact("Levels shown", String(model.levels)));
    } else {
        const level = model.facts.levels[model.level[cluster]!]!;
        facts.append(...fact("Level", String(level[0])));
    }
    const piece = model.pieces[model.pieceOf[cluster]!];
    if (piece && piece.cluster === cluster) {
        const drawn = piece.ends.length / 2;
        facts.append(
            ...fact("Links inside", piece.links.toLocaleString("en") + (drawn < piece.links ? ` (${drawn.toLocaleString("en")} drawn)` : "")),
        );
    }
    const result: Node[] = [head, facts];
    const owners = model.owners(cluster);
    if (cluster !== 0 && owners.length > 1) {
        result.push(element("h3", {}, "Parts of it lie in"));
        result.push(
            list(
                owners.map(([owner, share]) =>
                    button([swatch(colours.shade(owner)), model.clusterName(owner), element("b", {}, shareText(share))], () =>
                        actions.showCluster(owner),
                    ),
                ),
                0,
            ),
        );
    }
    const parts = model.parts(cluster);
    if (parts.length) {
        result.push(element("h3", {}, counted(parts.length, "part")));
        result.push(
            list(
                parts.slice(0, MOST).map((part) =>
                    button(
                        [
                            swatch(colours.shade(part)),
                            element("span", {}, model.clusterName(part), element("small", {}, ` ${model.top(part).map((n) => model.nodeName(n)).join(", ")}`)),
                            element("b", {}, model.members[part]!.toLocaleString("en")),
                        ],
                        () => actions.showCluster(part),
                    ),
                ),
                parts.length - MOST,
            ),
        );
    }
    const own = model.places(cluster);
    if (own <= 3000 && cluster !== 0) {
        const members = [...model.membersOf(cluster)].sort(
            (a, b) => b[1] - a[1] || model.degree[b[0]]! - model.degree[a[0]]! || a[0] - b[0],
        );
        result.push(element("h3", {}, counted(members.length, "node")));
        result.push(
            list(
                members.slice(0, MOST).map(([node, share]) =>
                    button([model.nodeName(node), element("b", {}, share > 0.9999995 ? "" : shareText(share))], () =>
                        actions.showNode(node),
                    ),
                ),
                members.length - MOST,
            ),
        );
    }
    return result;
}

export function nodeFacts(model: Model, colours: Colours, node: number, chosen: Chosen, actions: Actions): Node[] {
    const facts = element("dl");
    facts.append(...fact("Neighbours", model.degree[node]!.toLocaleString("en")));
    if (model.weight) facts.append(...fact("Weight of its links", rounded(model.weight[node]!)));
    const head = element(
        "div",
        { class: "head" },
        element("h2", {}, model.nodeName(node)),
        chooser(chosen.nodes.has(node), () => actions.toggleNode(node)),
    );
    const result: Node[] = [head, facts];
    const clusters = model.ancestors(node);
    if (clusters.length === 0) result.push(element("p", {}, "In no cluster"));
    let level = -1;
    for (const [cluster, share] of clusters) {
        if (model.level[cluster] !== level) {
            level = model.level[cluster]!;
            result.push(element("h3", {}, `Level ${model.facts.levels[level]![0]}`));
        }
        result.push(
            list(
                [
                    button([swatch(colours.shade(cluster)), model.clusterName(cluster), element("b", {}, shareText(share))], () =>
                        actions.showCluster(cluster),
                    ),
                ],
                0,
            ),
        );
    }
    return result;
}

/** One line of what is under the pointer. */
export function tipText(model: Model, level: number, hit: { node?: number; cluster: number }): string[] {
    if (hit.node === undefined)
        return [
            model.clusterName(hit.cluster),
            counted(model.members[hit.cluster]!, "node"),
            ...(hit.cluster ? [model.top(hit.cluster).map((n) => model.nodeName(n)).join(", ")] : []),
        ];
    const shares = model.holders(hit.node, level);
    return [
        model.nodeName(hit.node),
        counted(model.degree[hit.node]!, "neighbour"),
        ...shares.map(([cluster, share]) => `${shares.length > 1 ? `${shareText(Number(share.toFixed(3)))} in c` : "C"}luster ${model.id[cluster]}`),
    ];
}
