// Runs: made ready once, then asked what was so at a time.

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
  const stays = run.events.filter(event => event.kind === 'MapChange' && event.map >= 0).map(event => [event.t, event.map]);
  run.positions.t.forEach((time, i) => stays.push([time, run.positions.map[i]]));
  for (const [time, floor] of stays.sort((a, b) => a[0] - b[0])) {
    if (run.floors.at(-1) === floor) continue;
    run.floorTimes.push(time);
    run.floors.push(floor);
  }
  nameTheNameless(run);
  for (const zone of run.zones) prepareZone(zone);
  for (const event of run.events) addStay(run.zones[event.zone], event);
  prepareErrors(run);
  run.eventTimes = run.events.map(event => event.t);
  run.strongest = new Map();
  run.isPrepared = true;
  return run;
}

function nameTheNameless(run) {
  run.maps.forEach((map, i) => { map.name ||= `Map ${i}`; });
  for (const beacon of run.beacons) beacon.name ||= beacon.identity;
  for (const item of [...run.zones, ...run.pois, ...run.events]) item.name ||= '(no name)';
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
