// The pictures: what is pointed at is told below them, what is clicked is gone to.

class Pictures {
    constructor(section, goTo) {
        this.goTo = goTo;
        for (const svg of section.querySelectorAll("svg")) this.enliven(svg);
    }

    enliven(svg) {
        const links = Array.from(svg.querySelectorAll("a"));
        if (links.length === 0) return;
        const told = element("p", { class: "told", "aria-hidden": "true" }, "\u00a0");
        svg.parentNode.after(told);
        links.forEach((link, i) => link.setAttribute("tabindex", i === 0 ? "0" : "-1"));
        const tell = (event) => {
            const link = event.target.closest("a");
            if (link) told.textContent = link.querySelector("title").textContent;
        };
        svg.addEventListener("pointerover", tell);
        svg.addEventListener("focusin", tell);
        svg.addEventListener("click", (event) => this.clicked(event));
        svg.addEventListener("keydown", (event) => Pictures.pressed(event, links));
    }

    clicked(event) {
        const link = event.target.closest("a");
        if (!link) return;
        event.preventDefault();
        this.goTo(link.getAttribute("href"));
    }

    // The arrows go from clip to clip, so that a picture is one stop of the tabulator.
    static pressed(event, links) {
        const step = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 }[event.key];
        const at = links.indexOf(event.target.closest("a"));
        const next = links[at + step];
        if (!step || at < 0 || !next) return;
        event.preventDefault();
        links[at].setAttribute("tabindex", "-1");
        next.setAttribute("tabindex", "0");
        next.focus();
    }
}
