// Which rows of a log are chosen, and in which order.

class Choice {
    constructor(log) {
        this.log = log;
        this.reset();
    }

    reset() {
        this.kept = []; // conditions and searches as they were typed
        this.typed = ""; // the one that is being typed
        this.isAny = false;
        this.onlyTagged = false;
    }

    get narrows() {
        return this.terms.length > 0 || this.onlyTagged;
    }

    // Each with the condition that it is, or null for a search.
    get terms() {
        const texts = this.typed === "" ? this.kept : [...this.kept, this.typed];
        return texts.map((text) => ({ text, condition: parseCondition(this.log, text) }));
    }

    // Throws what is to be told where a term cannot be answered.
    rows() {
        const holds = this.rowsThatHold();
        const rows = [];
        for (let row = 0; row < holds.length; ++row) {
            if (holds[row] && (!this.onlyTagged || this.log.tagged[row])) rows.push(row);
        }
        return this.sorted(Int32Array.from(rows));
    }

    rowsThatHold() {
        const answers = this.terms.map((term) => this.answer(term));
        if (answers.length === 0) return new Uint8Array(this.log.rowCount).fill(1);
        const holds = answers[0];
        for (const answer of answers.slice(1)) {
            for (let row = 0; row < holds.length; ++row) {
                if (this.isAny) holds[row] |= answer[row];
                else holds[row] &= answer[row];
            }
        }
        return holds;
    }

    answer({ text, condition }) {
        return condition ? this.log.rowsThatHold(condition) : this.log.rowsWith(text);
    }

    sortBy(column) {
        this.isReversed = this.column === column && !this.isReversed;
        this.column = column;
    }

    sorted(rows) {
        if (!this.column) return rows;
        const sorted = this.log.sortedBy(this.column, rows);
        return this.isReversed ? sorted.reverse() : sorted;
    }
}
