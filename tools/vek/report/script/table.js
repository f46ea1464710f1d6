// The table of a log: all chosen rows of a short one, those in sight of a long one.

const mostRowsAtOnce = 1000;
const rowsBeyondSight = 20;
const tallest = 15e6; // pixels; browsers know no taller elements

class LogTable {
    constructor(log, box, choice, tell) {
        this.log = log;
        this.box = box;
        this.choice = choice;
        this.tell = tell;
        this.table = box.querySelector("table");
        this.columns = log.shown.map((position) => log.columns[position]);
        this.rows = choice.rows();
        this.current = 0;
        this.table.classList.add("live");
        this.makeParts();
        box.addEventListener("scroll", () => this.scrolled());
        new ResizeObserver(() => this.scrolled()).observe(box);
        this.showColumns();
    }

    makeParts() {
        this.head = this.table.tHead;
        this.body = this.table.tBodies[0];
        this.widths = element("colgroup");
        this.table.prepend(this.widths);
        this.body.addEventListener("click", (event) => this.clicked(event));
        this.body.addEventListener("keydown", (event) => this.pressed(event));
    }

    setColumns(columns) {
        this.columns = columns;
        this.showColumns();
    }

    showColumns() {
        const widths = [String(this.log.rowCount).length + 4, ...this.columns.map((c) => c.width)];
        this.widths.replaceChildren();
        for (const width of widths) {
            const column = element("col");
            column.style.width = `calc(${Math.max(width, 4)}ch + 1.75rem)`;
            this.widths.append(column);
        }
        const heads = this.columns.map((column) => this.headOf(column));
        const row = element("tr", {}, element("th", { scope: "col" }, "#"), heads);
        this.head.replaceChildren(row);
        this.showRows();
    }

    headOf(column) {
        const isSorted = this.choice.column === column;
        const order = this.choice.isReversed ? "descending" : "ascending";
        const arrow = isSorted ? (this.choice.isReversed ? " \u25bc" : " \u25b2") : "";
        const label = element("bdi", {}, shown(column.name) || "(no name)");
        const sort = button(label, () => this.sort(column), { title: "Sort" });
        sort.append(arrow);
        return element("th", { scope: "col", "aria-sort": isSorted ? order : undefined }, sort);
    }

    sort(column) {
        this.choice.sortBy(column);
        const at = this.columns.indexOf(column);
        this.rows = this.choice.sorted(this.rows.slice().sort((a, b) => a - b));
        this.showColumns();
        this.head.querySelectorAll("button")[at].focus();
        this.tell();
    }

    setRows(rows) {
        this.rows = rows;
        this.current = 0;
        this.box.scrollTop = 0;
        this.showRows();
    }

    get isWindowed() {
        return this.rows.length > mostRowsAtOnce;
    }

    showRows() {
        this.first = -1;
        this.table.setAttribute("aria-rowcount", this.rows.length + 1);
        if (this.isWindowed) this.showWindow();
        else this.body.replaceChildren(...Array.from(this.rows, (_, i) => this.rowAt(i)));
    }

    rowAt(place) {
        const row = this.rows[place];
        const tagged = this.log.tagged[row];
        const number = button(String(row + 1), () => {}, {
            tabindex: place === this.current ? 0 : -1,
            title: "The whole row",
        });
        const head = element("th", { scope: "row" }, number);
        if (tagged) head.append(" ", element("abbr", { title: "tagged" }, "\u2605"));
        const made = element("tr", {
            id: `r${this.log.number}-${row + 1}`,
            class: tagged ? "tagged" : undefined,
            "aria-rowindex": place + 2,
        }, head);
        if (row === this.chosen) made.classList.add("here");
        for (const column of this.columns) made.append(LogTable.cellOf(column.cell(row)));
        return made;
    }

    // A long text is cut; the row in full has all of it.
    static cellOf(text) {
        const most = 400;
        const cell = element("td");
        cell.textContent = shown(text.length > most ? text.slice(0, most) + "\u2026" : text);
        return cell;
    }

    // The height of a row, and of all of them where the browser can make it.
    measure() {
        const probe = this.rowAt(0);
        this.body.replaceChildren(probe);
        this.rowHeight = probe.getBoundingClientRect().height;
        this.height = Math.min(this.rows.length * this.rowHeight, tallest);
        this.step = this.height / this.rows.length;
    }

    showWindow() {
        this.measure();
        this.before = element("tr", { "aria-hidden": "true", class: "space" }, element("td"));
        this.behind = this.before.cloneNode(true);
        this.drawWindow();
    }

    scrolled() {
        if (this.isWindowed) requestAnimationFrame(() => this.drawWindow());
    }

    drawWindow() {
        if (!this.isWindowed || this.box.clientHeight === 0) return;
        const inSight = Math.ceil(this.box.clientHeight / this.rowHeight);
        const top = Math.floor(this.box.scrollTop / this.step);
        const count = Math.min(this.rows.length, inSight + 2 * rowsBeyondSight);
        const first = Math.max(0, Math.min(top - rowsBeyondSight, this.rows.length - count));
        const isNear = this.first >= 0 && this.step === this.rowHeight &&
            Math.abs(first - this.first) < rowsBeyondSight / 2 && first !== 0;
        const isSameSize = this.end - this.first === count;
        if (isSameSize && (isNear || first === this.first)) return;
        const drawn = count * this.rowHeight;
        const above = this.step === this.rowHeight
            ? first * this.rowHeight
            : Math.min(Math.max(0, this.box.scrollTop - (top - first) * this.rowHeight),
                       this.height - drawn);
        this.before.firstChild.style.height = `${above}px`;
        this.behind.firstChild.style.height = `${Math.max(0, this.height - drawn - above)}px`;
        this.drawRows(first, first + count);
    }

    // Those that stay in sight stay as they are, and are not laid out anew.
    drawRows(first, end) {
        const [oldFirst, oldEnd] = [this.first, this.end];
        [this.first, this.end] = [first, end];
        if (oldFirst < 0 || end <= oldFirst || oldEnd <= first) {
            this.body.replaceChildren(this.before, ...this.rowsAt(first, end), this.behind);
            return;
        }
        for (let i = oldFirst; i < first; ++i) this.before.nextSibling.remove();
        for (let i = end; i < oldEnd; ++i) this.behind.previousSibling.remove();
        this.before.after(...this.rowsAt(first, oldFirst));
        this.behind.before(...this.rowsAt(oldEnd, end));
    }

    rowsAt(first, end) {
        return Array.from({ length: Math.max(0, end - first) }, (_, i) => this.rowAt(first + i));
    }

    clicked(event) {
        const row = event.target.closest("tr");
        if (row && row.id && !String(getSelection())) this.open(this.placeOf(row));
    }

    placeOf(row) {
        return Number(row.getAttribute("aria-rowindex")) - 2;
    }

    pressed(event) {
        const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: 20, PageUp: -20,
                        Home: -Infinity, End: Infinity };
        const step = steps[event.key];
        if (step === undefined || event.ctrlKey || event.altKey || event.metaKey) return;
        event.preventDefault();
        this.focusOn(Math.max(0, Math.min(this.current + step, this.rows.length - 1)));
    }

    focusOn(place) {
        this.current = place;
        this.bringIntoSight(place);
        const row = this.elementOf(place);
        this.body.querySelectorAll("button[tabindex='0']").forEach((b) => (b.tabIndex = -1));
        if (!row) return;
        row.querySelector("button").tabIndex = 0;
        row.querySelector("button").focus({ preventScroll: true });
    }

    elementOf(place) {
        return this.body.querySelector(`tr[aria-rowindex="${place + 2}"]`);
    }

    bringIntoSight(place) {
        const head = this.head.getBoundingClientRect().height;
        if (this.isWindowed) {
            const at = place * this.step;
            const isAbove = at < this.box.scrollTop;
            const isBelow = at + this.rowHeight + head > this.box.scrollTop + this.box.clientHeight;
            if (isAbove || isBelow) this.box.scrollTop = at - this.box.clientHeight / 2;
            this.first = -1;
            return this.drawWindow();
        }
        const row = this.elementOf(place);
        const at = row.offsetTop;
        const isAbove = at < this.box.scrollTop + head;
        const isBelow = at + row.offsetHeight > this.box.scrollTop + this.box.clientHeight;
        if (isAbove || isBelow) this.box.scrollTop = at - this.box.clientHeight / 2;
        return undefined;
    }

    // Shows a row in full and marks it.
    open(place) {
        this.chosen = this.rows[place];
        this.focusOn(place);
        this.body.querySelectorAll(".here").forEach((row) => row.classList.remove("here"));
        const row = this.elementOf(place);
        if (row) row.classList.add("here");
        this.onOpen(this.chosen);
    }
}
