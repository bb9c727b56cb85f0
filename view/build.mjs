// Makes dist/view.html, the template of the page, from the sources: node build.mjs [FILE NOTICE]
import { createHash } from "node:crypto";
import { mkdirSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const read = (name) => readFileSync(join(here, name), "utf8");

const bundle = await build({
    entryPoints: [join(here, "src/main.ts")],
    bundle: true,
    minify: true,
    format: "iife",
    target: "es2022",
    legalComments: "none",
    metafile: true,
    write: false,
    absWorkingDir: here,
});
// Nothing in the script may end the element that it stands in.
const script = bundle.outputFiles[0].text.trim().replace(/<\/(script)/gi, "<\\/$1").replace(/<!--/g, "<\\!--");
const style = (
    await build({ entryPoints: [join(here, "src/page.css")], minify: true, write: false, absWorkingDir: here })
).outputFiles[0].text.trim();

const packages = new Set();
for (const file of Object.keys(bundle.metafile.inputs)) {
    const found = /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(file);
    if (found) packages.add(found[1]);
}
const licences = [...packages]
    .sort()
    .map((name) => {
        const { version } = JSON.parse(read(`node_modules/${name}/package.json`));
        return `${name} ${version}\n\n${read(`node_modules/${name}/LICENSE`).trim()}`;
    })
    .join("\n\n\n");

const hash = (text) => `sha256-${createHash("sha256").update(text).digest("base64")}`;
const escaped = (text) => text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");

/** The sources that the page depends on, by which a build without Node tells that it is out of date. */
const sources = [
    ...readdirSync(join(here, "src")).sort().map((name) => `src/${name}`),
    "build.mjs",
    "package-lock.json",
];
const stamp = createHash("sha256")
    .update(sources.map((name) => createHash("sha256").update(readFileSync(join(here, name))).digest("hex")).join(""))
    .digest("hex");

const parts = {
    "script-hash": hash(script),
    "style-hash": hash(style),
    style,
    script,
    licences: escaped(licences),
};
const page =
    read("src/page.html").replace(/\{\{([a-z-]+)\}\}/g, (mark, name) => parts[name] ?? mark).trimEnd() +
    `\n<!-- sources ${stamp} -->\n`;
const [output = join(here, "dist/view.html"), notice = join(here, "../NOTICE")] = process.argv.slice(2);
mkdirSync(dirname(output), { recursive: true });
writeFileSync(output, page);
writeFileSync(
    notice,
    `The page of vorl view has these packages in it.\n\n\n${licences}\n`,
);
console.log(`${output}: ${page.length} characters`);
