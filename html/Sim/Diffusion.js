'use strict';

(() => {
    const count = 8000;
    const size = { width: 20, height: 14, drop: 1 }; // mm
    const minutesOfSecond = 5;
    const bins = 40;
    let walkers = null;
    let celsius = 20;
    let squares = [];

    function reset() {
        walkers = new Walkers(new Chance(Date.now()), count, size.width, size.height, size.drop);
        squares = [[0, walkers.atStart]];
    }

    function step(seconds) {
        walkers.step(seconds * minutesOfSecond, Walkers.coefficient(celsius));
        if (walkers.time - squares[squares.length - 1][0] > 1)
            squares.push([walkers.time, walkers.meanSquare()]);
    }

    function drawVessel({ context, width, height, em }) {
        const scale = Math.min((width - 3 * em) / size.width, (height - 4.6 * em) / size.height);
        const left = (width - scale * size.width) / 2;
        const top = (height - 2.2 * em - scale * size.height) / 2;
        context.fillStyle = '#e9f4fc';
        context.strokeStyle = '#5c6b7a';
        context.lineWidth = 0.3 * em;
        context.fillRect(left, top, size.width * scale, size.height * scale);
        context.fillStyle = 'rgba(110, 20, 160, 0.4)';
        const dot = Math.max(2, 0.15 * em);
        for (let i = 0; i < count; i++)
            context.fillRect(left + walkers.x[i] * scale - dot / 2, top + walkers.y[i] * scale - dot / 2, dot, dot);
        context.strokeRect(left, top, size.width * scale, size.height * scale);
        const law = Math.sqrt(walkers.atStart + walkers.grown) * scale;
        context.setLineDash([0.5 * em, 0.4 * em]);
        context.strokeStyle = '#1b2733';
        context.lineWidth = 0.12 * em;
        context.save();
        context.beginPath();
        context.rect(left, top, size.width * scale, size.height * scale);
        context.clip();
        context.beginPath();
        context.arc(left + (size.width * scale) / 2, top + (size.height * scale) / 2, law, 0, 2 * Math.PI);
        context.stroke();
        context.restore();
        context.setLineDash([]);
        context.fillStyle = '#1b2733';
        context.textAlign = 'center';
        const end = left + size.width * scale;
        const below = top + size.height * scale + 1.9 * em;
        context.fillRect(end - 5 * scale, below - 0.5 * em, 5 * scale, 0.2 * em);
        context.fillText('5 mm', end - 5 * scale - 2.4 * em, below);
    }

    function drawGraphs([profile, law]) {
        const strip = size.width / bins;
        const bars = [];
        walkers.profile(bins).forEach((part, i) => bars.push([i * strip, part], [(i + 1) * strip, part]));
        const bell = [];
        for (let x = 0; x <= size.width; x += 0.2)
            bell.push([x, walkers.expected(x)]);
        const highest = Math.max(0.1, ...bars.map(([, part]) => part));
        Sim.graph(profile, {
            x: { min: 0, max: size.width, label: 'x [mm]' },
            y: { min: 0, max: 1.25 * highest, label: Sim.word('concentration') },
            lines: [
                { points: bars, color: '#7a3fb5' },
                { points: bell, color: '#1b2733', dash: true },
            ],
        });
        const end = Math.max(60, walkers.time * 1.05);
        const slope = 4 * Walkers.coefficient(celsius);
        const now = squares[squares.length - 1];
        Sim.graph(law, {
            x: { min: 0, max: end, label: 't [min]' },
            y: { min: 0, max: Math.max(5, 1.2 * (walkers.atStart + Math.min(slope * end, 50))), label: '⟨r²⟩ [mm²]' },
            lines: [
                { points: squares, color: '#7a3fb5' },
                { points: [[0, walkers.atStart], [walkers.time, walkers.atStart + walkers.grown]], color: '#1b2733', dash: true },
            ],
            dots: [{ points: [now], color: '#d4470f', size: 0.45 }],
            notes: [{ text: '⟨r²⟩ = r₀² + 4 D t', color: '#5c6b7a' }],
        });
    }

    Sim.play({
        texts: {
            title: 'Diffusion of a drop',
            time: 'Time',
            spread: '⟨r²⟩',
            coefficient: 'D',
            temperature: 'Temperature of the water',
            concentration: 'Concentration [1/mm]',
        },
        graphs: 2,
        readouts: [
            { text: 'time', unit: 'min', digits: 0, value: () => walkers.time },
            { text: 'spread', unit: 'mm²', digits: 1, value: () => walkers.meanSquare() },
            { text: 'coefficient', unit: 'mm²/min', digits: 4, value: () => Walkers.coefficient(celsius) },
        ],
        controls: [
            {
                text: 'temperature',
                unit: '°C',
                digits: 0,
                min: 0,
                max: 90,
                step: 5,
                value: celsius,
                changed: (value) => {
                    celsius = value;
                },
            },
        ],
        reset,
        step,
        draw: drawVessel,
        drawGraphs,
    });
})();
