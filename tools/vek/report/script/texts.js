"use strict";

// Texts as the program sees them. A byte of a log that is no character is the lone surrogate
// U+DC00 and its value, so that every byte is still there.

const isPlainText = (text) => /^[ -~]*$/.test(text);

// One character stands for each byte of the text in UTF-8.
function bytesOf(text) {
    if (isPlainText(text)) return text;
    const encoder = new TextEncoder();
    let bytes = "";
    for (const character of text) {
        const code = character.codePointAt(0);
        if (code >= 0xdc80 && code <= 0xdcff) {
            bytes += String.fromCharCode(code - 0xdc00);
        } else {
            for (const byte of encoder.encode(character)) bytes += String.fromCharCode(byte);
        }
    }
    return bytes;
}

const isBroken = (text) => /[\udc80-\udcff]/u.test(text);

// Only the letters A to Z have a case.
const withoutCase = (text) => text.replace(/[A-Z]+/g, (letters) => letters.toLowerCase());

const withOneSeparator = (text) => text.replace(/[:;.,]/g, ":");

const trimmed = (text) => text.replace(/^[ \t-\r]+|[ \t-\r]+$/g, "");

const isBlank = (text) => /^[ \t-\r]*$/.test(text);

// What cannot be seen, ends lines or turns the direction of writing.
const unseen = new RegExp(
    "[\\p{Cc}\\p{Cf}\\p{Zl}\\p{Zp}\\udc80-\\udcff]" +
    "|(?!\\p{Unassigned})\\p{Default_Ignorable_Code_Point}", "gu");

function writtenOut(character) {
    const short = { "\n": "\\n", "\r": "\\r", "\t": "\\t" }[character];
    if (short) return short;
    const hex = (byte) => "\\x" + byte.charCodeAt(0).toString(16).padStart(2, "0");
    return Array.from(bytesOf(character), hex).join("");
}

// As the program shows a cell.
const shown = (text) => (isPlainText(text) ? text : text.replace(unseen, writtenOut));

const counted = (count, one) => `${count} ${one}${count === 1 ? "" : "s"}`;
