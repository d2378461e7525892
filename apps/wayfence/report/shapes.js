// Shapes, lines and colours, and what every part of the page uses. Data is only ever set as text.

const trailSeconds = 20;
const silentSeconds = 5;    // a beacon that was not heard for so long counts as not heard
const truthSeconds = 1;     // how far a true position may be from the time that it is used for
const staleSeconds = 3;     // from when on the age of a position is told
const longestWhole = 300;   // a longer run begins with charts of a part of it
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
const pathStyle = { stroke: '#8d97a3', width: 1.5 };
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

function lineIcon(stroke, dash, width = 2.2, length = 34) {
  const icon = svg('svg', { viewBox: `0 0 ${length} 12`, width: length, height: 12, 'aria-hidden': 'true' });
  const line = svg('line', { x1: 1, y1: 6, x2: length - 1, y2: 6, 'stroke-width': width, 'stroke-dasharray': dash.join(' ') }, icon);
  line.style.stroke = cssColour(stroke);
  return icon;
}
