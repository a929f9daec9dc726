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
        const all = Array.from(water.x, (_, i) => i);
        const hydrogens = [...all.map((i) => site(i, 1)), ...all.map((i) => site(i, 2))];
        Sim.disks(context, all.map((i) => site(i, 0)), 0.75 * scale, '#d8352a', '#e8776f');
        Sim.disks(context, hydrogens, 0.5 * scale, '#8a9aab'); // the rim of the next
        Sim.disks(context, hydrogens, 0.45 * scale, '#e3e9f0', '#ffffff');
        context.setLineDash([]);
        context.fillStyle = '#ffffff';
        context.textAlign = 'center';
        context.font = `bold ${0.75 * scale}px "DejaVu Sans", sans-serif`;
        for (let i = 0; i < count; i++)
            context.fillText('O', site(i, 0)[0], site(i, 0)[1] + 0.27 * scale);
    }

    function drawGraphs([graph]) {
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
        draw: drawWater,
        drawGraphs,
    });
})();
