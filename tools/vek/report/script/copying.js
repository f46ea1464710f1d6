// A choice as CSV, and as the command that makes it.

function csvCell(text, isAlone) {
    const needsQuotes = /[",\r\n]/.test(text) || text.startsWith("\ufeff") || (isAlone && !text);
    return needsQuotes ? `"${text.replaceAll('"', '""')}"` : text;
}

function csvOf(columns, rows) {
    const isAlone = columns.length === 1;
    const line = (cells) => cells.map((cell) => csvCell(cell, isAlone)).join(",") + "\n";
    let text = line(columns.map((column) => column.name));
    for (const row of rows) text += line(columns.map((column) => column.cell(row)));
    return text;
}

// A word as a shell takes it.
function shellWord(text) {
    if (/^[A-Za-z0-9_.,:=/@%+-]+$/.test(text)) return text;
    return `'${text.replaceAll("'", "'\\''")}'`;
}

// A column's name where signs would mean something else.
function writtenName(log, column) {
    const same = columnsNamed(log, column.name);
    const turn = same.length > 1 ? `#${same.indexOf(column) + 1}` : "";
    if (/^[A-Za-z0-9_.-]+( [A-Za-z0-9_.-]+)*$/.test(column.name)) return column.name + turn;
    return `[${column.name.replaceAll("]", "]]")}]${turn}`;
}

const conditionWords = (texts) => texts.flatMap((text) => ["-w", text]);

// A search asks every column.
const searchWords = (log, text) =>
    ["--any", ...conditionWords(log.columns.map((c) => `${writtenName(log, c)}=${text}`))];

function termWords(log, choice) {
    const conditions = choice.terms.filter((term) => term.condition).map((term) => term.text);
    const searches = choice.terms.filter((term) => !term.condition).map((term) => term.text);
    if (!choice.isAny) return { first: conditionWords(conditions), searches };
    const asked = searches.flatMap((text) => searchWords(log, text));
    const any = ["--any", ...asked.filter((word) => word !== "--any")];
    return { first: [...any, ...conditionWords(conditions)], searches: [] };
}

function isFieldMap(log, columns) {
    return log.isFieldMap && columns.length === log.shown.length &&
        columns.every((column, i) => column.position === log.shown[i]);
}

// Conditions that must all hold beside a search that any column may answer are one command behind
// the other.
function commandOf(log, choice, columns) {
    const { first, searches } = termWords(log, choice);
    const last = choice.onlyTagged ? ["--tagged"] : [];
    if (choice.column) last.push("--sort", writtenName(log, choice.column));
    if (choice.column && choice.isReversed) last.push("--reverse");
    if (!isFieldMap(log, columns)) {
        last.push("--columns", columns.map((column) => writtenName(log, column)).join(","));
    }
    const steps = searches.map((text) => searchWords(log, text));
    if (steps.length === 0 || first.length > 0) steps.unshift(first);
    const input = (i) => (i === 0 ? [...log.options, log.path] : ["-"]);
    return steps.map((words, i) => {
        const end = i + 1 === steps.length ? last : ["--format", "vekdb", "--all"];
        return ["vek", "show", ...input(i), ...words, ...end].map(shellWord).join(" ");
    }).join(" | ");
}

async function copyText(text) {
    try {
        await navigator.clipboard.writeText(text);
        return true;
    } catch {
        return false;
    }
}
