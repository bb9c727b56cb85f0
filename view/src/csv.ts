// Tables that are kept as files.
import { Chosen } from "./chosen.js";
import { Model, Part } from "./model.js";

function cell(text: string): string {
    return /[",\r\n]|^\s|\s$/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

export function shareText(share: number): string {
    return String(Number(share.toPrecision(7)));
}

type Row = [node: number, cluster: number, share: number];

function table(model: Model, rows: Iterable<Row>): string {
    let text = "node,cluster,share\r\n";
    for (const [node, cluster, share] of rows)
        text += `${cell(model.nodeName(node))},${model.id[cluster]},${shareText(share)}\r\n`;
    return text;
}

function clusterRows(model: Model, cluster: number): Row[] {
    const members: Part[] = [...model.membersOf(cluster)].sort((a, b) => b[1] - a[1] || a[0] - b[0]);
    return members.map(([node, share]) => [node, cluster, share]);
}

function nodeRows(model: Model, node: number): Row[] {
    return model.ancestors(node).map(([cluster, share]) => [node, cluster, share]);
}

/** The nodes of a cluster with their shares in it, by falling shares. */
export function clusterTable(model: Model, cluster: number): string {
    return table(model, clusterRows(model, cluster));
}

/** The clusters of a node on all levels. */
export function nodeTable(model: Model, node: number): string {
    return table(model, nodeRows(model, node));
}

/** The nodes of all clusters that are selected, and the clusters of the nodes; no row twice. */
export function chosenTable(model: Model, chosen: Chosen): string {
    const rows = [...chosen.clusters].flatMap((cluster) => clusterRows(model, cluster));
    for (const node of chosen.nodes)
        rows.push(...nodeRows(model, node).filter(([, cluster]) => !chosen.clusters.has(cluster)));
    return table(model, rows);
}

/** All nodes in the clusters of a level. */
export function levelTable(model: Model, level: number): string {
    function* rows(): Iterable<[number, number, number]> {
        for (let node = 0; node < model.nodes; ++node)
            for (const [cluster, share] of model.holders(node, level)) yield [node, cluster, share];
    }
    return table(model, rows());
}
