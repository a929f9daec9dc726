'use strict';

/* An ideal gas behind a piston, in contact with a bath that keeps its temperature. The cylinder has the height
   1 and a length that goes with the volume; molecules fly freely and bounce off the walls. What they push the
   walls by, over a while, is the pressure. */
class Gas {
    constructor(chance, count) {
        this.pressureAtStart = 100; // kPa
        this.volumeAtStart = 60; // cm³
        this.temperatureAtStart = 300; // K
        this.lengthOfVolume = 1.8 / 100; // a cm³
        this.speedAtStart = 0.55; // of one direction, a second
        this.memory = 4; // seconds over which pushes are counted
        this.count = count;
        this.x = new Float64Array(count);
        this.y = new Float64Array(count);
        this.vx = new Float64Array(count);
        this.vy = new Float64Array(count);
        this.volume = this.volumeAtStart;
        this.temperature = this.temperatureAtStart;
        for (let i = 0; i < count; i++) {
            this.x[i] = chance.next() * this.length();
            this.y[i] = chance.next();
            this.vx[i] = chance.normal();
            this.vy[i] = chance.normal();
        }
        this.normalize(this.vx);
        this.normalize(this.vy);
        this.forget();
    }

    length() {
        return this.volume * this.lengthOfVolume;
    }

    // The mean square of one direction is exactly that of the temperature.
    normalize(v) {
        let sum = 0;
        for (const one of v)
            sum += one * one;
        const wanted = this.speedAtStart * Math.sqrt(this.temperature / this.temperatureAtStart);
        const factor = wanted / Math.sqrt(sum / v.length);
        for (let i = 0; i < v.length; i++)
            v[i] *= factor;
    }

    // What was counted under other conditions says nothing of these.
    forget() {
        this.pushes = [];
        this.counted = 0;
        this.countedFor = 0;
    }

    setVolume(volume) {
        const factor = volume / this.volume;
        this.volume = volume;
        for (let i = 0; i < this.count; i++)
            this.x[i] *= factor;
        this.forget();
    }

    setTemperature(temperature) {
        const factor = Math.sqrt(temperature / this.temperature);
        this.temperature = temperature;
        for (let i = 0; i < this.count; i++) {
            this.vx[i] *= factor;
            this.vy[i] *= factor;
        }
        this.forget();
    }

    step(seconds) {
        const pushX = Gas.fly(this.x, this.vx, this.length(), seconds);
        const pushY = Gas.fly(this.y, this.vy, 1, seconds);
        // On two walls of height 1, and two as long as the cylinder.
        const push = (pushX + pushY / this.length()) / 4;
        this.pushes.push([seconds, push]);
        this.counted += push;
        this.countedFor += seconds;
        while (this.countedFor > this.memory) {
            const [long, old] = this.pushes.shift();
            this.counted -= old;
            this.countedFor -= long;
        }
    }

    // Moves along one direction between walls at 0 and `end`; gives what the walls were pushed by.
    static fly(places, speeds, end, seconds) {
        let push = 0;
        for (let i = 0; i < places.length; i++) {
            let place = places[i] + speeds[i] * seconds;
            while (place < 0 || place > end) {
                place = place < 0 ? -place : 2 * end - place;
                push += 2 * Math.abs(speeds[i]);
                speeds[i] = -speeds[i];
            }
            places[i] = place;
        }
        return push;
    }

    // By the pushes, kPa; not a number before there were enough of them.
    pressure() {
        if (this.countedFor < 1)
            return NaN;
        return (this.counted / this.countedFor) * this.scale();
    }

    // From a push per second and length to kPa: the start is at its pressure.
    scale() {
        const length = this.volumeAtStart * this.lengthOfVolume;
        const atStart = (this.count * this.speedAtStart * this.speedAtStart) / length;
        return this.pressureAtStart / atStart;
    }

    // p V = n R T.
    lawPressure(volume, temperature) {
        const constant = (this.pressureAtStart * this.volumeAtStart) / this.temperatureAtStart;
        return (constant * temperature) / volume;
    }
}
