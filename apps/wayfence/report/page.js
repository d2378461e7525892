// Drawing, playing and the controls; the begin of all.

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

function dragToSeek(chart) {
  const { canvas } = chart;
  const move = event => seek(chart.begin + (event.offsetX - margin.left) / chart.plotWidth() * chart.span);
  canvas.addEventListener('pointerdown', event => {
    canvas.setPointerCapture(event.pointerId);
    state.heldBegin = chart.begin;
    move(event);
  });
  canvas.addEventListener('pointermove', event => {
    if (canvas.hasPointerCapture(event.pointerId)) move(event);
  });
  canvas.addEventListener('lostpointercapture', () => {
    state.heldBegin = null;
    requestDraw();
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
  byId('span').addEventListener('change', event => {
    state.span = Number(event.target.value);
    requestDraw();
  });
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
draw(performance.now()); // the texts stand before the first frame
