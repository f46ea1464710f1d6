// One road from file to file by DuckDB or Polars, every column as text and no guessing:
// node road.mjs PROGRAM ROAD BASE OUTPUT, where BASE is the path of the logs without an ending.

import { openSync, readSync, closeSync } from 'node:fs';
import { availableParallelism } from 'node:os';
import { peerRequire } from './participant.mjs';

const [program, road, base, output] = process.argv.slice(2);
const threads = Number(process.env.COMPARE_THREADS ?? availableParallelism());
const inputs = { csv: `${base}.csv`, quoted: `${base}-quoted.csv`, tsv: `${base}.tsv`,
    jsonl: `${base}.jsonl` };
const [a, b] = [`${base}-a.csv`, `${base}-b.csv`];

function firstLine(path) {
    const file = openSync(path);
    const start = Buffer.alloc(4096);
    const length = readSync(file, start);
    closeSync(file);
    return start.toString('utf8', 0, length).split('\n', 1)[0];
}

function namesOf(path) {
    const line = firstLine(path);
    if (path.endsWith('.jsonl')) {
        return Object.keys(JSON.parse(line));
    }
    return line.split(path.endsWith('.tsv') ? '\t' : ',').map((name) => name.replaceAll('"', ''));
}

async function duckdb() {
    const { DuckDBInstance } = peerRequire('@duckdb/node-api');
    const instance = await DuckDBInstance.create(':memory:', { threads: String(threads) });
    const db = await instance.connect();
    const read = (path) => {
        const columns = namesOf(path).map((name) => `'${name}': 'VARCHAR'`).join(', ');
        return path.endsWith('.jsonl') ?
            `read_json('${path}', format = 'newline_delimited', columns = {${columns}})` :
            `read_csv('${path}', header = true, auto_detect = false, nullstr = '<null>',
                delim = '${path.endsWith('.tsv') ? '\t' : ','}', quote = '"', escape = '"',
                columns = {${columns}})`;
    };
    const [ofA, ofB] = [`SELECT * FROM ${read(a)}`, `SELECT * FROM ${read(b)}`];
    const differs = namesOf(a).map((name) => `a."${name}" IS DISTINCT FROM b."${name}"`);
    const queries = {
        merge: () => `${ofA} UNION ALL ${ofB}`,
        'merge-key': () => `WITH b AS (${ofB}) FROM b UNION ALL
            SELECT * FROM (${ofA}) a ANTI JOIN b USING (Id)`,
        'diff-key': () => `SELECT * FROM (${ofA}) a FULL JOIN (${ofB}) b ON a.Id = b.Id
            WHERE ${differs.join(' OR ')}`,
    };
    const query = queries[road]?.() ?? `SELECT * FROM ${read(inputs[road])}`;
    await db.run(`COPY (${query}) TO '${output}' (HEADER, DELIMITER ',')`);
}

function polars() {
    process.env.POLARS_MAX_THREADS = String(threads);
    const pl = peerRequire('nodejs-polars');
    const read = (path) => path.endsWith('.jsonl') ? pl.scanJson(path).collectSync() :
        pl.readCSV(path, { inferSchemaLength: 0, numThreads: threads,
            sep: path.endsWith('.tsv') ? '\t' : ',' });
    const unlike = (ours, theirs) => ours.join(theirs, { on: 'Id', how: 'anti' });
    const works = {
        merge: () => pl.concat([read(a), read(b)]),
        'merge-key': () => {
            const [ours, theirs] = [read(a), read(b)];
            return pl.concat([theirs, unlike(ours, theirs)]);
        },
        'diff-key': () => {
            const [ours, theirs] = [read(a), read(b)];
            const both = ours.join(theirs, { on: 'Id', how: 'inner', suffix: ' of B' });
            const differs = ours.columns.slice(1).map((name) =>
                pl.col(name).neq(pl.col(`${name} of B`))).reduce((all, one) => all.or(one));
            return pl.concat([both.filter(differs).select(...ours.columns), unlike(ours, theirs),
                unlike(theirs, ours)]);
        },
    };
    (works[road]?.() ?? read(inputs[road])).writeCSV(output);
}

if (!['merge', 'merge-key', 'diff-key'].includes(road) && !inputs[road]) {
    process.exit(3);
}
await (program === 'duckdb' ? duckdb() : polars());
