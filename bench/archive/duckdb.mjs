// Asks the datasets that bench/archive/run wrote, where they are, and prints what each question
// took, of the clock and of all processors together: the best of some rounds:
//     duckdb.mjs FOLDER [ROUNDS]

import { createRequire } from 'node:module';
import { existsSync } from 'node:fs';

const { DuckDBInstance } = createRequire(`${process.env.COMPARE_MODULES}/asked.js`)(
    '@duckdb/node-api');

const [folder, rounds = 3] = process.argv.slice(2);
const sources = {
    csv: `read_csv('${folder}/csv/*/*.csv', hive_partitioning = true, all_varchar = true,
        union_by_name = true, hive_types = {'Scene': VARCHAR})`,
    jsonl: `read_json('${folder}/jsonl/*/*.jsonl', format = 'newline_delimited',
        hive_partitioning = true, hive_types = {'Scene': VARCHAR})`,
    parquet: `read_parquet('${folder}/parquet/*/*.parquet', hive_partitioning = true,
        hive_types = {'Scene': VARCHAR})`,
};
const questions = {
    'all rows': () => 'SELECT count(*) FROM $',
    'rows of a scene': () => "SELECT count(*) FROM $ WHERE Scene = '67'",
    'rows with dolly': () => "SELECT count(*) FROM $ WHERE Description ILIKE '%dolly%'",
    'takes by scene': () =>
        'SELECT Scene, count(*), max(Take::INT) FROM $ GROUP BY Scene ORDER BY Scene',
};

async function ask(db, query) {
    const begin = process.hrtime.bigint();
    const used = process.cpuUsage();
    const result = await db.runAndReadAll(query);
    const { user, system } = process.cpuUsage(used);
    const seconds = Number(process.hrtime.bigint() - begin) / 1e9;
    return { seconds, ofProcessor: (user + system) / 1e6, rows: result.getRows() };
}

const db = await (await DuckDBInstance.create(':memory:')).connect();
console.log('| dataset | question | answer | seconds | of the processor |');
console.log('| --- | --- | --: | --: | --: |');
for (const [format, source] of Object.entries(sources)) {
    if (!existsSync(`${folder}/${format}`)) continue;
    for (const [name, question] of Object.entries(questions)) {
        const query = question().replace('$', source);
        const runs = [];
        for (let i = 0; i < rounds; ++i) runs.push(await ask(db, query));
        const { rows } = runs[0];
        const answer = rows.length === 1 ? rows[0][0] : `${rows.length} rows`;
        const best = (what) => Math.min(...runs.map((run) => run[what])).toFixed(2);
        console.log(`| ${format} | ${name} | ${answer} | ${best('seconds')} |` +
            ` ${best('ofProcessor')} |`);
    }
}
