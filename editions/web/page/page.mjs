// The page: what is dropped goes to a worker, what comes back is shown.
import { formatOf, readEndings } from './names.mjs';
import { keepOffline } from './offline.mjs';
import { approach, showMesh, startPicture } from './picture.mjs';
import { chainParts, reportParts, verdictOf } from './report.mjs';
import { Session } from './session.mjs';

const $ = (id) => document.getElementById(id);
const endings = { stl: ['STL', '.stl'], obj: ['OBJ', '.obj'], vtk: ['VTK', '.vtk'], medit: ['MEDIT', '.mesh'], nastran: ['NASTRAN', '.bdf'], femap: ['FEMAP', '.neu'] };

let session;
let name = 'mesh'; // of the file
let shown; // the report
let before; // the report before a repair

function setBusy(words) {
  $('busy').hidden = words === '';
  $('doing').textContent = words;
  $('progress').removeAttribute('value');
}

function fail(message) {
  setBusy('');
  $('error').textContent = message;
  $('error').scrollIntoView({ block: 'nearest' }); // what was pressed may lie far below
}

function cancel() {
  session.restart();
  fail('Cancelled.');
  $('found').hidden = true;
}

const noWorkers = 'This browser has no workers or no WebAssembly, which the page needs.';

function refusalOf(file) {
  if (session === undefined) return noWorkers;
  if (formatOf(file.name) !== undefined) return '';
  return `${file.name}: the format is not known. Files are told by their endings: ${readEndings.map((ending) => `.${ending}`).join(', ')}.`;
}

function open(file) {
  for (const id of ['error', 'note', 'cleaned']) $(id).textContent = '';
  $('found').hidden = true;
  const refusal = refusalOf(file);
  if (refusal !== '') {
    fail(refusal);
    return;
  }
  name = file.name;
  before = undefined;
  delete document.body.dataset.shown;
  setBusy(`Reading ${name}`);
  session.open(file);
}

function saveFile(parts, format) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob(parts));
  link.download = name.replace(/\.[^.]*$/, '') + endings[format][1];
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}

const halfOf = (box) => box[1].map((high, k) => high / 2 - box[0][k] / 2);
const middleOf = (box) => box[1].map((high, k) => high / 2 + box[0][k] / 2);

function showReport(report) {
  const { words, isGood } = verdictOf(report);
  $('name').textContent = name;
  $('verdict').textContent = words;
  $('verdict').className = isGood ? 'good' : 'bad';
  const goTo = (centre) => approach(centre.map((x, k) => x - middleOf(report.box)[k]));
  const { counts, shapes } = reportParts(report, goTo, before);
  $('counts').replaceChildren(...counts);
  $('shapes').replaceChildren(...shapes);
  $('found').hidden = false;
  $('drop').classList.add('small');
  shown = report;
}

const receive = {
  progress({ position, size }) {
    $('progress').value = position / size;
  },
  report({ report, times, memory }) {
    showReport(report);
    const seconds = Object.entries(times).map(([task, ms]) => `${task} in ${(ms / 1000).toFixed(2)} s`);
    $('times').textContent = `${seconds.join(', ')}; ${(memory / 2 ** 20).toFixed(0)} MiB of memory`;
    setBusy('');
  },
  mesh({ arrays, chains, radius }) {
    $('chains').replaceChildren(...chainParts(chains, approach));
    const half = shown.box ? halfOf(shown.box) : [0, 0, 0];
    showMesh(arrays, { half, radius, isChanged: 'shown' in document.body.dataset }).catch(({ message }) => {
      $('note').textContent = `No picture: ${message}.`;
    });
    document.body.dataset.shown = name;
  },
  cleaned({ merged, removedElements, removedNodes }) {
    $('cleaned').textContent = `Merged ${merged} nodes; removed ${removedElements} elements and ${removedNodes} nodes.`;
  },
  file({ parts, format }) {
    setBusy('');
    saveFile(parts, format);
  },
  failed({ message, ended }) {
    fail(`${name}: ${ended ? 'the file asks for more than this browser gives, or the module failed' : message}.`);
    if (!ended) return;
    $('found').hidden = true;
    session.restart();
  },
  lost: fail,
};

function complaintOf(tolerance) {
  if (!(tolerance >= 0)) return 'The tolerance is no number from 0 on.';
  return shown.valid ? '' : 'Elements have nodes that are not there: this cannot be repaired.';
}

function repair(event) {
  event.preventDefault();
  const tolerance = Number($('tolerance').value.replace(',', '.'));
  const complaint = complaintOf(tolerance);
  $('error').textContent = '';
  $('cleaned').textContent = complaint;
  if (complaint !== '') return;
  before = shown;
  setBusy('Merging');
  session.ask('clean', { tolerance });
}

function listen() {
  $('file').addEventListener('change', (event) => {
    if (event.target.files.length > 0) open(event.target.files[0]);
    event.target.value = '';
  });
  $('sample').addEventListener('click', async () => open(new File([await (await fetch('sample.stl')).blob()], 'sample.stl')));
  $('cancel').addEventListener('click', cancel);
  $('repair').addEventListener('submit', repair);
  addEventListener('dragover', (event) => {
    event.preventDefault();
    $('drop').classList.add('over');
  });
  addEventListener('dragleave', () => $('drop').classList.remove('over'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    $('drop').classList.remove('over');
    if (event.dataTransfer.files.length > 0) open(event.dataTransfer.files[0]);
  });
}

function addSaveButtons() {
  for (const [format, [shownName]] of Object.entries(endings)) {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = shownName;
    button.setAttribute('aria-label', `Save as ${shownName}`);
    button.addEventListener('click', () => {
      $('error').textContent = '';
      setBusy(`Writing ${shownName}`);
      session.ask('write', { format });
    });
    $('save').append(button);
  }
}

function followTheme() {
  const dark = matchMedia('(prefers-color-scheme: dark)');
  const show = (isDark) => $('theme').setAttribute('aria-pressed', String(isDark));
  show(dark.matches);
  $('theme').addEventListener('click', () => {
    const isDark = $('theme').getAttribute('aria-pressed') !== 'true';
    document.documentElement.dataset.theme = isDark ? 'dark' : 'light';
    show(isDark);
  });
}

followTheme();
addSaveButtons();
listen();
startPicture(() => session?.ask('draw'));
keepOffline($('news'));
if (typeof Worker === 'undefined' || typeof WebAssembly === 'undefined') fail(noWorkers);
else session = new Session(receive);
document.body.dataset.ready = '';
