// A log of the page: its columns, with each value once in the order of a sort.

// Differences by seven bits a byte, in base64.
function unpackedNumbers(text, count) {
    const bytes = atob(text);
    const numbers = count === undefined ? [] : new Int32Array(count);
    let [number, step, scale, size] = [0, 0, 1, 0];
    for (let i = 0; i < bytes.length; ++i) {
        const byte = bytes.charCodeAt(i);
        step += (byte & 0x7f) * scale;
        scale *= 128;
        if (byte & 0x80) continue;
        number += step % 2 ? -(step + 1) / 2 : step / 2;
        numbers[size++] = number;
        [step, scale] = [0, 1];
    }
    return numbers;
}

class Column {
    constructor(data, position, rowCount, width) {
        this.name = data.name;
        this.position = position;
        this.values = Column.wholeValues(data.values, unpackedNumbers(data.shared));
        this.ask = data.ask;
        this.range = data.range || [];
        this.forms = data.forms || this.values;
        this.width = width;
        this.places = unpackedNumbers(data.places, rowCount);
        this.ranks = Column.ranksOf(data.values.length, unpackedNumbers(data.same));
    }

    // Each is written without what it shares with the front of the one before it.
    static wholeValues(rests, shared) {
        let before = "";
        return rests.map((rest, i) => (before = before.slice(0, shared[i]) + rest));
    }

    // Values that are the same to a sort have one rank.
    static ranksOf(count, sameAsBefore) {
        const ranks = new Int32Array(count).fill(1);
        if (count > 0) ranks[0] = 0;
        for (const place of sameAsBefore) ranks[place] = 0;
        for (let i = 1; i < count; ++i) ranks[i] += ranks[i - 1];
        return ranks;
    }

    cell(row) {
        return this.values[this.places[row]];
    }

    // How long its cells and the words of its name get, in characters.
    get longest() {
        const lengths = [...this.name.split(" "), ...this.values].map((text) => text.length);
        return lengths.reduce((most, length) => Math.max(most, length), 1);
    }
}

class PageLog {
    constructor(data, number) {
        this.number = number;
        this.path = data.path;
        this.options = data.options;
        this.rowCount = data.rows;
        this.columns = data.columns.map(
            (column, i) => new Column(column, i, data.rows, data.widths[i]));
        this.shown = data.shown;
        this.isFieldMap = data.isFieldMap;
        this.isCut = data.isCut;
        this.tagged = new Uint8Array(data.rows);
        for (const row of unpackedNumbers(data.tagged)) this.tagged[row] = 1;
        this.blank = this.blankRows();
    }

    // Rows without any value stand behind all others.
    blankRows() {
        const blank = new Uint8Array(this.rowCount).fill(1);
        for (const column of this.columns) {
            const empty = column.values.indexOf("");
            for (let row = 0; row < blank.length; ++row) {
                if (column.places[row] !== empty) blank[row] = 0;
            }
        }
        return blank;
    }

    // For each row whether the condition holds.
    rowsThatHold(condition) {
        const { column, operator, value } = condition;
        const holds = new Uint8Array(this.rowCount);
        if (operator === "=" && isBlank(value)) return holds.fill(1);
        if (operator === "=" && (column.ask === "range" || column.ask === "labels")) {
            return this.rowsOfRange(condition, holds);
        }
        if (operator === "=" && column.ask === "unclear") {
            throw new NotForThePage(`${column.name} = cannot be asked in this page, as several ` +
                                    "columns have its name; vek show --where can");
        }
        const values = operator === "=" ? column.forms : column.values;
        const answers = Uint8Array.from(values, valueTest(condition));
        for (let row = 0; row < holds.length; ++row) holds[row] = answers[column.places[row]];
        return holds;
    }

    rowsOfRange(condition, holds) {
        const [start, end] = condition.column.range.map((i) => this.columns[i]);
        const test = rangeTest(condition.column.ask, condition.value);
        for (let row = 0; row < holds.length; ++row) {
            holds[row] = test(start ? start.cell(row) : "", end ? end.cell(row) : "");
        }
        return holds;
    }

    // A search: any of the columns contains the text.
    rowsWith(text) {
        const holds = new Uint8Array(this.rowCount);
        for (const column of this.columns) {
            if (column.ask === "unclear") continue;
            const found = this.rowsThatHold({ column, operator: "=", value: text });
            for (let row = 0; row < holds.length; ++row) holds[row] |= found[row];
        }
        return holds;
    }

    // The rows in the order of a sort by a column; rows that are the same to it keep theirs.
    sortedBy(column, rows) {
        const { places, ranks } = column;
        const blank = this.blank;
        return rows.sort((a, b) =>
            blank[a] - blank[b] || ranks[places[a]] - ranks[places[b]] || a - b);
    }
}
