// A page as the driver that belongs to the browser sees it: it speaks for people's own tools, which
// know nothing of the browser's inside.
import { spawn } from "node:child_process";
import { once } from "node:events";

// The port that it tells; it takes one that is free.
async function portOf(driver) {
    let said = "";
    for await (const piece of driver.stdout) {
        said += piece;
        const found = /started successfully on port (\d+)/.exec(said);
        if (found) return Number(found[1]);
    }
    throw new Error(`the driver did not start: ${said}`);
}

class Session {
    constructor(root) { this.root = root; }

    async ask(method, path, body) {
        const answer = await fetch(this.root + path, {
            method, body: body && JSON.stringify(body),
            headers: { "Content-Type": "application/json" },
        });
        const { value } = await answer.json();
        if (!answer.ok) throw new Error(`${method} ${path}: ${value.error}, ${value.message}`);
        return value;
    }

    go(url) { return this.ask("POST", "/url", { url }); }

    run(script) { return this.ask("POST", "/execute/sync", { script, args: [] }); }

    async click(selector) {
        const found = await this.ask("POST", "/element", { using: "css selector", value: selector });
        await this.ask("POST", `/element/${Object.values(found)[0]}/click`, {});
    }

    messages() { return this.ask("POST", "/se/log", { type: "browser" }); }
}

const wanted = (args) => ({
    capabilities: {
        alwaysMatch: {
            "goog:chromeOptions": { binary: process.env.CHROMIUM, args: ["--headless=new", ...args] },
            "goog:loggingPrefs": { browser: "ALL" },
        },
    },
});

// Starts the driver and a browser by it, and ends both whatever the work does.
export async function withDriver(args, work) {
    const driver = spawn(process.env.CHROMEDRIVER, ["--port=0"],
                         { stdio: ["ignore", "pipe", "inherit"] });
    try {
        const root = `http://127.0.0.1:${await portOf(driver)}/session`;
        const { sessionId } = await new Session(root).ask("POST", "", wanted(args));
        const session = new Session(`${root}/${sessionId}`);
        try {
            return await work(session);
        } finally {
            await session.ask("DELETE", "");
        }
    } finally {
        if (driver.kill()) await once(driver, "exit");
    }
}
