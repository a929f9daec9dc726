'use strict';

(() => {
    const count = 12000;
    const drawn = 3000; // as many say the same
    const colors = ['#1f6fc4', '#d4470f'];
    const shownTime = 30; // seconds, the graph's width
    const settings = { pressures: [250, 50], volumes: [2, 4] };
    const valve = { text: 'valve', isOn: false, pressed: (isOn) => (vessels.isOpen = isOn) };
    let vessels = null;
    let records = [];

    function reset() {
        vessels = new Vessels(new Chance(Date.now()), count, settings.pressures.slice(), settings.volumes.slice());
        valve.isOn = false;
        records = [new Sim.Record(shownTime), new Sim.Record(shownTime)];
    }

    function step(seconds) {
        vessels.step(seconds);
        records.forEach((record, i) => record.add(vessels.time, vessels.gauges[i]));
    }

    function slider(text, unit, list, index, least, most, step) {
        const changed = (value) => {
            list[index] = value;
            reset();
        };
        return { text, unit, digits: unit === 'L' ? 1 : 0, min: least, max: most, step, value: list[index], changed };
    }

    function drawVessels({ context, width, height, em }) {
        const thick = 0.6 * em;
        const margin = 1.4 * em;
        const full = 8 * vessels.lengthOfVolume; // litres that fit
        const scale = (width - 2 * margin) / full;
        const tall = height - 6.5 * em;
        const left = margin + ((full - vessels.end) / 2) * scale;
        const top = 2.2 * em + thick;
        const middle = left + vessels.wall * scale;
        context.fillStyle = '#eef5fc';
        context.fillRect(left, top, vessels.end * scale, tall);
        const size = Math.max(2, em * 0.16);
        for (const isFirst of [true, false]) {
            context.fillStyle = colors[isFirst ? 0 : 1];
            for (let i = 0; i < count; i += count / drawn) {
                if (vessels.x[i] < vessels.wall === isFirst)
                    context.fillRect(left + vessels.x[i] * scale - size / 2, top + vessels.y[i] * tall - size / 2, size, size);
            }
        }
        context.fillStyle = '#5c6b7a';
        context.fillRect(left - thick, top - thick, vessels.end * scale + 2 * thick, thick);
        context.fillRect(left - thick, top + tall, vessels.end * scale + 2 * thick, thick);
        context.fillRect(left - thick, top, thick, tall);
        context.fillRect(left + vessels.end * scale, top, thick, tall);
        const { from, to } = vessels.valve;
        context.fillRect(middle - thick / 2, top, thick, tall * from);
        context.fillRect(middle - thick / 2, top + tall * to, thick, tall * (1 - to));
        if (!vessels.isOpen) {
            context.fillStyle = '#1b2733';
            context.fillRect(middle - thick * 0.8, top + tall * from, thick * 1.6, tall * (to - from));
        }
        context.textAlign = 'center';
        [left + (vessels.wall * scale) / 2, (middle + left + vessels.end * scale) / 2].forEach((x, i) => {
            context.fillStyle = colors[i];
            context.font = context.font.replace(/^[\d.]+px/, `${1.5 * em}px`).replace(/^(bold )?/, 'bold ');
            context.fillText(Sim.number(vessels.gauges[i], 0) + ' kPa', x, top + tall + thick + 2 * em);
        });
    }

    function drawGraphs([graph]) {
        const end = Math.max(shownTime, vessels.time);
        const final = vessels.finalPressure();
        Sim.graph(graph, {
            x: { min: end - shownTime, max: end, label: 't [s]' },
            y: { min: 0, max: 1.1 * Math.max(...settings.pressures, 100), label: 'p [kPa]' },
            lines: [
                { points: [[end - shownTime, final], [end, final]], color: '#7a8795', dash: true },
                ...records.map((record, i) => ({ points: record.points, color: colors[i] })),
            ],
            notes: [{ text: '(p₁·V₁ + p₂·V₂) / (V₁ + V₂)', color: '#5c6b7a' }],
        });
    }

    Sim.play({
        texts: { title: 'Pressure equilibrium of two vessels', valve: 'Valve open', expected: 'Expected' },
        graphs: 1,
        readouts: [
            { text: 'p₁', unit: 'kPa', digits: 0, value: () => vessels.gauges[0] },
            { text: 'p₂', unit: 'kPa', digits: 0, value: () => vessels.gauges[1] },
            { text: 'expected', unit: 'kPa', digits: 0, value: () => vessels.finalPressure() },
        ],
        controls: [
            valve,
            slider('p₁', 'kPa', settings.pressures, 0, 0, 400, 10),
            slider('V₁', 'L', settings.volumes, 0, 1, 4, 0.5),
            slider('p₂', 'kPa', settings.pressures, 1, 0, 400, 10),
            slider('V₂', 'L', settings.volumes, 1, 1, 4, 0.5),
        ],
        reset,
        step,
        draw: drawVessels,
        drawGraphs,
    });
})();
