// The conditions of --where, answered as the program answers them.

const operators = ["==", "!=", "<=", ">=", "<", ">", "~", "="];

// What other languages write for one of ours.
const foreignOperators = { "<>": "!=", "><": "!=", "=>": ">=", "=<": "<=", "=~": "~" };

const operatorAt = (text, at) => operators.find((operator) => text.startsWith(operator, at));

// "[c<d]#2" at the front of a text: the name, which one of that name, and how long it is written.
function bracketedName(text) {
    const match = /^\[((?:[^\]]|\]\])*)\](?!\])(?:#([1-9][0-9]*))?/.exec(text);
    if (!match) return null;
    const turn = match[2] ? Number(match[2]) : 0;
    return { name: match[1].replaceAll("]]", "]"), turn, size: match[0].length };
}

function columnsNamed(log, name) {
    const wanted = withoutCase(name);
    return log.columns.filter((column) => withoutCase(column.name) === wanted);
}

// "Reel#2", where several columns are called Reel.
function numberedColumn(log, name) {
    const match = /^(.*)#([0-9]+)$/s.exec(name);
    if (!match) return null;
    const named = columnsNamed(log, match[1]);
    return named.length > 1 ? named[Number(match[2]) - 1] : null;
}

// Null where there is no such column.
function findColumn(log, wanted) {
    const named = columnsNamed(log, wanted);
    if (named.length > 1) {
        throw new Error(`${named.length} columns are named ${wanted}: say ${wanted}#1 or ` +
                        `${wanted}#2`);
    }
    const column = named[0] || numberedColumn(log, wanted);
    if (column) return column;
    const inner = bracketedName(wanted);
    if (!inner || inner.size !== wanted.length) return null;
    if (inner.turn === 0) return findColumn(log, inner.name);
    return columnsNamed(log, inner.name)[inner.turn - 1] || null;
}

function conditionOf(log, name, operator, value) {
    const column = findColumn(log, name);
    if (!column) return null;
    const foreign = operator.length === 1 ? operator + value.slice(0, 1) : "";
    if (Object.hasOwn(foreignOperators, foreign)) {
        throw new Error(`there is no comparison ${foreign}: write ` +
                        `${name}${foreignOperators[foreign]}${value.slice(1)}`);
    }
    const isEmptyTest = operator === "=" && value === "";
    return { column, operator: isEmptyTest ? "empty" : operator, value };
}

// Null for a text that is no condition on a column of the log.
function parseCondition(log, text) {
    const name = bracketedName(text);
    if (name) {
        const at = name.size + /^ */.exec(text.slice(name.size))[0].length;
        const operator = operatorAt(text, at);
        if (operator) {
            return conditionOf(log, text.slice(0, name.size), operator,
                               text.slice(at + operator.length));
        }
    }
    for (let at = 1; at < text.length; ++at) {
        const operator = operatorAt(text, at);
        if (!operator) continue;
        return conditionOf(log, trimmed(text.slice(0, at)), operator,
                           text.slice(at + operator.length));
    }
    return null;
}

// HH:MM:SS:FF or HHMMSSFF as a number that is ordered as they are; null for other texts.
function timecodeOrder(text) {
    const match = /^(\d\d?)[:;.,](\d\d)[:;.,](\d\d)[:;.,](\d\d)$/.exec(text) ||
        /^(\d\d)(\d\d)(\d\d)(\d\d);?$/.exec(text);
    if (!match) return null;
    const [hours, minutes, seconds, frames] = match.slice(1).map(Number);
    if (minutes > 59 || seconds > 59) return null;
    return ((hours * 60 + minutes) * 60 + seconds) * 1000 + frames;
}

const compare = (a, b) => (a < b ? -1 : a > b ? 1 : 0);

const compareNumbers = (a, b) => compare(a.length, b.length) || compare(a, b);

// As people read: numbers within texts by their value, the case ignored.
function compareTexts(a, b) {
    const piece = /(\d+)|[^]/g;
    const leftPieces = withoutCase(bytesOf(a)).match(piece) || [];
    const rightPieces = withoutCase(bytesOf(b)).match(piece) || [];
    const isNumber = (text) => text >= "0" && text < ":";
    const withoutZeros = (digits) => digits.replace(/^0+/, "");
    for (let i = 0; i < leftPieces.length && i < rightPieces.length; ++i) {
        const [x, y] = [leftPieces[i], rightPieces[i]];
        const order = isNumber(x) && isNumber(y)
            ? compareNumbers(withoutZeros(x), withoutZeros(y))
            : compare(x.charCodeAt(0), y.charCodeAt(0));
        if (order !== 0) return order;
    }
    return compare(leftPieces.length, rightPieces.length);
}

function comparePeople(a, b) {
    const [first, second] = [timecodeOrder(a), timecodeOrder(b)];
    if (first === null || second === null) return compareTexts(trimmed(a), trimmed(b));
    return compare(first, second);
}

const holdsOrder = {
    "<": (order) => order < 0,
    "<=": (order) => order <= 0,
    ">": (order) => order > 0,
    ">=": (order) => order >= 0,
};

// "KJ 230012 0345+08" as a roll without its blanks, feet and frames; null for other texts.
function filmPlace(text) {
    const whole = trimmed(text);
    const match = /^(.*?)(\d+)\+(\d\d)$/s.exec(whole);
    if (!match) return null;
    const kept = match[2].length > 6 ? 4 : match[2].length;
    const before = match[1] + match[2].slice(0, match[2].length - kept);
    return {
        roll: withoutCase(before.replace(/[^A-Za-z0-9]/g, "")),
        frames: Number(match[2].slice(-kept)) * 100 + Number(match[3]),
    };
}

// Null where the two are no keycodes. A clip without an end is one frame.
function isOnFilm(start, end, wanted) {
    const from = filmPlace(start);
    if (!from) return null;
    if (from.roll !== wanted.roll || wanted.frames < from.frames) return false;
    if (wanted.frames === from.frames) return true;
    const to = filmPlace(end);
    if (!to) return isBlank(end) ? false : null;
    return to.roll === wanted.roll && wanted.frames <= to.frames;
}

// The start begins with the text, or it is between the two, as many bytes compared as it has.
function isBetweenTexts(start, end, text) {
    if (start === "") return false;
    const front = start.slice(0, text.length);
    if (front === text) return true;
    return end !== "" && front < text && end.slice(0, text.length) >= text;
}

// A test of two values, those of a range's start and end.
function rangeTest(kind, value) {
    const text = bytesOf(value);
    const film = kind === "labels" ? filmPlace(value) : null;
    return (start, end) => {
        const isThere = film ? isOnFilm(start, end, film) : null;
        return isThere === null ? isBetweenTexts(bytesOf(start), bytesOf(end), text) : isThere;
    };
}

const isTimecodeKind = (kind) => kind === "timecode" || kind === "shown";

function containsTest(kind, value) {
    const form = (text) => withoutCase(isTimecodeKind(kind) ? withOneSeparator(text) : text);
    const wanted = form(value);
    return (text) => form(text).includes(wanted);
}

// A test of one value, for all operators but those that ask for a range.
function valueTest(condition) {
    const wanted = condition.value;
    switch (condition.operator) {
        case "empty":
            return (text) => text === "";
        case "==":
            return (text) => text === wanted;
        case "!=":
            return (text) => text !== wanted;
        case "~":
            return regexTest(wanted);
        case "=":
            return containsTest(condition.column.ask, wanted);
        default:
            return (text) =>
                text !== "" && holdsOrder[condition.operator](comparePeople(text, wanted));
    }
}

// Regular expressions of the program and of the browser agree on a common part, which is
// translated. The rest is refused, for the program alone answers it.

class NotForThePage extends Error {}

const refuseRegex = (what) => {
    throw new NotForThePage(`${what} cannot be tried in this page; vek show --where can`);
};

const classEscapes = { d: "0-9", w: "0-9A-Za-z_", s: "\\t\\n\\f\\r " };
const controlEscapes = { t: "\\t", n: "\\n", r: "\\r", f: "\\f", v: "\\v" };
const asLiteral = (character) => `\\u{${character.codePointAt(0).toString(16)}}`;

class RegexTranslation {
    constructor(text) {
        this.rest = text;
        this.out = "";
        this.flags = "su";
        // Of each group that is open, whether something in it repeats without bounds.
        this.repeats = [false];
        this.closedRepeats = false;
    }

    take(pattern) {
        const match = pattern.exec(this.rest);
        if (match) this.rest = this.rest.slice(match[0].length);
        return match;
    }

    translate() {
        if (this.take(/^\(\?i\)/)) this.flags += "i";
        while (this.rest !== "") this.takePiece();
        if (this.repeats.length !== 1) refuseRegex("An expression with an open (");
        return new RegExp(this.out, this.flags);
    }

    takePiece() {
        if (this.take(/^\|/)) this.out += "|";
        else if (/^[$^]/.test(this.rest)) this.anchor(this.take(/^./)[0]);
        else if (this.take(/^\(\?:|^\((?!\?)/)) this.open();
        else if (this.rest.startsWith("(")) refuseRegex("A group that begins with (?");
        else if (this.take(/^\)/)) this.close();
        else if (this.rest.startsWith("[")) this.takeClass();
        else if (this.rest.startsWith("\\")) this.takeEscape();
        else if (/^[*+?]/.test(this.rest)) refuseRegex("A repeat of nothing");
        else this.takeLiteral();
    }

    anchor(sign) {
        this.out += sign;
        refuseRepeatOf(this.rest);
    }

    open() {
        this.out += "(?:";
        this.repeats.push(false);
    }

    close() {
        if (this.repeats.length === 1) refuseRegex("An expression with a ) too many");
        const inner = this.repeats.pop();
        this.out += ")";
        if (inner) this.repeats[this.repeats.length - 1] = true;
        this.takeRepeat(inner);
    }

    takeLiteral() {
        const [character] = this.take(/^[^]/u);
        this.out += character === "." ? "." : asLiteral(character);
        this.takeRepeat(false);
    }

    takeEscape() {
        const place = this.take(/^\\[Azb]/);
        if (place) return this.anchor({ A: "^", z: "$", b: "\\b" }[place[0][1]]);
        const [, letter] = this.take(/^\\([^])/u) || refuseRegex("A \\ at the end");
        if (classEscapes[letter]) this.out += `[${classEscapes[letter]}]`;
        else if (classEscapes[letter.toLowerCase()]) {
            this.out += `[^${classEscapes[letter.toLowerCase()]}]`;
        } else this.out += this.escaped(letter);
        return this.takeRepeat(false);
    }

    // What stands for one character behind a backslash.
    escaped(letter) {
        if (controlEscapes[letter]) return controlEscapes[letter];
        if (/^[!-/:-@[-^`{-~]$/.test(letter)) return asLiteral(letter);
        return refuseRegex(`\\${letter}`);
    }

    takeClass() {
        const [, inverse] = this.take(/^\[(\^?)/);
        let members = "";
        let isFirst = true;
        while (isFirst || !this.take(/^\]/)) {
            members += this.takeMember();
            isFirst = false;
        }
        this.out += `[${inverse}${members}]`;
        this.takeRepeat(false);
    }

    takeMember() {
        if (this.rest === "") refuseRegex("An expression with an open [");
        if (this.rest.startsWith("[:")) refuseRegex("A class by name, [:...:],");
        const named = this.take(/^\\([dws])/);
        if (named) return classEscapes[named[1]];
        const first = this.takeEnd();
        if (!/^-[^\]]/.test(this.rest)) return first;
        this.take(/^-/);
        return `${first}-${this.takeEnd()}`;
    }

    takeEnd() {
        const escape = this.take(/^\\([^])/u);
        if (escape) return this.escaped(escape[1]);
        return asLiteral(this.take(/^[^]/u)[0]);
    }

    // A repeat within one takes time without bounds here, in the program it does not.
    takeRepeat(hasInner) {
        const match = this.take(/^(?:[*+?]|\{(\d+)(,?)(\d*)\})\??/);
        if (!match) return;
        const isUnbounded = /^[*+]/.test(match[0]) || (match[2] === "," && match[3] === "");
        const isBounded = /^\{/.test(match[0]);
        if (isBounded && Math.max(match[1], match[3] || 0) > 1000) {
            refuseRegex("A repeat of more than 1000");
        }
        if (hasInner && !/^\?/.test(match[0])) refuseRegex("A repeat within a repeat");
        if (isUnbounded || isBounded) this.repeats[this.repeats.length - 1] = true;
        this.out += match[0];
        refuseRepeatOf(this.rest);
    }
}

function refuseRepeatOf(rest) {
    if (/^(?:[*+?]|\{\d+,?\d*\})/.test(rest)) refuseRegex("A repeat of a repeat or of a place");
}

function translatedRegex(text) {
    try {
        return new RegexTranslation(text).translate();
    } catch (error) {
        if (error instanceof NotForThePage) throw error;
        return refuseRegex("This expression");
    }
}

// A text that is no UTF-8 is matched byte by byte.
function regexTest(text) {
    const ofTexts = translatedRegex(text);
    const ofBytes = isPlainText(text) ? ofTexts : translatedRegex(bytesOf(text));
    return (value) => (isBroken(value) ? ofBytes.test(bytesOf(value)) : ofTexts.test(value));
}
