'use strict';

(() => {
    const count = 48;
    const size = { width: 30, height: 22 }; // Å
    const pace = 0.25; // ps a second
    const mostSteps = 12; // in a frame: on a slow machine it goes slower
    const shownTime = 25; // seconds
    const bath = { text: 'bath', isOn: true, pressed: (isOn) => (water.hasBath = isOn) };
    let water = null;
    let wanted = 300;
    let owed = 0;
    let bonds = [];
    let record = null;
    let mean = 0; // of bonds,
    let warmth = 0; // and the temperature, over about a second

    function reset() {
        water = new Water(new Chance(Date.now()), count, size.width, size.height);
        water.wanted = wanted;
        bath.isOn = true;
        record = new Sim.Record(shownTime);
        bonds = water.bonds();
        mean = (2 * bonds.length) / count;
        warmth = water.temperature();
    }

    function step(seconds) {
        owed = Math.min(owed + seconds * pace, mostSteps * water.dt);
        while (owed > water.dt) {
            owed -= water.dt;
            water.step();
        }
        bonds = water.bonds();
        mean += Math.min(1, seconds) * ((2 * bonds.length) / count - mean);
        warmth += Math.min(1, seconds) * (water.temperature() - warmth);
        record.add(water.time / pace, mean);
    }

    function ball(context, x, y, radius, color) {
        const light = context.createRadialGradient(x - radius / 3, y - radius / 3, radius / 8, x, y, radius);
        light.addColorStop(0, '#ffffff');
        light.addColorStop(0.35, color);
        light.addColorStop(1, color);
        context.fillStyle = light;
        context.beginPath();
        context.arc(x, y, radius, 0, 2 * Math.PI);
        context.fill();
        context.strokeStyle = 'rgba(0, 0, 0, 0.35)';
        context.lineWidth = 1;
        context.setLineDash([]);
        context.stroke();
    }

    function drawWater({ context, width, height, em }) {
        const scale = Math.min(width / (size.width + 4), height / (size.height + 4));
        const toX = (x) => width / 2 + (x - size.width / 2) * scale;
        const toY = (y) => height / 2 + (y - size.height / 2) * scale;
        const site = (i, a) => [toX(water.sites[6 * i + 2 * a]), toY(water.sites[6 * i + 2 * a + 1])];
        context.lineCap = 'round';
        context.strokeStyle = '#1c7d3a';
        context.lineWidth = 0.28 * em;
        context.setLineDash([0.02 * em, 0.5 * em]);
        for (const { from, site: hydrogen, to } of bonds) {
            context.beginPath();
            context.moveTo(...site(from, hydrogen));
            context.lineTo(...site(to, 0));
            context.stroke();
        }
        for (let i = 0; i < count; i++) {
            ball(context, ...site(i, 0), 0.75 * scale, '#d8352a');
            ball(context, ...site(i, 1), 0.45 * scale, '#dfe6ee');
            ball(context, ...site(i, 2), 0.45 * scale, '#dfe6ee');
        }
        context.fillStyle = '#ffffff';
        context.textAlign = 'center';
        context.font = `bold ${0.75 * scale}px "DejaVu Sans", sans-serif`;
        for (let i = 0; i < count; i++)
            context.fillText('O', site(i, 0)[0], site(i, 0)[1] + 0.27 * scale);
    }

    function draw(picture, [graph]) {
        drawWater(picture);
        const end = Math.max(shownTime, water.time / pace);
        Sim.graph(graph, {
            x: { min: end - shownTime, max: end, label: 't [s]' },
            y: { min: 0, max: 4, label: Sim.word('bonds') },
            lines: [{ points: record.points, color: '#1c7d3a' }],
        });
    }

    Sim.play({
        texts: {
            title: 'Hydrogen bonds of water',
            temperature: 'Temperature',
            bonds: 'Hydrogen bonds of a molecule',
            bath: 'Heat bath',
        },
        graphs: 1,
        readouts: [
            { text: 'bonds', digits: 1, value: () => mean },
            { text: 'temperature', unit: 'K', digits: 0, value: () => warmth },
        ],
        controls: [
            {
                text: 'temperature',
                unit: 'K',
                digits: 0,
                min: 100,
                max: 700,
                step: 20,
                value: wanted,
                changed: (value) => {
                    wanted = value;
                    water.wanted = value;
                },
            },
            bath,
        ],
        reset,
        step,
        draw,
    });
})();
