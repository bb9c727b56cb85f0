// Makes the pictures of the docs: VORL=build/release/vorl node pictures.mjs
import { execFileSync } from "node:child_process";
import { join } from "node:path";
import { closeBrowser, data, open, openBrowser, pageOf, view } from "./tests/support.mjs";

const pictures = [
    ["football", "circles", 1000, 640],
    ["lesmis", "network", 1000, 640],
    ["power", "network", 1000, 640],
];
await openBrowser();
for (const [name, mode, width, height] of pictures) {
    const page = await open(pageOf(name, join(data, `${name}.nse`)), { viewport: { width, height } });
    await page.click(`[data-mode=${mode}]`);
    await page.waitForTimeout(2000);
    const file = join(view, `../docs/pictures/view-${name}.png`);
    await page.screenshot({ path: file });
    execFileSync("pngquant", ["--force", "--strip", "--output", file, "128", file]);
}
await closeBrowser();
