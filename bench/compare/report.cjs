// Turns measurements into the tables that people read.
'use strict';

function table(head, rows) {
    const line = (cells) => `| ${cells.join(' | ')} |`;
    return [line(head), line(head.map((cell, i) => (i > 0 ? '--:' : '---'))), ...rows.map(line)]
        .join('\n');
}

const thousands = (value) => value.toLocaleString('en-US');
const rounded = (value) => (value >= 100 ? Math.round(value) : Number(value.toPrecision(2)));
const milliseconds = (ns) => thousands(rounded(ns / 1e6));
const megabytes = (bytes) => thousands(Math.round(bytes / 1e6));
const times = (value) => `${value >= 10 ? value.toFixed(0) : value.toFixed(1)}x`;
const met = (yes) => (yes ? 'yes' : '**no**');
const isOwn = ({ id }) => id.startsWith('vek');

const resultsOf = (found, id, rows) =>
    found.find(({ work, rows: at }) => work.id === id && at === rows)?.results ?? [];
const own = (results) => results.find(isOwn);

function peersOf(found, work, rows) {
    const ids = [work.id, ...(work.peersOf ? [work.peersOf] : [])];
    return ids.flatMap((id) => resultsOf(found, id, rows)).filter((result) => !isOwn(result));
}

const fastest = (results) =>
    results.reduce((best, each) => (!best || each.ns < best.ns ? each : best), undefined);

const titleOf = (found, id) =>
    `"${found.find(({ work }) => work.id === id).work.title}"`;

function aim(found, work, rows, wanted) {
    const mine = own(resultsOf(found, work.id, rows));
    if (wanted.floor) {
        const floor = own(resultsOf(found, 'floor', rows));
        return mine && floor && { text: `at most ${wanted.floor}x the bytes' time`,
            is: times(mine.ns / floor.ns), met: mine.ns <= wanted.floor * floor.ns };
    }
    if (wanted.of) {
        const other = own(resultsOf(found, wanted.of.id, rows));
        const text = `at most ${wanted.of.times}x ${titleOf(found, wanted.of.id)}`;
        return mine && other && { text,
            is: times(mine.ns / other.ns), met: mine.ns <= wanted.of.times * other.ns };
    }
    const peers = peersOf(found, work, rows);
    const peer = wanted.than ? peers.find(({ id }) => id === wanted.than) : fastest(peers);
    const text = wanted.times === 1 ? 'not slower' : `${wanted.times}x faster`;
    return mine && peer && { text: `${text} than ${wanted.than ? peer.title : 'the fastest peer'}`,
        is: `${times(peer.ns / mine.ns)} (${peer.title})`,
        met: peer.ns >= wanted.times * mine.ns };
}

// On a busy machine what the processor was busy for tells more than the clock.
function roadsTable(found, rows) {
    const here = found.filter(({ work, rows: at }) => work.road && at === rows);
    const columns = columnsOf(here);
    const cell = (result) => `${milliseconds(result.ns)} (${milliseconds(result.cpu)})`;
    return `Whole processes from file to file, medians in milliseconds, and in brackets the ` +
        `processor's, ${thousands(rows)} rows:\n\n` + table(
        ['road', ...columns.map(([, title]) => title.replace(' (whole process)', ''))],
        here.map(({ work, results }) => [work.title, ...columns.map(([id]) => {
            const result = inColumn(results, id);
            return result ? cell(result) : '';
        })]));
}

function columnsOf(found) {
    const columns = new Map();
    found.flatMap(({ results }) => results).forEach((result) => {
        const id = isOwn(result) ? 'vekdb' : result.id;
        const title = isOwn(result) ? 'this library' : result.title;
        columns.set(id, title + (result.whole && !isOwn(result) ? ' (whole process)' : ''));
    });
    return [...columns];
}

const inColumn = (results, column) =>
    results.find((result) => (isOwn(result) ? 'vekdb' : result.id) === column);

function timesAt(found, rows) {
    const here = found.filter(({ work, rows: at }) => !work.road && at === rows);
    if (here.length === 0) {
        return '';
    }
    const columns = columnsOf(here);
    return `Medians in milliseconds, ${thousands(rows)} rows:\n\n` + table(
        ['work', ...columns.map(([, title]) => title)],
        here.map(({ work, results }) => [work.title, ...columns.map(([id]) => {
            const result = inColumn(results, id);
            return result ? milliseconds(result.ns) : '';
        })]));
}

const growthAim = 13;

function growthTable(found, sizes) {
    const [small, large] = [sizes.at(0), sizes.at(-1)];
    const grown = found.filter(({ work, rows }) => rows === large && !work.rows);
    const columns = columnsOf(grown);
    const growthOf = (work, results, id) => {
        const [from, to] = [inColumn(resultsOf(found, work.id, small), id), inColumn(results, id)];
        return from && to ? to.ns / from.ns : undefined;
    };
    const shown = (growth) => (growth ? times(growth) : '');
    return `Growth of the time from ${thousands(small)} to ${thousands(large)} rows, of which the ` +
        `aim for this library is at most ${growthAim} a tenfold:\n\n` + table(
        ['work', ...columns.map(([, title]) => title), 'met'],
        grown.map(({ work, results }) => {
            const own = growthOf(work, results, 'vekdb');
            return [work.title, ...columns.map(([id]) => shown(growthOf(work, results, id))),
                own ? met(own <= growthAim * (large / small / 10)) : ''];
        }));
}

function aimsTable(found) {
    const lines = found.flatMap(({ work, rows }) => work.aims.map((wanted) => {
        const now = aim(found, work, rows, wanted);
        return now && [work.title, thousands(rows), now.is, now.text, met(now.met)];
    })).filter(Boolean);
    return table(['work', 'rows', 'this library is', 'aim', 'met'], lines);
}

const memoryAim = 1.6;

function memoryTable(found, sizes) {
    const rows = Math.max(...Object.keys(sizes).map(Number));
    const file = sizes[rows];
    const lines = resultsOf(found, 'load', rows).filter(({ resident }) => resident > 0)
        .map((result) => [result.title, megabytes(result.resident), times(result.resident / file),
            megabytes(result.peak),
            isOwn(result) ? met(result.resident <= memoryAim * file) : '']);
    return `Memory after loading ${thousands(rows)} rows, in megabytes; the table file has ` +
        `${megabytes(file)}, and the aim is at most ${memoryAim} times that:\n\n` +
        table(['', 'added by loading', 'of the file', 'peak of the process', 'met'], lines);
}

function withinText(climb, climbs) {
    const { within } = climb.work;
    const base = within && climbs.find(({ work }) => work.id === within.of);
    const [last, baseLast] = [climb.steps.at(-1), base?.steps.at(-1)];
    if (!base || last.late || baseLast.late) {
        return { text: '', met: !base };
    }
    const ratio = last.ns / baseLast.ns;
    return { text: `, ${times(ratio)} the bare table's`, met: ratio <= within.times };
}

function climbLine(climb, climbs, limitText) {
    const { work, steps } = climb;
    const factors = steps.slice(1).map((step, i) => (step.late ? Infinity : step.ns / steps[i].ns));
    const within = withinText(climb, climbs);
    const growth = factors.map((each) => (Number.isFinite(each) ? times(each) : '-')).join(', ');
    const wanted = `at most ${work.growth}x a tenfold` +
        (work.within ? `, ${work.within.times}x the bare table's` : '');
    return [work.title, ...steps.map((step) => (step.late ? limitText : milliseconds(step.ns))),
        growth + within.text, wanted,
        met(within.met && factors.every((each) => each <= work.growth))];
}

function ladderTable(climbs) {
    const sizes = climbs[0].steps.map(({ rows }) => `${thousands(rows)} rows`);
    return 'The library alone, every second row tagged, medians in milliseconds:\n\n' + table(
        ['work', ...sizes, 'growth', 'aim', 'met'],
        climbs.map((climb) => climbLine(climb, climbs, 'too long')));
}

function peersText(found) {
    const seen = new Map();
    found.flatMap(({ results }) => results).forEach((result) => seen.set(result.id, result));
    return [...seen.values()].filter(({ id }) => id !== 'vek' && !id.endsWith('-road')).map((result) =>
        `- ${result.title}${isOwn(result) ? '' : ` ${result.version}`}: ` +
        `${result.threads} thread${result.threads > 1 ? 's' : ''}`).join('\n');
}

function tables({ machine, rounds, sizes, found, climbs, absences, processor }) {
    const rows = Object.keys(sizes).map(Number).sort((a, b) => a - b);
    const { cores, model, gigabytes, busy } = machine;
    const parts = [`Machine: ${cores} cores (${model}), ${gigabytes} GB of memory. ` +
        `Medians of ${rounds} rounds, at a load of ${busy.toFixed(1)}` +
        `${busy > cores ? ': other work took the cores too, so times are too long' : ''}.` +
        `${processor ? ' Times are those of the processor, of all threads together.' : ''}`];
    if (found.length > 0) {
        parts.push(peersText(found), aimsTable(found), ...rows.slice().reverse()
            .map((size) => timesAt(found, size)));
        if (found.some(({ work }) => work.road)) {
            parts.push(...rows.slice().reverse().map((size) => roadsTable(found, size)));
        }
        parts.push(...(rows.length > 1 ? [growthTable(found, rows)] : []));
        parts.push(...(resultsOf(found, 'load', rows.at(-1)).length > 0 ?
            [memoryTable(found, sizes)] : []));
    }
    parts.push(...(climbs.length > 0 ? [ladderTable(climbs)] : []));
    parts.push(...absences.map((text) => `Left out: ${text}.`));
    return parts.filter((part) => part !== '').join('\n\n');
}

function instructions(lines) {
    return table(['work', 'rows', 'instructions', 'a row', 'growth'], lines.flatMap(
        ({ work, counts }) => counts.map(({ rows, count }, i) => [work.title, thousands(rows),
            thousands(count), thousands(Math.round(count / rows)),
            i > 0 ? times(count / counts[i - 1].count) : ''])));
}

module.exports = { tables, instructions };
