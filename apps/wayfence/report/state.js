// What is shown: the state, what changes it, and the texts that tell it.

const state = {
  run: null, runIndex: 0, time: 0, floor: null /* null: follow the device */,
  heldBegin: null /* of the charts, while one is dragged */, isPlaying: false, speed: 1, span: 0 /* seconds in the charts; 0: all */, zoom: 1, centre: null, shownFloor: -1, lastFrame: 0, pointer: null,
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
  state.span = state.run.end > longestWhole ? 120 : 0;
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

// Scripts that run from right to left, and characters that change the direction.
const rightToLeft = /[\u0590-\u08ff\ufb1d-\ufdff\ufe70-\ufefc\u200e\u200f\u202a-\u202e\u2066-\u2069\u{10800}-\u{10fff}\u{1e800}-\u{1efff}]/u;

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
// A name, so that its direction does not turn the text around it.
const isolated = name => rightToLeft.test(name) ? `\u2068${name}\u2069` : name;
const mapName = (run, index) => isolated(run.maps[index]?.name ?? 'unknown');
const counted = (count, what) => `${count} ${what}${count === 1 ? '' : 's'}`;

function eventText(run, event) {
  if (event.kind === 'ZoneEnter') return 'Entered ' + isolated(event.name);
  if (event.kind === 'ZoneExit') return 'Left ' + isolated(event.name);
  if (event.kind === 'ArrivedToPOI') return 'Arrived at ' + isolated(event.name);
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
  setText('zones', run.zones.filter(zone => isInside(zone, time)).map(zone => isolated(zone.name)).join(', ') || 'none');
  setText('position', place(x, y));
  setText('path', place(pathX, pathY));
  setText('truth', truth ? placeText(run.maps[truth.map], truth.x, truth.y) +
    (i >= 0 && truth.map !== map[i] ? ', ' + mapName(run, truth.map) : '') : 'not known');
  const errors = truth && i >= 0 ? [errorOf(run, i, x, y, truth), errorOf(run, i, pathX, pathY, truth)] : [];
  setText('error', !errors.length ? '–' : errors[0] >= 0 ?
    `${metres(errors[0])}, path ${metres(errors[1])}` : 'on another floor');
  const slider = byId('slider');
  slider.value = time;
  slider.setAttribute('aria-valuetext', timeText(time));
}
