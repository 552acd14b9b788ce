// The page kept for when there is no network, and new versions of it.

function offer(worker, news) {
  const button = document.createElement('button');
  button.type = 'button';
  button.textContent = 'Load it';
  button.addEventListener('click', () => {
    navigator.serviceWorker.addEventListener('controllerchange', () => location.reload());
    worker.postMessage('take over');
  });
  news.replaceChildren('There is a new version of this page. ', button);
}

function offerWhenInstalled(worker, news) {
  worker.addEventListener('statechange', () => {
    if (worker.state === 'installed' && navigator.serviceWorker.controller !== null) offer(worker, news);
  });
}

/** Where browsers can keep it; new versions are offered in an element. */
export async function keepOffline(news) {
  const registration = await navigator.serviceWorker?.register('service_worker.mjs').catch(() => undefined);
  if (registration?.waiting) offer(registration.waiting, news);
  registration?.addEventListener('updatefound', () => offerWhenInstalled(registration.installing, news));
}
