'use strict';

/* Numbers that look like chance and are the same for the same seed, so that a model can be tried out again. */
class Chance {
    constructor(seed) {
        this.state = seed >>> 0;
    }
    // Of [0, 1).
    next() {
        this.state = (this.state + 0x6d2b79f5) >>> 0;
        let t = this.state;
        t = Math.imul(t ^ (t >>> 15), t | 1);
        t ^= t + Math.imul(t ^ (t >>> 7), t | 61);
        return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
    }
    // Normal, of mean 0 and variance 1.
    normal() {
        const radius = Math.sqrt(-2 * Math.log(1 - this.next()));
        return radius * Math.cos(2 * Math.PI * this.next());
    }
}
