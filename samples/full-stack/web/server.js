// Serves the page and hands everything under /api to the back end.
import { readFile } from 'node:fs/promises';
import { createServer, request } from 'node:http';

const port = Number(process.env.PORT ?? 5200);
const api = new URL(process.env.API ?? 'http://127.0.0.1:8200');
const page = new URL('index.html', import.meta.url);

function forward(incoming, outgoing) {
  const upstream = request(
    { hostname: api.hostname, port: api.port, method: incoming.method, path: incoming.url.slice('/api'.length) },
    (answer) => {
      outgoing.writeHead(answer.statusCode, answer.headers);
      answer.pipe(outgoing);
    },
  );
  upstream.on('error', (error) => {
    console.error(`API: ${error.message}`);
    outgoing.writeHead(502, { 'Content-Type': 'application/json' });
    outgoing.end(JSON.stringify({ error: 'the back end does not answer' }));
  });
  incoming.pipe(upstream);
}

const server = createServer(async (incoming, outgoing) => {
  if (incoming.url.startsWith('/api/')) {
    forward(incoming, outgoing);
  } else if (incoming.url === '/') {
    outgoing.writeHead(200, { 'Content-Type': 'text/html; charset=utf-8' });
    outgoing.end(await readFile(page));
  } else {
    outgoing.writeHead(404).end();
  }
});

server.listen(port, '127.0.0.1', () => console.log(`Shop at http://localhost:${port}`));
