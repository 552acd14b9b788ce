// Keeps one version of the page, so that it works without a network.
const cacheName = `gridwork-${'VERSION'}`;
const files = ['FILES'];

addEventListener('install', (event) => {
  // The browser's own cache may still hold files of the last version.
  const requests = ['./', ...files].map((file) => new Request(file, { cache: 'reload' }));
  event.waitUntil(caches.open(cacheName).then((cache) => cache.addAll(requests)));
});

// Until the visitor asks for the new version, all of the last one is there.
addEventListener('message', () => skipWaiting());

async function removeOldVersions() {
  const names = await caches.keys();
  await Promise.all(names.filter((name) => name.startsWith('gridwork-') && name !== cacheName).map((name) => caches.delete(name)));
  await clients.claim();
}

addEventListener('activate', (event) => event.waitUntil(removeOldVersions()));

addEventListener('fetch', (event) => {
  event.respondWith(caches.open(cacheName).then((cache) => cache.match(event.request)).then((kept) => kept ?? fetch(event.request)));
});
