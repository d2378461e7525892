// Lists: names below the charts, events, floors, the legend.

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
  if (!rows.length) {
    const row = makeElement('li');
    row.append(makeElement('span', 'None was heard.', 'none'));
    rows.push(row);
  }
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
  const nothing = run.positions.t.length ? 'Nothing happened but positions.' : 'Nothing happened.';
  if (!rows.length) rows.push(makeElement('li', nothing, 'none'));
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
  const heading = text => makeElement('li', text, 'subheading');
  const row = (icon, text, isEvent) => {
    const element = makeElement('li');
    if (!isEvent) icon.classList.add('on-plan');
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
    row(lineIcon(pathStyle.stroke, [], pathStyle.width, 24), 'Walkable path'),
    row(shapeIcon(shapes.node), 'Point of interest on it'),
    heading('Beacons, by what was heard last'),
    ...levels.map(level => row(shapeIcon(level), level.text)),
    row(shapeIcon(shapes.unheard), `not heard for ${silentSeconds} s`),
    heading('Events'),
    row(shapeIcon(shapes.ZoneEnter), 'Entered a zone', true),
    row(shapeIcon(shapes.ZoneExit), 'Left a zone', true),
    row(shapeIcon(shapes.ArrivedToPOI), 'Arrived at a point of interest', true),
    row(shapeIcon(shapes.MapChange), 'Another floor; a dotted line in the charts', true));
  byId('legend').replaceChildren(...rows);
}

function showRun() {
  const { run } = state;
  document.title = `${isolated(run.project || run.name)}: run`;
  setText('project', run.project || run.name);
  const unit = run.end < 100 ? '' : Math.round(run.end) < 3600 ? ' min' : ' h';
  setText('source', [...(run.source ? [isolated(run.source)] : []), timeText(run.end, 0) + unit,
    counted(run.maps.length, 'floor'), counted(run.beacons.length, 'beacon')].join(', '));
  document.body.classList.toggle('without-truth', !run.truth.t.length);
  byId('slider').max = run.end;
  byId('run').value = state.runIndex;
  byId('span').value = state.span;
  showFloors();
  showEvents();
  showErrorNames();
  showLegend();
}
