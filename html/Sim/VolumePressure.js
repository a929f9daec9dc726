'use strict';

(() => {
    const count = 600;
    const volumes = { min: 20, max: 100 };
    const settleTime = 2.5; // seconds of pushes before a reading is kept
    let gas = null;
    let volume = 60;
    let temperature = 300;
    let kept = []; // readings, { volume, pressure, temperature }

    function colorOf(kelvin) {
        const part = Math.min(1, Math.max(0, (kelvin - 200) / 400));
        return `rgb(${Math.round(31 + 190 * part)}, ${Math.round(111 - 40 * part)}, ${Math.round(196 - 180 * part)})`;
    }

    function reset() {
        gas = new Gas(new Chance(Date.now()), count);
        gas.setTemperature(temperature);
        gas.setVolume(volume);
        kept = [];
    }

    function step(seconds) {
        gas.step(seconds);
        if (gas.countedFor < settleTime)
            return;
        const reading = { volume, temperature, pressure: gas.pressure() };
        kept = kept.filter((old) => old.volume !== volume || old.temperature !== temperature);
        kept.push(reading);
    }

    function drawCylinder({ context, width, height, em }) {
        const wall = 0.7 * em;
        const inner = { left: 1.5 * em, top: height * 0.16, width: width - 8 * em, height: height * 0.68 };
        const full = volumes.max * gas.lengthOfVolume;
        const scale = inner.width / full;
        const piston = inner.left + gas.length() * scale;
        context.fillStyle = '#eaf2fb';
        context.fillRect(inner.left, inner.top, gas.length() * scale, inner.height);
        context.fillStyle = '#5c6b7a'; // walls
        context.fillRect(inner.left - wall, inner.top - wall, inner.width + wall, wall);
        context.fillRect(inner.left - wall, inner.top + inner.height, inner.width + wall, wall);
        context.fillRect(inner.left - wall, inner.top, wall, inner.height);
        const metal = context.createLinearGradient(0, inner.top, 0, inner.top + inner.height);
        metal.addColorStop(0, '#8593a1');
        metal.addColorStop(0.3, '#dde4ea');
        metal.addColorStop(1, '#77848f');
        context.fillStyle = metal;
        context.fillRect(piston, inner.top, 1.3 * em, inner.height);
        context.fillRect(piston + 1.3 * em, inner.top + inner.height * 0.44, width - piston, inner.height * 0.12);
        const radius = Math.max(2, em * 0.17);
        const wide = gas.length() * scale - 2 * radius;
        const tall = inner.height - 2 * radius;
        const places = Array.from(gas.x, (x, i) => [
            inner.left + radius + (x / gas.length()) * wide,
            inner.top + radius + gas.y[i] * tall,
        ]);
        Sim.disks(context, places, radius, colorOf(temperature));
        context.fillStyle = '#1b2733';
        context.textAlign = 'center';
        for (let v = 0; v <= volumes.max; v += 20) {
            const x = inner.left + v * gas.lengthOfVolume * scale;
            context.fillRect(x - 1, inner.top + inner.height + wall, 2, 0.5 * em);
            context.fillText(Sim.number(v, 0), x, inner.top + inner.height + wall + 1.7 * em);
        }
        context.textAlign = 'right';
        context.fillText('V [cm³]', width - 0.5 * em, inner.top + inner.height + wall + 1.7 * em);
    }

    function drawGraphs([graph]) {
        const curve = [];
        for (let v = volumes.min; v <= volumes.max; v++)
            curve.push([v, gas.lawPressure(v, temperature)]);
        const points = (isNow) =>
            kept.filter((one) => (one.temperature === temperature) === isNow).map((one) => [one.volume, one.pressure]);
        Sim.graph(graph, {
            x: { min: 0, max: 100, label: 'V [cm³]' },
            y: { min: 0, max: Math.max(350, 1.1 * gas.lawPressure(volumes.min, temperature)), label: 'p [kPa]' },
            lines: [{ points: curve, color: '#9aa7b4', dash: true }],
            dots: [
                { points: points(false), color: '#b9c6d3', size: 0.3 },
                { points: points(true), color: '#1f6fc4', size: 0.35 },
                { points: isNaN(gas.pressure()) ? [] : [[volume, gas.pressure()]], color: '#d4470f', size: 0.5 },
            ],
            notes: [
                { text: 'p · V = n · R · T', color: '#5c6b7a' },
                { text: Sim.word('measured'), color: '#1f6fc4' },
            ],
        });
    }

    Sim.play({
        texts: {
            title: 'Volume and pressure of a gas',
            pressure: 'Pressure',
            volume: 'Volume',
            temperature: 'Temperature',
            measured: 'measured by pushes on the walls',
        },
        graphs: 1,
        readouts: [
            { text: 'pressure', unit: 'kPa', digits: 0, value: () => gas.pressure() },
            { text: 'p · V', unit: 'J', digits: 2, value: () => (gas.pressure() * volume) / 1000 },
        ],
        controls: [
            {
                text: 'volume',
                unit: 'cm³',
                digits: 0,
                ...volumes,
                step: 5,
                value: volume,
                changed: (value) => {
                    volume = value;
                    gas.setVolume(value);
                },
            },
            {
                text: 'temperature',
                unit: 'K',
                digits: 0,
                min: 200,
                max: 600,
                step: 20,
                value: temperature,
                changed: (value) => {
                    temperature = value;
                    gas.setTemperature(value);
                },
            },
        ],
        reset,
        step,
        draw: drawCylinder,
        drawGraphs,
    });
})();
