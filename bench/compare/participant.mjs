// What the participants written for Node share: their command line, the clock, the memory they
// hold, and the one line that they answer with.

import { createRequire } from 'node:module';

// The packages lie in a folder of their own under build/, not beside these files.
export const peerRequire = createRequire(`${process.env.COMPARE_MODULES}/participants.js`);

export const dolly = { reel: 'A1', description: 'dolly' };
export const moment = '02:05:30:00';

function parse(args) {
    const request = { repeat: '1' };
    for (let i = 0; i + 1 < args.length; i += 2) {
        request[args[i].replace(/^--/, '')] = args[i + 1];
    }
    return request;
}

// On a machine that others keep busy the time that the processor was at work tells more.
function clock() {
    if (!process.env.COMPARE_PROCESSOR) {
        return process.hrtime.bigint();
    }
    const { user, system } = process.cpuUsage();
    return BigInt(user + system) * 1000n;
}

// Runs one work item. `works` maps its name to { prepare, run, rows, keep, repeats }: `prepare`
// and `keep` are not timed, `run` is; `keep` writes the answer's rows for the check.
// `about` tells the version and the number of threads.
export async function participate(works, about) {
    const request = parse(process.argv.slice(2));
    const work = works[request.work];
    if (!work) {
        process.exit(3);
    }
    const state = work.prepare ? await work.prepare(request) : {};
    const before = process.memoryUsage().rss;
    const ns = [];
    let answer;
    for (let i = 0; i < (work.repeats ? Number(request.repeat) : 1); ++i) {
        const start = clock();
        answer = await work.run(state, request);
        ns.push(Number(clock() - start));
    }
    const resident = process.memoryUsage().rss - before;
    const rows = Number(await work.rows(state, answer, request));
    if (request.result && work.keep) {
        await work.keep(state, answer, request);
    }
    const peak = process.resourceUsage().maxRSS * 1024;
    console.log(JSON.stringify({ ...await about(state), rows, resident, peak, ns }));
    process.exit(0);
}
