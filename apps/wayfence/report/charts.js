// Charts of strengths and errors over time, and the marks over the slider.

const margin = { left: 40, right: 14, top: 8, bottom: 22 };

// A chart keeps what does not depend on the time in a picture of its own.
function makeChart(id, describe) {
  const canvas = byId(id);
  const kept = document.createElement('canvas');
  const chart = { canvas, kept, key: '', width: 0, height: 0, begin: 0, span: 1 };
  chart.plotWidth = () => chart.width - margin.left - margin.right;
  chart.x = time => margin.left + chart.plotWidth() * (time - chart.begin) / chart.span;
  chart.y = value => margin.top + (chart.height - margin.top - margin.bottom) * (chart.high - value) / (chart.high - chart.low);
  chart.draw = key => {
    chart.width = canvas.parentElement.clientWidth - parseFloat(getComputedStyle(canvas.parentElement).paddingLeft) * 2;
    chart.height = canvas.clientHeight;
    if (chart.width <= 0 || !chart.height) return;
    [chart.begin, chart.span] = shownSpan();
    const fullKey = [key, chart.begin, chart.span, chart.width, chart.height, devicePixelRatio, theme['--surface'], state.runIndex].join();
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
  dragToSeek(chart);
  return chart;
}

// Begin and length of the time that the charts show. The begin moves in steps of about a pixel:
// between them a chart keeps its picture.
function shownSpan() {
  const { end } = state.run;
  if (!state.span || state.span >= end) return [0, end];
  if (state.heldBegin !== null) return [state.heldBegin, state.span];
  const step = state.span / 600;
  const begin = Math.floor((state.time - state.span / 2) / step) * step;
  return [Math.min(Math.max(begin, 0), end - state.span), state.span];
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
  const room = chart.plotWidth() / 70;
  const step = [0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200, 86400, 864000]
    .find(seconds => chart.span / seconds <= room) ?? chart.span;
  for (let time = Math.ceil(chart.begin / step) * step; time <= chart.begin + chart.span; time += step) {
    const x = Math.round(chart.x(time)) + 0.5;
    line(context, theme['--line'], x, chart.height - margin.bottom, x, chart.height - margin.bottom + 4);
    context.fillStyle = theme['--soft'];
    const text = timeText(time, step < 1 ? 1 : 0), half = context.measureText(text).width / 2;
    context.fillText(text, Math.min(x, chart.width - half), chart.height - 5);
  }
  line(context, theme['--line'], margin.left, chart.height - margin.bottom, chart.width - margin.right, chart.height - margin.bottom);
  for (const time of state.run.floorTimes.slice(1)) {
    if (time < chart.begin || time > chart.begin + chart.span) continue;
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

// A line through the means of steps of time, broken where there is nothing for longer than a gap.
function drawSeries(chart, context, times, values, step, gap) {
  const end = chart.begin + chart.span + gap;
  let last = -Infinity, slot = -1, sum = 0, count = 0;
  const add = () => {
    if (!count) return;
    const at = (slot + 0.5) * step, isNew = at - last > gap;
    context[isNew ? 'moveTo' : 'lineTo'](chart.x(at), chart.y(sum / count));
    if (isNew) context.lineTo(chart.x(at) + 0.5, chart.y(sum / count));
    last = at;
  };
  context.save();
  context.beginPath();
  context.rect(margin.left, 0, chart.plotWidth(), chart.height);
  context.clip();
  context.beginPath();
  for (let i = indexAt(times, chart.begin - gap) + 1; i < times.length && times[i] < end; ++i) {
    if (Number.isNaN(values[i])) continue;
    const newSlot = Math.floor(times[i] / step);
    if (newSlot !== slot) {
      add();
      [slot, sum, count] = [newSlot, 0, 0];
    }
    sum += values[i];
    ++count;
  }
  add();
  context.stroke();
  context.restore();
}

const signalChart = makeChart('signal-chart', (chart, context) => {
  const { run } = state;
  const { named, others } = strongestOf(run, state.shownFloor);
  chart.low = -100;
  chart.high = -40;
  for (const beacon of named) for (const value of run.signals[beacon].rssi) if (value > chart.high) chart.high = Math.ceil(value / 10) * 10;
  drawAxes(chart, context, [-100, -80, -60, -40, -20, 0].filter(value => value <= chart.high), value => String(value).replace('-', '−'));
  const step = Math.max(2, chart.span / Math.max(chart.width / 2, 1));
  const draw = beacon => drawSeries(chart, context, run.signals[beacon].t, run.signals[beacon].rssi, step, step + silentSeconds);
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
  const slot = Math.max(0.1, chart.span / Math.max(chart.width, 1));
  drawSeries(chart, context, run.positions.t, run.errors, slot, Math.max(2, 2 * slot));
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
    if (areMany) drawTick(context, event.kind, x);
    else drawShape(context, style, x, 10);
  }
}

// What stands for an event where there is no room for its shape.
function drawTick(context, kind, x) {
  const [top, bottom] = { ZoneEnter: [2, 10], ZoneExit: [10, 18] }[kind] ?? [2, 18];
  context.lineWidth = 1;
  line(context, colour(shapes[kind].stroke || shapes[kind].fill), x, top, x, bottom);
}
