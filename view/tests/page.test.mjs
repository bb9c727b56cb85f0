// Pages as people use them, in a browser.
import assert from "node:assert/strict";
import { readFileSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import test, { after, before } from "node:test";
import { closeBrowser, data, open, openBrowser, pageOf, planted, shot, tasksDuring, vorl, work } from "./support.mjs";

before(openBrowser);
after(closeBrowser);

/** Waits until no flight is under way. */
const settled = (page) => page.waitForTimeout(1100);

const sizesAt = (page, level) =>
    page.evaluate((at) => vorl.model.clustersAt(at).map((c) => vorl.model.size[c]), level);

test("football: circles, network and treemap; its numbers are those of the program", async () => {
    const network = join(data, "football.nse");
    const page = await open(pageOf("football", network));
    const told = JSON.parse(vorl("communities", network, "--json"));
    assert.match(await page.textContent("#counts"), /^115 nodes, 613 links$/);
    const level = await page.evaluate(() => vorl.model.facts.level);
    assert.deepEqual(await sizesAt(page, level), told.sizes);
    assert.match(await page.textContent("#level-text"), new RegExp(`: ${told.communities} clusters`));
    await shot(page, "football-circles");

    await page.click("[data-mode=network]");
    await settled(page);
    await shot(page, "football-network");
    await page.keyboard.press("Tab");
    await page.focus("#picture");
    await page.keyboard.press("t");
    assert.equal(await page.getAttribute("[data-mode=rectangles]", "aria-pressed"), "true");
    await settled(page);
    await shot(page, "football-treemap");
    assert.deepEqual(page.complaints, []);
});

test("karate: the hierarchy of cluster, level by level, by keys and clicks", async () => {
    const network = join(data, "karate.nse");
    const base = join(work, "karate.cnl");
    const told = JSON.parse(vorl("cluster", network, "--levels", "all", "-o", base, "--json"));
    const page = await open(pageOf("karate", network, join(work, "karate.rhb"), "--all-levels"));
    const levels = await page.evaluate(() => vorl.model.facts.levels);
    assert.equal(levels.length, told.levels.length);
    const shown = JSON.parse(vorl("show", join(work, "karate.rhb"), "--json"));
    assert.deepEqual(levels.map(([, standing]) => standing), shown.levels.map((l) => l.standing_clusters));
    assert.equal((await sizesAt(page, levels.length - 1)).length, told.root);
    // Each cluster has the members that the program tells, with their shares.
    for (const id of shown.root) {
        const { members } = JSON.parse(vorl("show", join(work, "karate.rhb"), "--cluster", String(id), "--json"));
        const own = await page.evaluate((wanted) => {
            const { model } = vorl;
            const cluster = [...model.id].findIndex((other, i) => i > 0 && other === wanted);
            return [...model.membersOf(cluster)].map(([node, share]) => [model.nodeId[node], share]);
        }, id);
        const byId = new Map(own);
        assert.equal(own.length, members.length);
        for (const { node, share } of members) assert.ok(Math.abs(byId.get(node) - share) < 1e-6);
    }

    await page.focus("#level");
    await page.keyboard.press("Home");
    assert.match(await page.textContent("#level-text"), new RegExp(`^level 0: ${levels[0][1]} clusters$`));
    await page.focus("#picture");
    await page.keyboard.press("Enter");
    await settled(page);
    const crumbs = () => page.locator("#crumbs li").count();
    assert.equal(await crumbs(), 2);
    await page.keyboard.press("ArrowRight");
    await settled(page);
    assert.equal(await crumbs(), 2);
    await page.keyboard.press("Escape");
    await settled(page);
    assert.equal(await crumbs(), 1);
    // A click on the middle of the largest part leads into it.
    const middle = await page.evaluate(() => {
        const { model, page } = vorl;
        const { x, y, scale } = page.flight.camera;
        return [x + scale * model.x[1], y + scale * model.y[1]];
    });
    const box = await page.locator("#picture").boundingBox();
    const before = await page.evaluate(() => vorl.page.flight.camera.scale);
    await page.evaluate(() => (vorl.page.shown.level = 0));
    await page.mouse.click(box.x + middle[0], box.y + middle[1]);
    await settled(page);
    assert.ok((await crumbs()) > 1);
    await page.mouse.move(box.x + 100, box.y + 100);
    await page.mouse.wheel(0, -400);
    await page.waitForTimeout(300);
    assert.ok((await page.evaluate(() => vorl.page.flight.camera.scale)) > before);
    assert.deepEqual(page.complaints, []);
});

test("a shared node: all of its places are marked, and its shares can be kept", async () => {
    const network = join(data, "lesmis.nse");
    const page = await open(pageOf("lesmis", network));
    const shared = await page.evaluate(() => {
        const { model } = vorl;
        for (let node = 0; node < model.nodes; ++node)
            if (model.holders(node, model.facts.level).length > 1) return [model.nodeName(node), model.placesOf(node).length];
        return null;
    });
    assert.ok(shared, "the network has shared nodes");
    await page.fill("#search", shared[0]);
    await page.press("#search", "Enter");
    await settled(page);
    const marked = await page.evaluate(() => vorl.places(vorl.page.node).length);
    assert.equal(marked, shared[1]);
    await shot(page, "lesmis-search");
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("[data-save=csv]")]);
    const rows = readFileSync(await download.path(), "utf8").trim().split("\r\n").slice(1).map((row) => row.split(","));
    assert.ok(rows.every(([node]) => node === shared[0]));
    await page.click("[data-mode=network]");
    await settled(page);
    await shot(page, "lesmis-network");
    // The shares of a level add up, and are those of the program.
    const table = join(work, "lesmis.tsv");
    vorl("communities", network, "--table", table, "-q");
    const told = readFileSync(table, "utf8").trim().split("\n").slice(1).map((row) => row.split("\t"))
        .filter(([node]) => node === shared[0]).map((row) => Number(row[2])).sort();
    const own = await page.evaluate(() => vorl.model.holders(vorl.page.node, vorl.model.facts.level).map((part) => part[1]).sort());
    assert.equal(own.length, told.length);
    own.forEach((share, i) => assert.ok(Math.abs(share - told[i]) < 2e-3));
    for (const kind of ["svg", "png"]) {
        const [kept] = await Promise.all([page.waitForEvent("download"), page.click(`[data-save=${kind}]`)]);
        const bytes = readFileSync(await kept.path());
        if (kind === "svg") assert.match(bytes.toString(), /^<svg [^]*<\/svg>\s*$/);
        else assert.deepEqual([...bytes.subarray(0, 4)], [0x89, 0x50, 0x4e, 0x47]);
    }
    assert.deepEqual(page.complaints, []);
});

test("clusters and nodes are selected together, and kept as one table", async () => {
    const network = join(data, "football.nse");
    const page = await open(pageOf("chosen", network));
    const kept = async () => {
        const [download] = await Promise.all([page.waitForEvent("download"), page.click("[data-save=csv]")]);
        const [head, ...rows] = readFileSync(await download.path(), "utf8").trim().split("\r\n");
        assert.equal(head, "node,cluster,share");
        return rows.map((row) => row.split(","));
    };
    // What a click with Shift on a dot or beside it means is the cluster of the level, in each kind of picture.
    const clickOn = (cluster) =>
        page.evaluate((at) => {
            const { model, page } = vorl;
            const node = model.placeNode[model.place[at]];
            const [x, y] = vorl.places(node)[0];
            const box = page.canvas.getBoundingClientRect();
            return [box.x + x, box.y + y];
        }, cluster).then(async ([x, y]) => {
            await page.keyboard.down("Shift");
            await page.mouse.click(x, y);
            await page.keyboard.up("Shift");
        });
    const standing = await page.evaluate(() => vorl.model.clustersAt(vorl.model.facts.level));
    const [first, second, third] = standing;
    const chosen = () => page.evaluate(() => [...vorl.page.shown.chosen.clusters]);
    await clickOn(first);
    await page.click("[data-mode=network]");
    await settled(page);
    await clickOn(second);
    await page.click("[data-mode=rectangles]");
    await settled(page);
    await clickOn(third);
    assert.deepEqual(await chosen(), [first, second, third]);
    await clickOn(second);
    assert.deepEqual(await chosen(), [first, third]);
    await shot(page, "football-selected");

    const ids = await page.evaluate((wanted) => wanted.map((c) => String(vorl.model.id[c])), [first, third]);
    const table = join(work, "football.tsv");
    vorl("communities", network, "--table", table, "-q");
    const told = readFileSync(table, "utf8").trim().split("\n").slice(1).map((row) => row.split("\t"));
    const sizes = await page.evaluate((wanted) => wanted.map((c) => vorl.model.members[c]), [first, third]);
    let rows = await kept();
    ids.forEach((id, i) => assert.equal(rows.filter((row) => row[1] === id).length, sizes[i]));
    assert.equal(rows.length, sizes[0] + sizes[1]);
    // Nodes of one cluster there are in one community of the program.
    for (const id of ids) {
        const nodes = new Set(rows.filter((row) => row[1] === id).map((row) => row[0]));
        assert.equal(new Set(told.filter(([node]) => nodes.has(node)).map((row) => row[1])).size, 1);
    }

    // By keys: a node, too, whose clusters come below without a row twice.
    const other = await page.evaluate((at) => vorl.model.nodeName(vorl.model.placeNode[vorl.model.place[at]]), second);
    await page.fill("#search", other);
    await page.press("#search", "Enter");
    await page.focus("#picture");
    await page.keyboard.press("Space");
    rows = await kept();
    assert.equal(new Set(rows.map(String)).size, rows.length);
    assert.ok(rows.length > sizes[0] + sizes[1]);
    await page.click(`#chosen button[aria-label="Select Cluster ${ids[1]} no longer"]`);
    assert.deepEqual(await chosen(), [first]);
    await page.click("#chosen >> text=Clear");
    assert.equal(await page.isVisible("#chosen"), false);
    assert.deepEqual(page.complaints, []);
});

test("names are text, never markup", async () => {
    const names = ["<script>alert(1)</script>", "</script><img src=x onerror=alert(1)>", "{{data}}", "a&b", '"quoted"', "émile ☃", "=1+1", "<!--"];
    const file = join(work, "names.csv");
    const cell = (name) => `"${name.replace(/"/g, '""')}"`;
    const lines = [];
    for (let i = 0; i < names.length; ++i)
        for (let j = i + 1; j < names.length; ++j) lines.push(`${cell(names[i])},${cell(names[j])}`);
    writeFileSync(file, `from,to\n${lines.join("\n")}\n`);
    const page = await open(pageOf("names", file, "--title", "</title><script>document.title='bad'</script>&amp;"));
    assert.equal(await page.title(), "</title><script>document.title='bad'</script>&amp;");
    assert.equal(await page.textContent("#title"), await page.title());
    for (const name of names) {
        await page.fill("#search", name);
        assert.equal(await page.textContent("#results [role=option] span"), name);
        await page.press("#search", "Enter");
        await page.waitForTimeout(50);
        assert.equal(await page.textContent("#facts h2"), name);
    }
    assert.equal(await page.locator("script").count(), 1);
    assert.equal(await page.locator("img").count(), 0);
    await settled(page);
    await shot(page, "names");
    assert.deepEqual(page.complaints, []);
});

test("a narrow and dark screen, and paper", async () => {
    const file = pageOf("jazz", join(data, "jazz.nse"));
    const page = await open(file, { viewport: { width: 360, height: 640 }, colorScheme: "dark" });
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 360);
    const ground = await page.evaluate(() => [...vorl.page.canvas.getContext("2d").getImageData(0, 0, 1, 1).data].slice(0, 3));
    assert.ok(Math.max(...ground) < 64, `the ground is ${ground}`);
    const wide = await page.evaluate(() =>
        [...document.querySelectorAll("body *")].filter((e) => e.getBoundingClientRect().right > 360.5).map((e) => e.outerHTML),
    );
    assert.deepEqual(wide, []);
    // What screen readers tell.
    const told = await page.locator("body").ariaSnapshot();
    for (const name of [
        'combobox "Search a node by its name"',
        'group "Kind of picture"',
        'button "Circles" [pressed]',
        'group "Keep as a file"',
        'button "CSV"',
        'application "Map of the clusters. Arrow keys go from cluster to cluster',
        'slider "Level of the hierarchy"',
        'button "Zoom in"',
        'navigation "Where one is"',
        'region "What is shown"',
    ])
        assert.ok(told.includes(name), `${name} isn't told in\n${told}`);
    assert.doesNotMatch(told, /^\s*- (button|slider|combobox|application|img)\s*(\[|:|$)/m);
    await shot(page, "jazz-narrow-dark");

    // Paper is light, and has the picture on it.
    await page.pdf({ path: join(work, "jazz.pdf"), format: "A4" });
    const colours = await page.evaluate(() => {
        const paper = document.querySelector("#paper");
        const { data } = paper.getContext("2d").getImageData(0, 0, paper.width, paper.height);
        const seen = new Set();
        for (let i = 0; i < data.length; i += 4) seen.add((data[i] << 16) | (data[i + 1] << 8) | data[i + 2]);
        return [data[0], data[1], data[2], seen.size];
    });
    assert.deepEqual(colours.slice(0, 3), [255, 255, 255]);
    assert.ok(colours[3] > 100, `${colours[3]} colours`);
    await page.emulateMedia({ media: "print", colorScheme: "light" });
    for (const name of [".modes", ".save", ".zoom", "#search", "#picture"]) assert.equal(await page.isVisible(name), false, name);
    for (const name of ["#paper", "#facts", "#title"]) assert.ok(await page.isVisible(name), name);
    assert.deepEqual(page.complaints, []);
});

test("a network of 100000 links opens soon, and zooming stays smooth", async () => {
    const network = planted("planted", 500, 40, 4, 1);
    const begin = Date.now();
    const file = pageOf("planted", network);
    const seconds = (Date.now() - begin) / 1000;
    const page = await open(file);
    const told = JSON.parse(vorl("communities", network, "--json"));
    const level = await page.evaluate(() => vorl.model.facts.level);
    assert.equal((await sizesAt(page, level)).length, told.communities);
    await shot(page, "planted-circles");
    console.log(`page ${statSync(file).size} bytes, made in ${seconds} s`);
    const scale = () => page.evaluate(() => vorl.page.flight.camera.scale);
    for (const mode of ["circles", "network", "rectangles"]) {
        await page.click(`[data-mode=${mode}]`);
        await settled(page);
        const box = await page.locator("#picture").boundingBox();
        await page.mouse.move(box.x + box.width / 3, box.y + box.height / 2);
        const before = await scale();
        const times = await tasksDuring(page, async () => {
            for (let i = 0; i < 30; ++i) {
                await page.mouse.wheel(0, i < 15 ? -150 : 150);
                await page.waitForTimeout(30);
                if (i === 14) assert.ok((await scale()) > 4 * before);
            }
            await page.evaluate(() => vorl.showCluster(vorl.model.parts(0)[0]));
            await page.evaluate(() => vorl.showCluster(0));
            await settled(page);
        });
        await shot(page, `planted-${mode}`);
        const most = times[Math.floor(times.length * 0.95)];
        console.log(`${mode}: ${times.length} tasks, ${most.toFixed(1)} ms for all but a twentieth, ${times.at(-1).toFixed(1)} ms the longest`);
        assert.ok(times.length > 20);
        assert.ok(most < 50, `tasks take ${most} ms`);
        // In the end everything is drawn that was put off.
        assert.equal(await page.evaluate(() => vorl.page.stage.frame(vorl.page.picture, vorl.page.flight.camera, vorl.page.shown)), false);
    }
    assert.deepEqual(page.complaints, []);
});
