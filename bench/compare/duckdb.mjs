// DuckDB in memory as a participant of bench/compare/run, every column as text and no guessing.

import { openSync, readSync, closeSync } from 'node:fs';
import { peerRequire, participate, dolly, moment } from './participant.mjs';

const { DuckDBInstance } = peerRequire('@duckdb/node-api');

function columnNames(path) {
    const file = openSync(path);
    const start = Buffer.alloc(4096);
    const length = readSync(file, start);
    closeSync(file);
    return start.toString('latin1', 0, length).split('\n', 1)[0].split(',');
}

async function open() {
    const options = process.env.COMPARE_THREADS ? { threads: process.env.COMPARE_THREADS } : {};
    const instance = await DuckDBInstance.create(':memory:', options);
    return { db: await instance.connect() };
}

async function load({ db }, { input }) {
    const columns = columnNames(input).map((name) => `'${name}': 'VARCHAR'`).join(', ');
    // A null string that no value holds keeps empty values empty.
    await db.run(`CREATE TABLE log AS SELECT * FROM read_csv('${input}', header = true,
        auto_detect = false, delim = ',', quote = '"', escape = '"', nullstr = '<null>',
        columns = {${columns}})`);
}

async function loaded(request) {
    const state = await open();
    await load(state, request);
    return state;
}

async function single({ db }, query) {
    const result = await db.runAndReadAll(query);
    return result.getRows()[0][0];
}

const count = (table) => (state) => single(state, `SELECT count(*) FROM ${table}`);

async function copy({ db }, query, path) {
    await db.run(`COPY (${query}) TO '${path}' (HEADER, DELIMITER ',', FORCE_QUOTE *)`);
}

const keep = (query) => (state, answer, { result }) => copy(state, query, result);

// The answer is the list of the rows that match.
function query(where) {
    return {
        prepare: loaded,
        repeats: true,
        async run({ db }) {
            const found = await db.runAndReadAll(`SELECT rowid FROM log WHERE ${where}`);
            return found.getColumns()[0] ?? [];
        },
        rows: (state, found) => found.length,
        keep: keep(`SELECT * FROM log WHERE ${where} ORDER BY rowid`),
    };
}

const works = {
    load: {
        prepare: open,
        run: load,
        rows: count('log'),
        keep: keep('SELECT * FROM log ORDER BY rowid'),
    },
    save: {
        prepare: loaded,
        run: ({ db }, { scratch, result }) =>
            db.run(`COPY log TO '${result ?? scratch}' (HEADER, DELIMITER ',', FORCE_QUOTE *)`),
        rows: count('log'),
    },
    // Takes less time than ILIKE or a regular expression.
    contains: query(`contains(lower(Reel), lower('${dolly.reel}')) AND
        contains(lower(Description), lower('${dolly.description}'))`),
    range: query(`"Start time" <= '${moment}' AND "End time" >= '${moment}'`),
    sort: {
        prepare: loaded,
        run: ({ db }) =>
            db.run('CREATE TABLE sorted AS SELECT * FROM log ORDER BY Scene, "Start time"'),
        rows: count('sorted'),
        keep: keep('SELECT * FROM sorted ORDER BY rowid'),
    },
    delete: {
        prepare: loaded,
        run: ({ db }) => db.run('DELETE FROM log WHERE rowid % 2 = 1'),
        rows: count('log'),
        keep: keep('SELECT * FROM log ORDER BY rowid'),
    },
};

await participate(works, async (state) => ({
    version: await single(state, 'SELECT version()'),
    threads: Number(await single(state, "SELECT current_setting('threads')")),
}));
