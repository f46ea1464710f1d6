// The work that is compared, and what is aimed at.
'use strict';

// `asks` is what participants are asked for where it is not the id, and `repeat` how often one
// process is timed where it is not five times. `same` names the sums of compare_check in which all
// answers must agree: all rows, their order, or the order of the sort columns where equal rows may
// fall either way.
const works = [
    { id: 'floor', title: 'read the bytes, look at each once', same: [], aims: [] },
    { id: 'load', title: 'load', same: ['rows', 'order'],
        aims: [{ times: 3 }, { floor: 2.5 }] },
    { id: 'save', title: 'save, every field quoted', same: ['rows', 'order'],
        aims: [{ times: 3 }] },
    { id: 'contains', title: 'Description has "dolly", Reel has "A1"', same: ['rows', 'order'],
        aims: [{ times: 1.5 }] },
    { id: 'range', title: 'Start..End holds a time, five times over', same: ['rows', 'order'],
        aims: [{ times: 1 }] },
    { id: 'range-once', asks: 'range', repeat: 1, title: 'the same, once', same: ['rows', 'order'],
        aims: [{ times: 1 }] },
    { id: 'sort', title: 'sort by Scene, Start time: characters', same: ['rows', 'all', 'keys'],
        aims: [{ times: 4 }] },
    { id: 'sort-people', title: 'the same as people read', same: ['rows', 'all', 'keys'],
        aims: [{ times: 4 }], peersOf: 'sort' },
    { id: 'delete', title: 'delete every second row', same: ['rows', 'order'], aims: [] },
    { id: 'show', title: 'show: select and sort, whole process', same: ['rows', 'order'],
        aims: [{ times: 1, than: 'gnu' }, { times: 5, than: 'miller' }], rows: 100000, rounds: 11 },
];

const half = (rows) => rows >> 1;
const growth = 13;

// The library alone, on tables of its own. `answer` is what must be left or found.
const ladder = [
    { id: 'delete-bare', title: 'delete_tagged_records, no view', answer: half, growth },
    { id: 'delete-views', title: 'delete_tagged_records under two stacked views', answer: half,
        growth, within: { times: 10, of: 'delete-bare' } },
    { id: 'delete-through-view', title: 'deleteTagged of a view', answer: half, growth },
    { id: 'remove', title: 'removeSome', answer: half, growth },
    { id: 'remove-stacked', title: 'removeSome of the upper of two views', answer: half, growth },
    { id: 'tag-duplicates', title: 'tagDuplicates',
        answer: (rows) => rows - Math.floor(rows / 60) - 1, growth },
    { id: 'display-list', title: 'display a list of all identifiers', answer: (rows) => rows,
        growth },
];

module.exports = { works, ladder };
