// The floor plan.

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
const strip = 26;  // below the plan, for the scale and a note

const toScreen = (x, y) => [(x - plan.left) * plan.scale, (y - plan.top) * plan.scale];
const toMap = (x, y) => [x / plan.scale + plan.left, y / plan.scale + plan.top];

function layOutPlan(canvas, map) {
  const [left, top, right, bottom] = map.view;
  const mapWidth = Math.max(right - left, 1e-6), mapHeight = Math.max(bottom - top, 1e-6);
  plan.width = canvas.parentElement.clientWidth;
  plan.height = Math.round(Math.max(200, Math.min(plan.width * mapHeight / mapWidth, innerHeight * 0.62)));
  canvas.style.height = plan.height + strip + 'px';
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
  const context = prepareCanvas(canvas, plan.width, plan.height + strip);
  context.clearRect(0, 0, plan.width, plan.height + strip);
  context.save();
  context.beginPath();
  context.roundRect(0, 0, plan.width, plan.height, 4);
  context.clip();
  drawFloor(context, map);
  for (const zone of run.zones) if (zone.map === floor) drawZone(context, zone, isInside(zone, time));
  drawPaths(context, run, floor);
  for (const poi of run.pois)
    if (poi.map === floor && poi.isNode) drawShape(context, shapes.node, ...toScreen(poi.x, poi.y));
  run.beacons.forEach((beacon, index) => {
    if (beacon.map === floor) drawShape(context, beaconShape(strengthAt(run, index, time)), ...toScreen(beacon.x, beacon.y));
  });
  for (const zone of run.zones) if (zone.map === floor) drawZoneName(context, zone, isInside(zone, time));
  if (isHere) drawTrail(context, run, floor);
  drawMarkers(context, run, floor, isHere ? i : -1);
  context.restore();
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

function drawPaths(context, run, floor) {
  context.strokeStyle = pathStyle.stroke;
  context.lineWidth = pathStyle.width;
  context.beginPath();
  for (const [map, x1, y1, x2, y2] of run.edges) {
    if (map !== floor) continue;
    context.moveTo(...toScreen(x1, y1));
    context.lineTo(...toScreen(x2, y2));
  }
  context.stroke();
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
  let text = zone.name.slice(0, 100);
  while (text.length > 1 && context.measureText(text).width > width) text = text.replace(/…?$/u, '').slice(0, -1) + '…';
  if (text.length < 3 && text !== zone.name) return;
  const [x, y] = toScreen((left + right) / 2, top);
  drawText(context, text, x, y + 19, isLit ? '#5e3c00' : '#47515d');
}

function drawText(context, text, x, y, fill) {
  context.textAlign = 'center';
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
  context.lineCap = 'butt';  // ends that overlap would show as dots
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
  context.lineCap = 'round';
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
  context.font = font(12, 600);
  context.textAlign = 'left';
  context.fillStyle = theme['--ink'];
  context.fillText(text, 2, plan.height + 18);
}

function drawScale(context, map) {
  const pixelsPerMetre = plan.scale / map.metres;
  const most = Math.min(120, plan.width / 4) / pixelsPerMetre;
  const magnitude = 10 ** Math.floor(Math.log10(most));
  const length = magnitude * [5, 2, 1].find(step => step * magnitude <= most);
  const right = plan.width - 1, bottom = plan.height + 17, left = right - length * pixelsPerMetre;
  context.strokeStyle = context.fillStyle = theme['--ink'];
  context.lineWidth = 1.5;
  context.beginPath();
  context.moveTo(left, bottom - 5);
  context.lineTo(left, bottom);
  context.lineTo(right, bottom);
  context.lineTo(right, bottom - 5);
  context.stroke();
  context.font = font(11);
  context.textAlign = 'right';
  context.fillText(`${Number(length.toPrecision(1))} m`, left - 6, bottom);
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
    consider(beacon, () => `${isolated(beacon.name)}\n${dbm(strengthAt(run, i, time))}\n${beacon.identity}`));
  for (const poi of run.pois) if (poi.isNode) consider(poi, () => poi.name);
  if (text) return text;
  const context = byId('floor-plan').getContext('2d');
  context.save();
  context.resetTransform();
  const zones = run.zones.filter(zone => zone.map === state.shownFloor &&
    context.isPointInPath(zone.shape, ...toMap(screenX, screenY)));
  context.restore();
  return zones.map(zone => 'Zone ' + isolated(zone.name)).join('\n');
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
