// The work that is compared, and what is aimed at.
'use strict';

// `asks` is what participants are asked for where it is not the id, and `repeat` how often one
// process is timed where it is not five times. `same` names the sums of compare_check in which all
// answers must agree: all rows, their order, or the order of the sort columns where equal rows may
// fall either way. `answers`: the numbers that they answer with must be equal, too.
const works = [
    { id: 'floor', title: 'read the bytes, look at each once', same: [], aims: [] },
    { id: 'load', title: 'load', same: ['rows', 'order'],
        aims: [{ times: 3 }, { floor: 2.5 }] },
    { id: 'load-in-turn', title: 'load without reading ahead', same: ['rows', 'order'],
        aims: [{ times: 2.5 }, { of: { id: 'load', times: 1.3 } }], peersOf: 'load' },
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
    { id: 'view-sort', title: 'two views: sort by Description', same: ['rows', 'order'],
        answers: true, aims: [{ times: 10 }] },
    { id: 'view-filter', title: 'two views: Description has "dolly"', same: ['rows', 'order'],
        answers: true, aims: [{ times: 10 }] },
    { id: 'view-delete', title: 'two views: delete every second row', same: ['rows', 'order'],
        answers: true, aims: [{ times: 10 }] },
    { id: 'view-set', title: 'two views: set 100,000 cells', same: ['rows', 'order'],
        answers: true, aims: [{ times: 10 }] },
    { id: 'view-read', title: 'two views: read 1,000,000 cells', same: ['rows', 'order'],
        answers: true, aims: [{ times: 10 }] },
    { id: 'add-table', title: 'add_vekdb: the rows of another table', same: [], aims: [] },
    { id: 'merge-same', title: 'merge_all_matching, equal columns', same: [],
        aims: [{ of: { id: 'add-table', times: 1.5 } }] },
    { id: 'merge-other', title: 'merge_all_matching, columns in another order', same: [],
        aims: [{ of: { id: 'add-table', times: 3 } }] },
    { id: 'show', title: 'show: select and sort, whole process', same: ['rows', 'order'],
        aims: [{ times: 1, than: 'gnu' }, { times: 5, than: 'miller' }], rows: 100000, rounds: 11 },
];

const half = (rows) => rows >> 1;
const withoutSingles = (rows) => rows - Math.min(10000, Math.floor(rows / 10));
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
    { id: 'read-bare', title: 'read a value of every row, no view', answer: (rows) => rows, growth },
    { id: 'read-views', title: 'the same through two stacked views', answer: (rows) => rows, growth,
        within: { times: 3, of: 'read-bare' } },
    { id: 'set-bare', title: 'set a value of every row, no view', answer: (rows) => rows, growth },
    { id: 'set-views', title: 'the same through two stacked views', answer: (rows) => rows, growth,
        within: { times: 3, of: 'set-bare' } },
    { id: 'insert-bare', title: 'insert 10,000 rows singly anywhere, no view',
        answer: (rows) => rows + 10000, growth },
    { id: 'insert-views', title: 'the same through two stacked views',
        answer: (rows) => rows + 10000, growth, within: { times: 3, of: 'insert-bare' } },
    { id: 'delete-singly-bare', title: 'delete 10,000 rows singly anywhere, no view',
        answer: withoutSingles, growth },
    { id: 'delete-singly-views', title: 'the same through two stacked views',
        answer: withoutSingles, growth, within: { times: 3, of: 'delete-singly-bare' } },
];

module.exports = { works, ladder };
