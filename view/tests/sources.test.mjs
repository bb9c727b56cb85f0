// The sources of the page by themselves, and whether the page in the repository is made of them.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { source, view, work } from "./support.mjs";

test("the page in the repository is what the sources make", () => {
    const made = join(work, "made.html");
    const notice = join(work, "NOTICE");
    execFileSync("node", [join(view, "build.mjs"), made, notice]);
    assert.equal(readFileSync(made, "utf8"), readFileSync(join(view, "dist/view.html"), "utf8"));
    assert.equal(readFileSync(notice, "utf8"), readFileSync(join(view, "../NOTICE"), "utf8"));
});

test("numbers are read from their differences", async () => {
    const { numbersOf } = await source("data");
    // 0, 5, 3, 303, 4294967295: codes 0, 10, 3, 600, 8589933984
    const bytes = [0, 10, 3, 600 & 127 | 128, 600 >> 7];
    let code = 2n * (4294967295n - 303n);
    for (; code >= 128n; code >>= 7n) bytes.push(Number(code & 127n) | 128);
    bytes.push(Number(code));
    assert.deepEqual([...numbersOf(Uint8Array.from(bytes))], [0, 5, 3, 303, 4294967295]);
});

test("SVG keeps names as text", async () => {
    const { SvgPainter } = await source("painter");
    const painter = new SvgPainter(10, 10, "#ffffff");
    painter.text(1, 1, 8, '<script>"&\u0001', { colour: "#000000" });
    const text = painter.document("</title><b>");
    assert.ok(text.includes("&lt;script&gt;&quot;&amp;\ufffd</text>"));
    assert.ok(text.includes("<title>&lt;/title&gt;&lt;b&gt;</title>"));
});

test("colours can be told from each other on their ground", async () => {
    const { isDeep, mixed } = await source("colours");
    assert.equal(mixed("#000000", "#ffffff", 0.5), "#808080");
    assert.ok(isDeep("#332288") && !isDeep("#ccbb44"));
});

test("texts take no room that others have", async () => {
    const { Room, shortened } = await source("texts");
    const room = new Room();
    assert.ok(room.take(100, 100, 40, 10));
    assert.ok(!room.take(130, 105, 40, 10));
    assert.ok(room.take(141, 100, 40, 10));
    assert.ok(room.take(100, 111, 40, 10));
    assert.ok(!room.take(0, 0, 1000, 1000));
    assert.ok(room.take(-500, -500, 300, 10));
    assert.ok(!room.take(-400, -500, 10, 10));
    assert.equal(shortened("a😀bcd", 3), "a😀…");
});

test("a recorded picture is drawn in steps, all of it and in its order", async () => {
    const { Recorder } = await source("recorder");
    const { SvgPainter } = await source("painter");
    const draw = (to) => {
        to.circle(1, 2, 300, "#ff0000", 0.5, "#00ff00", 2);
        to.rect(1, 2, 3, 4, null, 1, "#00ff00", 2);
        to.rects([1, 2, 3, 4], "#ff0000", 0.9);
        to.dots(Array.from({ length: 3000 }, (_, i) => i % 7), "#0000ff", 1);
        to.lines(Array.from({ length: 4000 }, (_, i) => i % 11), "#0000ff", 0.3, 1);
        to.curve(0, 0, 1, 1, 2, 2, "#0000ff", 0.3, 1);
        to.pie(4, 4, 3, [["#ff0000", 0.3], ["#00ff00", 0.7]], "#000000");
        to.text(1, 1, 8, "name", { colour: "#000000", halo: "#ffffff" });
    };
    const shapes = (painter) => painter.document("t").match(/<(circle|rect|text)[^>]*>|M[^"A]*?(?=M|")|A[^"]*/g).filter((shape) => shape !== "");
    const whole = new SvgPainter(9, 9, "#ffffff");
    draw(whole);
    const recorder = new Recorder(1000);
    draw(recorder);
    const steps = new SvgPainter(9, 9, "#ffffff");
    let calls = 1;
    while (!recorder.play(steps, recorder.cost / 20)) ++calls;
    assert.ok(calls >= 5 && calls <= 20, `${calls} calls`);
    assert.deepEqual(shapes(steps), shapes(whole));
});
