// What of a log is printed: all rows, as far as that is a number one would print, and all columns,
// those that have no room beside the others in a table of their own behind them.

const mostRowsInPrint = 5000;
const roomOnSheet = 172; // in characters, of a sheet laid on its side
const paddingInPrint = 4;
const widthOfOne = 0.9; // most are narrower than a digit; the padding has room for a wide one
const longestInOneLine = 18; // a timecode, a keycode
const narrowestInPrint = 14; // of a column with longer texts

function widthInPrint({ longest }, most = 0) {
    const isShort = longest <= longestInOneLine;
    const width = isShort ? longest : Math.max(narrowestInPrint, Math.min(longest, most));
    return width * widthOfOne + paddingInPrint;
}

const roomFor = (columns, most) =>
    columns.reduce((sum, column) => sum + widthInPrint(column, most), 0);

// Columns that stand beside each other, in their order.
function sheetsOf(columns, room) {
    const sheets = [[]];
    for (const column of columns) {
        const last = sheets.at(-1);
        const isFull = last.length > 0 && roomFor([...last, column]) > room;
        if (isFull) sheets.push([column]);
        else last.push(column);
    }
    return sheets;
}

// The widest that a column may be for all to have room.
function mostOf(columns, room) {
    let most = narrowestInPrint;
    while (most < 80 && roomFor(columns, most + 1) <= room) ++most;
    return most;
}

class PrintedTable {
    constructor(table) {
        this.source = table;
        this.count = Math.min(table.rows.length, mostRowsInPrint);
        const numbers = String(table.log.rowCount).length + 3 + paddingInPrint;
        this.numbers = numbers;
        this.room = roomOnSheet - numbers;
    }

    tables() {
        const { columns } = this.source;
        return sheetsOf(columns, this.room)
            .map((sheet) => this.tableOf(sheet, this.captionOf(sheet)));
    }

    // What of the rows and columns the table has, where it has not all.
    captionOf(sheet) {
        const { columns, rows } = this.source;
        const parts = [];
        if (this.count < rows.length) {
            parts.push(`the first ${this.count} of ${counted(rows.length, "row")}`);
        }
        if (sheet.length < columns.length) {
            const first = columns.indexOf(sheet[0]) + 1;
            parts.push(`columns ${first} to ${first + sheet.length - 1} of ${columns.length}`);
        }
        return parts.join(", ").replace(/^./, (first) => first.toUpperCase());
    }

    tableOf(columns, caption) {
        const most = mostOf(columns, this.room);
        const widths = [this.numbers, ...columns.map((column) => widthInPrint(column, most))];
        const all = widths.reduce((sum, width) => sum + width);
        return element("table", { class: "printed" },
            ...(caption ? [element("caption", {}, caption)] : []),
            element("colgroup", {}, ...widths.map((width) =>
                element("col", { width: `${(100 * width / all).toFixed(2)}%` }))),
            element("thead", {}, this.headOf(columns)),
            element("tbody", {}, ...Array.from({ length: this.count },
                                               (_, place) => this.rowAt(place, columns))));
    }

    // Of a heading that is printed again on each sheet browsers leave buttons out.
    headOf(columns) {
        return element("tr", {}, element("th", { scope: "col" }, "#"),
            ...columns.map((column) => element("th", { scope: "col" }, shown(column.name))));
    }

    rowAt(place, columns) {
        const { log, rows } = this.source;
        const isTagged = log.tagged[rows[place]];
        return element("tr", { class: isTagged ? "tagged" : undefined },
            element("th", { scope: "row" }, `${rows[place] + 1}${isTagged ? " \u2605" : ""}`),
            ...columns.map((column) => LogTable.cellOf(column.cell(rows[place]))));
    }
}

// Every log of the page as it is printed, and back.
class Printing {
    constructor(sections) {
        this.sections = sections;
        this.undo = [];
        addEventListener("beforeprint", () => this.begin());
        addEventListener("afterprint", () => this.end());
    }

    begin() {
        this.end();
        for (const { section, table } of this.sections) {
            this.show(section);
            for (const findings of section.querySelectorAll("details.check:not([open])")) {
                findings.open = true;
                this.undo.push(() => (findings.open = false));
            }
            const made = new PrintedTable(table).tables();
            table.table.before(...made);
            this.undo.push(() => made.forEach((each) => each.remove()));
        }
        const totals = document.getElementById("all");
        if (totals) this.show(totals);
    }

    show(section) {
        if (!section.hidden) return;
        section.hidden = false;
        this.undo.push(() => (section.hidden = true));
    }

    end() {
        for (const step of this.undo.splice(0)) step();
    }
}
