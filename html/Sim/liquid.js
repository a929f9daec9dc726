'use strict';

/* Molecules that attract each other a little and don't let each other come near: the force between two is that of
   Lennard and Jones, taken down to nothing where it ends. They lie in a wide vessel under a weak gravity.
   Lengths, energies and masses are those of the molecule; time follows from them. Steps are velocity Verlet, so
   without a bath the energy stays. */
class Liquid {
    constructor(chance, count, width, height) {
        this.reach = 2.5;
        this.pull = 0.05; // gravity
        this.dt = 0.006;
        this.wanted = 0.45; // temperature of the bath
        this.hasBath = true;
        this.slowness = 0.2; // time in which the bath brings its temperature about
        this.count = count;
        this.width = width;
        this.height = height;
        this.x = new Float64Array(count);
        this.y = new Float64Array(count); // upwards
        this.vx = new Float64Array(count);
        this.vy = new Float64Array(count);
        this.fx = new Float64Array(count);
        this.fy = new Float64Array(count);
        this.time = 0;
        this.edge = Liquid.well(this.reach);
        this.place(chance);
        this.feel();
    }

    // Energy and force over distance, unshifted.
    static well(distance) {
        const six = Math.pow(distance, -6);
        return { energy: 4 * six * (six - 1), force: (24 * six * (2 * six - 1)) / distance };
    }

    // As a crystal on the ground, with speeds of the wanted temperature.
    place(chance) {
        const gap = 1.12;
        const row = Math.floor((this.width - 1) / gap);
        for (let i = 0; i < this.count; i++) {
            const level = Math.floor(i / row);
            this.x[i] = 0.5 + ((i % row) + (level % 2) / 2) * gap;
            this.y[i] = 0.6 + level * gap * Math.sqrt(0.75);
            this.vx[i] = chance.normal();
            this.vy[i] = chance.normal();
        }
        this.scaleSpeeds(Math.sqrt(this.wanted / this.temperature()));
    }

    scaleSpeeds(factor) {
        for (let i = 0; i < this.count; i++) {
            this.vx[i] *= factor;
            this.vy[i] *= factor;
        }
    }

    kinetic() {
        let sum = 0;
        for (let i = 0; i < this.count; i++)
            sum += this.vx[i] * this.vx[i] + this.vy[i] * this.vy[i];
        return sum / 2;
    }

    temperature() {
        return this.kinetic() / this.count;
    }

    energy() {
        return this.kinetic() + this.potential;
    }

    // Forces and potential of where all are.
    feel() {
        const { y, fx, fy } = this;
        this.potential = 0;
        for (let i = 0; i < this.count; i++) {
            fx[i] = 0;
            fy[i] = -this.pull;
            this.potential += this.pull * y[i];
        }
        this.forEachPair((i, j, dx, dy, square) => {
            const over = 1 / square;
            const six = over * over * over;
            const distance = Math.sqrt(square);
            const force = 24 * six * (2 * six - 1) * over - this.edge.force / distance;
            this.potential += 4 * six * (six - 1) - this.edge.energy + (distance - this.reach) * this.edge.force;
            fx[i] += force * dx;
            fy[i] += force * dy;
            fx[j] -= force * dx;
            fy[j] -= force * dy;
        });
    }

    // Pairs within reach, each once, by cells as wide as it.
    forEachPair(visit) {
        const { x, y, reach } = this;
        const columns = Math.max(1, Math.floor(this.width / reach));
        const rows = Math.max(1, Math.floor(this.height / reach));
        const heads = new Int32Array(columns * rows).fill(-1);
        const next = new Int32Array(this.count);
        const cellOf = (i) => {
            const column = Math.min(columns - 1, Math.max(0, Math.floor((x[i] / this.width) * columns)));
            const row = Math.min(rows - 1, Math.max(0, Math.floor((y[i] / this.height) * rows)));
            return row * columns + column;
        };
        const meet = (i, j) => {
            const dx = x[i] - x[j];
            const dy = y[i] - y[j];
            const square = dx * dx + dy * dy;
            if (square < reach * reach)
                visit(i, j, dx, dy, square);
        };
        for (let i = 0; i < this.count; i++) {
            const cell = cellOf(i);
            const row = Math.floor(cell / columns);
            const column = cell % columns;
            for (let r = Math.max(0, row - 1); r <= Math.min(rows - 1, row + 1); r++) {
                for (let c = Math.max(0, column - 1); c <= Math.min(columns - 1, column + 1); c++) {
                    for (let j = heads[r * columns + c]; j >= 0; j = next[j])
                        meet(i, j);
                }
            }
            next[i] = heads[cell];
            heads[cell] = i;
        }
    }

    step() {
        const { dt, x, y, vx, vy, fx, fy } = this;
        for (let i = 0; i < this.count; i++) {
            vx[i] += (fx[i] * dt) / 2;
            vy[i] += (fy[i] * dt) / 2;
            x[i] += vx[i] * dt;
            y[i] += vy[i] * dt;
            this.keepInside(i);
        }
        this.feel();
        for (let i = 0; i < this.count; i++) {
            vx[i] += (fx[i] * dt) / 2;
            vy[i] += (fy[i] * dt) / 2;
        }
        this.time += dt;
        if (this.hasBath) {
            const now = this.temperature();
            this.scaleSpeeds(Math.sqrt(1 + (dt / this.slowness) * (this.wanted / now - 1)));
        }
    }

    keepInside(i) {
        const { x, y, vx, vy } = this;
        if (x[i] < 0 || x[i] > this.width) {
            x[i] = x[i] < 0 ? -x[i] : 2 * this.width - x[i];
            vx[i] = -vx[i];
        }
        if (y[i] < 0 || y[i] > this.height) {
            y[i] = y[i] < 0 ? -y[i] : 2 * this.height - y[i];
            vy[i] = -vy[i];
        }
    }
}
