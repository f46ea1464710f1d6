// Brings the page to life: a field, switches and buttons above each table, one log at a time.

class LogSection {
    constructor(section, data) {
        this.section = section;
        this.log = new PageLog(data, Number(section.id.slice("log-".length)));
        this.choice = new Choice(this.log);
        section.classList.toggle("long", this.log.rowCount > mostRowsAtOnce);
        this.box = section.querySelector(".rows");
        this.table = new LogTable(this.log, this.box, this.choice, () => this.tell());
        this.table.onOpen = (row) => this.showDetail(row);
        this.box.before(this.controls());
        this.detail = element("section", { class: "detail", hidden: "" });
        this.box.after(this.detail);
        section.querySelector(".rows-note")?.remove();
        new Pictures(section, (anchor) => this.goTo(anchor));
        for (const link of section.querySelectorAll(".check a")) {
            link.addEventListener("click", (event) => {
                event.preventDefault();
                this.goTo(link.getAttribute("href"));
            });
        }
        this.tell();
    }

    controls() {
        const id = `find-${this.log.number}`;
        const change = afterPause(120, () => this.refresh());
        this.field = element("input", {
            id, type: "search", autocomplete: "off", spellcheck: "false",
            placeholder: "dolly   Scene==67   Take>=3   Notes~sound|boom",
            "aria-describedby": `${id}-help`,
            oninput: change,
            onkeydown: (event) => event.key === "Enter" && this.keep(),
        });
        this.kept = element("ul", { class: "kept", "aria-label": "Conditions" });
        this.status = element("p", { class: "status", role: "status" });
        this.trouble = element("p", { class: "trouble", role: "alert" });
        const help = "Text is looked for in every column. COLUMN=TEXT (contains), ==, !=, <, <=, " +
            ">, >= and ~ (regular expression) ask one, as vek show --where does. Enter keeps what " +
            "is typed and takes the next.";
        return element("div", { class: "controls" },
            element("div", { class: "find" },
                element("label", { for: id }, "Find, or a condition"), this.field,
                element("p", { id: `${id}-help`, class: "note" }, help)),
            this.kept, this.trouble,
            element("div", { class: "tools" }, this.switches(), this.columnMenu(),
                button("Copy as CSV", () => this.copyCsv()),
                button("Copy as command", () => this.copyCommand()), this.status));
    }

    switches() {
        this.any = checkbox("any condition is enough", false, (isOn) => {
            this.choice.isAny = isOn;
            this.refresh();
        });
        this.any.hidden = true;
        this.tagged = checkbox("tagged rows only", false, (isOn) => {
            this.choice.onlyTagged = isOn;
            this.refresh();
        });
        return element("span", {}, this.tagged, this.any);
    }

    // Its boxes are made when somebody asks for them: there may be very many.
    columnMenu() {
        const all = this.log.columns.length;
        const name = this.log.isCut ? `Columns (${all} in all)` : "Columns";
        const menu = element("details", { class: "columns" }, element("summary", {}, name));
        menu.addEventListener("toggle", () => menu.append(this.columnBoxes()), { once: true });
        return menu;
    }

    columnBoxes() {
        const isShown = new Set(this.table.columns);
        const boxes = this.log.columns.map((column) =>
            checkbox(shown(column.name) || "(no name)", isShown.has(column),
                     (isOn) => this.showColumn(column, isOn)));
        return element("fieldset", {}, element("legend", {}, "Shown columns"), boxes);
    }

    showColumn(column, isOn) {
        const others = this.table.columns.filter((each) => each !== column);
        this.table.setColumns(isOn ? [...others, column] : others);
    }

    keep() {
        if (this.field.value === "") return;
        this.choice.kept.push(this.field.value);
        this.field.value = "";
        this.refresh();
    }

    refresh() {
        this.choice.typed = this.field.value;
        this.trouble.textContent = "";
        this.showKept();
        try {
            this.table.setRows(this.choice.rows());
        } catch (error) {
            this.trouble.textContent = error.message;
        }
        this.tell();
    }

    showKept() {
        const items = this.choice.kept.map((text, i) => {
            const remove = button("\u00d7", () => {
                this.choice.kept.splice(i, 1);
                this.refresh();
                this.field.focus();
            }, { "aria-label": `Remove ${shown(text)}` });
            return element("li", {}, element("bdi", {}, shown(text)), remove);
        });
        this.kept.replaceChildren(...items);
        this.any.hidden = this.choice.terms.length < 2 && !this.choice.isAny;
    }

    tell(more = "") {
        const rows = this.table.rows;
        let tagged = 0;
        for (const row of rows) tagged += this.log.tagged[row];
        const count = rows.length === this.log.rowCount
            ? counted(rows.length, "row")
            : `${rows.length} of ${counted(this.log.rowCount, "row")}`;
        this.status.textContent = `${count}${tagged ? `, ${tagged} tagged \u2605` : ""}${more}`;
    }

    async copyCsv() {
        const { columns, rows } = this.table;
        const text = csvOf(columns, rows);
        const broken = isBroken(text) ? "; bytes that are no text are lost in it" : "";
        await this.copy(text.toWellFormed ? text.toWellFormed() : text,
                        `: ${counted(rows.length, "row")} copied as CSV${broken}`);
    }

    async copyCommand() {
        try {
            await this.copy(commandOf(this.log, this.choice, this.table.columns),
                            ": the command is copied");
        } catch (error) {
            this.trouble.textContent = error.message;
        }
    }

    // Where the browser does not let a page copy, the text is there to be copied by hand.
    async copy(text, done) {
        if (await copyText(text)) return this.tell(done);
        const area = element("textarea", { rows: 6, readonly: "", "aria-label": "To be copied" });
        area.value = text;
        this.showBelow("To be copied", area);
        area.select();
        return this.tell("");
    }

    showBelow(heading, content) {
        const close = button("Close", () => {
            this.detail.hidden = true;
            this.box.focus();
        });
        this.detail.replaceChildren(element("h4", {}, heading), close, content);
        this.detail.hidden = false;
    }

    showDetail(row) {
        const list = element("dl");
        for (const column of this.log.columns) {
            const text = column.cell(row);
            if (text === "") continue;
            list.append(element("div", {},
                element("dt", {}, element("bdi", {}, shown(column.name))),
                element("dd", {}, LogSection.inDetail(text))));
        }
        this.showBelow(`Row ${row + 1}${this.log.tagged[row] ? ", tagged \u2605" : ""}`, list);
    }

    // Browsers take long to lay out a text without end.
    static inDetail(text) {
        const most = 5000;
        if (text.length <= most) return shown(text);
        const rest = text.length - most;
        return `${shown(text.slice(0, most))}\u2026 (${counted(rest, "character")} more; ` +
            "Copy as CSV has them)";
    }

    // "#r1-12"; a row that is not chosen is chosen with all others.
    goTo(anchor) {
        const row = Number(anchor.split("-")[1]) - 1;
        let place = this.table.rows.indexOf(row);
        if (place < 0) {
            this.showAll();
            place = this.table.rows.indexOf(row);
        }
        this.section.querySelector("section.table").scrollIntoView();
        this.table.open(place);
    }

    showAll() {
        this.choice.reset();
        this.field.value = "";
        for (const box of [this.any, this.tagged]) box.querySelector("input").checked = false;
        this.refresh();
    }
}

// One log is shown at a time; the links above switch.
class Switch {
    constructor(nav) {
        this.links = Array.from(nav.querySelectorAll("a"));
        for (const link of document.querySelectorAll(".logs a, .totals a")) {
            link.addEventListener("click", (event) => {
                event.preventDefault();
                this.show(link.getAttribute("href").slice(1));
            });
        }
        this.show("all");
    }

    show(id) {
        for (const section of document.querySelectorAll("main > section")) {
            section.hidden = section.id !== id;
        }
        for (const link of this.links) {
            if (link.getAttribute("href") === `#${id}`) link.setAttribute("aria-current", "true");
            else link.removeAttribute("aria-current");
        }
    }
}

function start() {
    const sections = [];
    for (const data of document.querySelectorAll("script[type='application/json']")) {
        const section = data.closest("section.log");
        sections.push(new LogSection(section, JSON.parse(data.textContent)));
        data.remove();
    }
    const nav = document.querySelector("nav.logs");
    if (nav) new Switch(nav);
    new Printing(sections);
}

document.documentElement.classList.add("scripted");
start();
