// What the tests ask of a page, and do with it.

const numberOf = "(row) => Number(row.id.split('-')[1])";

// The rows of the table in their order, all where it is short.
export const rowsOf = (page, log = 1) =>
    page.evaluate(`Array.from(document.querySelectorAll(
        "#log-${log} .rows tbody tr[id]"), ${numberOf})`);

export const taggedOf = (page) =>
    page.evaluate(`Array.from(document.querySelectorAll(".rows tr.tagged"), ${numberOf})`);

export const cellsOf = (page) =>
    page.evaluate(() => Array.from(document.querySelectorAll(".rows tbody td"),
                                   (cell) => cell.textContent));

// The text of a cell, and how far from the left each of its characters stands. Runs in the page.
export const placesOf = (cell) => {
    const places = {};
    const walker = document.createTreeWalker(cell, NodeFilter.SHOW_TEXT);
    while (walker.nextNode()) {
        for (const [at, character] of [...walker.currentNode.data].entries()) {
            const range = document.createRange();
            range.setStart(walker.currentNode, at);
            range.setEnd(walker.currentNode, at + 1);
            places[character] ??= range.getBoundingClientRect().left;
        }
    }
    return { text: cell.textContent.trim(), places, place: cell.tagName };
};

export const statusOf = (page) => page.textContent(".status");

// Types a condition; what it finds is there when this comes back.
export async function find(page, text) {
    await page.evaluate((typed) => {
        const field = document.querySelector(".find input");
        field.value = typed;
        field.dispatchEvent(new Event("input"));
    }, text);
    await page.waitForTimeout(170);
}

export async function clickHead(page, position) {
    await page.evaluate((at) => document.querySelectorAll(".rows thead button")[at].click(),
                        position);
}

// Of a log's data, the columns by the names that conditions have for them, each with its values.
export function columnsOf(page, data) {
    return page.evaluate((data) => {
        const log = new PageLog(data, 1);
        return log.columns.map((column) => [writtenName(log, column), column.values]);
    }, data);
}

// Of a log's data, the rows for which each condition holds; what the page says where it cannot
// answer.
export function answers(page, data, conditions) {
    return page.evaluate(({ data, conditions }) => {
        const log = new PageLog(data, 1);
        return conditions.map((text) => {
            try {
                const choice = new Choice(log);
                choice.typed = text;
                if (!choice.terms[0].condition) return "no condition";
                return Array.from(choice.rows(), (row) => row + 1);
            } catch (error) {
                return error.message;
            }
        });
    }, { data, conditions });
}

export function orders(page, data) {
    return page.evaluate((data) => {
        const log = new PageLog(data, 1);
        return log.columns.flatMap((column) => [false, true].map((isReversed) => {
            const choice = new Choice(log);
            choice.column = column;
            choice.isReversed = isReversed;
            const name = writtenName(log, column);
            return { name, isReversed, rows: Array.from(choice.rows(), (row) => row + 1) };
        }));
    }, data);
}
