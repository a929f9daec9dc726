'use strict';

(() => {
    const count = 240;
    const size = { width: 32, height: 22 };
    const kelvin = 120; // of a temperature of 1, as for argon
    const pace = 1.6; // of its time, a second
    const shownTime = 25;
    const trail = [];
    const bath = { text: 'bath', isOn: true, pressed: (isOn) => (liquid.hasBath = isOn) };
    let liquid = null;
    let wanted = 48;
    let owed = 0;
    let records = null;

    function reset() {
        liquid = new Liquid(new Chance(Date.now()), count, size.width, size.height);
        bath.isOn = true;
        liquid.wanted = wanted / kelvin;
        trail.length = 0;
        records = { total: new Sim.Record(shownTime), kinetic: new Sim.Record(shownTime), held: new Sim.Record(shownTime) };
    }

    function step(seconds) {
        owed += seconds * pace;
        while (owed > liquid.dt) {
            owed -= liquid.dt;
            liquid.step();
        }
        const time = liquid.time / pace;
        records.total.add(time, liquid.energy() / count);
        records.kinetic.add(time, liquid.kinetic() / count);
        records.held.add(time, liquid.potential / count);
        trail.push([liquid.x[count - 1], liquid.y[count - 1]]);
        if (trail.length > 400)
            trail.shift();
    }

    function drawVessel({ context, width, height, em }) {
        const scale = Math.min((width - 2 * em) / (size.width + 1), (height - 2 * em) / (size.height + 1));
        const left = (width - scale * size.width) / 2;
        const ground = (height + scale * size.height) / 2;
        const toX = (x) => left + x * scale;
        const toY = (y) => ground - y * scale;
        const edge = 0.5 * scale;
        context.fillStyle = '#eef5fc';
        context.strokeStyle = '#5c6b7a';
        context.lineWidth = 0.4 * em;
        context.fillRect(left - edge, toY(size.height) - edge, size.width * scale + 2 * edge, size.height * scale + 2 * edge);
        context.strokeRect(left - edge, toY(size.height) - edge, size.width * scale + 2 * edge, size.height * scale + 2 * edge);
        const places = Array.from(liquid.x, (x, i) => [toX(x), toY(liquid.y[i])]);
        const shine = 'rgba(255, 255, 255, 0.45)';
        Sim.disks(context, places.slice(0, -1), 0.5 * scale, '#2f86d6', shine);
        context.strokeStyle = '#d4470f';
        context.lineWidth = 0.12 * em;
        context.beginPath();
        trail.forEach(([x, y], i) => context[i ? 'lineTo' : 'moveTo'](toX(x), toY(y)));
        context.stroke();
        Sim.disks(context, places.slice(-1), 0.5 * scale, '#d4470f', shine);
    }

    function drawGraphs([graph]) {
        const end = Math.max(shownTime, liquid.time / pace);
        Sim.graph(graph, {
            x: { min: end - shownTime, max: end, label: 't [s]' },
            y: { min: -3.5, max: 2, label: 'E / ε' },
            lines: [
                { points: records.kinetic.points, color: '#d4470f' },
                { points: records.held.points, color: '#1f6fc4' },
                { points: records.total.points, color: '#1b2733' },
            ],
            notes: [
                { text: Sim.word('kinetic'), color: '#d4470f' },
                { text: Sim.word('total'), color: '#1b2733' },
                { text: Sim.word('held'), color: '#1f6fc4' },
            ],
        });
    }

    Sim.play({
        texts: {
            title: 'Molecules of a liquid',
            temperature: 'Temperature',
            energy: 'Energy of a molecule',
            bath: 'Heat bath',
            kinetic: 'Energy of motion',
            held: 'Energy of attraction',
            total: 'Total energy',
        },
        graphs: 1,
        readouts: [
            { text: 'temperature', unit: 'K', digits: 0, value: () => liquid.temperature() * kelvin },
            { text: 'energy', unit: 'ε', digits: 2, value: () => liquid.energy() / count },
        ],
        controls: [
            {
                text: 'temperature',
                unit: 'K',
                digits: 0,
                min: 12,
                max: 120,
                step: 6,
                value: wanted,
                changed: (value) => {
                    wanted = value;
                    liquid.wanted = value / kelvin;
                },
            },
            bath,
        ],
        reset,
        step,
        draw: drawVessel,
        drawGraphs,
    });
})();
