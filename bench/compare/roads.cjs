// The roads of the program from file to file, each a whole process, and what is aimed at.
'use strict';

// `than`: how many times faster than the fastest peer; `of`: at most so many times as long as
// another road of the program.
const copied = (times) => ({ of: { id: 'road-copy', times } });
const loaded = (times) => ({ of: { id: 'road-info', times } });
const whole = (id, title, ...aims) => ({ id: `road-${id}`, title, road: true, aims });
const checked = (id, title, ...aims) => ({ ...whole(id, title, ...aims), same: ['rows', 'all'] });

const roads = [
    whole('library', 'the library alone: load and save'),
    checked('copy', 'table to table', { of: { id: 'road-library', times: 1.5 } }),
    whole('info', 'info of a table'),
    checked('csv', 'CSV to table; peers CSV to CSV', { times: 2 }, copied(2.5)),
    checked('quoted', 'the same, every field quoted', { times: 2 }, copied(2.5)),
    checked('tsv', 'TSV to table; peers to CSV', { times: 2 }, copied(2.5)),
    checked('ale', 'ALE to table', copied(2.5)),
    checked('jsonl', 'JSON lines to table; peers to CSV', { times: 1 },
        { times: 5, than: 'miller-road' }),
    checked('to-csv', 'table to CSV', copied(1.5)),
    whole('to-tsv', 'table to TSV', copied(1.5)),
    whole('to-ale', 'table to ALE', copied(1.5)),
    whole('to-jsonl', 'table to JSON lines', copied(1.5)),
    whole('check', 'check of a table', loaded(2)),
    whole('stats', 'stats of a table', loaded(2)),
    checked('set', 'set a column of every eighth row', copied(1.5)),
    whole('tag', 'tag by a condition', copied(1.5)),
    checked('delete', 'delete by a condition', copied(1.5)),
    whole('column', 'add a column', copied(1.5)),
    checked('sort', 'sort in place', copied(1.5)),
    whole('library-both', 'the library alone: load two, save their rows'),
    whole('merge-tables', 'merge A B, tables', { of: { id: 'road-library-both', times: 1.3 } }),
    checked('merge', 'merge A B, CSV to CSV'),
    checked('merge-key', 'merge A B --key, CSV to CSV', { times: 3 }),
    whole('diff', 'diff A B', copied(2)),
    whole('diff-key', 'diff A B --key, CSV; peers CSV to CSV', { times: 3 }),
].map((road) => ({ same: [], ...road }));

module.exports = { roads };
