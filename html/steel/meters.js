// Meters that the program fills: it calls the functions at the end of this file, and hears of a tap through the title.
"use strict";

(function () {
    const svgSpace = "http://www.w3.org/2000/svg";
    const most = 8;
    const decimalMark = document.documentElement.dataset.decimal;
    const digitWidth = 0.66; // of the font's size, of the widest digit and of the marks between them
    const sweep = 135; // degrees of the dial's needle to both sides

    const meters = []; // what is shown at most, in order
    let shown = 6;
    let isColumn = false;
    let taps = 0;

    // --- Numbers ---

    // Cut and not rounded, as everywhere in the program.
    function textOf(value, precision) {
        if (value === null || !Number.isFinite(value)) {
            return "–";
        }
        const scale = Math.pow(10, precision);
        const text = (Math.floor(value * scale) / scale).toFixed(precision);
        return decimalMark === "." ? text : text.replace(".", decimalMark);
    }

    function endText(value) {
        return String(Number(value.toPrecision(5))).replace(".", decimalMark);
    }

    // Steps of 1, 2 or 5 times a power of ten, about as many as there is room for.
    function ticksOf(min, max, room) {
        const span = Math.abs(max - min);
        const raw = span / Math.max(2, room);
        const power = Math.pow(10, Math.floor(Math.log10(raw)));
        const step = [1, 2, 5, 10].map((k) => k * power).find((k) => k >= raw * 0.999);
        const low = Math.min(min, max);
        const first = Math.ceil(low / step - 1e-9);
        const count = Math.min(50, Math.floor((low + span) / step + 1e-9) - first + 1);
        const decimals = Math.min(8, Math.max(0, -Math.floor(Math.log10(step) + 1e-9)));
        return Array.from({ length: Math.max(0, count) }, (_, i) => {
            const at = (first + i) * step;
            return { at, text: at.toFixed(decimals).replace(".", decimalMark) };
        });
    }

    function longest(ticks) {
        return Math.max(1, ...ticks.map((tick) => tick.text.length));
    }

    // 0 at one end of the scale and 1 at the other; a little beyond where the value is.
    function partOf(meter, value) {
        const part = (value - meter.min) / (meter.max - meter.min);
        return Number.isFinite(part) ? Math.min(1.02, Math.max(-0.02, part)) : 0;
    }

    // --- Drawing ---

    function add(parent, tag, attributes, text) {
        const element = document.createElementNS(svgSpace, tag);
        for (const name of Object.keys(attributes)) {
            element.setAttribute(name, attributes[name]);
        }
        if (text !== undefined) {
            element.textContent = text;
        }
        parent.appendChild(element);
        return element;
    }

    function label(parent, x, y, size, text, anchor) {
        return add(parent, "text", { x, y, "font-size": size, "text-anchor": anchor || "middle" }, text);
    }

    // The value with its unit, centred at x, as large as `size` and no wider than `width`.
    function addValue(meter, x, y, size, width) {
        const line = add(meter.svg, "text", { x, y, "text-anchor": "middle" });
        meter.value = add(line, "tspan", { class: "value" });
        meter.unitText = add(line, "tspan", { class: "unit" }, meter.unit === "" ? "" : "\u2009" + meter.unit);
        meter.line = line;
        meter.room = { size, width, length: 0 };
    }

    function fitValue(meter, length) {
        const room = meter.room;
        const ends = [meter.min, meter.max].map((end) => textOf(end, meter.precision).length);
        room.length = Math.max(length, ...ends);
        const unitPart = 0.5;
        const letters = room.length + unitPart * (meter.unit.length === 0 ? 0 : meter.unit.length * 1.15 + 0.4);
        const size = Math.min(room.size, room.width / (digitWidth * letters));
        meter.line.setAttribute("font-size", size.toFixed(1));
        meter.unitText.setAttribute("font-size", (size * unitPart).toFixed(1));
    }

    function point(x, y, radius, degrees) {
        const angle = (degrees - 90) * Math.PI / 180;
        return [x + radius * Math.cos(angle), y + radius * Math.sin(angle)];
    }

    function arc(x, y, radius, from, to) {
        const [x0, y0] = point(x, y, radius, from);
        const [x1, y1] = point(x, y, radius, to);
        return `M ${x0} ${y0} A ${radius} ${radius} 0 ${to - from > 180 ? 1 : 0} 1 ${x1} ${y1}`;
    }

    function drawDial(meter, width, height) {
        const isBeside = width > height * 1.6;
        const across = isBeside ? Math.min(width * 0.5, height * 1.12) : width;
        const radius = Math.min(across * 0.47, height * (isBeside ? 0.56 : 0.485));
        const x = across / 2;
        const y = (height - radius * (isBeside ? 1.72 : 2.02)) / 2 + radius;
        const svg = meter.svg;
        const ticks = ticksOf(meter.min, meter.max, Math.min(10, Math.max(4, radius / 18)));
        const size = Math.max(9, Math.min(radius * 0.125, radius * 0.5 / longest(ticks)));
        add(svg, "path", { class: "frame", d: arc(x, y, radius * 0.98, -sweep, sweep) });
        for (const tick of ticks) {
            const angle = (2 * partOf(meter, tick.at) - 1) * sweep;
            const [x0, y0] = point(x, y, radius * 0.98, angle);
            const [x1, y1] = point(x, y, radius * 0.88, angle);
            const [tx, ty] = point(x, y, radius * 0.72, angle);
            add(svg, "line", { class: "tick", x1: x0, y1: y0, x2: x1, y2: y1 });
            label(svg, tx, ty + size * 0.36, size, tick.text);
        }
        if (isBeside) {
            addValue(meter, across + (width - across) / 2, height * 0.58, height * 0.42, (width - across) * 0.94);
        } else {
            addValue(meter, x, y + radius, radius * 0.38, radius * 1.5);
        }
        const pointer = add(svg, "polygon", {
            class: "pointer",
            points: `${x - radius * 0.035},${y} ${x},${y - radius * 0.86} ${x + radius * 0.035},${y}`
        });
        add(svg, "circle", { class: "hub", cx: x, cy: y, r: radius * 0.07 });
        return (part) => {
            pointer.setAttribute("transform", `rotate(${((2 * part - 1) * sweep).toFixed(1)} ${x} ${y})`);
        };
    }

    function drawGauge(meter, width, height) {
        const radius = Math.min(width * 0.46, height * 0.84);
        const ring = radius * 0.26;
        const middle = radius - ring / 2;
        const x = width / 2;
        const y = (height - radius * 1.12) / 2 + radius;
        const size = Math.max(10, radius * 0.11);
        add(meter.svg, "path", {
            d: arc(x, y, middle, -90, 90), fill: "none", "stroke-width": ring, style: "stroke: var(--paper)"
        });
        const length = Math.PI * middle;
        const fill = add(meter.svg, "path", {
            d: arc(x, y, middle, -90, 90), fill: "none", "stroke-width": ring, style: "stroke: var(--accent)"
        });
        add(meter.svg, "path", { class: "frame", d: `${arc(x, y, radius, -90, 90)} L ${x + radius - ring} ${y}` });
        add(meter.svg, "path", { class: "frame", d: `${arc(x, y, radius - ring, -90, 90)} L ${x + radius} ${y}` });
        add(meter.svg, "path", { class: "frame", d: `M ${x - radius} ${y} L ${x - radius + ring} ${y}` });
        label(meter.svg, x - middle, y + size * 1.1, size, endText(meter.min));
        label(meter.svg, x + middle, y + size * 1.1, size, endText(meter.max));
        addValue(meter, x, y - radius * 0.06, radius * 0.44, (radius - ring) * 1.85);
        return (part) => {
            const done = Math.min(1, Math.max(0, part)) * length;
            fill.setAttribute("stroke-dasharray", `${done.toFixed(1)} ${(length * 2).toFixed(1)}`);
        };
    }

    // What stands upright has its value beside it where there is room, else below.
    function halves(meter, width, height) {
        if (width > height * 0.95) {
            const part = Math.min(width * 0.42, height * 0.62);
            addValue(meter, part + (width - part) / 2, height * 0.58, height * 0.42, (width - part) * 0.92);
            return { width: part, height };
        }
        const below = Math.min(height * 0.26, width * 0.4);
        addValue(meter, width / 2, height - below * 0.28, below * 0.8, width * 0.94);
        return { width, height: height - below };
    }

    // To the left of x, as large as `most` where the numbers then have room.
    function drawScale(meter, x, top, bottom, most) {
        const ticks = ticksOf(meter.min, meter.max, Math.min(10, (bottom - top) / (most * 2.2)));
        const size = Math.min(most, x / (digitWidth * longest(ticks) + 1));
        for (const tick of ticks) {
            const y = bottom - partOf(meter, tick.at) * (bottom - top);
            add(meter.svg, "line", { class: "tick", x1: x - size * 0.6, y1: y, x2: x, y2: y });
            label(meter.svg, x - size * 0.8, y + size * 0.36, size, tick.text, "end");
        }
    }

    function drawColumn(meter, box, isThermometer) {
        const size = Math.max(9, Math.min(box.height * 0.07, box.width * 0.12, 34));
        const tube = Math.min(box.width * (isThermometer ? 0.14 : 0.3), box.height * 0.3);
        const x = box.width * 0.62;
        const bulb = isThermometer ? Math.min(tube * 1.1, box.height * 0.14) : 0;
        const top = box.height * 0.06 + (isThermometer ? tube / 2 : 0);
        const bottom = box.height * 0.94 - bulb * 1.7;
        const colour = isThermometer ? "warm" : "fill";
        const inner = tube * (isThermometer ? 0.5 : 0.9);
        add(meter.svg, "rect", {
            class: "groove", x: x - tube / 2, y: top - (isThermometer ? tube / 2 : 0), width: tube,
            height: bottom - top + (isThermometer ? tube / 2 + bulb : 0), rx: isThermometer ? tube / 2 : 4
        });
        if (isThermometer) {
            add(meter.svg, "circle", { class: "groove", cx: x, cy: bottom + bulb * 0.8, r: bulb });
            add(meter.svg, "circle", { class: colour, cx: x, cy: bottom + bulb * 0.8, r: bulb * 0.8 });
        }
        const fill = add(meter.svg, "rect", { class: colour, x: x - inner / 2, width: inner });
        drawScale(meter, x - tube / 2 - 2, top, bottom, size);
        const foot = bottom + bulb * 0.5;
        return (part) => {
            const y = bottom - Math.max(0, part) * (bottom - top);
            fill.setAttribute("y", y.toFixed(1));
            fill.setAttribute("height", Math.max(0, foot - y).toFixed(1));
        };
    }

    // The brighter the more; the value itself is beside it.
    function drawBulb(meter, box, colours) {
        const radius = Math.min(box.width * 0.4, box.height * 0.36);
        const x = box.width / 2;
        const y = box.height * 0.42;
        const bulb = add(meter.svg, "circle", { cx: x, cy: y, r: radius, style: "stroke: var(--faint); stroke-width: 2" });
        add(meter.svg, "ellipse", {
            cx: x - radius * 0.36, cy: y - radius * 0.42, rx: radius * 0.28, ry: radius * 0.18, fill: "#ffffff",
            opacity: 0.55, transform: `rotate(-38 ${x - radius * 0.36} ${y - radius * 0.42})`
        });
        add(meter.svg, "rect", {
            class: "hub", x: x - radius * 0.36, y: y + radius * 0.98, width: radius * 0.72, height: radius * 0.36, rx: 4
        });
        return (part) => {
            const bounded = Math.min(1, Math.max(0, part));
            const mixed = colours[0].map((dark, i) => Math.round(dark + (colours[1][i] - dark) * bounded));
            bulb.setAttribute("fill", `rgb(${mixed.join(",")})`);
        };
    }

    function drawDisplay(meter, width, height) {
        const top = Math.min(height * 0.04, 12);
        add(meter.svg, "rect", {
            class: "groove", x: width * 0.02, y: top, width: width * 0.96, height: height - 2 * top, rx: 8
        });
        addValue(meter, width / 2, height * 0.5, height * 0.72, width * 0.9);
        meter.line.setAttribute("dominant-baseline", "central");
        return () => undefined;
    }

    const dim = { red: [70, 12, 12], blue: [12, 20, 70] };
    const bright = { red: [255, 48, 32], blue: [64, 160, 255] };
    const drawings = {
        radial: drawDial,
        gauge: drawGauge,
        linear: (meter, width, height) => drawColumn(meter, halves(meter, width, height), true),
        bar: (meter, width, height) => drawColumn(meter, halves(meter, width, height), false),
        redbulb: (meter, width, height) => drawBulb(meter, halves(meter, width, height), [dim.red, bright.red]),
        bluebulb: (meter, width, height) => drawBulb(meter, halves(meter, width, height), [dim.blue, bright.blue]),
        display: drawDisplay
    };

    function draw(meter) {
        const width = meter.cell.clientWidth;
        const height = meter.cell.clientHeight;
        if (width < 20 || height < 20) {
            return;
        }
        const size = Math.max(11, Math.min(height * 0.09, width * 0.062, 54));
        meter.header.style.fontSize = `${size.toFixed(1)}px`;
        meter.svg.textContent = "";
        const left = height - meter.header.offsetHeight;
        meter.move = drawings[meter.type](meter, width, Math.max(10, left - 4));
        meter.told = null;
        fitValue(meter, 1);
        show(meter);
    }

    function show(meter) {
        const text = textOf(meter.reading, meter.precision);
        if (!meter.move || meter.told === text + meter.reading) {
            return;
        }
        meter.told = text + meter.reading;
        if (text.length > meter.room.length) {
            fitValue(meter, text.length);
        }
        if (meter.value.textContent !== text) {
            meter.value.textContent = text;
        }
        meter.cell.classList.toggle("unknown", meter.reading === null);
        meter.move(meter.reading === null ? 0 : partOf(meter, meter.reading));
    }

    // --- The page ---

    function grid() {
        const isWide = innerWidth >= innerHeight;
        const lines = isColumn ? shown : shown < 4 ? 1 : 2;
        const across = Math.ceil(shown / lines);
        const [columns, rows] = isColumn || isWide ? [across, lines] : [lines, across];
        return [columns, rows].map((count) => `repeat(${count}, minmax(0, 1fr))`);
    }

    function drawAll() {
        const page = document.getElementById("meters");
        [page.style.gridTemplateColumns, page.style.gridTemplateRows] = grid();
        meters.forEach((meter, i) => {
            meter.cell.style.display = i < shown ? "" : "none";
        });
        meters.slice(0, shown).forEach(draw);
    }

    function tap(i, x, y) {
        ++taps;
        document.title = `meterTapped${taps},${i},${Math.round(x)},${Math.round(y)}`;
    }

    function addMeter(i) {
        const cell = document.createElement("section");
        cell.className = "meter";
        cell.tabIndex = 0;
        cell.setAttribute("role", "button");
        const header = document.createElement("header");
        const caption = document.createElement("span");
        const name = document.createElement("span");
        name.className = "name";
        caption.className = "caption";
        header.append(caption, name);
        const svg = document.createElementNS(svgSpace, "svg");
        cell.append(header, svg);
        cell.addEventListener("click", (event) => tap(i, event.screenX, event.screenY));
        cell.addEventListener("keydown", (event) => {
            if (event.key === "Enter" || event.key === " ") {
                const box = cell.getBoundingClientRect();
                tap(i, screenX + box.left + box.width / 3, screenY + box.top + box.height / 3);
            }
        });
        document.getElementById("meters").appendChild(cell);
        meters.push({
            cell, header, caption, svg, nameText: name, type: "display", name: "", unit: "", precision: 0,
            min: 0, max: 1, reading: null
        });
    }

    function describe(meter, type, name, unit, precision, min, max) {
        meter.type = Object.prototype.hasOwnProperty.call(drawings, type) ? type : "display";
        meter.name = String(name);
        meter.unit = String(unit).replace(/^\[(.*)\]$/, "$1");
        meter.precision = Math.min(8, Math.max(0, Math.floor(precision) || 0));
        meter.min = Number.isFinite(min) ? min : 0;
        meter.max = Number.isFinite(max) && max !== meter.min ? max : meter.min + 1;
        meter.nameText.textContent = meter.name;
        meter.cell.setAttribute("aria-label", `${meter.caption.textContent} ${meter.name}`.trim());
    }

    // Groups of type, name, unit, precision, min, max and the value that a demonstration would show, a meter each.
    window.setAllMeters = function (...groups) {
        for (let i = 0; i * 7 + 6 < groups.length && i < most; ++i) {
            describe(meters[i], ...groups.slice(i * 7, i * 7 + 6));
            meters[i].reading = null;
        }
        drawAll();
    };

    // A number each, null for what nobody knows.
    window.setValues = function (...values) {
        values.slice(0, most).forEach((value, i) => {
            meters[i].reading = typeof value === "number" ? value : null;
            if (i < shown) {
                show(meters[i]);
            }
        });
    };

    window.setMetersNumber = function (n) {
        shown = Math.min(most, Math.max(1, Math.floor(n) || 1));
        drawAll();
    };

    window.setMeterSensor = function (i, type, name, unit, precision, min, max) {
        if (meters[i]) {
            describe(meters[i], type, name, unit, precision, min, max);
            meters[i].reading = null;
            draw(meters[i]);
        }
    };

    window.setMeterType = function (i, type) {
        const meter = meters[i];
        if (meter) {
            describe(meter, type, meter.name, meter.unit, meter.precision, meter.min, meter.max);
            draw(meter);
        }
    };

    // What stands above a meter's name, such as a group's.
    window.setCaptions = function (...captions) {
        meters.forEach((meter, i) => {
            meter.caption.textContent = captions[i] || "";
            meter.caption.hidden = !captions[i];
            meter.cell.setAttribute("aria-label", `${meter.caption.textContent} ${meter.name}`.trim());
        });
        drawAll();
    };

    window.setMetersColumn = function () {
        isColumn = true;
        drawAll();
    };

    window.setMetersNoColumn = function (n) {
        isColumn = false;
        window.setMetersNumber(n);
    };

    window.doResize = drawAll;

    document.addEventListener("DOMContentLoaded", () => {
        for (let i = 0; i < most; ++i) {
            addMeter(i);
        }
        drawAll();
    });
    window.addEventListener("resize", drawAll);
}());
