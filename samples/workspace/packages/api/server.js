// The plants to be watered today, as JSON.
import { createServer } from 'node:http';
import { thirstyOn } from 'plants';

const port = Number(process.env.PORT ?? 8500);
const millisecondsOfDay = 24 * 60 * 60 * 1000;

const server = createServer((request, response) => {
  const today = Math.floor(Date.now() / millisecondsOfDay);
  response.writeHead(200, { 'Content-Type': 'application/json' });
  response.end(JSON.stringify(thirstyOn(today)));
});

server.listen(port, '127.0.0.1', () => console.log(`Garden API listening on http://localhost:${port}`));
