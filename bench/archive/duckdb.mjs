// Asks the datasets that bench/archive/run wrote, where they are, and prints what each question
// took: its first time and the best of three.

import { createRequire } from 'node:module';
import { existsSync } from 'node:fs';

const { DuckDBInstance } = createRequire(`${process.env.COMPARE_MODULES}/asked.js`)(
    '@duckdb/node-api');

const folder = process.argv[2];
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
    const result = await db.runAndReadAll(query);
    const rows = result.getRows();
    return { seconds: Number(process.hrtime.bigint() - begin) / 1e9, rows };
}

const db = await (await DuckDBInstance.create(':memory:')).connect();
console.log('| dataset | question | answer | first | best of three |');
console.log('| --- | --- | --: | --: | --: |');
for (const [format, source] of Object.entries(sources)) {
    if (!existsSync(`${folder}/${format}`)) continue;
    for (const [name, question] of Object.entries(questions)) {
        const query = question().replace('$', source);
        const runs = [];
        for (let i = 0; i < 3; ++i) runs.push(await ask(db, query));
        const { rows } = runs[0];
        const answer = rows.length === 1 ? rows[0][0] : `${rows.length} rows`;
        const best = Math.min(...runs.map((run) => run.seconds));
        console.log(`| ${format} | ${name} | ${answer} | ${runs[0].seconds.toFixed(2)} s |` +
            ` ${best.toFixed(2)} s |`);
    }
}
