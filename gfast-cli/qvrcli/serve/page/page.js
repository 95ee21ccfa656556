
'use strict';

const kToneSpacing_MHz = 0.05175;
const kTones = 2048;
const kLinesEvery_ms = 3000;
const kTonesEvery_ms = 20000;

// Allocations that a pair of wires hears: amateur radio (ITU regions together) and FM broadcasting, MHz.
const kBands = [[1.81, 2.0], [3.5, 4.0], [5.25, 5.45], [7.0, 7.3], [10.1, 10.15], [14.0, 14.35], [18.068, 18.168],
  [21.0, 21.45], [24.89, 24.99], [28.0, 29.7], [50.0, 54.0], [70.0, 70.5], [87.5, 108.0]];

const byId = (id) => document.getElementById(id);
const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

// A page that is kept as a file has its documents in itself.
const stored = byId('stored') && JSON.parse(byId('stored').textContent);

// ---- Documents ----

const kSide = 'bbf-fast:line';
const interfacesIn = (document) => document['ietf-interfaces:interfaces-state'].interface;
const ownIn = (document) => document['gfast-cli-reading:reading'];
const fastOf = (interface_) => interface_['bbf-fastdsl:line'][kSide];

function bytesIn(base64) {
  return base64 === undefined ? [] : Array.from(atob(base64), (c) => c.charCodeAt(0));
}

function pairsIn(base64) {
  const bytes = bytesIn(base64);
  return bytes.filter((_, i) => i % 2 === 0).map((high, i) => high * 256 + bytes[2 * i + 1]);
}

// One direction's tables: a number a tone, or null where there is none.
function tablesOf(status, own) {
  const bits = bytesIn(status.bitsps).flatMap((byte) => [byte >> 4, byte & 15]);
  const used = (tone) => snr[tone] !== null && snr[tone] !== undefined;
  const snr = bytesIn(status.snr && status.snr.snrps).map((b) => (b === 255 ? null : (b - 64) / 2));
  return {
    bits: bits.map((b, tone) => (used(tone) || b > 0 ? b : null)),
    snr,
    noise: bytesIn(own.noise).map((b) => (b === 255 ? null : (b + 70) * -0.5)),
    hlog: pairsIn(own.hlog).map((v) => (v >= 1022 ? null : (v - 60) * -0.1)),
  };
}

// Both directions of a line's document, or null when it has no tones.
function tonesOf(document) {
  const own = ownIn(document).line[0].tones;
  const fast = fastOf(interfacesIn(document)[0]);
  if (!own || !fast) return null;
  return {
    time: own.time,
    ds: tablesOf(fast.status.downstream, own.downstream),
    us: tablesOf(fast.status.upstream, own.upstream),
  };
}

// ---- Words ----

function timeText(text) {
  return new Date(text).toLocaleString();
}

function howLong(since, now) {
  let seconds = Math.max(0, Math.round((new Date(now) - new Date(since)) / 1000));
  const parts = [];
  for (const [unit, length] of [['d', 86400], ['h', 3600], ['min', 60], ['s', 1]]) {
    const count = Math.floor(seconds / length);
    seconds -= count * length;
    if (count > 0 && parts.length < 2) parts.push(`${count} ${unit}`);
  }
  return parts.join(' ') || '0 s';
}

const rateText = (kbps) => (typeof kbps === 'number' ? `${(kbps / 1000).toFixed(1)} Mbit/s` : '-');
const tenthsText = (value, unit) => (typeof value === 'number' ? `${(value / 10).toFixed(1)} ${unit}` : '-');

function add(parent, tag, text, className) {
  const element = document.createElement(tag);
  if (text !== undefined) element.textContent = text;
  if (className) element.className = className;
  parent.appendChild(element);
  return element;
}

// ---- The lines ----

let chosen = null;  // the name of a line
let latest = null;  // the document of all lines

function showLine(interface_, own, now) {
  const button = document.createElement('button');
  button.type = 'button';
  button.dataset.line = interface_.name;
  button.setAttribute('aria-pressed', String(interface_.name === chosen));
  const head = add(button, 'span', `${interface_.name}: `);
  add(head, 'span', own.answers ? own.state : 'the chip does not answer', 'state');
  const unknown = stored ? '' : ' since before the start';
  add(head, 'span', interface_['last-change'] ? ` for ${howLong(interface_['last-change'], now)}` : unknown, 'quiet');
  const fast = fastOf(interface_);
  if (fast && interface_['oper-status'] === 'up') {
    const figures = add(button, 'span', undefined, 'figures');
    const row = (name, ds, us) => [name, ds, us].forEach((text) => add(figures, 'span', text));
    row('', 'downstream', 'upstream');
    const channel = fast.channel.status;
    const status = fast.status;
    row('rate', rateText(channel.downstream['net-data-rate']), rateText(channel.upstream['net-data-rate']));
    row('possible', rateText(channel.downstream['attainable-net-data-rate']), rateText(channel.upstream['attainable-net-data-rate']));
    row('margin', tenthsText(status.downstream['snr-margin'], 'dB'), tenthsText(status.upstream['snr-margin'], 'dB'));
    row('power', tenthsText(status.downstream['actual-aggregate-transmit-power'], 'dBm'),
      tenthsText(status.upstream['actual-aggregate-transmit-power'], 'dBm'));
  } else if (own['last-failure']) {
    add(button, 'p', `went down ${timeText(own['last-failure'].time)}: ${own['last-failure'].reason}`, 'quiet');
  }
  button.addEventListener('click', () => choose(interface_.name));
  return button;
}

function showLines(document_) {
  latest = document_;
  const own = ownIn(document_);
  const focused = document.activeElement && document.activeElement.dataset.line;
  const buttons = interfacesIn(document_).map((interface_, i) => showLine(interface_, own.line[i], own.time));
  byId('lines').replaceChildren(...buttons);
  const again = buttons.find((button) => button.dataset.line === focused);
  if (again) again.focus();
  byId('read').textContent = `Read ${timeText(own.time)}`;
  showEvents(own.event);
}

function showEvents(events) {
  const body = byId('events');
  body.replaceChildren();
  for (const event of events.slice(-40).reverse()) {
    const row = add(body, 'tr');
    [timeText(event.time), event.line || '', event.what, event.why || ''].forEach((text) => add(row, 'td', text));
  }
  const none = stored ? 'not read' : 'none since the start';
  if (events.length === 0) add(add(body, 'tr'), 'td', none).colSpan = 4;
}

// ---- Plots over frequency ----

const kPlots = ['bits', 'snr', 'noise', 'hlog'];
const graphs = {};
let shown = null;  // the tones on the page
let kept = null;   // those compared with
let tone = 500;    // under the cursor
let band = [0, kTones - 1];
let masks = [];    // [from, to]: tones that are left out between those in use

function rowsOf(table) {
  const rows = [];
  const at = (values, i) => (values[i] === undefined ? null : values[i]);
  for (let i = 0; i < kTones; i++) {
    const row = [i, at(shown.ds[table], i), at(shown.us[table], i)];
    if (kept) row.push(at(kept.ds[table], i), at(kept.us[table], i));
    rows.push(row);
  }
  return rows;
}

// Tones without SNR in both directions, where tones above and below have one.
function masksIn(tones) {
  const found = [];
  let last = null;
  for (let i = 0; i < kTones; i++) {
    if (typeof tones.ds.snr[i] !== 'number' && typeof tones.us.snr[i] !== 'number') continue;
    if (last !== null && i > last + 1) found.push([last + 1, i - 1]);
    last = i;
  }
  return found;
}

function fillTones(context, area, graph, from, to) {
  const left = Math.max(graph.toDomXCoord(from), area.x);
  const right = Math.min(graph.toDomXCoord(Math.min(to, kTones - 1)), area.x + area.w);
  if (right >= left) context.fillRect(left, area.y, Math.max(1, right - left), area.h);
}

function markBands(context, area, graph) {
  context.fillStyle = colour('--band');
  for (const [from, to] of kBands) fillTones(context, area, graph, from / kToneSpacing_MHz, to / kToneSpacing_MHz);
  context.fillStyle = colour('--mask');
  for (const [from, to] of masks) fillTones(context, area, graph, from - 0.5, to + 0.5);
}

function optionsOf(table) {
  const labels = ['tone', 'downstream', 'upstream'].concat(kept ? ['downstream before', 'upstream before'] : []);
  return {
    labels,
    colors: [colour('--down'), colour('--up'), colour('--down'), colour('--up')],
    // Where both are the same, the thin line is seen on the wide one.
    series: { downstream: { strokeWidth: 3 }, upstream: { strokeWidth: 1.25 },
      'downstream before': { strokePattern: [4, 3], strokeWidth: 2 }, 'upstream before': { strokePattern: [4, 3], strokeWidth: 1.25 } },
    connectSeparatedPoints: false,
    stepPlot: table === 'bits',
    includeZero: table === 'bits',
    legend: 'never',
    animatedZooms: false,
    gridLineColor: colour('--edge'),
    axisLineColor: colour('--edge'),
    underlayCallback: markBands,
    dateWindow: band,
    highlightCircleSize: 3,
    axes: { x: { axisLabelFormatter: (x) => `${Math.round(x)}<br>${(x * kToneSpacing_MHz).toFixed(1)} MHz`, axisLabelWidth: 70, pixelsPerLabel: 90 }, y: { axisLabelWidth: 42 } },
    xAxisHeight: 34,
    highlightCallback: (_, x) => moveTo(x, table),
    zoomCallback: (from, to) => zoomTo([from, to]),
  };
}

// `from`: the plot that the pointer is on, which marks its own points.
function moveTo(to, from) {
  tone = Math.max(0, Math.min(kTones - 1, Math.round(to)));
  for (const table of kPlots) {
    if (table !== from && graphs[table]) graphs[table].setSelection(tone);
  }
  showCursor();
}

function showCursor() {
  const text = (value, digits) => (value === null || value === undefined ? '-' : value.toFixed(digits));
  const values = (tables) => `${text(tables.bits[tone], 0)} bits, SNR ${text(tables.snr[tone], 1)} dB, noise ${text(tables.noise[tone], 1)} dBm/Hz, HLOG ${text(tables.hlog[tone], 1)} dB`;
  const box = byId('cursor');
  box.replaceChildren();
  const masked = masks.some(([from, to]) => from <= tone && tone <= to);
  add(box, 'div', `tone ${tone}, ${(tone * kToneSpacing_MHz).toFixed(3)} MHz${masked ? ', masked' : ''}`);
  add(box, 'div', `downstream ${values(shown.ds)}`, 'ds');
  add(box, 'div', `upstream ${values(shown.us)}`, 'us');
  if (kept) {
    add(box, 'div', `before: downstream ${values(kept.ds)}`, 'ds');
    add(box, 'div', `before: upstream ${values(kept.us)}`, 'us');
  }
}

function zoomTo(wanted) {
  const from = Math.max(0, wanted[0]);
  const to = Math.min(kTones - 1, wanted[1]);
  if (to - from < 4) return;
  band = [from, to];
  for (const table of kPlots) {
    if (graphs[table]) graphs[table].updateOptions({ dateWindow: band });
  }
}

function zoomBy(factor) {
  const half = ((band[1] - band[0]) / 2) * factor;
  zoomTo([tone - half, tone + half]);
}

function draw() {
  byId('plots').hidden = byId('cursor').hidden = shown === null;
  byId('none').hidden = shown !== null;
  byId('before').hidden = byId('alone').hidden = kept === null;
  if (shown === null) return;
  masks = masksIn(shown);
  for (const table of kPlots) {
    if (graphs[table]) graphs[table].destroy();
    graphs[table] = new Dygraph(byId(table), rowsOf(table), optionsOf(table));
  }
  moveTo(tone);
}

function pressed(event) {
  const step = event.shiftKey ? 50 : 1;
  const actions = {
    ArrowLeft: () => moveTo(tone - step), ArrowRight: () => moveTo(tone + step),
    '+': () => zoomBy(0.5), '-': () => zoomBy(2), 0: () => zoomTo([0, kTones - 1]), Escape: () => zoomTo([0, kTones - 1]),
  };
  const action = shown && actions[event.key];
  if (action) {
    action();
    event.preventDefault();
  }
}

// ---- The last day ----

const days = {};

// Draws rows of [time, downstream, upstream], or hides the plot when there are none.
function drawDay(id, rows) {
  if (days[id]) days[id].destroy();
  delete days[id];
  byId(id).hidden = rows.length === 0;
  if (rows.length === 0) return;
  const last = rows[rows.length - 1];
  const end = [new Date(last[0].getTime() + 900000), last[1], last[2]];
  days[id] = new Dygraph(byId(id), rows.concat([end]), { labels: ['time', 'downstream', 'upstream'],
    colors: [colour('--down'), colour('--up')], series: { downstream: { strokeWidth: 3 }, upstream: { strokeWidth: 1.25 } },
    stepPlot: true, includeZero: true, legend: 'never', gridLineColor: colour('--edge'), axisLineColor: colour('--edge') });
}

// Errors that are seen downstream are counted at the subscriber's end.
function drawDays(read) {
  const fast = fastOf(interfacesIn(read)[0]);
  const past = (fast && fast.performance['intervals-15min'].history) || [];
  const figures = ownIn(read).line[0]['quarter-hour'] || [];
  const started = (interval) => new Date(new Date(interval['ftu-o']['time-stamp']).getTime() - 900000);
  const scaled = (value, by) => (value === undefined ? null : value / by);
  const rowsOfFigures = (name, by) => figures.map((q) => [new Date(q.start), scaled(q.downstream[name], by), scaled(q.upstream[name], by)]);
  byId('dayplots').hidden = figures.length === 0;
  drawDay('dayrate', rowsOfFigures('net-data-rate', 1000));
  drawDay('daymargin', rowsOfFigures('snr-margin', 10));
  drawDay('dayerrors', past.slice().reverse().map((interval) => [started(interval), interval['ftu-r']['errored-seconds'],
    interval['ftu-o']['errored-seconds']]));
  byId('noday').hidden = past.length > 0;
}

// ---- One line ----

let document_ = null;  // of the chosen line

function choose(name) {
  chosen = name;
  document_ = null;
  shown = null;
  byId('one').hidden = false;
  byId('name').textContent = name;
  byId('told').textContent = '';
  byId('findings').replaceChildren();
  draw();
  if (latest) showLines(latest);
  readLine();
}

function inventoryText(fast) {
  const printable = (base64) => bytesIn(base64).filter((b) => b >= 32 && b < 127).map((b) => String.fromCharCode(b)).join('');
  const end = (name, ftu) => `${name} ${printable(ftu['system-vendor-id'])} ${printable(ftu['version-number'])} ${printable(ftu['system-serial-number'])}`;
  return fast && fast.inventory ? `${end('Network end:', fast.inventory['ftu-o'])}. ${end('Subscriber end:', fast.inventory['ftu-r'])}.` : '';
}

function showFindings(findings) {
  const list = byId('findings');
  list.replaceChildren();
  for (const finding of findings) {
    const item = add(list, 'li', finding.text);
    add(item, 'span', ` (${finding.sure})`, 'quiet');
  }
}

function showOne(read) {
  document_ = read;
  showFindings(ownIn(read).line[0].finding || []);
  byId('told').textContent = inventoryText(fastOf(interfacesIn(read)[0]));
  shown = tonesOf(read);
  draw();
  drawDays(read);
}

function keepReading() {
  if (!document_) return;
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob([JSON.stringify(document_)], { type: 'application/json' }));
  link.download = `${chosen}-${ownIn(document_).time.replace(/:/g, '')}.json`;
  link.click();
  URL.revokeObjectURL(link.href);
}

async function compareWith(file) {
  try {
    kept = tonesOf(JSON.parse(await file.text()));
  } catch {
    kept = null;
  }
  if (kept === null) byId('read').textContent = `${file.name} is no kept reading of a line that was up`;
  draw();
}

// ---- Reading ----

async function get(path) {
  if (stored) return stored[path];
  const answer = await fetch(path);
  if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
  return answer.json();
}

async function readLines() {
  try {
    const before = upIn(latest);
    showLines(await get('/data/lines.json'));
    if (chosen === null && interfacesIn(latest).length > 0) {
      choose(interfacesIn(latest)[0].name);
    } else if (upIn(latest) !== before) {
      readLine();
    }
  } catch (error) {
    byId('read').textContent = `Not read: ${error.message}`;
  }
  if (!stored) setTimeout(readLines, kLinesEvery_ms);
}

// Whether the chosen line is up in a document.
function upIn(all) {
  const found = all && interfacesIn(all).find((interface_) => interface_.name === chosen);
  return found ? found['oper-status'] : undefined;
}

async function readLine() {
  const name = chosen;
  if (name === null) return;
  try {
    const read = await get(`/data/lines/${name.replace('line', '')}.json`);
    if (name === chosen) showOne(read);
  } catch (error) {
    byId('told').textContent = `Not read: ${error.message}`;
  }
}

for (const table of kPlots) byId(table).addEventListener('keydown', pressed);
byId('keep').addEventListener('click', keepReading);
byId('compare').addEventListener('change', (event) => event.target.files[0] && compareWith(event.target.files[0]));
byId('alone').addEventListener('click', () => { kept = null; draw(); });
byId('whole').addEventListener('click', () => zoomTo([0, kTones - 1]));
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', draw);
if (!stored) setInterval(readLine, kTonesEvery_ms);
readLines();
