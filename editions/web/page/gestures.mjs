// Fingers, mouse and keys on the picture.

const key = (act, ...values) => ({ act, values });
const step = 0.15;
const keys = {
  ArrowLeft: key('turn', -step, 0), ArrowRight: key('turn', step, 0), ArrowUp: key('turn', 0, step),
  ArrowDown: key('turn', 0, -step), '+': key('zoom', 1.25), '-': key('zoom', 0.8), Home: key('look', '7'),
};
for (const view of '1234567') keys[view] = key('look', view);

function followFingers(canvas, viewer) {
  const fingers = new Map();
  const apart = () => {
    const [a, b] = [...fingers.values()];
    return Math.hypot(a.x - b.x, a.y - b.y);
  };
  canvas.addEventListener('pointerdown', (event) => {
    canvas.setPointerCapture(event.pointerId);
    fingers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  });
  canvas.addEventListener('pointermove', (event) => {
    const finger = fingers.get(event.pointerId);
    if (finger === undefined) return;
    const before = fingers.size === 2 ? apart() : 0;
    const [dx, dy] = [event.clientX - finger.x, event.clientY - finger.y];
    Object.assign(finger, { x: event.clientX, y: event.clientY });
    if (fingers.size === 1) viewer.turn(dx / 120, dy / 120);
    else if (before > 0) viewer.zoom(apart() / before);
  });
  for (const end of ['pointerup', 'pointercancel']) canvas.addEventListener(end, (event) => fingers.delete(event.pointerId));
}

/** Tells a viewer to turn, to zoom and to look. */
export function listen(canvas, viewer) {
  followFingers(canvas, viewer);
  canvas.addEventListener('wheel', (event) => {
    event.preventDefault();
    viewer.zoom(Math.exp(-event.deltaY / 500));
  }, { passive: false });
  canvas.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || !(event.key in keys)) return;
    event.preventDefault();
    const { act, values } = keys[event.key];
    viewer[act](...values);
  });
}
