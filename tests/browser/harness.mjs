// Runs tests one after the other and counts them; opens pages in the system's Chromium.
import { spawnSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join, resolve } from "node:path";

const modules = createRequire(resolve(process.env.BROWSER_MODULES, "package.json"));
const { chromium } = modules("playwright-core");
export const axeSource = modules("axe-core").source;

export const program = resolve(process.env.VEK_PROGRAM);
export const samples = resolve(process.env.VEK_SAMPLES);
export const folder = mkdtempSync(join(tmpdir(), "vek-browser-"));
export const inFolder = (name) => join(folder, name);

// Those alone of which the name has the words of the command line in it.
const wanted = process.argv.slice(2).join(" ");
const tests = [];
export const test = (name, run) => {
    if (name.includes(wanted)) tests.push({ name, run });
};

export function expect(isRight, what) {
    if (!isRight) throw new Error(what);
}

export function expectSame(found, wanted, what) {
    const [left, right] = [JSON.stringify(found), JSON.stringify(wanted)];
    if (left === right) return;
    let at = 0;
    while (left[at] === right[at]) ++at;
    const part = (text) => (text ?? "").slice(Math.max(0, at - 40), at + 80);
    throw new Error(`${what}: found ...${part(left)}, expected ...${part(right)}`);
}

// What the program prints, whatever its exit code.
export function vek(words, options = {}) {
    const finish = spawnSync(program, words, { maxBuffer: 1 << 30, ...options });
    return finish.stdout.toString("utf8");
}

// What a command line prints in which the program is known by its name.
export const shell = (line) =>
    spawnSync("/bin/sh", ["-c", line], {
        maxBuffer: 1 << 30,
        env: { ...process.env, PATH: `${program.replace(/\/[^/]*$/, "")}:${process.env.PATH}` },
    }).stdout.toString("utf8");

// The numbers of the rows that a table tells.
export function numbersIn(text) {
    const lines = text.split("\n");
    const number = /^ *(\d+)\*?(?!\d)(?! of \d)/;
    return lines.map((line) => number.exec(line)).filter(Boolean)
        .map((match) => Number(match[1]));
}

// The numbers of the rows that the program shows.
export const rowsShown = (words) => numbersIn(vek(["show", ...words, "--quiet"]));

export function makePage(name, words) {
    const page = inFolder(name);
    spawnSync(program, ["report", ...words, "-o", page]);
    return page;
}

let browser;
const flags = ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
               "--disable-background-networking", "--disable-component-update",
               "--disable-sync"];

// A page with all that it says and asks for noted.
export async function open(path, options = {}) {
    const { size, ...rest } = options;
    const context = await browser.newContext({
        viewport: size || { width: 1280, height: 900 }, ...rest,
    });
    context.setDefaultTimeout(120000);
    const page = await context.newPage();
    page.said = [];
    page.asked = [];
    page.on("console", (message) => page.said.push(message.text()));
    page.on("pageerror", (error) => page.said.push(String(error)));
    page.on("dialog", (dialog) => {
        page.said.push(`dialog ${dialog.message()}`);
        dialog.dismiss();
    });
    page.on("request", (request) => page.asked.push(request.url()));
    await page.addInitScript(() => {
        Object.defineProperty(navigator, "clipboard", {
            value: { writeText: async (text) => { window.copiedText = text; } },
        });
    });
    await page.goto(`file://${path}`);
    return page;
}

export const close = (page) => page.context().close();

export async function withPage(path, options, work) {
    const page = await open(path, options);
    try {
        return await work(page);
    } finally {
        await close(page);
    }
}

export async function runAll() {
    browser = await chromium.launch({ executablePath: process.env.CHROMIUM, args: flags });
    let failed = 0;
    try {
        for (const { name, run } of tests) failed += (await runOne(name, run)) ? 0 : 1;
    } finally {
        await browser.close();
        rmSync(folder, { recursive: true, force: true });
    }
    console.log(`${tests.length - failed} passed, ${failed} failed`);
    process.exitCode = failed === 0 && tests.length > 0 ? 0 : 1;
}

async function runOne(name, run) {
    const begin = Date.now();
    try {
        await run();
        console.log(`ok      ${name} (${Date.now() - begin} ms)`);
        return true;
    } catch (error) {
        console.log(`FAILED  ${name}: ${error.message}`);
        return false;
    }
}
