// Pages made by the program, opened in a browser.
import { execFileSync } from "node:child_process";
import { existsSync, mkdirSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath, pathToFileURL } from "node:url";
import { build } from "esbuild";
import { chromium } from "playwright-core";

export const view = join(dirname(fileURLToPath(import.meta.url)), "..");
export const data = join(view, "../data");
export const work = join(view, "../build/view");
mkdirSync(work, { recursive: true });

const program = process.env.VORL ?? join(view, "../build/test/vorl");

export function vorl(...args) {
    return execFileSync(program, args, { encoding: "utf8", maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "ignore"] });
}

/** The page of a network; returns the name of its file. */
export function pageOf(name, ...args) {
    const file = join(work, `${name}.html`);
    vorl("view", ...args, "-o", file, "-q");
    return file;
}

let browser;
export async function openBrowser() {
    const executablePath = ["/usr/bin/chromium", "/usr/bin/chromium-browser"].find((path) => existsSync(path));
    browser = await chromium.launch({ executablePath, args: ["--no-sandbox"] });
}
export const closeBrowser = () => browser?.close();

/** Opens a page, and fails where it complains or asks for anything. */
export async function open(file, options = {}) {
    const context = await browser.newContext({ viewport: { width: 1200, height: 800 }, acceptDownloads: true, ...options });
    const page = await context.newPage();
    page.complaints = [];
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type())) page.complaints.push(message.text());
    });
    page.on("pageerror", (error) => page.complaints.push(error.message));
    page.on("request", (request) => {
        if (!/^(file:|blob:|data:)/.test(request.url())) page.complaints.push(`asks for ${request.url()}`);
    });
    await page.goto(pathToFileURL(file).href);
    await page.waitForSelector("html[data-ready]", { state: "attached", timeout: 60000 });
    return page;
}

/** The processor time in milliseconds of each task of the page's thread while something is done, the
 * shortest first: what frames would take on a machine that has nothing else to do. */
export async function tasksDuring(page, work) {
    await browser.startTracing(page, { categories: ["toplevel", "disabled-by-default-devtools.timeline"] });
    await work();
    const { traceEvents } = JSON.parse((await browser.stopTracing()).toString());
    const thread = ({ pid, tid }) => `${pid}/${tid}`;
    const main = new Set(traceEvents.filter((e) => e.args?.name === "CrRendererMain").map(thread));
    return traceEvents
        .filter((e) => e.name.endsWith("RunTask") && main.has(thread(e)))
        .map((e) => (e.tdur ?? 0) / 1000)
        .filter((time) => time > 1)
        .sort((a, b) => a - b);
}

export const shot = (page, name) => page.screenshot({ path: join(work, `${name}.png`) });

/** What a source of the page exports. */
export async function source(name) {
    const outfile = join(work, `${name}.mjs`);
    await build({ entryPoints: [join(view, `src/${name}.ts`)], bundle: true, format: "esm", outfile, logLevel: "error" });
    return import(pathToFileURL(outfile).href);
}

/** Groups of nodes with links inside and a few between; always the same. */
export function planted(name, groups, size, inside, outside) {
    let state = 1;
    const random = (below) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return Math.floor((state / 2 ** 32) * below);
    };
    const lines = [];
    for (let node = 0; node < groups * size; ++node) {
        const first = node - (node % size);
        for (let i = 0; i < inside; ++i) lines.push(`${node} ${first + random(size)}`);
        for (let i = 0; i < outside; ++i) lines.push(`${node} ${random(groups * size)}`);
    }
    const file = join(work, `${name}.nse`);
    writeFileSync(file, lines.filter((line) => new Set(line.split(" ")).size === 2).join("\n") + "\n");
    return file;
}
