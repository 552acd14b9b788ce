// Draws in a worker, so that the page never waits for the graphics card.
//   {canvas}  -> {is: ready}, or failed
//   {arrays}  -> {is: shown}, or failed
//   {scene}   draws, when nothing newer has come
// {is: restored}: what was shown is lost, and can be shown again.
// Where one fails: {is: failed, message}.
import { Painter } from './painter.mjs';

let painter;
let scene = null;

function plan(next) {
  if (scene === null) {
    requestAnimationFrame(() => {
      painter.draw(scene);
      scene = null;
    });
  }
  scene = next;
}

const tasks = {
  canvas(canvas) {
    painter = new Painter(canvas, () => postMessage({ is: 'restored' }));
    postMessage({ is: 'ready' });
  },
  arrays(arrays) {
    painter.show(arrays);
    postMessage({ is: 'shown' });
  },
  scene: plan,
};

addEventListener('message', ({ data }) => {
  const [[task, given]] = Object.entries(data);
  try {
    tasks[task](given);
  } catch ({ message }) {
    postMessage({ is: 'failed', message });
  }
});
