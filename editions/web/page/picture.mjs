// The picture and its controls.
import { Viewer } from './viewer.mjs';

const $ = (id) => document.getElementById(id);

function listen(viewer) {
  const cut = () => viewer.cut($('along').value, Number($('part').value));
  $('colouring').addEventListener('change', () => viewer.colour(Number($('colouring').value)));
  $('lines').addEventListener('click', () => {
    const isPressed = $('lines').getAttribute('aria-pressed') !== 'true';
    $('lines').setAttribute('aria-pressed', String(isPressed));
    viewer.drawLines(isPressed);
  });
  $('along').addEventListener('change', () => {
    $('part').hidden = $('along').value === '';
    cut();
  });
  $('part').addEventListener('input', cut);
  $('all').addEventListener('click', () => viewer.look('7'));
}

function hide() {
  for (const id of ['canvas', 'legend', 'controls']) $(id).hidden = true;
  $('blind').hidden = false;
}

let started;

/** Makes the picture ready; `restored` is told when the mesh has to be shown again. */
export function startPicture(restored) {
  started = Viewer.on($('canvas'), restored).then((viewer) => {
    listen(viewer);
    return viewer;
  }).catch(hide);
}

/** Shows a mesh; what `place` tells is how large it is, and whether it is the last one, changed. */
export async function showMesh(arrays, place) {
  const viewer = await started;
  await viewer?.show(arrays, place);
  if ($('along').value !== '') viewer?.cut($('along').value, Number($('part').value));
}

/** Brings a point, relative to the middle of the box, into view. */
export async function approach(point) {
  const viewer = await started;
  viewer?.approach(point);
  if (viewer) $('canvas').scrollIntoView({ block: 'nearest' });
}
