'use strict';

/* A drop of a dye in water that nobody stirs. Each molecule of the dye goes a random step in each direction, of the
   variance 2 D t. Lengths in millimetres, times in minutes. */
class Walkers {
    constructor(chance, count, width, height, radius) {
        this.chance = chance;
        this.count = count;
        this.width = width;
        this.height = height;
        this.radius = radius;
        this.x = new Float64Array(count);
        this.y = new Float64Array(count);
        this.time = 0;
        this.grown = 0; // what the mean square of the distance has grown by, as the law has it without walls
        for (let i = 0; i < count; i++) {
            const distance = radius * Math.sqrt(chance.next());
            const angle = 2 * Math.PI * chance.next();
            this.x[i] = width / 2 + distance * Math.cos(angle);
            this.y[i] = height / 2 + distance * Math.sin(angle);
        }
        this.atStart = this.meanSquare();
    }

    // Of a small molecule in water, mm² a minute, at a temperature in °C: it goes with the temperature over the
    // viscosity, for which Vogel's formula stands.
    static coefficient(celsius) {
        const kelvin = celsius + 273.15;
        const over = (t) => t / Math.pow(10, 247.8 / (t - 140));
        return ((0.5e-3 * over(kelvin)) / over(298.15)) * 60;
    }

    step(minutes, coefficient) {
        const length = Math.sqrt(2 * coefficient * minutes);
        for (let i = 0; i < this.count; i++) {
            this.x[i] = Walkers.inside(this.x[i] + length * this.chance.normal(), this.width);
            this.y[i] = Walkers.inside(this.y[i] + length * this.chance.normal(), this.height);
        }
        this.time += minutes;
        this.grown += 4 * coefficient * minutes;
    }

    static inside(place, end) {
        while (place < 0 || place > end)
            place = place < 0 ? -place : 2 * end - place;
        return place;
    }

    // Of the distance from the middle, mm².
    meanSquare() {
        let sum = 0;
        for (let i = 0; i < this.count; i++) {
            const dx = this.x[i] - this.width / 2;
            const dy = this.y[i] - this.height / 2;
            sum += dx * dx + dy * dy;
        }
        return sum / this.count;
    }

    // How many parts of all lie in each millimetre across the vessel, in `bins` strips.
    profile(bins) {
        const counts = new Array(bins).fill(0);
        for (let i = 0; i < this.count; i++)
            counts[Math.min(bins - 1, Math.floor((this.x[i] / this.width) * bins))]++;
        return counts.map((count) => count / this.count / (this.width / bins));
    }

    // What the law has for place x: a bell curve as wide as the mean square says, thrown back by the walls.
    expected(x) {
        const variance = (this.atStart + this.grown) / 2;
        const bell = (d) => Math.exp((-d * d) / (2 * variance)) / Math.sqrt(2 * Math.PI * variance);
        const middle = this.width / 2;
        let sum = 0;
        for (let image = -4; image <= 4; image++)
            sum += bell(x - middle - 2 * image * this.width) + bell(x + middle - 2 * image * this.width);
        return sum;
    }
}
