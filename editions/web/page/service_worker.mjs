// Keeps one version of the page, so that it works without a network.
const cacheName = `gridwork-${'VERSION'}`;
const files = ['FILES'];

addEventListener('install', (event) => {
  event.waitUntil(caches.open(cacheName).then((cache) => cache.addAll(['./', ...files])));
});

async function removeOldVersions() {
  const names = await caches.keys();
  await Promise.all(names.filter((name) => name.startsWith('gridwork-') && name !== cacheName).map((name) => caches.delete(name)));
  await clients.claim();
}

addEventListener('activate', (event) => event.waitUntil(removeOldVersions()));

addEventListener('fetch', (event) => {
  event.respondWith(caches.open(cacheName).then((cache) => cache.match(event.request)).then((kept) => kept ?? fetch(event.request)));
});
