// Tables that are kept as files.
import { Model, Part } from "./model.js";

function cell(text: string): string {
    return /[",\r\n]|^\s|\s$/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

export function shareText(share: number): string {
    return String(Number(share.toPrecision(7)));
}

function table(model: Model, rows: Iterable<[node: number, cluster: number, share: number]>): string {
    let text = "node,cluster,share\r\n";
    for (const [node, cluster, share] of rows)
        text += `${cell(model.nodeName(node))},${model.id[cluster]},${shareText(share)}\r\n`;
    return text;
}

/** The nodes of a cluster with their shares in it, by falling shares. */
export function clusterTable(model: Model, cluster: number): string {
    const members: Part[] = [...model.membersOf(cluster)].sort((a, b) => b[1] - a[1] || a[0] - b[0]);
    return table(model, members.map(([node, share]) => [node, cluster, share]));
}

/** The clusters of a node on all levels. */
export function nodeTable(model: Model, node: number): string {
    return table(model, model.ancestors(node).map(([cluster, share]) => [node, cluster, share]));
}

/** All nodes in the clusters of a level. */
export function levelTable(model: Model, level: number): string {
    function* rows(): Iterable<[number, number, number]> {
        for (let node = 0; node < model.nodes; ++node)
            for (const [cluster, share] of model.holders(node, level)) yield [node, cluster, share];
    }
    return table(model, rows());
}
