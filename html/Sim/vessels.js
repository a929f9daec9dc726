'use strict';

/* Two vessels of the height 1 with a wall between them and a valve in it. The molecules of an ideal gas of one
   temperature fly freely, bounce off the walls, and pass the valve where it is open. Now and then one hits another
   and flies on as chance has it: else those that are slow would stay where they are. The pressure in a vessel goes
   by how many there are in its volume. */
class Vessels {
    // Pressures in kPa, volumes in litres.
    constructor(chance, count, pressures, volumes) {
        this.lengthOfVolume = 0.2; // a litre
        this.speed = 0.9; // of one direction, a second
        this.hits = 1.5; // a second
        this.chance = chance;
        this.valve = { from: 0.35, to: 0.65 };
        this.isOpen = false;
        this.memory = 2; // seconds, of the gauges
        this.pressures = pressures;
        this.volumes = volumes;
        this.wall = volumes[0] * this.lengthOfVolume;
        this.end = (volumes[0] + volumes[1]) * this.lengthOfVolume;
        const amounts = [pressures[0] * volumes[0], pressures[1] * volumes[1]];
        const first = Math.round((count * amounts[0]) / (amounts[0] + amounts[1]));
        this.count = count;
        this.amountOfOne = (amounts[0] + amounts[1]) / count; // kPa litres
        this.x = new Float64Array(count);
        this.y = new Float64Array(count);
        this.vx = new Float64Array(count);
        this.vy = new Float64Array(count);
        for (let i = 0; i < count; i++) {
            const isFirst = i < first;
            this.x[i] = isFirst ? chance.next() * this.wall : this.wall + chance.next() * (this.end - this.wall);
            this.y[i] = chance.next();
            this.vx[i] = chance.normal() * this.speed;
            this.vy[i] = chance.normal() * this.speed;
        }
        this.time = 0;
        this.gauges = this.pressuresNow();
    }

    finalPressure() {
        const [p1, p2] = this.pressures;
        const [v1, v2] = this.volumes;
        return (p1 * v1 + p2 * v2) / (v1 + v2);
    }

    pressuresNow() {
        let inFirst = 0;
        for (const x of this.x)
            inFirst += x < this.wall ? 1 : 0;
        return [
            (inFirst * this.amountOfOne) / this.volumes[0],
            ((this.count - inFirst) * this.amountOfOne) / this.volumes[1],
        ];
    }

    step(seconds) {
        this.time += seconds;
        for (let hit = this.hits * seconds * this.count; hit > 0; hit--) {
            const i = Math.floor(this.chance.next() * this.count);
            this.vx[i] = this.chance.normal() * this.speed;
            this.vy[i] = this.chance.normal() * this.speed;
        }
        for (let i = 0; i < this.count; i++) {
            this.flyAcross(i, seconds);
            this.flyAlong(i, seconds);
        }
        const part = 1 - Math.exp(-seconds / this.memory);
        this.pressuresNow().forEach((now, i) => {
            this.gauges[i] += part * (now - this.gauges[i]);
        });
    }

    flyAcross(i, seconds) {
        let y = this.y[i] + this.vy[i] * seconds;
        while (y < 0 || y > 1) {
            y = y < 0 ? -y : 2 - y;
            this.vy[i] = -this.vy[i];
        }
        this.y[i] = y;
    }

    flyAlong(i, seconds) {
        const isFirst = this.x[i] < this.wall;
        const isAtValve = this.isOpen && this.y[i] > this.valve.from && this.y[i] < this.valve.to;
        const from = isFirst || isAtValve ? 0 : this.wall;
        const to = isFirst && !isAtValve ? this.wall : this.end;
        let x = this.x[i] + this.vx[i] * seconds;
        while (x < from || x > to) {
            x = x < from ? 2 * from - x : 2 * to - x;
            this.vx[i] = -this.vx[i];
        }
        // On the wall itself it would belong to the other vessel.
        this.x[i] = isFirst && !isAtValve ? Math.min(x, this.wall - 1e-9) : x;
    }
}
