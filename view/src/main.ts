// The page: what its controls do, and when it is drawn.
import { Flight } from "./camera.js";
import { Chosen } from "./chosen.js";
import { Colours, DARK, LIGHT, Theme } from "./colours.js";
import { chosenTable, clusterTable, levelTable, nodeTable } from "./csv.js";
import { Arrays, bytesOfBase64, unpacked } from "./data.js";
import { Model } from "./model.js";
import { CanvasPainter, SvgPainter } from "./painter.js";
import { Actions, byId, chosenFacts, clusterFacts, counted, element, nodeFacts, tipText } from "./panel.js";
import { Picture } from "./picture.js";
import { listenToSearch } from "./search.js";
import { Hit, Mode, Shown } from "./shown.js";
import { Stage } from "./stage.js";

const FLIGHT = 750;

class Page {
    private readonly canvas = byId<HTMLCanvasElement>("picture");
    private readonly stage = new Stage(this.canvas);
    private readonly dark = matchMedia("(prefers-color-scheme: dark)");
    private readonly flight: Flight;
    private picture: Picture;
    private colours: Colours;
    private focus = 0;
    private node = -1;
    private asked = 0;
    private rest = 0;
    private frames: number[] = [];
    private readonly shown: Shown;

    constructor(private readonly model: Model) {
        this.colours = new Colours(model, this.theme());
        this.picture = new Picture(model, this.colours);
        this.shown = { mode: "circles", level: model.facts.level, blend: 0, focus: 0, marked: -1, chosen: new Chosen(), hovered: null, moves: false };
        this.flight = new Flight(this.canvas, () => this.moved());
        this.fillHead();
        this.listen();
        this.resize();
        this.select(0);
        // For scripts that drive the page, such as its tests.
        Object.assign(window, {
            vorl: { model, page: this, ...this.actions, frames: this.frames, places: (node: number) => this.picture.spots.places(this.flight.camera, this.shown, node) },
        });
        document.documentElement.dataset.ready = "yes";
    }

    private theme() {
        return this.dark.matches ? DARK : LIGHT;
    }
    private readonly actions: Actions = {
        showCluster: (cluster) => this.go(cluster),
        showNode: (node) => this.showNode(node),
        toggleCluster: (cluster) => this.toggle("cluster", cluster),
        toggleNode: (node) => this.toggle("node", node),
        clear: () => {
            this.shown.chosen.clear();
            this.tellChosen();
        },
    };

    // What is shown.

    private fillHead() {
        const { facts } = this.model;
        byId("title").textContent = this.model.title;
        byId("counts").textContent = `${counted(facts.nodes, "node")}, ${counted(facts.links, facts.directed ? "linked pair" : "link")}`;
        const slider = byId<HTMLInputElement>("level");
        slider.max = String(Math.max(0, this.model.levels - 1));
        slider.disabled = this.model.levels < 2;
        this.setLevel(facts.level);
    }

    setLevel(level: number) {
        if (level < 0 || level >= this.model.levels) return;
        this.shown.level = level;
        const slider = byId<HTMLInputElement>("level");
        const [number, clusters] = this.model.facts.levels[level]!;
        slider.value = String(level);
        const text = `level ${number}: ${counted(clusters, "cluster")}`;
        slider.setAttribute("aria-valuetext", text);
        byId("level-text").textContent = text;
        this.change();
    }

    setMode(mode: Mode) {
        const former = this.shown.mode;
        if (former === mode) return;
        this.shown.mode = mode;
        if (mode === "rectangles" || former === "rectangles") this.stage.forget();
        for (const button of document.querySelectorAll<HTMLButtonElement>("[data-mode]"))
            button.setAttribute("aria-pressed", String(button.dataset.mode === mode));
        if (mode === "rectangles" || former === "rectangles") {
            this.shown.blend = mode === "network" ? 1 : 0;
            void this.fly(this.focus, 0);
        } else {
            this.blendTo(mode === "network" ? 1 : 0);
        }
        this.change();
    }

    private blendTo(to: number) {
        const from = this.shown.blend;
        const begin = performance.now();
        const isStill = this.stage.heavy || matchMedia("(prefers-reduced-motion: reduce)").matches;
        const duration = isStill ? 0 : 700;
        const step = () => {
            const part = duration === 0 ? 1 : Math.min(1, (performance.now() - begin) / duration);
            const eased = part < 0.5 ? 4 * part ** 3 : 1 - (2 - 2 * part) ** 3 / 2;
            this.shown.blend = from + (to - from) * eased;
            this.change();
            if (part < 1) requestAnimationFrame(step);
        };
        step();
    }

    /** Flies to a cluster, and tells about it. */
    go(cluster: number, duration = FLIGHT): Promise<void> {
        this.shown.marked = this.node = -1;
        this.select(cluster);
        return this.fly(cluster, duration);
    }

    private fly(cluster: number, duration: number): Promise<void> {
        return this.flight.flyTo(this.picture.box(cluster, this.shown.mode), cluster === 0 ? 0.94 : 0.84, duration);
    }

    showNode(node: number, duration = FLIGHT): Promise<void> {
        this.node = node;
        this.shown.marked = node;
        const cluster = this.model.placeCluster[this.model.home(node)]!;
        this.select(cluster);
        // All of its places come into sight, with what is around them.
        const around = this.common(node);
        return this.fly(around, duration);
    }

    /** The smallest cluster on the map that has all places of a node. */
    private common(node: number): number {
        let [first, ...rest] = [...this.model.placesOf(node)].map((place) => this.model.path(this.model.placeCluster[place]!));
        let path = first!;
        for (const other of rest) path = path.filter((cluster, i) => other[i] === cluster);
        const index = this.model.pieceOf[path[path.length - 1]!]!;
        return this.shown.mode === "network" && index >= 0 ? this.model.pieces[index]!.cluster : path[path.length - 1]!;
    }

    private select(cluster: number) {
        this.focus = this.shown.focus = cluster;
        const crumbs = this.model.path(cluster).map((at) => {
            const button = element("button", { type: "button" }, at === 0 ? "All" : String(this.model.id[at]));
            button.setAttribute("aria-label", this.model.clusterName(at));
            if (at === cluster) button.setAttribute("aria-current", "true");
            button.addEventListener("click", () => void this.go(at));
            return element("li", {}, button);
        });
        byId("crumbs").replaceChildren(...crumbs);
        this.tellFacts();
        byId("facts").scrollTop = 0;
        byId("status").textContent =
            this.node >= 0
                ? this.model.nodeName(this.node)
                : `${this.model.clusterName(cluster)}, ${counted(this.model.members[cluster]!, "node")}, ${counted(this.model.parts(cluster).length, "part")}`;
        this.change();
    }

    private tellFacts() {
        const { model, colours, actions } = this;
        const { chosen } = this.shown;
        byId("facts").replaceChildren(
            ...(this.node >= 0
                ? nodeFacts(model, colours, this.node, chosen, actions)
                : clusterFacts(model, colours, this.focus, chosen, actions)),
        );
    }

    // What is selected together.

    private toggle(kind: "cluster" | "node", number: number) {
        const { chosen } = this.shown;
        if (kind === "node") chosen.toggleNode(number);
        else if (number !== 0) chosen.toggleCluster(number);
        this.tellChosen();
    }

    private tellChosen() {
        const { chosen } = this.shown;
        const focused = document.activeElement?.closest("#chosen, #facts")?.id;
        byId("chosen").replaceChildren(...chosenFacts(this.model, this.colours, chosen, this.actions));
        byId("chosen").hidden = chosen.size === 0;
        byId("status").textContent = `${chosen.size} selected`;
        this.tellFacts();
        // The button that was pressed is another one now.
        if (focused) (document.querySelector<HTMLElement>(`#${focused} .choose`) ?? this.canvas).focus();
        this.change();
    }

    // Drawing.

    private moved() {
        byId("tip").hidden = true;
        this.shown.moves = true;
        clearTimeout(this.rest);
        this.rest = window.setTimeout(() => {
            this.shown.moves = false;
            this.change();
        }, 150);
        this.ask();
    }
    private ask() {
        if (this.asked === 0) this.asked = requestAnimationFrame(() => this.draw());
    }
    /** What is shown has changed, and not only from where. */
    private change() {
        this.stage.change();
        this.ask();
    }
    private draw() {
        this.asked = 0;
        const begin = performance.now();
        if (this.stage.frame(this.picture, this.flight.camera, this.shown)) this.ask();
        this.frames.push(performance.now() - begin);
        if (this.frames.length > 1000) this.frames.shift();
    }
    private resize() {
        const { clientWidth, clientHeight } = this.canvas;
        this.stage.resize();
        this.flight.resize(Math.max(1, clientWidth), Math.max(1, clientHeight));
        const { camera } = this.flight;
        this.picture.setRatio(camera.width / Math.min(camera.width, camera.height));
        void this.fly(this.focus, 0);
        this.ask();
    }
    private repaint(theme: Theme) {
        this.colours = new Colours(this.model, theme);
        this.picture = new Picture(this.model, this.colours);
        const { camera } = this.flight;
        this.picture.setRatio(camera.width / Math.min(camera.width, camera.height));
        this.stage.forget();
        this.tellChosen();
    }

    /** Paper is light, and printers wait for no animation. */
    private print() {
        this.repaint(LIGHT);
        this.paint(byId<HTMLCanvasElement>("paper"), 2400 / this.flight.camera.width);
    }

    /** The picture in so many times its size. */
    private paint(canvas: HTMLCanvasElement, times: number) {
        const { camera } = this.flight;
        canvas.width = Math.round(camera.width * times);
        canvas.height = Math.round(camera.height * times);
        const context = canvas.getContext("2d")!;
        context.scale(times, times);
        context.fillStyle = this.colours.theme.ground;
        context.fillRect(0, 0, camera.width, camera.height);
        this.picture.draw(new CanvasPainter(context), camera, { ...this.shown, moves: false });
    }

    // Files.

    private keep(name: string, contents: Blob) {
        const link = element("a", { download: name, href: URL.createObjectURL(contents) });
        link.click();
        setTimeout(() => URL.revokeObjectURL(link.href), 10000);
    }
    svgText(): string {
        const { camera } = this.flight;
        const painter = new SvgPainter(camera.width, camera.height, this.colours.theme.ground);
        this.picture.draw(painter, camera, { ...this.shown, moves: false });
        return painter.document(this.model.title);
    }
    csvText(): string {
        if (this.shown.chosen.size > 0) return chosenTable(this.model, this.shown.chosen);
        if (this.node >= 0) return nodeTable(this.model, this.node);
        return this.focus === 0 ? levelTable(this.model, this.shown.level) : clusterTable(this.model, this.focus);
    }
    private save(kind: string) {
        const base = this.model.title.replace(/[^\p{L}\p{N}._-]+/gu, "_").slice(0, 60) || "network";
        if (kind === "csv") this.keep(`${base}.csv`, new Blob([this.csvText()], { type: "text/csv" }));
        if (kind === "svg") this.keep(`${base}.svg`, new Blob([this.svgText()], { type: "image/svg+xml" }));
        if (kind === "png") this.savePng(base);
    }
    private savePng(base: string) {
        const canvas = element("canvas");
        this.paint(canvas, 3);
        canvas.toBlob((blob) => blob && this.keep(`${base}.png`, blob), "image/png");
    }

    // Controls.

    private listen() {
        new ResizeObserver(() => this.resize()).observe(this.canvas);
        this.dark.addEventListener("change", () => this.repaint(this.theme()));
        window.addEventListener("beforeprint", () => this.print());
        window.addEventListener("afterprint", () => this.repaint(this.theme()));
        for (const button of document.querySelectorAll<HTMLButtonElement>("[data-mode]"))
            button.addEventListener("click", () => this.setMode(button.dataset.mode as Mode));
        for (const button of document.querySelectorAll<HTMLButtonElement>("[data-save]"))
            button.addEventListener("click", () => this.save(button.dataset.save!));
        byId<HTMLInputElement>("level").addEventListener("input", (event) =>
            this.setLevel(Number((event.target as HTMLInputElement).value)),
        );
        byId("zoom-in").addEventListener("click", () => this.flight.zoomBy(1.6));
        byId("zoom-out").addEventListener("click", () => this.flight.zoomBy(1 / 1.6));
        byId("whole").addEventListener("click", () => void this.go(0));
        byId("help").addEventListener("click", () => byId<HTMLDialogElement>("about").showModal());
        this.canvas.addEventListener("click", (event) => this.clicked(event));
        this.canvas.addEventListener("pointermove", (event) => this.pointed(event));
        this.canvas.addEventListener("pointerleave", () => this.hover(null, 0, 0));
        this.canvas.addEventListener("keydown", (event) => this.pressed(event));
        document.addEventListener("keydown", (event) => {
            const inField = event.target instanceof HTMLInputElement && event.target.type !== "range";
            if (event.key === "/" && !inField) {
                event.preventDefault();
                byId("search").focus();
            }
        });
        listenToSearch(
            this.model,
            () => this.shown.level,
            (node) => void this.showNode(node),
            () => this.canvas.focus(),
        );
    }

    private hitAt(event: MouseEvent): Hit {
        const box = this.canvas.getBoundingClientRect();
        return this.picture.spots.at(this.flight.camera, this.shown, event.clientX - box.left, event.clientY - box.top);
    }
    private clicked(event: MouseEvent) {
        const hit = this.hitAt(event);
        if (event.shiftKey) {
            this.toggle("cluster", this.standingAt(hit));
            return;
        }
        if (hit.kind === "node") {
            this.node = this.shown.marked = hit.node;
            this.select(hit.cluster);
            return;
        }
        // A step further towards what was clicked, or back out.
        const path = this.model.path(hit.cluster);
        const at = path.indexOf(this.focus);
        const next = at >= 0 ? path[Math.min(at + 1, path.length - 1)]! : this.sibling(path);
        void this.go(next === this.focus ? this.model.parent[this.focus]! : next);
    }
    /** The cluster of the level that something is in. */
    private standingAt(hit: Hit): number {
        if (hit.kind === "node" && this.shown.mode === "network")
            return this.model.holders(hit.node, this.shown.level)[0]?.[0] ?? hit.cluster;
        const at = this.model.standing(this.shown.level)[hit.cluster]!;
        return at < 0 ? hit.cluster : at;
    }
    /** Where the way to what was clicked leaves that to the focus. */
    private sibling(path: number[]): number {
        const own = this.model.path(this.focus);
        let i = 0;
        while (i < path.length && path[i] === own[i]) ++i;
        return path[Math.min(i, path.length - 1)]!;
    }
    private pointed(event: PointerEvent) {
        if (event.buttons !== 0 || event.pointerType === "touch") return;
        this.hover(this.hitAt(event), event.clientX, event.clientY);
    }
    private hover(hit: Hit | null, x: number, y: number) {
        const former = this.shown.hovered;
        this.shown.hovered = hit;
        const tip = byId("tip");
        tip.hidden = hit === null || (hit.kind === "cluster" && hit.cluster === 0);
        if (hit && !tip.hidden) {
            const [head, ...lines] = tipText(this.model, this.shown.level, hit.kind === "node" ? hit : { cluster: hit.cluster });
            tip.replaceChildren(element("b", {}, head!), ...lines.map((line) => element("div", {}, line)));
            const { clientWidth, clientHeight } = document.documentElement;
            tip.style.left = `${Math.min(x + 14, clientWidth - tip.offsetWidth - 8)}px`;
            tip.style.top = `${Math.min(y + 14, clientHeight - tip.offsetHeight - 8)}px`;
        }
        if ((former?.kind === "node" ? former.node : -1) !== (hit?.kind === "node" ? hit.node : -1)) this.ask();
    }
    private pressed(event: KeyboardEvent) {
        if (event.ctrlKey || event.metaKey || event.altKey) return;
        const { model, focus } = this;
        const siblings = focus === 0 ? [0] : model.parts(model.parent[focus]!);
        const at = siblings.indexOf(focus);
        const turned = (by: number) => siblings[(at + by + siblings.length) % siblings.length]!;
        const keys: Record<string, () => void> = {
            ArrowRight: () => void this.go(turned(1)),
            ArrowLeft: () => void this.go(turned(-1)),
            ArrowDown: () => void this.go(model.parts(focus)[0] ?? focus),
            Enter: () => void this.go(model.parts(focus)[0] ?? focus),
            ArrowUp: () => void this.go(model.parent[focus]!),
            Escape: () => void this.go(model.parent[focus]!),
            Backspace: () => void this.go(model.parent[focus]!),
            " ": () => (this.node >= 0 ? this.toggle("node", this.node) : this.toggle("cluster", focus)),
            Home: () => void this.go(0),
            "0": () => void this.go(0),
            "+": () => this.flight.zoomBy(1.6),
            "=": () => this.flight.zoomBy(1.6),
            "-": () => this.flight.zoomBy(1 / 1.6),
            "[": () => this.setLevel(this.shown.level - 1),
            "]": () => this.setLevel(this.shown.level + 1),
            c: () => this.setMode("circles"),
            n: () => this.setMode("network"),
            t: () => this.setMode("rectangles"),
            "?": () => byId<HTMLDialogElement>("about").showModal(),
        };
        const act = keys[event.key];
        if (!act) return;
        event.preventDefault();
        act();
    }
}

async function start() {
    const data = byId("data");
    const bytes = await unpacked(bytesOfBase64(data.textContent!.trim()), data.dataset.packing!);
    data.remove();
    new Page(new Model(new Arrays(bytes)));
}

start().catch((error: unknown) => {
    byId("status").textContent = `The page can't be shown: ${String(error)}`;
    byId("facts").replaceChildren(element("p", {}, `The page can't be shown here: ${String(error)}`));
    throw error;
});
