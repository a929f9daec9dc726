'use strict';

/* What all animations share: the frame of the page, the controls, the clock, and graphs. A page hands a plan
   to Sim.play():
     texts     its words by name, in English until the program calls setTexts()
     readouts  [{ text, unit, digits, value() }]
     controls  [{ text, unit, digits, min, max, step, value, changed(value) }] for sliders,
               [{ text, isOn, pressed(isOn) }] for switches
     graphs    how many canvases stand beside the picture
     reset()   begins anew; step(seconds); draw(picture); drawGraphs(graphs)
   The picture and the graphs are given as { context, width, height, em }, in pixels of the page. */
const Sim = (() => {
    const common = {
        pause: 'Pause',
        go: 'Continue',
        reset: 'Restart',
        keys: 'Space: pause · R: restart · Tab and arrows: controls',
        decimal: '.',
    };
    const longestStep = 0.05; // seconds: after a sleep the picture goes on and does not jump
    const leastFrame = 0.03; // seconds; a school's computer draws without a graphics card, and has more to do
    const textInterval = 0.2; // seconds between two readings, which nobody could follow faster, and two graphs
    let plan = null;
    let words = { ...common };
    let isPaused = false;
    let last = null;
    let sinceText = Infinity; // so that they are renewed with the next frame
    const parts = { readouts: [], controls: [], graphs: [] };

    function word(name) {
        return name in words ? words[name] : name;
    }

    function number(value, digits) {
        return isFinite(value) ? value.toFixed(digits).replace('.', words.decimal).replace('-', '−') : '–';
    }

    function withUnit(value, digits, unit) {
        return number(value, digits) + (unit ? ' ' + unit : '');
    }

    function element(name, parent, properties) {
        return parent.appendChild(Object.assign(document.createElement(name), properties));
    }

    function makeReadouts(parent) {
        for (const readout of plan.readouts) {
            const box = element('span', parent, { className: 'readout' });
            parts.readouts.push({ readout, label: element('span', box), value: element('output', box) });
        }
    }

    function makeSlider(parent, control) {
        const box = element('label', parent);
        const label = element('span', box);
        const input = element('input', box, { type: 'range', min: control.min, max: control.max, step: control.step });
        input.value = control.value;
        const value = element('output', box);
        const show = () => {
            value.textContent = withUnit(Number(input.value), control.digits, control.unit);
        };
        input.addEventListener('input', () => {
            show();
            control.changed(Number(input.value));
            sinceText = Infinity;
        });
        parts.controls.push({ control, label, show, input });
    }

    function makeSwitch(parent, control) {
        const label = element('button', parent, { type: 'button' });
        const show = () => label.setAttribute('aria-pressed', String(control.isOn));
        label.addEventListener('click', () => {
            control.isOn = !control.isOn;
            show();
            control.pressed(control.isOn);
            sinceText = Infinity;
        });
        parts.controls.push({ control, label, show });
    }

    function makePage() {
        const header = element('header', document.body);
        parts.title = element('h1', header);
        makeReadouts(header);
        const main = element('main', document.body);
        parts.picture = element('canvas', element('div', main));
        const beside = element('div', main);
        for (let i = 0; i < plan.graphs; i++)
            parts.graphs.push(element('canvas', beside));
        const footer = element('footer', document.body);
        parts.pause = element('button', footer, { type: 'button', id: 'pause' });
        parts.pause.addEventListener('click', () => setPaused(!isPaused));
        parts.reset = element('button', footer, { type: 'button', id: 'reset' });
        parts.reset.addEventListener('click', reset);
        for (const control of plan.controls)
            (control.pressed ? makeSwitch : makeSlider)(footer, control);
        parts.keys = element('span', footer, { className: 'keys' });
    }

    function showWords() {
        document.title = parts.title.textContent = word('title');
        parts.picture.setAttribute('role', 'img');
        parts.picture.setAttribute('aria-label', word('title'));
        for (const { readout, label } of parts.readouts)
            label.textContent = word(readout.text);
        for (const { control, label, show } of parts.controls) {
            label.textContent = word(control.text);
            show();
        }
        parts.pause.textContent = word(isPaused ? 'go' : 'pause');
        parts.reset.textContent = word('reset');
        parts.keys.textContent = word('keys');
        sinceText = Infinity;
    }

    function setPaused(isOn) {
        isPaused = isOn;
        sinceText = Infinity;
        parts.pause.textContent = word(isOn ? 'go' : 'pause');
    }

    function reset() {
        plan.reset();
        for (const { show } of parts.controls)
            show();
        sinceText = Infinity;
    }

    // A canvas as large as its place, sharp on every screen.
    function surface(canvas) {
        const ratio = window.devicePixelRatio || 1;
        const width = canvas.clientWidth;
        const height = canvas.clientHeight;
        const context = canvas.getContext('2d');
        if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
            canvas.width = Math.round(width * ratio);
            canvas.height = Math.round(height * ratio);
        }
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, height);
        const em = parseFloat(getComputedStyle(document.documentElement).fontSize);
        context.font = `${em}px "DejaVu Sans", "Noto Sans", sans-serif`;
        return { context, width, height, em };
    }

    function frame(now) {
        requestAnimationFrame(frame);
        const passed = last === null ? Infinity : (now - last) / 1000;
        if (passed < leastFrame)
            return;
        last = now;
        const seconds = Math.min(passed, longestStep);
        if (!isPaused)
            plan.step(seconds);
        sinceText += seconds;
        if (isPaused && sinceText !== Infinity)
            return; // it is all there
        plan.draw(surface(parts.picture));
        if (sinceText > textInterval) {
            sinceText = 0;
            plan.drawGraphs(parts.graphs.map(surface));
            for (const { readout, value } of parts.readouts)
                value.textContent = withUnit(readout.value(), readout.digits, readout.unit);
        }
    }

    // Disks of one colour at [x, y], as one shape, which costs a fraction of as many; `light` shines on them from the
    // left and above.
    function disks(context, places, radius, color, light) {
        const fill = (shift, size, style) => {
            context.fillStyle = style;
            context.beginPath();
            for (const [x, y] of places) {
                context.moveTo(x + shift + size, y + shift);
                context.arc(x + shift, y + shift, size, 0, 2 * Math.PI);
            }
            context.fill();
        };
        fill(0, radius, color);
        if (light)
            fill(-0.3 * radius, 0.33 * radius, light);
    }

    function pressed(event) {
        if (event.ctrlKey || event.altKey || event.metaKey)
            return;
        if (event.key === ' ' && event.target.tagName !== 'BUTTON') {
            event.preventDefault();
            setPaused(!isPaused);
        } else if (event.key === 'r' || event.key === 'R') {
            reset();
        } else if (event.key.startsWith('Arrow') && event.target === document.body) {
            const first = parts.controls.find(({ input }) => input);
            if (first)
                first.input.focus();
        }
    }

    function play(thePlan) {
        plan = thePlan;
        words = { ...common, ...plan.texts };
        makePage();
        showWords();
        plan.reset();
        document.addEventListener('keydown', pressed);
        window.addEventListener('resize', () => {
            sinceText = Infinity;
        });
        requestAnimationFrame(frame);
    }

    function setTexts(texts) {
        words = { ...words, ...texts };
        showWords();
    }

    // Round steps of an axis, about `count` of them.
    function tickStep(span, count) {
        const raw = span / count;
        const power = Math.pow(10, Math.floor(Math.log10(raw)));
        return [1, 2, 5, 10].find((factor) => factor * power >= raw) * power;
    }

    /* Draws a graph on a surface. Axes are { min, max, label }; lines are { points: [[x, y]...], color, dash };
       dots are { points, color, size }; notes are { text, color }, from the top of the right side down. */
    function graph(on, { x, y, lines = [], dots = [], notes = [] }) {
        const { context, width, height, em } = on;
        const left = 4.2 * em;
        const bottom = height - 2.9 * em;
        const right = width - 1.2 * em;
        const top = 1.8 * em;
        const toX = (value) => left + ((value - x.min) / (x.max - x.min)) * (right - left);
        const toY = (value) => bottom - ((value - y.min) / (y.max - y.min)) * (bottom - top);
        drawAxes(on, { x, y, left, right, top, bottom, toX, toY });
        context.save();
        context.beginPath();
        context.rect(left, top - em / 2, right - left + em / 2, bottom - top + em / 2);
        context.clip();
        for (const { points, color, dash } of lines) {
            context.strokeStyle = color;
            context.lineWidth = em * 0.16;
            context.lineJoin = 'round';
            context.setLineDash(dash ? [em * 0.5, em * 0.4] : []);
            context.beginPath();
            points.forEach(([px, py], i) => context[i ? 'lineTo' : 'moveTo'](toX(px), toY(py)));
            context.stroke();
        }
        context.setLineDash([]);
        for (const { points, color, size } of dots)
            disks(context, points.map(([px, py]) => [toX(px), toY(py)]), size * em, color);
        context.restore();
        context.textAlign = 'right';
        notes.forEach(({ text, color }, i) => {
            context.fillStyle = color;
            context.fillText(text, right, top + em * (0.6 + 1.25 * i));
        });
    }

    function drawAxes(on, { x, y, left, right, top, bottom, toX, toY }) {
        const { context, em } = on;
        context.lineWidth = 1;
        context.strokeStyle = '#d5dbe2';
        context.fillStyle = '#1b2733';
        const place = (axis, length, isLine) => {
            const step = tickStep(axis.max - axis.min, Math.max(2, length / (5 * em)));
            const digits = Math.max(0, Math.ceil(-Math.log10(step) - 1e-9));
            for (let v = Math.ceil(axis.min / step - 1e-9) * step; v <= axis.max + step * 1e-9; v += step)
                isLine(v, number(v, digits));
        };
        context.textAlign = 'center';
        place(x, right - left, (v, text) => {
            line(context, toX(v), top, toX(v), bottom);
            context.fillText(text, toX(v), bottom + 1.2 * em);
        });
        context.textAlign = 'right';
        place(y, bottom - top, (v, text) => {
            line(context, left, toY(v), right, toY(v));
            context.fillText(text, left - 0.3 * em, toY(v) + 0.35 * em);
        });
        context.strokeStyle = '#1b2733';
        line(context, left, bottom, right, bottom);
        line(context, left, top, left, bottom);
        context.fillText(x.label, right, bottom + 2.4 * em);
        context.textAlign = 'left';
        context.fillText(y.label, 0.4 * em, top - 0.7 * em);
    }

    function line(context, x1, y1, x2, y2) {
        context.beginPath();
        context.moveTo(x1, y1);
        context.lineTo(x2, y2);
        context.stroke();
    }

    // Values that came at times, the oldest dropped.
    class Record {
        constructor(seconds) {
            this.seconds = seconds;
            this.points = [];
        }
        add(time, value) {
            this.points.push([time, value]);
            while (this.points[0][0] < time - this.seconds)
                this.points.shift();
        }
    }

    return { play, setTexts, graph, disks, number, word, Record };
})();

function setTexts(texts) {
    Sim.setTexts(texts);
}
