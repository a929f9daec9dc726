'use strict';

/* Molecules of water on a plane, each stiff: an oxygen with a negative charge and two hydrogens with half of it,
   positive. Charges and the forces between oxygens are those of a common model of water. They draw a hydrogen
   of one to the oxygen of another, which is a hydrogen bond. Lengths in Å, times in ps, masses in u, energies in
   u Å²/ps² (a hundredth of kJ/mol). Steps are velocity Verlet, for the turning too. */
class Water {
    constructor(chance, count, width, height) {
        this.count = count;
        this.width = width;
        this.height = height;
        this.dt = 0.001;
        this.wanted = 300; // K
        this.hasBath = true;
        this.slowness = 0.05; // ps in which the bath brings its temperature about
        this.reach = 9; // where forces end
        this.mass = 18;
        this.bond = 0.9572;
        this.half = (104.52 * Math.PI) / 360; // half of the angle at the oxygen
        this.inertia = 2 * this.bond * this.bond * 1.008;
        this.charges = [-0.834, 0.417, 0.417];
        this.coulomb = 138935.5; // u Å³/ps² of two elementary charges
        this.sigma = 3.1507;
        this.depth = 63.6;
        this.boltzmann = 0.83145;
        this.farthest = 2.45; // Å from the hydrogen to the oxygen of a bond
        this.x = new Float64Array(count);
        this.y = new Float64Array(count);
        this.turn = new Float64Array(count);
        this.vx = new Float64Array(count);
        this.vy = new Float64Array(count);
        this.spin = new Float64Array(count);
        this.fx = new Float64Array(count);
        this.fy = new Float64Array(count);
        this.torque = new Float64Array(count);
        this.sites = new Float64Array(6 * count); // x and y of the oxygen and the hydrogens
        this.time = 0;
        this.place(chance);
        this.feel();
        this.settle(chance);
    }

    place(chance) {
        const columns = Math.ceil(Math.sqrt((this.count * this.width) / this.height));
        const rows = Math.ceil(this.count / columns);
        for (let i = 0; i < this.count; i++) {
            this.x[i] = ((i % columns) + 0.5) * (this.width / columns);
            this.y[i] = (Math.floor(i / columns) + 0.5) * (this.height / rows);
            this.turn[i] = 2 * Math.PI * chance.next();
        }
    }

    // Lets what the first places hold of energy out, and gives all the speeds of the wanted temperature.
    settle(chance) {
        for (let n = 0; n < 300; n++) {
            this.vx.fill(0);
            this.vy.fill(0);
            this.spin.fill(0);
            this.advance();
        }
        this.time = 0;
        for (let i = 0; i < this.count; i++) {
            const speed = Math.sqrt((this.boltzmann * this.wanted) / this.mass);
            this.vx[i] = chance.normal() * speed;
            this.vy[i] = chance.normal() * speed;
            this.spin[i] = chance.normal() * Math.sqrt((this.boltzmann * this.wanted) / this.inertia);
        }
    }

    setSites() {
        for (let i = 0; i < this.count; i++) {
            this.sites[6 * i] = this.x[i];
            this.sites[6 * i + 1] = this.y[i];
            for (const [site, sign] of [[1, 1], [2, -1]]) {
                const angle = this.turn[i] + sign * this.half;
                this.sites[6 * i + 2 * site] = this.x[i] + this.bond * Math.cos(angle);
                this.sites[6 * i + 2 * site + 1] = this.y[i] + this.bond * Math.sin(angle);
            }
        }
    }

    feel() {
        this.setSites();
        this.fx.fill(0);
        this.fy.fill(0);
        this.torque.fill(0);
        this.potential = 0;
        for (let i = 0; i < this.count; i++) {
            for (let j = 0; j < i; j++) {
                const dx = this.x[i] - this.x[j];
                const dy = this.y[i] - this.y[j];
                const square = dx * dx + dy * dy;
                if (square < this.reach * this.reach)
                    this.meet(i, j, square);
            }
        }
    }

    // All sites of two molecules. The whole fades out towards the reach of their oxygens, smoothly, so that energy
    // is neither won nor lost there.
    meet(i, j, square) {
        const { sites, charges } = this;
        const distance = Math.sqrt(square);
        const fade = this.fadeAt(distance);
        let energy = 0;
        let fx = 0; // on molecule i; on the other the opposite
        let fy = 0;
        let turnI = 0;
        let turnJ = 0;
        for (let a = 0; a < 3; a++) {
            const ax = sites[6 * i + 2 * a];
            const ay = sites[6 * i + 2 * a + 1];
            for (let b = 0; b < 3; b++) {
                const bx = sites[6 * j + 2 * b];
                const by = sites[6 * j + 2 * b + 1];
                const over = 1 / ((ax - bx) * (ax - bx) + (ay - by) * (ay - by));
                const charge = this.coulomb * charges[a] * charges[b] * Math.sqrt(over);
                const push = charge * over;
                energy += charge;
                fx += push * (ax - bx);
                fy += push * (ay - by);
                turnI += push * ((ax - sites[6 * i]) * (ay - by) - (ay - sites[6 * i + 1]) * (ax - bx));
                turnJ -= push * ((bx - sites[6 * j]) * (ay - by) - (by - sites[6 * j + 1]) * (ax - bx));
            }
        }
        const near = (this.sigma * this.sigma) / square;
        const six = near * near * near;
        energy += 4 * this.depth * six * (six - 1);
        const along = (24 * this.depth * six * (2 * six - 1) * fade.value) / square - (energy * fade.slope) / distance;
        fx = fx * fade.value + along * (this.x[i] - this.x[j]);
        fy = fy * fade.value + along * (this.y[i] - this.y[j]);
        this.fx[i] += fx;
        this.fy[i] += fy;
        this.fx[j] -= fx;
        this.fy[j] -= fy;
        this.torque[i] += turnI * fade.value;
        this.torque[j] += turnJ * fade.value;
        this.potential += energy * fade.value;
    }

    fadeAt(distance) {
        const from = this.reach - 2;
        if (distance < from)
            return { value: 1, slope: 0 };
        const part = (distance - from) / (this.reach - from);
        return {
            value: 1 - part * part * (3 - 2 * part),
            slope: (-6 * part * (1 - part)) / (this.reach - from),
        };
    }

    kick() {
        const half = this.dt / 2;
        for (let i = 0; i < this.count; i++) {
            this.vx[i] += (this.fx[i] / this.mass) * half;
            this.vy[i] += (this.fy[i] / this.mass) * half;
            this.spin[i] += (this.torque[i] / this.inertia) * half;
        }
    }

    advance() {
        this.kick();
        for (let i = 0; i < this.count; i++) {
            this.x[i] += this.vx[i] * this.dt;
            this.y[i] += this.vy[i] * this.dt;
            this.turn[i] += this.spin[i] * this.dt;
            if ((this.x[i] < 0 && this.vx[i] < 0) || (this.x[i] > this.width && this.vx[i] > 0))
                this.vx[i] = -this.vx[i];
            if ((this.y[i] < 0 && this.vy[i] < 0) || (this.y[i] > this.height && this.vy[i] > 0))
                this.vy[i] = -this.vy[i];
        }
        this.feel();
        this.kick();
        this.time += this.dt;
    }

    step() {
        this.advance();
        if (!this.hasBath)
            return;
        const factor = Math.sqrt(1 + (this.dt / this.slowness) * (this.wanted / this.temperature() - 1));
        for (let i = 0; i < this.count; i++) {
            this.vx[i] *= factor;
            this.vy[i] *= factor;
            this.spin[i] *= factor;
        }
    }

    kinetic() {
        let sum = 0;
        for (let i = 0; i < this.count; i++) {
            sum += this.mass * (this.vx[i] * this.vx[i] + this.vy[i] * this.vy[i]);
            sum += this.inertia * this.spin[i] * this.spin[i];
        }
        return sum / 2;
    }

    // Two ways to go and one to turn.
    temperature() {
        return (2 * this.kinetic()) / (3 * this.count * this.boltzmann);
    }

    energy() {
        return this.kinetic() + this.potential;
    }

    // Each as { from, site, to }: the hydrogen `site`, 1 or 2, of `from` is bound to the oxygen of `to`. It is near,
    // and the oxygen behind it lies nearly in line.
    bonds() {
        const found = [];
        for (let from = 0; from < this.count; from++) {
            for (const site of [1, 2]) {
                for (let to = 0; to < this.count; to++) {
                    if (to !== from && this.isBond(from, site, to))
                        found.push({ from, site, to });
                }
            }
        }
        return found;
    }

    isBond(from, site, to) {
        const { sites } = this;
        const dx = this.x[to] - sites[6 * from + 2 * site];
        const dy = this.y[to] - sites[6 * from + 2 * site + 1];
        const distance = Math.hypot(dx, dy);
        if (distance > this.farthest)
            return false;
        const ox = sites[6 * from + 2 * site] - this.x[from];
        const oy = sites[6 * from + 2 * site + 1] - this.y[from];
        return (dx * ox + dy * oy) / (distance * this.bond) > 0.8;
    }
}
