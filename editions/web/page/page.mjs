// The page: what is dropped goes to a worker, what comes back is shown.
import { reportParts, verdictOf } from './report.mjs';
import { formatOf } from './names.mjs';
import { Viewer } from './viewer.mjs';

const $ = (id) => document.getElementById(id);
const endings = { stl: ['STL', '.stl'], obj: ['OBJ', '.obj'], vtk: ['VTK', '.vtk'], medit: ['MEDIT', '.mesh'], nastran: ['NASTRAN', '.bdf'], femap: ['FEMAP', '.neu'] };

const state = { worker: null, ready: null, id: 0, name: 'mesh', viewer: null, module: null, middle: [0, 0, 0] };

function makeViewer() {
  try {
    state.viewer = new Viewer($('canvas'));
  } catch {
    for (const id of ['canvas', 'legend', 'all', 'colouring']) $(id).hidden = true;
    $('colouring').parentElement.hidden = true;
    $('blind').hidden = false;
  }
}

async function startWorker() {
  state.worker = new Worker('worker.mjs', { type: 'module' });
  state.worker.addEventListener('message', ({ data }) => data.id === state.id && receive[data.is]?.(data));
  state.worker.addEventListener('error', () => fail('The worker of this page did not start; reload the page.'));
  state.module ??= WebAssembly.compile(await (await fetch('page.wasm')).arrayBuffer());
  state.worker.postMessage({ do: 'start', module: await state.module });
}

function ask(task, message = {}) {
  state.id += 1;
  const { id } = state;
  state.ready.then(() => id === state.id && state.worker.postMessage({ do: task, id, ...message }), (error) => fail(error.message));
}

function setBusy(words) {
  $('busy').hidden = words === '';
  $('doing').textContent = words;
  $('progress').removeAttribute('value');
}

function fail(message) {
  setBusy('');
  $('error').textContent = message;
}

function restart() {
  state.worker?.terminate();
  state.ready = startWorker();
}

function cancel() {
  state.id += 1;
  restart();
  fail('Cancelled.');
  $('found').hidden = true;
}

function open(file) {
  $('error').textContent = '';
  $('cleaned').textContent = '';
  $('found').hidden = true;
  if (formatOf(file.name) === undefined) {
    fail(`${file.name}: the format is not known. Files are told by their endings: .stl, .obj, .vtk, .mesh, .nas, .bdf, .dat, .neu.`);
    return;
  }
  state.name = file.name;
  setBusy(`Reading ${file.name}`);
  ask('open', { file });
}

function saveFile(parts, format) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob(parts));
  link.download = state.name.replace(/\.[^.]*$/, '') + endings[format][1];
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}

const receive = {
  progress({ position, size }) {
    $('progress').value = position / size;
  },
  report({ report, times, memory }) {
    const { words, isGood } = verdictOf(report);
    $('name').textContent = state.name;
    $('verdict').textContent = words;
    $('verdict').className = isGood ? 'good' : 'bad';
    state.middle = report.box ? report.box[0].map((low, k) => low / 2 + report.box[1][k] / 2) : [0, 0, 0];
    const { counts, shapes } = reportParts(report, (centre) => state.viewer?.approach(centre.map((x, k) => x - state.middle[k])));
    $('counts').replaceChildren(...counts);
    $('shapes').replaceChildren(...shapes);
    const seconds = Object.entries(times).map(([name, ms]) => `${name} in ${(ms / 1000).toFixed(2)} s`);
    $('times').textContent = `${seconds.join(', ')}; ${(memory / 2 ** 20).toFixed(0)} MiB of memory`;
    $('found').hidden = false;
    $('drop').classList.add('small');
    setBusy('');
  },
  mesh({ arrays }) {
    try {
      state.viewer?.show(arrays);
    } catch (error) {
      $('note').textContent = `No picture: ${error.message}.`;
    }
    document.body.dataset.shown = state.name;
  },
  cleaned({ merged, removedElements, removedNodes }) {
    $('cleaned').textContent = `Merged ${merged} nodes; removed ${removedElements} elements and ${removedNodes} nodes.`;
  },
  file({ parts, format }) {
    setBusy('');
    saveFile(parts, format);
  },
  failed({ message, ended }) {
    fail(`${state.name}: ${ended ? 'the file asks for more than this browser gives, or the module failed' : message}.`);
    if (ended) restart();
  },
};

function listen() {
  $('file').addEventListener('change', (event) => {
    if (event.target.files.length > 0) open(event.target.files[0]);
    event.target.value = '';
  });
  $('sample').addEventListener('click', async () => open(new File([await (await fetch('sample.stl')).blob()], 'sample.stl')));
  $('cancel').addEventListener('click', cancel);
  $('colouring').addEventListener('change', (event) => state.viewer?.colour(Number(event.target.value)));
  $('all').addEventListener('click', () => state.viewer?.look('7'));
  $('repair').addEventListener('submit', (event) => {
    event.preventDefault();
    const tolerance = Number($('tolerance').value.replace(',', '.'));
    $('error').textContent = '';
    if (!(tolerance >= 0)) return fail('The tolerance is no number from 0 on.');
    setBusy('Merging');
    ask('clean', { tolerance });
  });
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
  for (const [format, [name]] of Object.entries(endings)) {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = name;
    button.setAttribute('aria-label', `Save as ${name}`);
    button.addEventListener('click', () => {
      $('error').textContent = '';
      setBusy(`Writing ${name}`);
      ask('write', { format });
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

function keepOffline() {
  navigator.serviceWorker?.register('service_worker.mjs', { type: 'module' }).then((registration) => {
    registration.addEventListener('updatefound', () => {
      if (navigator.serviceWorker.controller) $('note').textContent = 'A new version is ready: reload the page.';
    });
  }, () => {});
}

followTheme();
addSaveButtons();
listen();
makeViewer();
keepOffline();
if (typeof Worker === 'undefined' || typeof WebAssembly === 'undefined') fail('This browser has no workers or no WebAssembly, which the page needs.');
else restart();
document.body.dataset.ready = '';
