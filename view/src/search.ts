// The field that searches nodes by their names.
import { Model } from "./model.js";
import { byId, element } from "./panel.js";

/**
 * @param level  whose clusters are told beside the names
 * @param show  what to do with a node that is taken
 * @param leave  gives the focus back
 */
export function listenToSearch(model: Model, level: () => number, show: (node: number) => void, leave: () => void) {
    const field = byId<HTMLInputElement>("search");
    const results = byId("results");
    let chosen = -1;
    const close = () => {
        results.hidden = true;
        field.setAttribute("aria-expanded", "false");
        field.removeAttribute("aria-activedescendant");
        chosen = -1;
    };
    const take = (node: number) => {
        close();
        field.value = model.nodeName(node);
        show(node);
    };
    const choose = (index: number) => {
        const options = [...results.querySelectorAll<HTMLElement>("[role=option]:not([aria-disabled])")];
        chosen = options.length ? (index + options.length) % options.length : -1;
        options.forEach((option, i) => option.setAttribute("aria-selected", String(i === chosen)));
        if (chosen >= 0) {
            field.setAttribute("aria-activedescendant", options[chosen]!.id);
            options[chosen]!.scrollIntoView({ block: "nearest" });
        }
    };
    field.addEventListener("input", () => {
        const nodes = model.search(field.value, 12);
        const options = nodes.map((node, i) => {
            const [place] = model.holders(node, level());
            const option = element(
                "div",
                { role: "option", id: `result-${i}`, "data-node": String(node) },
                element("span", {}, model.nodeName(node)),
                element("small", {}, place ? model.clusterName(place[0]) : ""),
            );
            option.addEventListener("pointerdown", (event) => {
                event.preventDefault();
                take(node);
            });
            return option;
        });
        const none = field.value.trim() && nodes.length === 0;
        results.replaceChildren(...(none ? [element("div", { class: "none", role: "option", "aria-disabled": "true" }, "No such node")] : options));
        results.hidden = !field.value.trim();
        field.setAttribute("aria-expanded", String(!results.hidden));
        choose(0);
    });
    field.addEventListener("keydown", (event) => {
        if (event.key === "ArrowDown" || event.key === "ArrowUp") {
            event.preventDefault();
            choose(chosen + (event.key === "ArrowDown" ? 1 : -1));
        } else if (event.key === "Enter") {
            const option = results.querySelector<HTMLElement>("[aria-selected=true]");
            if (option) take(Number(option.dataset.node));
        } else if (event.key === "Escape") {
            close();
            leave();
        }
    });
    field.addEventListener("blur", close);
}
