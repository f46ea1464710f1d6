// Logs that the tests make pages of.
import { writeFileSync } from "node:fs";
import { inFolder, samples } from "./harness.mjs";

export const dailies = `${samples}/dailies.vek`;
export const docs = `${samples}/docs.vek`;

// Always the same numbers.
export function numbersFrom(seed) {
    let state = seed;
    return (below) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return Math.floor((state / 2 ** 32) * below);
    };
}

export function write(name, text) {
    writeFileSync(inFolder(name), text);
    return inFolder(name);
}

const quoted = (text) => `"${text.replaceAll('"', '""')}"`;

// Names and values that are hard to sort and to ask for.
export function oddLog() {
    const chance = numbersFrom(5);
    const pieces = ["", " ", "1", "01", "10", "2", "a", "A", "b", "B", "2a", "-", "\u00e9", "\u00c9",
                    "\ud83c\udfac", "\uff21", ";", ":", "01:00:00:0", ".5"];
    const cell = () => Array.from({ length: chance(4) }, () => pieces[chance(pieces.length)]).join("");
    const lines = ["Scene,Take,[c<d],Take,\"a,b\",Ink start,Ink end"];
    for (let row = 0; row < 400; ++row) {
        const feet = (n) => `KJ ${230000 + chance(3)} ${String(n).padStart(4, "0")}+0${chance(9)}`;
        const start = chance(900);
        const blank = chance(20) === 0;
        const cells = [cell(), cell(), cell(), String(chance(30)), cell(), feet(start),
                       chance(5) ? feet(start + chance(90)) : ""];
        lines.push(cells.map((text) => quoted(blank ? "" : text)).join(","));
    }
    return write("odd.csv", lines.join("\n") + "\n");
}

// Two rows of so many cells, each of which says where it stands, and short ones for a check to find.
export function columnsLog(count) {
    const row = (of) => Array.from({ length: count }, (_, i) => of(i + 1)).join(",");
    const lines = [row((i) => `Column ${i}`), row((i) => `c${count}/${i}-1`),
                   row((i) => `c${count}/${i}-2`), ...Array(12).fill("short")];
    return write(`columns-${count}.csv`, lines.join("\n") + "\n");
}

// As many columns as a log can have.
export function widestLog() {
    const line = (letter) => Array.from({ length: 65535 }, (_, i) => `${letter}${i}`).join(",");
    return write("widest.csv", `${line("c")}\n${line("v")}\n${line("w")}\n`);
}

// So many columns, and as many rows: m1/1 is the first cell of the first.
export function manyRows(columns, rows) {
    const line = (of) => Array.from({ length: columns }, (_, i) => of(i + 1)).join(",");
    const lines = [line((i) => `Column ${i}`),
                   ...Array.from({ length: rows }, (_, row) => line((i) => `m${row + 1}/${i}`))];
    return write(`many-${columns}.csv`, lines.join("\n") + "\n");
}

// Rows of many lines: in the one of number 7 the first word is first7. and the last one last7.
export function highRows(count) {
    const words = (row) => Array(10 + (row % 7)).fill("many words in a cell").join(" ");
    const line = (row) => [`first${row}. ${words(row)}`, ...Array(5).fill(words(row)),
                           `${words(row)} last${row}.`].join(",");
    const head = "One,Two,Three,Four,Five,Six,Seven";
    return write("high.csv", [head, ...Array.from({ length: count }, (_, row) => line(row))]
        .join("\n") + "\n");
}

// Text that is read from the right, and other text with a word of it in it.
export const fromTheRight = "\u05e9\u05dc\u05d5\u05dd abc!";
export const fromTheLeft = "abc \u05e9\u05dc\u05d5\u05dd!";
export const writtenBothWays = () => write("both-ways.csv",
    `Scene,${fromTheRight},Notes\n1,${fromTheRight},${fromTheLeft}\n` +
    `2,${fromTheLeft},\u6f22\u5b57\n`);

// Every type that conditions know, dates and timecodes without punctuation among them.
export function typedLog() {
    const chance = numbersFrom(9);
    const lines = ['"VEKDB:Rev 1"', '"FPS:25"', '"VEKDB"', '"9","9","9","9","9","9"',
                   '"text","timecode","timecode","timecode_s","dos_date","timecode"',
                   '"Reel","Start time","End time","Short","Shot on","Sound"'];
    const two = (n) => String(n).padStart(2, "0");
    for (let row = 0; row < 300; ++row) {
        const [minute, second, frame] = [chance(60), chance(50), chance(25)];
        const code = (s, mark) => `01:${two(minute)}:${two(s)}${mark}${two(frame)}`;
        const cells = [`A00${chance(5)}`, code(second, chance(2) ? ":" : ";"),
                       code(second + chance(9), ":"),
                       chance(9) ? `01${two(minute)}${two(second)}${two(frame)}` : "x",
                       String(1.7e9 + chance(1e8)), chance(3) ? code(second, ".") : ""];
        lines.push(cells.map(quoted).join(","));
    }
    return write("typed.vek", lines.join("\n") + "\n");
}

export function hostileLog() {
    const cells = ["</script><script>document.title='x'</script>", "<!--<script>",
                   "</style><img src=x onerror=alert(1)>", "javascript:alert(1)",
                   "\" onmouseover=\"alert(1)", "'><svg onload=alert(1)>",
                   "\u2028\u2029\u202e\u200b", "\u05e9\u05dc\u05d5\u05dd abc", "\u6f22\u5b57",
                   "a\tb", "e\u0301"].map((text) => Buffer.from(quoted(text)));
    const broken = [[0xed, 0xa0, 0x80], [0xff, 0xfe, 0x41], [0xc3, 0x28]];
    cells.push(...broken.map((bytes) => Buffer.from(bytes)));
    cells.push(Buffer.from("y".repeat(1 << 20)));
    const comma = Buffer.from(",");
    const lines = cells.flatMap((cell, i) =>
        [cell, comma, cell, comma, cell, Buffer.from(`,01:00:${10 + i}:00,01:00:${10 + i}:12\n`)]);
    const head = Buffer.from('Reel,Scene,"Take<b onclick=alert(1)>",Start,End\n');
    return write("hostile.csv", Buffer.concat([head, ...lines]));
}

// Every character but those that end lines and cells.
export function allCharacters() {
    const lines = ["One,Two"];
    let code = 1;
    const cell = () => {
        let text = "";
        if (code > 0x20000 && code < 0xe0000) code = 0xe0000;
        for (let n = 0; n < 72; ++n, ++code) {
            const isOut = code === 10 || code === 13 || code === 34 || code === 44 ||
                (code >= 0xd800 && code < 0xe000);
            if (!isOut) text += String.fromCodePoint(code);
        }
        return text;
    };
    for (let row = 0; row < 990; ++row) lines.push(`${cell()},${cell()}`);
    return write("characters.csv", lines.join("\n") + "\n");
}

export function longLog(rows) {
    const chance = numbersFrom(3);
    const two = (n) => String(n).padStart(2, "0");
    const lines = ["Reel,Scene,Take,Start time,End time,Description,Tag"];
    for (let row = 0; row < rows; ++row) {
        const second = Math.floor(row / 4) % 3600;
        const time = (s) => `${two(1 + Math.floor(row / 14400))}:${two(Math.floor(s / 60) % 60)}:` +
            `${two(s % 60)}:${two(row % 24)}`;
        lines.push(`A${two(row % 40)},${chance(90)},${1 + chance(12)},${time(second)},` +
                   `${time(second + 5)},clip number ${chance(1e6)},${row % 7 === 0 ? 1 : 0}`);
    }
    return write(`long${rows}.csv`, lines.join("\n") + "\n");
}

// A zero byte stands in no text file, but in this one.
export const zeroLog = () => write("zero.json", '[{"Scene":"1","Notes":"a\\u0000b"}]');
