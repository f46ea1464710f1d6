// Elements of the page. Texts get into it as texts alone.

// Children come one by one or as arrays, which may be too long to be arguments.
function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        if (key.startsWith("on")) made.addEventListener(key.slice(2), value);
        else if (value !== false && value !== undefined) made.setAttribute(key, value);
    }
    for (const child of children.flat()) made.append(child);
    return made;
}

const button = (label, onclick, attributes = {}) =>
    element("button", { type: "button", onclick, ...attributes }, label);

function checkbox(label, isOn, onchange) {
    const box = element("input", { type: "checkbox", onchange: () => onchange(box.checked) });
    box.checked = isOn;
    return element("label", { class: "check-box" }, box, ` ${label}`);
}

// The last of several calls that follow each other closely.
function afterPause(milliseconds, call) {
    let timer = 0;
    return () => {
        clearTimeout(timer);
        timer = setTimeout(call, milliseconds);
    };
}
