// The page of a run: one state, one draw function. Data is only ever set as text.

const trailSeconds = 20;
const silentSeconds = 5;    // a beacon that was not heard for so long counts as not heard
const truthSeconds = 1;     // how far a true position may be from the time that it is used for
const staleSeconds = 3;     // from when on the age of a position is told
const maxListed = 5000;

const byId = id => document.getElementById(id);
const data = JSON.parse(byId('runs').textContent);
const pictures = data.pictures.map(address => {
  const image = new Image();
  image.onload = () => requestDraw();
  image.src = address;
  return image;
});

// ---------------------------------------------------------------- shapes

// Each is drawn on the floor plan or beside an event, and told by the legend.
const ink = '#14181d';
const circle = radius => `M${-radius} 0a${radius} ${radius} 0 1 0 ${2 * radius} 0a${radius} ${radius} 0 1 0 ${-2 * radius} 0Z`;
const shapes = {
  position: { path: circle(6), fill: ink, halo: true },
  path: { path: 'M0-7.5L7.5 0L0 7.5L-7.5 0Z', fill: '#8a2be2', halo: true },
  truth: { path: 'M-6-6L6 6M6-6L-6 6', stroke: '#00765a', width: 3, halo: true },
  node: { path: 'M0-4.5L4.5 3.5L-4.5 3.5Z', fill: '#ffffff', stroke: '#5a6470', width: 1.2 },
  unheard: { path: circle(4.5), fill: '#ffffff', stroke: '#6f7985', width: 1.2, dash: [2, 2] },
  ZoneEnter: { path: 'M-4-5L5 0L-4 5Z', fill: '--series-5' },
  ZoneExit: { path: 'M4-4.5L-4.5 0L4 4.5Z', fill: '--surface', stroke: '--series-5', width: 1.5 },
  ArrivedToPOI: { path: 'M0-6L1.6-1.9L6-1.6L2.6 1.2L3.7 5.5L0 3.1L-3.7 5.5L-2.6 1.2L-6-1.6L-1.6-1.9Z', fill: '--series-1' },
  MapChange: { path: 'M-3 5V-5M-5.5-2.5L-3-5L-.5-2.5M3-5V5M.5 2.5L3 5L5.5 2.5', stroke: '--ink', width: 1.6 },
};
const levels = [
  { from: -60, text: '−60 dBm and more', radius: 8.5, fill: '#08306b' },
  { from: -70, text: '−70 to −61 dBm', radius: 7.5, fill: '#2171b5' },
  { from: -80, text: '−80 to −71 dBm', radius: 6.5, fill: '#6baed6' },
  { from: -90, text: '−90 to −81 dBm', radius: 5.5, fill: '#bdd7e7' },
  { from: -Infinity, text: 'below −90 dBm', radius: 4.5, fill: '#eff5fb' },
].map(level => ({ ...level, path: circle(level.radius), stroke: '#0a2744', width: 1.2 }));
const zoneStyle = { stroke: '#5d6774', width: 1, dash: [4, 3] };
const litStyle = { stroke: '#8f5c00', width: 2.5, fill: 'rgba(245, 180, 0, 0.34)' };
const seriesDashes = [[], [7, 3], [2, 2.5], [9, 3, 2, 3], [4, 4], [12, 4]];

let theme = {};
function readTheme() {
  const style = getComputedStyle(document.documentElement);
  theme = {};
  for (const name of ['page', 'surface', 'ink', 'soft', 'line', 'grid', 'accent', 'other', 'veil',
    'series-1', 'series-2', 'series-3', 'series-4', 'series-5', 'series-6'])
    theme['--' + name] = style.getPropertyValue('--' + name).trim();
}
const colour = name => theme[name] || name;

function drawShape(context, shape, x, y) {
  shape.drawn ??= new Path2D(shape.path);
  context.save();
  context.translate(x, y);
  if (shape.halo) {
    context.strokeStyle = '#ffffff';
    context.lineWidth = (shape.width || 0) + 4;
    context.stroke(shape.drawn);
  }
  paint(context, shape, shape.drawn);
  context.restore();
}

function paint(context, style, path) {
  if (style.fill) {
    context.fillStyle = colour(style.fill);
    context.fill(path);
  }
  if (style.stroke) {
    context.strokeStyle = colour(style.stroke);
    context.lineWidth = style.width;
    context.setLineDash(style.dash || []);
    context.stroke(path);
    context.setLineDash([]);
  }
}

function svg(name, attributes, parent) {
  const element = document.createElementNS('http://www.w3.org/2000/svg', name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  if (parent) parent.append(element);
  return element;
}

// Colours by name follow the theme, others are as they stand.
const cssColour = name => name && name.startsWith('--') ? `var(${name})` : name || 'none';

function shapeIcon(shape, width = 24, height = 20) {
  const icon = svg('svg', { viewBox: `${-width / 2} ${-height / 2} ${width} ${height}`, width, height, 'aria-hidden': 'true' });
  const path = svg('path', { d: shape.path, 'stroke-width': shape.width || 0 }, icon);
  path.style.fill = cssColour(shape.fill);
  path.style.stroke = cssColour(shape.stroke);
  if (shape.dash) path.setAttribute('stroke-dasharray', shape.dash.join(' '));
  return icon;
}

function lineIcon(stroke, dash, width = 2.2) {
  const icon = svg('svg', { viewBox: '0 0 34 12', width: 34, height: 12, 'aria-hidden': 'true' });
  const line = svg('line', { x1: 1, y1: 6, x2: 33, y2: 6, 'stroke-width': width, 'stroke-dasharray': dash.join(' ') }, icon);
  line.style.stroke = cssColour(stroke);
  return icon;
}

// ---------------------------------------------------------------- runs

// The index of the last time that is not after `time`; -1 before the first.
function indexAt(times, time) {
  let low = 0, high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] <= time) low = middle + 1; else high = middle;
  }
  return low - 1;
}

// Milliseconds, each from the one before, become seconds.
function decodeTimes(steps) {
  const times = new Float64Array(steps.length);
  let last = 0;
  for (let i = 0; i < steps.length; ++i) times[i] = (last += steps[i]) / 1000;
  return times;
}

const quantile = (sorted, part) => sorted[Math.max(0, Math.ceil(part * sorted.length) - 1)];
const unitOf = { Meters: ['m', 1, 2], Centimeters: ['cm', 0.01, 0], Inches: ['in', 0.0254, 1] };

function prepareRun(run) {
  if (run.isPrepared) return run;
  for (const series of [run.positions, run.truth, ...run.signals]) series.t = decodeTimes(series.t);
  run.end = Math.max(run.end, 0.1);
  for (const map of run.maps) {
    [map.unit, map.metres, map.decimals] = unitOf[map.units];
    map.view = map.picture < 0 ? map.rect : map.pictureRect;
  }
  run.floorTimes = [];
  run.floors = [];
  const stays = run.events.filter(event => event.kind === 'MapChange').map(event => [event.t, event.map]);
  run.positions.t.forEach((time, i) => stays.push([time, run.positions.map[i]]));
  for (const [time, floor] of stays.sort((a, b) => a[0] - b[0])) {
    if (run.floors.at(-1) === floor) continue;
    run.floorTimes.push(time);
    run.floors.push(floor);
  }
  for (const zone of run.zones) prepareZone(zone);
  for (const event of run.events) addStay(run.zones[event.zone], event);
  prepareErrors(run);
  run.eventTimes = run.events.map(event => event.t);
  run.strongest = new Map();
  run.isPrepared = true;
  return run;
}

function prepareZone(zone) {
  zone.enters = [];
  zone.exits = [];
  zone.shape = new Path2D();
  const { outline } = zone;
  const box = { left: Infinity, top: Infinity, right: -Infinity, bottom: -Infinity };
  for (let i = 0; i < outline.length; i += 2) {
    zone.shape.lineTo(outline[i], outline[i + 1]);
    box.left = Math.min(box.left, outline[i]);
    box.right = Math.max(box.right, outline[i]);
    box.top = Math.min(box.top, outline[i + 1]);
    box.bottom = Math.max(box.bottom, outline[i + 1]);
  }
  zone.shape.closePath();
  zone.box = box;
}

function addStay(zone, event) {
  if (!zone) return;
  if (event.kind === 'ZoneEnter' && zone.exits.length === zone.enters.length) zone.enters.push(event.t);
  if (event.kind === 'ZoneExit' && zone.exits.length < zone.enters.length) zone.exits.push(event.t);
}

function isInside(zone, time) {
  const stay = indexAt(zone.enters, time);
  return stay >= 0 && !(zone.exits[stay] <= time);
}

const floorAt = (run, time) => run.floors[Math.max(0, indexAt(run.floorTimes, time))] ?? 0;

// Where the device really was; null when nobody knows. Between two rows it went straight, unless
// they are too far from each other.
function truthAt(run, time) {
  const { t, map, x, y } = run.truth;
  const before = indexAt(t, time), after = before + 1;
  const isAfterNearer = after < t.length && (before < 0 || t[after] - time < time - t[before]);
  const nearest = isAfterNearer ? after : before;
  if (nearest < 0 || Math.abs(t[nearest] - time) > truthSeconds) return null;
  const part = (time - t[before]) / (t[after] - t[before]);
  const isWalk = before >= 0 && after < t.length && map[before] === map[after] &&
    t[after] - t[before] <= 2 * truthSeconds;
  if (!isWalk || !(part >= 0)) return { map: map[nearest], x: x[nearest], y: y[nearest] };
  return { map: map[before], x: x[before] + part * (x[after] - x[before]), y: y[before] + part * (y[after] - y[before]) };
}

// Metres between a position and the truth; NaN on another floor or without a truth.
function errorOf(run, i, xs, ys, truth) {
  if (!truth || truth.map !== run.positions.map[i]) return NaN;
  return Math.hypot(xs[i] - truth.x, ys[i] - truth.y) * run.maps[truth.map].metres;
}

function prepareErrors(run) {
  const { t, map, x, y, pathX, pathY } = run.positions;
  run.errors = new Float64Array(t.length).fill(NaN);
  const onPath = [];
  let known = 0, right = 0;
  for (let i = 0; i < t.length; ++i) {
    const truth = truthAt(run, t[i]);
    if (!truth) continue;
    ++known;
    if (truth.map === map[i]) ++right;
    run.errors[i] = errorOf(run, i, x, y, truth);
    onPath.push(errorOf(run, i, pathX, pathY, truth));
  }
  const summary = values => {
    const sorted = Array.from(values).filter(value => value >= 0).sort((a, b) => a - b);
    return { count: sorted.length, median: quantile(sorted, 0.5), most: quantile(sorted, 0.9), max: sorted.at(-1) };
  };
  run.errorSummary = summary(run.errors);
  run.pathSummary = summary(onPath);
  run.rightFloor = known ? right / known : NaN;
}

// The beacons of a floor, the six that were heard most strongly first and apart.
function strongestOf(run, floor) {
  if (run.strongest.has(floor)) return run.strongest.get(floor);
  const strength = beacon => {
    const sorted = Int16Array.from(run.signals[beacon].rssi).sort();
    return sorted.length ? quantile(sorted, 0.9) : -Infinity;
  };
  const heard = run.beacons.map((beacon, i) => ({ beacon: i, map: beacon.map }))
    .filter(item => item.map === floor && run.signals[item.beacon].t.length)
    .map(item => ({ ...item, strength: strength(item.beacon) }))
    .sort((a, b) => b.strength - a.strength || a.beacon - b.beacon)
    .map(item => item.beacon);
  const result = { named: heard.slice(0, 6).sort((a, b) => a - b), others: heard.slice(6) };
  run.strongest.set(floor, result);
  return result;
}

// dBm; null when the beacon is not heard.
function strengthAt(run, beacon, time) {
  const { t, rssi } = run.signals[beacon];
  const i = indexAt(t, time);
  return i < 0 || time - t[i] > silentSeconds ? null : rssi[i];
}

// ---------------------------------------------------------------- state

const state = {
  run: null, runIndex: 0, time: 0, floor: null /* null: follow the device */,
  isPlaying: false, speed: 1, zoom: 1, centre: null, shownFloor: -1, lastFrame: 0, pointer: null,
};

const readAddress = () => new URLSearchParams(location.hash.slice(1));
const clampTime = time => Math.min(Math.max(time, 0), state.run.end);

function goToAddress() {
  const address = readAddress();
  const wholeNumber = (name, count) => {
    const value = Number(address.get(name) ?? NaN);
    return Number.isInteger(value) && value >= 0 && value < count ? value : null;
  };
  selectRun(wholeNumber('run', data.runs.length) ?? state.runIndex);
  if (address.has('floor')) state.floor = wholeNumber('floor', state.run.maps.length);
  const time = Number(address.get('t') ?? NaN);
  if (Number.isFinite(time)) state.time = clampTime(time);
  requestDraw();
}

let addressTimer = 0;
function noteAddress() {
  clearTimeout(addressTimer);
  addressTimer = setTimeout(() => {
    const parts = ['t=' + Number(state.time.toFixed(2))];
    if (data.runs.length > 1) parts.push('run=' + state.runIndex);
    if (state.floor !== null) parts.push('floor=' + state.floor);
    history.replaceState(null, '', '#' + parts.join('&'));
  }, 400);
}

function selectRun(index) {
  if (state.run && index === state.runIndex) return;
  state.runIndex = index;
  state.run = prepareRun(data.runs[index]);
  state.time = 0;
  state.floor = null;
  state.shownFloor = -1;
  state.zoom = 1;
  showRun();
}

function seek(time) {
  state.time = clampTime(time);
  noteAddress();
  requestDraw();
}

function setPlaying(isPlaying) {
  if (isPlaying && state.time >= state.run.end) state.time = 0;
  state.isPlaying = isPlaying;
  state.lastFrame = 0;
  showPlayButton();
  if (!isPlaying) noteAddress();
  requestDraw();
}

function showPlayButton() {
  const { isPlaying } = state;
  byId('play').setAttribute('aria-label', isPlaying ? 'Pause' : 'Play');
  byId('play-shape').setAttribute('d', isPlaying ? 'M3 2h4v12H3ZM9 2h4v12H9Z' : 'M4 2L14 8L4 14Z');
}

function follow(floor) {
  state.floor = floor;
  noteAddress();
  requestDraw();
}

function goToEvent(direction) {
  const times = state.run.eventTimes;
  const at = direction > 0 ? indexAt(times, state.time + 0.001) + 1 : indexAt(times, state.time - 0.001);
  if (times[at] !== undefined) seek(times[at]);
}

// ---------------------------------------------------------------- texts

function setText(id, text) {
  const element = byId(id);
  if (element.textContent !== text) element.textContent = text;
}

function timeText(seconds, decimals = 1) {
  if (state.run.end < 100) return seconds.toFixed(decimals) + ' s';
  const rounded = Number(seconds.toFixed(decimals));
  const minutes = Math.floor(rounded / 60);
  const rest = (rounded - 60 * minutes).toFixed(decimals).padStart(decimals ? 3 + decimals : 2, '0');
  if (minutes < 60) return `${minutes}:${rest}`;
  return `${Math.floor(minutes / 60)}:${String(minutes % 60).padStart(2, '0')}:${rest}`;
}

const dbm = value => value === null ? 'not heard' : `${String(value).replace('-', '−')} dBm`;
const metres = value => value >= 0 ? `${value.toFixed(2)} m` : '–';
const placeText = (map, x, y) => `${x.toFixed(map.decimals)}, ${y.toFixed(map.decimals)} ${map.unit}`;
const mapName = (run, index) => run.maps[index]?.name ?? 'unknown';

function eventText(run, event) {
  if (event.kind === 'ZoneEnter') return 'Entered ' + event.name;
  if (event.kind === 'ZoneExit') return 'Left ' + event.name;
  if (event.kind === 'ArrivedToPOI') return 'Arrived at ' + event.name;
  return 'To ' + mapName(run, event.map) + (event.from < 0 ? '' : ' from ' + mapName(run, event.from));
}

function showNow() {
  const { run, time } = state;
  const { t, map, x, y, pathX, pathY } = run.positions;
  const i = indexAt(t, time);
  const truth = truthAt(run, time);
  const age = i < 0 || time - t[i] < staleSeconds ? '' : `, ${Math.floor(time - t[i])} s old`;
  const place = (xs, ys) => i < 0 ? 'not yet known' : placeText(run.maps[map[i]], xs[i], ys[i]) + age;
  setText('time', timeText(time));
  setText('floor', mapName(run, floorAt(run, time)));
  setText('zones', run.zones.filter(zone => isInside(zone, time)).map(zone => zone.name).join(', ') || 'none');
  setText('position', place(x, y));
  setText('path', place(pathX, pathY));
  setText('truth', truth ? placeText(run.maps[truth.map], truth.x, truth.y) +
    (i >= 0 && truth.map !== map[i] ? ', ' + mapName(run, truth.map) : '') : 'not known');
  const errors = truth && i >= 0 ? [errorOf(run, i, x, y, truth), errorOf(run, i, pathX, pathY, truth)] : [];
  setText('error', !errors.length ? '–' : errors[0] >= 0 ?
    `${metres(errors[0])}, on the path ${metres(errors[1])}` : 'on another floor');
  const slider = byId('slider');
  slider.value = time;
  slider.setAttribute('aria-valuetext', timeText(time));
}

// ---------------------------------------------------------------- canvases

// Makes a canvas as sharp as the screen; a context in CSS pixels.
function prepareCanvas(canvas, width, height) {
  const density = Math.min(devicePixelRatio || 1, 3);
  const pixelWidth = Math.round(width * density), pixelHeight = Math.round(height * density);
  if (canvas.width !== pixelWidth || canvas.height !== pixelHeight) {
    canvas.width = pixelWidth;
    canvas.height = pixelHeight;
  }
  const context = canvas.getContext('2d');
  context.setTransform(density, 0, 0, density, 0, 0);
  context.lineJoin = context.lineCap = 'round';
  return context;
}

const font = (size, weight = 400) => `${weight} ${size}px system-ui, "Liberation Sans", sans-serif`;

// ---------------------------------------------------------------- floor plan

const plan = { width: 0, height: 0, scale: 1, left: 0, top: 0 };

const toScreen = (x, y) => [(x - plan.left) * plan.scale, (y - plan.top) * plan.scale];
const toMap = (x, y) => [x / plan.scale + plan.left, y / plan.scale + plan.top];

function layOutPlan(canvas, map) {
  const [left, top, right, bottom] = map.view;
  const mapWidth = Math.max(right - left, 1e-6), mapHeight = Math.max(bottom - top, 1e-6);
  plan.width = canvas.parentElement.clientWidth;
  plan.height = Math.round(Math.max(200, Math.min(plan.width * mapHeight / mapWidth, innerHeight * 0.62)));
  canvas.style.height = plan.height + 'px';
  plan.scale = Math.min(plan.width / mapWidth, plan.height / mapHeight) * state.zoom;
  if (state.zoom === 1 || !state.centre) state.centre = [(left + right) / 2, (top + bottom) / 2];
  plan.left = state.centre[0] - plan.width / plan.scale / 2;
  plan.top = state.centre[1] - plan.height / plan.scale / 2;
}

// Moves a zoomed view along when the device walks out of its middle.
function keepInView(x, y) {
  const reachX = plan.width / plan.scale * 0.3, reachY = plan.height / plan.scale * 0.3;
  const clamp = (value, middle, reach) => Math.min(Math.max(middle, value - reach), value + reach);
  state.centre = [clamp(x, state.centre[0], reachX), clamp(y, state.centre[1], reachY)];
}

function drawPlan() {
  const { run, time } = state;
  const floor = state.floor ?? floorAt(run, time);
  if (floor !== state.shownFloor) changeFloor(floor);
  const map = run.maps[floor];
  const canvas = byId('floor-plan');
  const i = indexAt(run.positions.t, time);
  const isHere = i >= 0 && run.positions.map[i] === floor;
  layOutPlan(canvas, map);
  if (state.zoom > 1 && state.isPlaying && isHere) {
    keepInView(run.positions.x[i], run.positions.y[i]);
    layOutPlan(canvas, map);
  }
  const context = prepareCanvas(canvas, plan.width, plan.height);
  drawFloor(context, map);
  for (const zone of run.zones) if (zone.map === floor) drawZone(context, zone, isInside(zone, time));
  for (const poi of run.pois)
    if (poi.map === floor && poi.isNode) drawShape(context, shapes.node, ...toScreen(poi.x, poi.y));
  run.beacons.forEach((beacon, index) => {
    if (beacon.map === floor) drawShape(context, beaconShape(strengthAt(run, index, time)), ...toScreen(beacon.x, beacon.y));
  });
  for (const zone of run.zones) if (zone.map === floor) drawZoneName(context, zone, isInside(zone, time));
  if (isHere) drawTrail(context, run, floor);
  drawMarkers(context, run, floor, isHere ? i : -1);
  if (!isHere && i >= 0) drawNote(context, 'The device is on ' + mapName(run, run.positions.map[i]));
  drawScale(context, map);
}

function drawFloor(context, map) {
  context.fillStyle = '#fbfbf9';
  context.fillRect(0, 0, plan.width, plan.height);
  const image = pictures[map.picture];
  const [left, top, right, bottom] = image ? map.pictureRect : map.rect;
  const [x, y] = toScreen(left, top);
  const width = (right - left) * plan.scale, height = (bottom - top) * plan.scale;
  if (image?.complete && image.naturalWidth) {
    context.imageSmoothingQuality = 'high';
    context.drawImage(image, x, y, width, height);
  } else {
    context.strokeStyle = '#9aa3ad';
    context.lineWidth = 1;
    context.strokeRect(x, y, width, height);
  }
  context.fillStyle = theme['--veil'];
  context.fillRect(0, 0, plan.width, plan.height);
}

function drawZone(context, zone, isLit) {
  const path = new Path2D();
  path.addPath(zone.shape, new DOMMatrix([plan.scale, 0, 0, plan.scale, -plan.left * plan.scale, -plan.top * plan.scale]));
  paint(context, isLit ? litStyle : zoneStyle, path);
}

function drawZoneName(context, zone, isLit) {
  const { left, top, right } = zone.box;
  const width = (right - left) * plan.scale - 8;
  context.font = font(12, isLit ? 700 : 400);
  let text = zone.name;
  while (text.length > 1 && context.measureText(text).width > width) text = text.replace(/…?$/u, '').slice(0, -1) + '…';
  if (text.length < 3 && text !== zone.name) return;
  const [x, y] = toScreen((left + right) / 2, top);
  drawText(context, text, x, y + 15, isLit ? '#5e3c00' : '#47515d');
}

function drawText(context, text, x, y, fill, align = 'center') {
  context.textAlign = align;
  context.strokeStyle = 'rgba(255, 255, 255, 0.85)';
  context.lineWidth = 3;
  context.strokeText(text, x, y);
  context.fillStyle = fill;
  context.fillText(text, x, y);
}

const beaconShape = strength => strength === null ? shapes.unheard : levels.find(level => strength >= level.from);

function drawTrail(context, run, floor) {
  const { t, map, x, y } = run.positions;
  context.strokeStyle = ink;
  context.lineWidth = 3;
  const last = indexAt(t, state.time);
  for (let i = indexAt(t, state.time - trailSeconds) + 1; i < last; ++i) {
    if (map[i] !== floor || map[i + 1] !== floor) continue;
    context.globalAlpha = 0.08 + 0.47 * (1 - (state.time - t[i]) / trailSeconds);
    context.beginPath();
    context.moveTo(...toScreen(x[i], y[i]));
    context.lineTo(...toScreen(x[i + 1], y[i + 1]));
    context.stroke();
  }
  context.globalAlpha = 1;
}

function drawMarkers(context, run, floor, i) {
  const { x, y, pathX, pathY } = run.positions;
  const truth = truthAt(run, state.time);
  const trueAt = truth && truth.map === floor ? toScreen(truth.x, truth.y) : null;
  if (trueAt && i >= 0) {
    context.strokeStyle = shapes.truth.stroke;
    context.lineWidth = 1.5;
    context.setLineDash([4, 3]);
    context.beginPath();
    context.moveTo(...trueAt);
    context.lineTo(...toScreen(x[i], y[i]));
    context.stroke();
    context.setLineDash([]);
  }
  if (i >= 0) drawShape(context, shapes.path, ...toScreen(pathX[i], pathY[i]));
  if (i >= 0) drawShape(context, shapes.position, ...toScreen(x[i], y[i]));
  if (trueAt) drawShape(context, shapes.truth, ...trueAt);
}

function drawNote(context, text) {
  context.font = font(13, 600);
  const width = context.measureText(text).width + 20;
  context.fillStyle = 'rgba(20, 24, 29, 0.82)';
  context.beginPath();
  context.roundRect(8, 8, width, 26, 4);
  context.fill();
  context.textAlign = 'left';
  context.fillStyle = '#ffffff';
  context.fillText(text, 18, 26);
}

function drawScale(context, map) {
  const pixelsPerMetre = plan.scale / map.metres;
  const most = Math.min(120, plan.width / 3) / pixelsPerMetre;
  const magnitude = 10 ** Math.floor(Math.log10(most));
  const length = magnitude * [5, 2, 1].find(step => step * magnitude <= most);
  const right = plan.width - 12, bottom = plan.height - 10, left = right - length * pixelsPerMetre;
  for (const [stroke, width] of [['rgba(255, 255, 255, 0.85)', 5], [ink, 1.5]]) {
    context.strokeStyle = stroke;
    context.lineWidth = width;
    context.beginPath();
    for (const [method, x, y] of [['moveTo', left, bottom - 4], ['lineTo', left, bottom], ['lineTo', right, bottom], ['lineTo', right, bottom - 4]])
      context[method](x, y);
    context.stroke();
  }
  context.font = font(11);
  drawText(context, `${Number(length.toPrecision(1))} m`, (left + right) / 2, bottom - 5, ink);
}

// What stands under the pointer, as a text of lines.
function textAt(screenX, screenY) {
  const { run, time } = state;
  const reach = 12;
  let best = reach, text = '';
  const consider = (item, describe) => {
    if (item.map !== state.shownFloor) return;
    const [x, y] = toScreen(item.x, item.y);
    const distance = Math.hypot(x - screenX, y - screenY);
    if (distance < best) [best, text] = [distance, describe()];
  };
  run.beacons.forEach((beacon, i) =>
    consider(beacon, () => `${beacon.name}\n${dbm(strengthAt(run, i, time))}\n${beacon.identity}`));
  for (const poi of run.pois) if (poi.isNode) consider(poi, () => poi.name);
  if (text) return text;
  const context = byId('floor-plan').getContext('2d');
  context.save();
  context.resetTransform();
  const zones = run.zones.filter(zone => zone.map === state.shownFloor &&
    context.isPointInPath(zone.shape, ...toMap(screenX, screenY)));
  context.restore();
  return zones.map(zone => 'Zone ' + zone.name).join('\n');
}

function showTip() {
  const tip = byId('tip');
  const text = state.pointer ? textAt(...state.pointer) : '';
  tip.hidden = !text;
  if (!text) return;
  tip.textContent = text;
  const [x, y] = state.pointer;
  const isRight = x > plan.width / 2;
  tip.style.left = isRight ? '' : `${x + 14}px`;
  tip.style.right = isRight ? `${plan.width - x + 14}px` : '';
  tip.style.top = `${Math.max(0, Math.min(y + 8, plan.height - 60))}px`;
}

function zoomTo(zoom) {
  state.zoom = Math.min(Math.max(zoom, 1), 16);
  byId('floor-plan').classList.toggle('zoomed', state.zoom > 1);
  requestDraw();
}

// ---------------------------------------------------------------- charts

const margin = { left: 40, right: 14, top: 8, bottom: 22 };

// A chart keeps what does not depend on the time in a picture of its own.
function makeChart(id, describe) {
  const canvas = byId(id);
  const kept = document.createElement('canvas');
  const chart = { canvas, kept, key: '', width: 0, height: 0 };
  chart.x = time => margin.left + (chart.width - margin.left - margin.right) * time / state.run.end;
  chart.y = value => margin.top + (chart.height - margin.top - margin.bottom) * (chart.high - value) / (chart.high - chart.low);
  chart.draw = key => {
    chart.width = canvas.parentElement.clientWidth - parseFloat(getComputedStyle(canvas.parentElement).paddingLeft) * 2;
    chart.height = canvas.clientHeight;
    if (chart.width <= 0 || !chart.height) return;
    const fullKey = [key, chart.width, chart.height, devicePixelRatio, theme['--surface'], state.runIndex].join();
    if (fullKey !== chart.key) {
      chart.key = fullKey;
      const context = prepareCanvas(kept, chart.width, chart.height);
      context.clearRect(0, 0, chart.width, chart.height);
      describe(chart, context);
    }
    const context = prepareCanvas(canvas, chart.width, chart.height);
    context.clearRect(0, 0, chart.width, chart.height);
    context.drawImage(kept, 0, 0, chart.width, chart.height);
    drawCursor(chart, context);
  };
  dragToSeek(canvas, x => (x - margin.left) / (chart.width - margin.left - margin.right) * state.run.end);
  return chart;
}

function drawCursor(chart, context) {
  context.strokeStyle = theme['--ink'];
  context.lineWidth = 1.25;
  const x = chart.x(state.time);
  context.beginPath();
  context.moveTo(x, margin.top);
  context.lineTo(x, chart.height - margin.bottom);
  context.stroke();
}

function drawAxes(chart, context, values, label) {
  context.font = font(11);
  context.lineWidth = 1;
  context.textAlign = 'right';
  for (const value of values) {
    const y = Math.round(chart.y(value)) + 0.5;
    line(context, theme['--grid'], margin.left, y, chart.width - margin.right, y);
    context.fillStyle = theme['--soft'];
    context.fillText(label(value), margin.left - 6, y + 4);
  }
  context.textAlign = 'center';
  const room = (chart.width - margin.left - margin.right) / 70;
  const step = [0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200, 86400, 864000]
    .find(seconds => state.run.end / seconds <= room) ?? state.run.end;
  for (let time = 0; time <= state.run.end; time += step) {
    const x = Math.round(chart.x(time)) + 0.5;
    line(context, theme['--line'], x, chart.height - margin.bottom, x, chart.height - margin.bottom + 4);
    context.fillStyle = theme['--soft'];
    context.fillText(timeText(time, step < 1 ? 1 : 0), x, chart.height - 5);
  }
  line(context, theme['--line'], margin.left, chart.height - margin.bottom, chart.width - margin.right, chart.height - margin.bottom);
  for (const time of state.run.floorTimes.slice(1)) {
    context.setLineDash([2, 3]);
    line(context, theme['--soft'], chart.x(time), margin.top, chart.x(time), chart.height - margin.bottom);
    context.setLineDash([]);
  }
}

function line(context, stroke, x1, y1, x2, y2) {
  context.strokeStyle = stroke;
  context.beginPath();
  context.moveTo(x1, y1);
  context.lineTo(x2, y2);
  context.stroke();
}

// A line through the means of short spans, broken where there is nothing for long.
function drawSeries(chart, context, times, values, span, gap) {
  context.beginPath();
  let last = -Infinity;
  for (let i = 0; i < times.length;) {
    const begin = times[i];
    let sum = 0, count = 0;
    for (; i < times.length && times[i] < begin + span; ++i)
      if (!Number.isNaN(values[i])) { sum += values[i]; ++count; }
    if (!count) continue;
    const at = (begin + times[i - 1]) / 2;
    context[at - last > gap ? 'moveTo' : 'lineTo'](chart.x(at), chart.y(sum / count));
    if (at - last > gap) context.lineTo(chart.x(at) + 0.5, chart.y(sum / count));
    last = at;
  }
  context.stroke();
}

const signalChart = makeChart('signal-chart', (chart, context) => {
  const { run } = state;
  const { named, others } = strongestOf(run, state.shownFloor);
  chart.low = -100;
  chart.high = -40;
  for (const beacon of named) for (const value of run.signals[beacon].rssi) if (value > chart.high) chart.high = Math.ceil(value / 10) * 10;
  drawAxes(chart, context, [-100, -80, -60, -40, -20, 0].filter(value => value <= chart.high), value => String(value).replace('-', '−'));
  const span = Math.max(2, run.end / Math.max(chart.width / 2, 1));
  const draw = beacon => drawSeries(chart, context, run.signals[beacon].t, run.signals[beacon].rssi, span, span + silentSeconds);
  context.strokeStyle = theme['--other'];
  context.lineWidth = 1;
  others.forEach(draw);
  context.lineWidth = 2;
  named.forEach((beacon, i) => {
    context.strokeStyle = theme[`--series-${i + 1}`];
    context.setLineDash(seriesDashes[i]);
    draw(beacon);
  });
  context.setLineDash([]);
});

const errorChart = makeChart('error-chart', (chart, context) => {
  const { run } = state;
  const { median, most, max, count } = run.errorSummary;
  chart.low = 0;
  const step = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 1000, 1e4, 1e6].find(value => (max || 1) / value <= 4) ?? 1e7;
  chart.high = step * Math.ceil((max || 1) / step);
  const values = [];
  for (let value = 0; value <= chart.high + step / 2; value += step) values.push(value);
  drawAxes(chart, context, values, value => String(Number(value.toFixed(1))));
  if (!count) return;
  context.strokeStyle = theme['--series-1'];
  context.lineWidth = 1.75;
  const span = run.end / Math.max(chart.width, 1);
  drawSeries(chart, context, run.positions.t, run.errors, span, Math.max(2, 2 * span));
  [[median, '--series-2', [7, 3]], [most, '--series-4', [2, 2.5]]].forEach(([value, stroke, dash]) => {
    context.setLineDash(dash);
    context.lineWidth = 1.5;
    line(context, theme[stroke], margin.left, chart.y(value), chart.width - margin.right, chart.y(value));
    context.setLineDash([]);
  });
});

function drawMarks() {
  const canvas = byId('marks');
  const { events, end } = state.run;
  const width = canvas.parentElement.clientWidth, height = 20;
  const context = prepareCanvas(canvas, width, height);
  context.clearRect(0, 0, width, height);
  const areMany = events.length > width / 10;
  for (const event of events) {
    const x = 8 + (width - 16) * event.t / end;
    const style = shapes[event.kind];
    if (areMany && event.kind !== 'MapChange')
      line(context, colour(event.kind === 'ZoneExit' ? style.stroke : style.fill), x, event.kind === 'ZoneExit' ? 11 : 3, x, event.kind === 'ZoneExit' ? 18 : 10);
    else
      drawShape(context, style, x, 10);
  }
}

// ---------------------------------------------------------------- lists

function makeElement(name, text = '', className = '') {
  const element = document.createElement(name);
  element.textContent = text;
  if (className) element.className = className;
  return element;
}

// Icon, name and value.
function makeRow(icon, name, value) {
  const row = makeElement('li');
  const label = makeElement('span', name, 'name');
  label.title = name;
  row.append(icon, label, makeElement('span', value, 'value'));
  return row;
}

function showSignalNames() {
  const { named, others } = strongestOf(state.run, state.shownFloor);
  const rows = named.map((beacon, i) =>
    makeRow(lineIcon(`--series-${i + 1}`, seriesDashes[i]), state.run.beacons[beacon].name, ''));
  if (others.length) rows.push(makeRow(lineIcon('--other', [], 1.5), `${others.length} more`, ''));
  if (!rows.length) rows.push(makeElement('li', 'None was heard.'));
  byId('signal-names').replaceChildren(...rows);
}

function updateSignalNames() {
  const { named } = strongestOf(state.run, state.shownFloor);
  const values = byId('signal-names').querySelectorAll('.value');
  named.forEach((beacon, i) => {
    const text = dbm(strengthAt(state.run, beacon, state.time));
    if (values[i].textContent !== text) values[i].textContent = text;
  });
}

function showErrorNames() {
  const { errorSummary, pathSummary, rightFloor } = state.run;
  const floor = Number.isNaN(rightFloor) ? '–' : `${(100 * rightFloor).toFixed(1)} %`;
  byId('error-names').replaceChildren(
    makeRow(lineIcon('--series-1', []), 'Position', `${errorSummary.count} compared`),
    makeRow(lineIcon('--series-2', [7, 3]), 'Median', metres(errorSummary.median)),
    makeRow(lineIcon('--series-4', [2, 2.5]), '90th percentile', metres(errorSummary.most)),
    makeRow(makeElement('span'), 'On the path: median', metres(pathSummary.median)),
    makeRow(makeElement('span'), 'On the path: 90th percentile', metres(pathSummary.most)),
    makeRow(makeElement('span'), 'On the right floor', floor));
}

function showEvents() {
  const { run } = state;
  const rows = run.events.slice(0, maxListed).map(event => {
    const row = makeElement('li');
    const button = makeElement('button');
    button.type = 'button';
    button.append(makeElement('time', timeText(event.t)), shapeIcon(shapes[event.kind], 16, 16),
      makeElement('span', eventText(run, event)));
    button.addEventListener('click', () => seek(event.t));
    row.append(button);
    return row;
  });
  if (run.events.length > maxListed) rows.push(makeElement('li', `The first ${maxListed} are listed.`, 'none'));
  if (!rows.length) rows.push(makeElement('li', 'Nothing happened but positions.', 'none'));
  byId('events').replaceChildren(...rows);
  setText('event-count', run.events.length ? `${run.events.length}, a click goes there` : '');
}

function markEvent() {
  const list = byId('events');
  const at = indexAt(state.run.eventTimes, state.time);
  const current = list.children[at]?.querySelector('button') ?? null;
  const old = list.querySelector('[aria-current]');
  if (old === current) return;
  old?.removeAttribute('aria-current');
  if (!current) return;
  current.setAttribute('aria-current', 'true');
  const row = current.parentElement;
  if (row.offsetTop < list.scrollTop + list.offsetTop || row.offsetTop + row.offsetHeight > list.scrollTop + list.offsetTop + list.clientHeight)
    list.scrollTop = row.offsetTop - list.offsetTop - list.clientHeight / 2;
}

function showFloors() {
  const button = (text, floor) => {
    const element = makeElement('button', text);
    element.type = 'button';
    element.title = floor === null ? 'Show the floor that the device is on (F)' : text;
    element.addEventListener('click', () => follow(floor));
    return element;
  };
  byId('floors').replaceChildren(button('Follow device', null), ...state.run.maps.map((map, i) => button(map.name, i)));
}

function markFloor() {
  [...byId('floors').children].forEach((button, i) =>
    button.setAttribute('aria-pressed', String(i === 0 ? state.floor === null : state.floor === i - 1)));
}

function changeFloor(floor) {
  state.shownFloor = floor;
  state.centre = null;
  showSignalNames();
}

function showLegend() {
  const heading = text => makeElement('li', text, 'heading');
  const row = (icon, text) => {
    const element = makeElement('li');
    element.append(icon, makeElement('span', text));
    return element;
  };
  const area = style => {
    const icon = svg('svg', { viewBox: '0 0 24 20', width: 24, height: 20, 'aria-hidden': 'true' });
    svg('rect', { x: 2, y: 3, width: 20, height: 14, fill: style.fill || 'none', stroke: style.stroke,
      'stroke-width': style.width, 'stroke-dasharray': (style.dash || []).join(' ') }, icon);
    return icon;
  };
  const trail = svg('svg', { viewBox: '0 0 24 20', width: 24, height: 20, 'aria-hidden': 'true' });
  [0.15, 0.3, 0.5].forEach((opacity, i) =>
    svg('line', { x1: 2 + 7 * i, y1: 10, x2: 8 + 7 * i, y2: 10, stroke: ink, 'stroke-width': 3, opacity }, trail));
  const rows = [
    row(shapeIcon(shapes.position), 'Position'),
    row(trail, `Its last ${trailSeconds} s`),
    row(shapeIcon(shapes.path), 'Position on the path')];
  if (state.run.truth.t.length) rows.push(row(shapeIcon(shapes.truth), 'True position; a dashed line is the error'));
  rows.push(
    row(area(litStyle), 'Zone that the device is in'),
    row(area(zoneStyle), 'Zone'),
    row(shapeIcon(shapes.node), 'Point of interest on a path'),
    heading('Beacons, by what was heard last'),
    ...levels.map(level => row(shapeIcon(level), level.text)),
    row(shapeIcon(shapes.unheard), `not heard for ${silentSeconds} s`),
    heading('Events'),
    row(shapeIcon(shapes.ZoneEnter), 'Entered a zone'),
    row(shapeIcon(shapes.ZoneExit), 'Left a zone'),
    row(shapeIcon(shapes.ArrivedToPOI), 'Arrived at a point of interest'),
    row(shapeIcon(shapes.MapChange), 'Another floor; a dotted line in the charts'));
  byId('legend').replaceChildren(...rows);
}

function showRun() {
  const { run } = state;
  document.title = `${run.project || run.name}: run`;
  setText('project', run.project || run.name);
  setText('source', `${run.source ? run.source + ', ' : ''}${timeText(run.end, 0)}${run.end < 100 ? '' : run.end < 3600 ? ' min' : ' h'}, ${run.maps.length} ${run.maps.length === 1 ? 'floor' : 'floors'}, ${run.beacons.length} beacons`);
  document.body.classList.toggle('without-truth', !run.truth.t.length);
  byId('slider').max = run.end;
  byId('run').value = state.runIndex;
  showFloors();
  showEvents();
  showErrorNames();
  showLegend();
}

// ---------------------------------------------------------------- drawing, playing

let isDrawRequested = false;
function requestDraw() {
  if (isDrawRequested) return;
  isDrawRequested = true;
  requestAnimationFrame(now => {
    isDrawRequested = false;
    draw(now);
  });
}

function draw(now) {
  if (state.isPlaying) {
    if (state.lastFrame) state.time = clampTime(state.time + (now - state.lastFrame) / 1000 * state.speed);
    state.lastFrame = now;
    if (state.time >= state.run.end) setPlaying(false);
  }
  showNow();
  drawPlan();
  markFloor();
  markEvent();
  updateSignalNames();
  drawMarks();
  signalChart.draw(state.shownFloor);
  if (state.run.truth.t.length) errorChart.draw('');
  showTip();
  if (state.isPlaying) requestDraw();
}

// ---------------------------------------------------------------- controls

function dragToSeek(canvas, timeOf) {
  const move = event => seek(timeOf(event.offsetX));
  canvas.addEventListener('pointerdown', event => {
    canvas.setPointerCapture(event.pointerId);
    move(event);
  });
  canvas.addEventListener('pointermove', event => {
    if (event.buttons & 1 && canvas.hasPointerCapture(event.pointerId)) move(event);
  });
}

function connectPlan() {
  const canvas = byId('floor-plan');
  let dragged = null;
  canvas.addEventListener('pointerdown', event => {
    if (state.zoom === 1) return;
    canvas.setPointerCapture(event.pointerId);
    dragged = [event.offsetX, event.offsetY];
  });
  canvas.addEventListener('pointermove', event => {
    state.pointer = [event.offsetX, event.offsetY];
    if (dragged) {
      state.centre = [state.centre[0] - (event.offsetX - dragged[0]) / plan.scale, state.centre[1] - (event.offsetY - dragged[1]) / plan.scale];
      dragged = [event.offsetX, event.offsetY];
    }
    requestDraw();
  });
  for (const kind of ['pointerup', 'pointercancel']) canvas.addEventListener(kind, () => { dragged = null; });
  canvas.addEventListener('pointerleave', () => {
    state.pointer = null;
    requestDraw();
  });
  canvas.addEventListener('wheel', event => {
    if (!event.ctrlKey) return;
    event.preventDefault();
    zoomTo(state.zoom * Math.exp(-event.deltaY / 200));
  }, { passive: false });
}

const keys = {
  ' ': () => setPlaying(!state.isPlaying),
  'ArrowLeft': event => seek(state.time - (event.shiftKey ? 10 : 1)),
  'ArrowRight': event => seek(state.time + (event.shiftKey ? 10 : 1)),
  'Home': () => seek(0),
  'End': () => seek(state.run.end),
  ',': () => goToEvent(-1),
  '.': () => goToEvent(1),
  '+': () => zoomTo(state.zoom * 1.5),
  '-': () => zoomTo(state.zoom / 1.5),
  '0': () => zoomTo(1),
  'f': () => follow(null),
};

function connect() {
  byId('play').addEventListener('click', () => setPlaying(!state.isPlaying));
  byId('slider').addEventListener('input', event => seek(Number(event.target.value)));
  byId('speed').addEventListener('change', event => { state.speed = Number(event.target.value); });
  byId('zoom-in').addEventListener('click', keys['+']);
  byId('zoom-out').addEventListener('click', keys['-']);
  byId('zoom-fit').addEventListener('click', keys['0']);
  byId('run').addEventListener('change', event => {
    setPlaying(false);
    selectRun(Number(event.target.value));
    seek(0);
  });
  connectPlan();
  addEventListener('keydown', event => {
    const isTaken = event.target instanceof HTMLSelectElement ||
      event.target instanceof HTMLButtonElement && event.key === ' ';
    const key = keys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    if (!key || isTaken || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    key(event);
  });
  addEventListener('hashchange', goToAddress);
  addEventListener('resize', requestDraw);
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
    readTheme();
    requestDraw();
  });
}

readTheme();
connect();
byId('run').append(...data.runs.map((run, i) => Object.assign(makeElement('option', run.name), { value: i })));
byId('run-choice').hidden = data.runs.length < 2;
showPlayButton();
goToAddress();
