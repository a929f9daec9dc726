/* The map of a run. The program calls the functions that stand on `window` at the end; nothing is fetched but tiles
   where a server was set. */
'use strict';

(() => {
  const tile = 256;
  const metresAround = 40075016.686; // of the equator, WGS 84
  const shapes = 8;
  let texts = { north: 'N', first: '', onMap: '', second: '', onMapAgain: '', placed: '', end: '' };

  // --- Mercator, from 0 to 1 over the world: marks keep it, so that a redraw only multiplies ---

  const mercatorX = (lng) => lng / 360 + 0.5;
  const mercatorY = (lat) => {
    const sine = Math.sin((Math.max(-85.0511, Math.min(85.0511, lat)) * Math.PI) / 180);
    return 0.5 - Math.log((1 + sine) / (1 - sine)) / (4 * Math.PI);
  };

  const map = L.map('map', { zoomSnap: 0.25, maxZoom: 23, minZoom: 1, zoomAnimation: false, preferCanvas: true,
    attributionControl: true });
  map.attributionControl.setPrefix(false);
  map.setView([20, 10], 2);
  L.control.scale({ imperial: false, maxWidth: 220 }).addTo(map);
  map.createPane('ground').style.zIndex = 350;
  const countries = topojson.feature(worldAtlas, worldAtlas.objects.countries);
  map.createPane('countries').style.zIndex = 150;
  L.geoJSON(countries, {
    renderer: L.canvas({ pane: 'countries', padding: 0.5 }), pane: 'countries', interactive: false,
    attribution: 'Natural Earth', style: { color: '#93a083', weight: 1, fillColor: '#eef1e4', fillOpacity: 1 },
  }).addTo(map);
  let tiles = null;

  // --- A canvas that reaches beyond the window, so that a drag shows more of it before it is drawn again ---

  const CanvasLayer = L.Layer.extend({
    initialize(draw, pane) {
      this.draw = draw;
      this.options = { pane };
    },
    onAdd() {
      this.canvas = L.DomUtil.create('canvas', 'leaflet-zoom-hide', this.getPane());
      this.canvas.style.pointerEvents = 'none';
      this.redraw();
    },
    onRemove() {
      this.canvas.remove();
    },
    getEvents() {
      return { moveend: this.redraw, zoomend: this.redraw, resize: this.redraw };
    },
    redraw() {
      const size = map.getSize();
      const ratio = window.devicePixelRatio || 1;
      const pad = { x: Math.round(size.x / 2), y: Math.round(size.y / 2) };
      const width = size.x + 2 * pad.x;
      const height = size.y + 2 * pad.y;
      const corner = map.containerPointToLayerPoint([-pad.x, -pad.y]);
      L.DomUtil.setPosition(this.canvas, corner);
      if (this.canvas.width !== width * ratio || this.canvas.height !== height * ratio) {
        this.canvas.width = width * ratio;
        this.canvas.height = height * ratio;
        this.canvas.style.width = `${width}px`;
        this.canvas.style.height = `${height}px`;
      }
      const pen = this.canvas.getContext('2d');
      pen.setTransform(ratio, 0, 0, ratio, 0, 0);
      pen.clearRect(0, 0, width, height);
      const world = tile * Math.pow(2, map.getZoom());
      const centre = map.project(map.getCenter());
      const origin = { x: centre.x - width / 2, y: centre.y - height / 2 };
      this.draw(pen, { width, height, world, origin, ratio, window: size.y, windowWidth: size.x });
    },
  });

  // --- The tracks ---

  let tracks = [];
  let scale = { min: 0, max: 1, colours: [] };
  let plainRoute = null; // of single calls

  function makeTrack(told) {
    return { group: told.group, name: told.name || '', note: '', shape: (told.shape || 0) % shapes, isRoute: Boolean(told.isRoute),
      colour: told.colour || '#1d2b3a', x: [], y: [], lat: [], lng: [], fill: [], title: [] };
  }

  function append(track, lat, lng, fill, title) {
    if (!Number.isFinite(lat) || !Number.isFinite(lng) || (lat === 0 && lng === 0)) return;
    track.lat.push(lat);
    track.lng.push(lng);
    track.x.push(mercatorX(lng));
    track.y.push(mercatorY(lat));
    track.fill.push(fill);
    track.title.push(title);
  }

  const paths = [
    (pen, r) => pen.arc(0, 0, r, 0, 2 * Math.PI),
    (pen, r) => pen.rect(-0.88 * r, -0.88 * r, 1.76 * r, 1.76 * r),
    (pen, r) => polygon(pen, 3, 1.25 * r, -90),
    (pen, r) => polygon(pen, 4, 1.2 * r, -90),
    (pen, r) => polygon(pen, 3, 1.25 * r, 90),
    (pen, r) => plus(pen, 1.1 * r),
    (pen, r) => polygon(pen, 5, 1.1 * r, -90),
    (pen, r) => star(pen, 1.3 * r),
  ];

  function polygon(pen, corners, radius, start) {
    for (let i = 0; i < corners; ++i) {
      const angle = ((start + (360 * i) / corners) * Math.PI) / 180;
      pen.lineTo(radius * Math.cos(angle), radius * Math.sin(angle));
    }
    pen.closePath();
  }

  function star(pen, radius) {
    for (let i = 0; i < 10; ++i) {
      const angle = ((-90 + 36 * i) * Math.PI) / 180;
      const r = i % 2 ? radius * 0.45 : radius;
      pen.lineTo(r * Math.cos(angle), r * Math.sin(angle));
    }
    pen.closePath();
  }

  function plus(pen, r) {
    const w = 0.38 * r;
    const corners = [[-w, -r], [w, -r], [w, -w], [r, -w], [r, w], [w, w], [w, r], [-w, r], [-w, w], [-r, w], [-r, -w], [-w, -w]];
    corners.forEach(([x, y]) => pen.lineTo(x, y));
    pen.closePath();
  }

  /* A colour, or a value of the scale; grey is a mark without a value. */
  function colourOf(fill) {
    if (typeof fill === 'string') return fill;
    if (!Number.isFinite(fill) || !scale.colours.length) return '#8a8f94';
    const count = scale.colours.length;
    const bin = scale.max === scale.min ? count / 2 : (Math.fround(fill) - scale.min) / ((scale.max - scale.min) / count);
    return scale.colours[Math.max(0, Math.min(count - 1, Math.floor(bin)))];
  }
  const markRadius = (height) => Math.max(6, Math.min(16, height / 90));

  /* Of the marks that would fall into one small square the newest is drawn. What is drawn is also what the pointer finds. */
  let drawn = [];
  let lastDrawn = 0;

  function drawMarks(pen, view, track, radius) {
    const cell = Math.max(2, radius / 2);
    const columns = Math.ceil(view.width / cell) + 1;
    const taken = new Set();
    const chosen = [];
    for (let i = track.x.length - 1; i >= 0; --i) {
      const x = track.x[i] * view.world - view.origin.x;
      const y = track.y[i] * view.world - view.origin.y;
      if (x < -radius || y < -radius || x > view.width + radius || y > view.height + radius) continue;
      const key = Math.floor(x / cell) + columns * Math.floor(y / cell);
      if (taken.has(key)) continue;
      taken.add(key);
      chosen.push({ x, y, i, track });
    }
    pen.lineWidth = 1.5;
    pen.strokeStyle = 'rgba(20, 28, 36, 0.75)';
    for (let k = chosen.length - 1; k >= 0; --k) {
      const mark = chosen[k];
      pen.translate(mark.x, mark.y);
      pen.beginPath();
      paths[track.shape](pen, radius);
      pen.fillStyle = colourOf(track.fill[mark.i]);
      pen.fill();
      pen.stroke();
      pen.translate(-mark.x, -mark.y);
      drawn.push(mark);
    }
  }

  function drawRoute(pen, view, track, radius) {
    pen.beginPath();
    let last = null;
    track.x.forEach((mx, i) => {
      const x = mx * view.world - view.origin.x;
      const y = track.y[i] * view.world - view.origin.y;
      if (last && Math.abs(last.x - x) < 1 && Math.abs(last.y - y) < 1) return;
      if (last) pen.lineTo(x, y);
      else pen.moveTo(x, y);
      last = { x, y };
    });
    pen.lineJoin = 'round';
    pen.lineWidth = radius + 3;
    pen.strokeStyle = '#fff';
    pen.stroke();
    pen.lineWidth = radius;
    pen.strokeStyle = track.colour;
    pen.stroke();
  }

  let takenPlaces = []; // of the names of this picture, and the rings

  /* Right of the mark, or left of it where somebody stands at the right or the window ends there. */
  function placeFor(pen, view, track, at, radius, size) {
    pen.font = `bold ${size}px "DejaVu Sans", sans-serif`;
    const width = Math.max(pen.measureText(track.name).width, 0.5 * size * track.note.length);
    const gap = 2.6 * radius;
    const boxAt = (left) => ({ left, right: left + width, top: at.y - size, bottom: at.y + 1.4 * size });
    const meets = (a, b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
    const right = boxAt(at.x + gap);
    const left = boxAt(at.x - gap - width);
    const rightEnd = (view.width + view.windowWidth) / 2;
    const isFree = (box) => !takenPlaces.some((other) => meets(box, other));
    const box = isFree(right) && right.right < rightEnd ? right
      : isFree(left) && left.left > rightEnd - view.windowWidth ? left : right;
    takenPlaces.push(box);
    return box === right ? { x: right.left, align: 'left' } : { x: left.right, align: 'right' };
  }

  /* The newest mark with a ring, and the group's name beside it. */
  function drawNewest(pen, view, track, radius) {
    const i = track.x.length - 1;
    if (i < 0) return;
    const x = track.x[i] * view.world - view.origin.x;
    const y = track.y[i] * view.world - view.origin.y;
    const ring = (width, colour) => {
      pen.beginPath();
      pen.arc(x, y, 1.9 * radius, 0, 2 * Math.PI);
      pen.lineWidth = width;
      pen.strokeStyle = colour;
      pen.stroke();
    };
    ring(6, '#fff');
    ring(3, '#1d2b3a');
    const size = Math.max(15, Math.round(view.window / 40));
    const place = placeFor(pen, view, track, { x, y }, radius, size);
    pen.textAlign = place.align;
    pen.lineWidth = 5;
    pen.lineJoin = 'round';
    pen.strokeStyle = '#fff';
    pen.fillStyle = '#1d2b3a';
    const write = (text, font, down) => {
      pen.font = `${font}px "DejaVu Sans", sans-serif`;
      pen.strokeText(text, place.x, y + down);
      pen.fillText(text, place.x, y + down);
    };
    write(track.name, `bold ${size}`, 0.2 * size);
    write(track.note, `${Math.round(0.75 * size)}`, 1.15 * size);
  }

  const marks = new CanvasLayer((pen, view) => {
    const begun = performance.now();
    const radius = markRadius(view.window);
    drawn = [];
    tracks.filter((track) => track.isRoute).forEach((track) => drawRoute(pen, view, track, 0.7 * radius));
    tracks.filter((track) => !track.isRoute).forEach((track) => drawMarks(pen, view, track, radius));
    takenPlaces = tracks.filter((track) => track.x.length).map((track) => {
      const x = track.x[track.x.length - 1] * view.world - view.origin.x;
      const y = track.y[track.y.length - 1] * view.world - view.origin.y;
      return { left: x - 2 * radius, right: x + 2 * radius, top: y - 2 * radius, bottom: y + 2 * radius };
    });
    tracks.forEach((track) => drawNewest(pen, view, track, radius));
    lastDrawn = performance.now() - begun;
  }, 'overlayPane');

  let waiting = 0;
  function redrawSoon() {
    if (!waiting) waiting = requestAnimationFrame(() => { waiting = 0; marks.redraw(); });
  }

  // --- Under them: a picture that was laid there, and where coast lines say nothing a grid in metres ---

  let picture = null; // image, and the turn and shift from its pixels to the map: a, b as complex numbers

  function drawPicture(pen, view) {
    if (!picture || !picture.image.complete || !picture.image.naturalWidth) return;
    const { a, b } = picture;
    pen.save();
    const k = view.ratio * view.world;
    pen.setTransform(a.re * k, a.im * k, -a.im * k, a.re * k, (b.re * view.world - view.origin.x) * view.ratio,
      (b.im * view.world - view.origin.y) * view.ratio);
    pen.drawImage(picture.image, 0, 0);
    pen.restore();
  }

  function niceStep(least) {
    const power = Math.pow(10, Math.floor(Math.log10(least)));
    return [1, 2, 5, 10].map((m) => m * power).find((step) => step >= least);
  }

  const gridReach = 3000; // metres across the window, from there on the grid is drawn

  function drawGrid(pen, view) {
    const centre = map.getCenter();
    const metresPerPixel = (metresAround * Math.cos((centre.lat * Math.PI) / 180)) / view.world;
    if (view.window * metresPerPixel > gridReach) return;
    const step = niceStep(90 * metresPerPixel);
    const base = tracks.length && tracks[0].x.length ? { x: tracks[0].x[0], y: tracks[0].y[0] }
      : { x: mercatorX(centre.lng), y: mercatorY(centre.lat) };
    const spacing = step / metresPerPixel;
    const zero = { x: base.x * view.world - view.origin.x, y: base.y * view.world - view.origin.y };
    pen.strokeStyle = 'rgba(50, 70, 90, 0.3)';
    pen.lineWidth = 1;
    pen.beginPath();
    for (let x = zero.x - Math.floor(zero.x / spacing) * spacing; x < view.width; x += spacing) {
      pen.moveTo(Math.round(x) + 0.5, 0);
      pen.lineTo(Math.round(x) + 0.5, view.height);
    }
    for (let y = zero.y - Math.floor(zero.y / spacing) * spacing; y < view.height; y += spacing) {
      pen.moveTo(0, Math.round(y) + 0.5);
      pen.lineTo(view.width, Math.round(y) + 0.5);
    }
    pen.stroke();
  }

  const ground = new CanvasLayer((pen, view) => {
    drawPicture(pen, view);
    drawGrid(pen, view);
  }, 'ground');
  ground.addTo(map);
  marks.addTo(map);

  // --- Tool tip of the nearest mark ---

  const tip = document.getElementById('tip');
  map.on('mousemove', (event) => {
    const size = map.getSize();
    const reach = 1.5 * markRadius(size.y);
    const pointer = { x: event.containerPoint.x + Math.round(size.x / 2), y: event.containerPoint.y + Math.round(size.y / 2) };
    let best = null;
    let nearest = reach * reach;
    drawn.forEach((mark) => {
      const distance = (mark.x - pointer.x) ** 2 + (mark.y - pointer.y) ** 2;
      if (distance <= nearest) {
        nearest = distance;
        best = mark;
      }
    });
    tip.hidden = !best;
    if (!best) return;
    const name = best.track.name ? `${best.track.name}: ` : '';
    tip.textContent = name + best.track.title[best.i];
    tip.style.left = `${event.containerPoint.x}px`;
    tip.style.top = `${event.containerPoint.y}px`;
  });
  map.on('movestart mouseout', () => { tip.hidden = true; });

  // --- The picture is laid under the map by two of its points ---

  const placing = document.getElementById('placing');
  const frame = document.getElementById('placingPicture');
  const pins = Array.from(document.querySelectorAll('.pin'));
  let steps = null; // points so far: picture, map, picture, map

  function say() {
    const words = [texts.first, texts.onMap, texts.second, texts.onMapAgain];
    document.getElementById('placingText').textContent = words[steps.length] || texts.placed;
  }

  function endPlacing() {
    placing.hidden = true;
    steps = null;
    map.getContainer().style.cursor = '';
  }

  function finishPlacing() {
    const [p, m, q, n] = steps;
    const d = { re: q.x - p.x, im: q.y - p.y };
    const e = { re: n.x - m.x, im: n.y - m.y };
    const square = d.re * d.re + d.im * d.im;
    if (square < 1 || (e.re === 0 && e.im === 0)) { // one point twice: begin with the second again
      steps = steps.slice(0, 2);
      pins[1].hidden = true;
      say();
      return;
    }
    const a = { re: (e.re * d.re + e.im * d.im) / square, im: (e.im * d.re - e.re * d.im) / square };
    const b = { re: m.x - (a.re * p.x - a.im * p.y), im: m.y - (a.im * p.x + a.re * p.y) };
    window.setPicture(frame.src, [a.re, a.im, b.re, b.im]);
    endPlacing();
    document.title = `picturePlaced,${[a.re, a.im, b.re, b.im].join(',')}`;
  }

  frame.addEventListener('click', (event) => {
    if (!steps || steps.length % 2 || steps.length > 2) return;
    const scale = frame.naturalWidth / frame.clientWidth;
    const pin = pins[steps.length / 2];
    pin.style.left = `${event.offsetX}px`;
    pin.style.top = `${event.offsetY}px`;
    pin.hidden = false;
    steps.push({ x: event.offsetX * scale, y: event.offsetY * scale });
    map.getContainer().style.cursor = 'crosshair';
    say();
  });
  map.on('click', (event) => {
    if (!steps || steps.length % 2 === 0) return;
    steps.push({ x: mercatorX(event.latlng.lng), y: mercatorY(event.latlng.lat) });
    map.getContainer().style.cursor = '';
    if (steps.length === 4) finishPlacing();
    else say();
  });
  document.getElementById('placingEnd').addEventListener('click', endPlacing);
  document.addEventListener('keydown', (event) => { if (event.key === 'Escape' && steps) endPlacing(); });

  // --- A view of everything stays one when the window changes, until somebody moves it ---

  let isFitted = false;
  map.on('dragstart', () => { isFitted = false; });
  map.getContainer().addEventListener('wheel', () => { isFitted = false; });
  document.querySelector('.leaflet-control-zoom').addEventListener('click', () => { isFitted = false; });
  map.on('resize', () => { if (isFitted) window.setBounds(); });

  // --- What the program calls ---

  const bounds = () => {
    const box = L.latLngBounds([]);
    tracks.forEach((track) => {
      for (let i = 0; i < track.lat.length; ++i) box.extend([track.lat[i], track.lng[i]]);
    });
    return box;
  };

  Object.assign(window, {
    setTexts(told) {
      texts = Object.assign(texts, told);
      document.getElementById('northText').textContent = texts.north;
      document.getElementById('placingEnd').textContent = texts.end;
    },
    Open(lat, lng) {
      map.setView([lat, lng], 12);
    },
    setBounds() {
      const box = bounds();
      isFitted = true;
      if (box.isValid()) map.fitBounds(box, { padding: [60, 60], maxZoom: 21, animate: false });
    },
    cleanPoints() {
      tracks = [];
      plainRoute = null;
      redrawSoon();
    },
    AddPointM(lat, lng, colour, title) {
      const last = tracks[tracks.length - 1];
      const track = last && last.group === undefined && !last.isRoute ? last : makeTrack({});
      if (track !== last) tracks.push(track);
      append(track, lat, lng, colour, title);
      redrawSoon();
    },
    AddPointP(lat, lng) {
      if (!plainRoute) tracks.push(plainRoute = makeTrack({ isRoute: true }));
      append(plainRoute, lat, lng, '', '');
      redrawSoon();
    },
    Resize() {
      map.invalidateSize();
    },
    /* The colours of equal steps from `min` to `max`. */
    setColours(min, max, colours) {
      scale = { min, max, colours };
      redrawSoon();
    },
    /* Tracks: [{group, name, note, shape, isRoute, colour, lat, lng, values, titles}]; a group that is there grows. */
    addTracks(told) {
      told.forEach((part) => {
        let track = tracks.find((one) => one.group === part.group);
        if (!track) tracks.push(track = makeTrack(part));
        track.note = part.note;
        for (let i = 0; i < part.lat.length; ++i) append(track, part.lat[i], part.lng[i], part.values[i], part.titles[i]);
      });
      redrawSoon();
    },
    /* Shows where everybody is now, if somebody has left the window. */
    follow() {
      const inner = map.getBounds().pad(-0.05);
      if (tracks.some((t) => t.lat.length && !inner.contains([t.lat[t.lat.length - 1], t.lng[t.lng.length - 1]])))
        window.setBounds();
    },
    setTiles(url, attribution) {
      if (tiles) tiles.remove();
      tiles = url ? L.tileLayer(url, { maxZoom: 23, maxNativeZoom: 19, attribution: attribution || '' }).addTo(map) : null;
    },
    placePicture(url) {
      frame.src = url;
      steps = [];
      pins.forEach((pin) => { pin.hidden = true; });
      placing.hidden = false;
      say();
    },
    /* `at`: the turn and scale, and the shift, from pixels of the picture to the world from 0 to 1. Null takes it away. */
    setPicture(url, at) {
      picture = null;
      if (url && at) {
        const image = new Image();
        image.onload = () => ground.redraw();
        picture = { image, a: { re: at[0], im: at[1] }, b: { re: at[2], im: at[3] } };
        image.src = url;
      }
      ground.redraw();
    },
    /* For a look from outside. */
    mapState() {
      const centre = map.getCenter();
      return { marks: tracks.reduce((sum, track) => sum + track.lat.length, 0), drawn: drawn.length, ms: lastDrawn,
        zoom: map.getZoom(), lat: centre.lat, lng: centre.lng, picture: Boolean(picture), placing: Boolean(steps) };
    },
  });
})();
