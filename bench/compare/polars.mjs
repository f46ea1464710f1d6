// Polars as a participant of bench/compare/run, every column as text and no guessing.

import { availableParallelism } from 'node:os';
import { peerRequire, participate, dolly, moment } from './participant.mjs';

// Read by Polars when it is loaded.
const threads = Number(process.env.COMPARE_THREADS ?? availableParallelism());
process.env.POLARS_MAX_THREADS = String(threads);

const pl = peerRequire('nodejs-polars');

function load(state, { input }) {
    state.log = pl.readCSV(input, { inferSchemaLength: 0, numThreads: threads });
}

function loaded(request) {
    const state = {};
    load(state, request);
    return state;
}

const save = (frame, path) => frame.writeCSV(path, { quoteStyle: 'always' });
const keep = (state, frame, { result }) => save(frame, result);
const height = (state, frame) => frame.height;

// The answer is the list of the rows that match.
function query(where) {
    return {
        prepare(request) {
            const state = loaded(request);
            state.numbered = state.log.withRowIndex();
            return state;
        },
        repeats: true,
        run: ({ numbered }) => numbered.lazy().filter(where).select('index').collectSync(),
        rows: height,
        keep: ({ log }, found, { result }) => save(log.filter(where), result),
    };
}

const holds = (column, pattern) => pl.col(column).str.contains(pattern);

const works = {
    load: {
        run: load,
        rows: ({ log }) => log.height,
        keep: ({ log }, answer, { result }) => save(log, result),
    },
    save: {
        prepare: loaded,
        run: ({ log }, { scratch, result }) => save(log, result ?? scratch),
        rows: ({ log }) => log.height,
    },
    // Takes less time than a search in lower-case copies.
    contains: query(holds('Reel', `(?i)${dolly.reel}`).and(
        holds('Description', `(?i)${dolly.description}`))),
    range: query(pl.col('Start time').ltEq(pl.lit(moment)).and(
        pl.col('End time').gtEq(pl.lit(moment)))),
    sort: {
        prepare: loaded,
        run: ({ log }) => log.sort(['Scene', 'Start time']),
        rows: height,
        keep,
    },
    delete: {
        prepare: loaded,
        run: ({ log }) => log.gatherEvery(2),
        rows: height,
        keep,
    },
};

await participate(works, () => ({ version: pl.version, threads }));
