// Serves a folder on the loopback interface: node serve.mjs FOLDER [PORT]
import { createReadStream } from 'node:fs';
import { stat } from 'node:fs/promises';
import { createServer } from 'node:http';
import { extname, join, normalize, resolve } from 'node:path';

const types = {
  '.html': 'text/html; charset=utf-8', '.css': 'text/css', '.mjs': 'text/javascript', '.js': 'text/javascript',
  '.json': 'application/json', '.svg': 'image/svg+xml', '.wasm': 'application/wasm', '.stl': 'model/stl',
};
export const policy =
  "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self'; worker-src 'self'; connect-src 'self'; " +
  "manifest-src 'self'; img-src 'self' data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

async function answer(folder, request, response) {
  const { pathname } = new URL(request.url, 'http://localhost');
  const path = join(folder, normalize(decodeURIComponent(pathname)), pathname.endsWith('/') ? 'index.html' : '');
  const isFile = await stat(path).then((found) => found.isFile(), () => false);
  if (!isFile) return response.writeHead(404).end();
  const headers = { 'content-type': types[extname(path)] ?? 'application/octet-stream' };
  response.writeHead(200, { ...headers, 'content-security-policy': policy, 'x-content-type-options': 'nosniff', 'cache-control': 'no-cache' });
  createReadStream(path).pipe(response);
}

/** A server of a folder; port 0 is any that is free. */
export function serve(folder, port = 0) {
  const server = createServer((request, response) => answer(folder, request, response).catch(() => response.writeHead(400).end()));
  return new Promise((ready) => server.listen(port, '127.0.0.1', () => ready(server)));
}

if (process.argv[1] === import.meta.filename || process.argv[1]?.endsWith('serve.mjs')) {
  const server = await serve(resolve(process.argv[2]), Number(process.argv[3] ?? 8000));
  console.log(`http://127.0.0.1:${server.address().port}/`);
}
