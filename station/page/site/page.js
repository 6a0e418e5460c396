// SPDX-License-Identifier: MIT
// The page of a station. Whatever was received gets into the page as text alone (textContent).
"use strict";

const MOST_SHOWN = 100; // of the latest transmissions
const WATERFALL_ROWS = 240;

const byId = (id) => document.getElementById(id);

function element(kind, className, text) {
    const made = document.createElement(kind);
    if (className)
        made.className = className;
    if (text !== undefined)
        made.textContent = text;
    return made;
}

const isNumber = (value) => typeof value === "number" && isFinite(value);
const fixed = (value, digits, unit) => (isNumber(value) ? value.toFixed(digits) + unit : "");
const kHz = (value) => fixed(isNumber(value) ? value / 1000 : value, 2, " kHz");
const speed = (facts) => fixed(facts.speed_wpm, 0, " wpm") || fixed(facts.baud_rate, 1, " Bd");
const strength = (facts) => fixed(facts.snr_dB, 0, " dB");

// Text in the direction of its own letters.
function textElement(kind, className, text) {
    const made = element(kind, className, text);
    made.dir = "auto";
    return made;
}

// ---- transmissions

function factsOf(one) {
    return [one.start, kHz(one.frequency_Hz), one.decoder, speed(one), strength(one), one.station,
        one.receiver].filter((fact) => fact).join("  ");
}

function transmissionItem(one) {
    const item = element("li", one.copy_of ? "copy" : "");
    item.append(element("div", "facts", factsOf(one)));
    const open = textElement("button", "text", one.text);
    open.type = "button";
    open.addEventListener("click", () => showDetail(one.id || one.key));
    item.append(open);
    return item;
}

function addLatest(one) {
    const list = byId("latest");
    list.prepend(transmissionItem(one));
    while (list.children.length > MOST_SHOWN)
        list.lastChild.remove();
}

const FIELDS = [
    ["Station", (one) => one.station], ["Receiver", (one) => one.receiver],
    ["Source", (one) => one.source], ["Decoder", (one) => one.decoder],
    ["Begin", (one) => one.start], ["End", (one) => one.stop],
    ["Frequency", (one) => kHz(one.frequency_Hz)], ["Tone", (one) => fixed(one.tone_Hz, 1, " Hz")],
    ["Speed", speed], ["Shift", (one) => fixed(one.shift_Hz, 0, " Hz")], ["Strength", strength],
    ["Map", (one) => one.map], ["Before the map", (one) => one.raw_text],
    ["Unknown codes", (one) => (one.unknown_codes || []).join(" ")],
];

async function showDetail(name) {
    const path = "/transmission/" + encodeURIComponent(name);
    const answer = await fetch(path);
    if (!answer.ok)
        return;
    const one = await answer.json();
    byId("detail-title").textContent = factsOf(one);
    byId("detail-text").textContent = one.text;
    const fields = byId("detail-fields");
    fields.replaceChildren();
    for (const [name, get] of FIELDS) {
        const value = get(one);
        if (value)
            fields.append(element("dt", "", name), textElement("dd", "", value));
    }
    const files = byId("detail-files");
    files.replaceChildren();
    // Those that were removed, or lie at another station, have no name.
    if (!one.files.some((name) => name && name.endsWith(".svg")))
        files.append(element("li", "none", "No picture is kept of this transmission."));
    one.files.forEach((name, index) => {
        if (!name)
            return;
        const item = element("li");
        const link = textElement("a", "", name);
        link.href = path + "/file/" + index;
        item.append(link);
        if (name.endsWith(".svg")) {
            const picture = element("img", "picture");
            picture.src = link.href;
            picture.alt = "picture of the transmission";
            item.append(picture);
        }
        files.append(item);
    });
    byId("detail").showModal();
}

// ---- search

let lastFound = null;

async function search(isMore) {
    const query = new URLSearchParams();
    for (const [name, value] of new FormData(byId("search")))
        if (value)
            query.set(name, value);
    if (isMore && lastFound)
        query.set("before", lastFound);
    const result = byId("search-result");
    const list = byId("found");
    if (!isMore)
        list.replaceChildren();
    byId("more").hidden = true;
    let answer;
    try {
        answer = await fetch("/search?" + query);
    } catch {
        result.textContent = "The station cannot be reached.";
        return;
    }
    if (!answer.ok) {
        result.textContent = await answer.text();
        return;
    }
    const { found, more, last } = await answer.json();
    for (const one of found)
        list.append(transmissionItem(one));
    lastFound = last;
    byId("more").hidden = !more;
    result.textContent = list.children.length + (more ? " and more" : "") + " found";
}

byId("search").addEventListener("submit", (event) => {
    event.preventDefault();
    search(false);
});
byId("more").addEventListener("click", () => search(true));

// ---- receivers

const receivers = new Map();

class Waterfall {
    constructor(parent) {
        this.frame = element("div", "waterfall");
        this.canvas = element("canvas");
        this.scale = element("div", "scale");
        this.low = element("span");
        this.high = element("span");
        this.scale.append(this.low, this.high);
        this.frame.append(this.canvas);
        this.traces = new Map();
        this.floor = null;
        parent.append(this.frame, this.scale);
    }

    // One row, the latest at the bottom; levels are bytes of half a decibel.
    add(row) {
        const levels = Uint8Array.from(atob(row.levels), (c) => c.charCodeAt(0));
        if (levels.length === 0)
            return;
        const { canvas } = this;
        const paint = canvas.getContext("2d");
        if (canvas.width !== levels.length || canvas.height !== WATERFALL_ROWS) {
            canvas.width = levels.length;
            canvas.height = WATERFALL_ROWS;
        }
        this.range = [row.low_Hz, row.high_Hz];
        this.of = row.of;
        this.low.textContent = kHz(row.low_Hz);
        this.high.textContent = kHz(row.high_Hz);
        const middle = [...levels].sort((a, b) => a - b)[levels.length >> 1];
        this.floor = this.floor === null ? middle : this.floor + 0.05 * (middle - this.floor);
        paint.drawImage(canvas, 0, -1);
        const pixels = paint.createImageData(levels.length, 1);
        levels.forEach((level, x) => {
            const light = Math.max(0, Math.min(1, (level - this.floor + 6) / 80));
            pixels.data.set([255 * Math.min(1, 1.6 * light * light), 255 * light,
                90 * (1 - light) * Math.min(1, 4 * light) + 200 * light * light, 255], 4 * x);
        });
        paint.putImageData(pixels, 0, WATERFALL_ROWS - 1);
    }

    // The last words of a signal, along its trace.
    trace(number, signal) {
        const place = signal && this.range
            ? (signal[this.of] - this.range[0]) / (this.range[1] - this.range[0]) : NaN;
        let mark = this.traces.get(number);
        if (!(place >= 0 && place <= 1)) {
            if (mark)
                mark.remove();
            this.traces.delete(number);
            return;
        }
        if (!mark) {
            mark = element("span", "trace");
            this.frame.append(mark);
            this.traces.set(number, mark);
        }
        mark.textContent = signal.text.trim().slice(-40);
        mark.style.left = (100 * place).toFixed(2) + "%";
    }
}

class Receiver {
    constructor(name) {
        this.present = new Map();
        this.card = element("article", "receiver");
        this.card.dataset.name = name;
        const head = element("header");
        this.state = element("span", "state");
        this.problem = element("span", "problem");
        this.decoder = element("span", "decoder");
        head.append(element("h3", "", name), this.decoder, this.state, this.problem);
        this.table = element("table");
        const titles = element("tr");
        for (const [title, className] of [["Frequency", ""], ["Speed", ""], ["Strength", ""],
            ["Since", "wide"], ["Last words", ""]])
            titles.append(element("th", className, title));
        this.rows = element("tbody");
        const above = element("thead");
        above.append(titles);
        this.table.append(above, this.rows);
        this.list = element("div", "present");
        this.list.append(this.table);
        this.card.append(head, this.list);
        byId("receivers").append(this.card);
    }

    show(facts) {
        this.state.textContent = facts.state;
        this.state.className = "state " + facts.state;
        this.problem.textContent = facts.problem +
            (facts.bytes_lost > 0 ? " " + facts.bytes_lost + " bytes came too fast" : "");
        this.decoder.textContent = facts.decoder;
    }

    update(present, gone) {
        for (const signal of present)
            this.present.set(signal.number, signal);
        for (const number of gone)
            this.present.delete(number);
        const sorted = [...this.present.values()].sort(
            (a, b) => (a.frequency_Hz || 0) - (b.frequency_Hz || 0));
        this.rows.replaceChildren(...sorted.map((signal) => {
            const row = element("tr");
            row.append(element("td", "", kHz(signal.frequency_Hz) ||
                    fixed(signal.tone_Hz, 0, " Hz")),
                element("td", "", speed(signal)), element("td", "", strength(signal)),
                element("td", "wide", signal.since.slice(11, 19)),
                textElement("td", "text", signal.text));
            return row;
        }));
        if (this.waterfall) {
            for (const signal of present)
                this.waterfall.trace(signal.number, signal);
            for (const number of gone)
                this.waterfall.trace(number, null);
        }
    }

    spectrum(row) {
        if (!this.waterfall) {
            const place = element("div");
            this.card.insertBefore(place, this.list);
            this.waterfall = new Waterfall(place);
        }
        this.waterfall.add(row);
    }
}

function receiver(name) {
    if (!receivers.has(name))
        receivers.set(name, new Receiver(name));
    return receivers.get(name);
}

function forget(name) {
    if (!receivers.has(name))
        return;
    receivers.get(name).card.remove();
    receivers.delete(name);
}

// ---- live

const HANDLERS = {
    state(data) {
        byId("station").textContent = data.station || "Station";
        document.title = data.station || "Station";
        for (const name of [...receivers.keys()])
            forget(name);
        for (const facts of data.receivers) {
            receiver(facts.name).show(facts);
            receiver(facts.name).update(facts.present, []);
        }
        byId("latest").replaceChildren();
        data.latest.forEach(addLatest);
    },
    receiver(data) { receiver(data.name).show(data); },
    removed(data) { forget(data.name); },
    signals(data) { receiver(data.receiver).update(data.present, data.gone); },
    spectrum(data) { receiver(data.receiver).spectrum(data); },
    transmission(data) { addLatest(data); },
};

function showLink(isOn) {
    byId("link").textContent = isOn ? "live" : "not connected";
    byId("link").className = isOn ? "on" : "";
}

// A browser gives up after some answers, such as one that refuses.
const AGAIN_ms = 5000;

function connect() {
    const events = new EventSource("/events");
    events.addEventListener("open", () => showLink(true));
    events.addEventListener("error", () => {
        showLink(false);
        if (events.readyState === EventSource.CLOSED)
            setTimeout(connect, AGAIN_ms);
    });
    for (const [kind, handle] of Object.entries(HANDLERS))
        events.addEventListener(kind, (event) => handle(JSON.parse(event.data)));
}

connect();
