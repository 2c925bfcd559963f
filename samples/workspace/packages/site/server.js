// A page with every plant and how often it wants water.
import { createServer } from 'node:http';
import { plants } from 'plants';

const port = Number(process.env.PORT ?? 5500);

function page() {
  const rows = plants.map(({ name, everyDays }) => {
    const often = everyDays === 1 ? 'every day' : `every ${everyDays} days`;
    return `<li><b>${name}</b>: ${often}</li>`;
  });
  return `<!doctype html><meta charset="utf-8"><title>Garden</title>
<style>body { font: 18px/1.6 system-ui, sans-serif; margin: 4rem auto; max-width: 30rem }</style>
<h1>Garden</h1><ul>${rows.join('')}</ul>`;
}

const server = createServer((request, response) => {
  response.writeHead(200, { 'Content-Type': 'text/html; charset=utf-8' });
  response.end(page());
});

server.listen(port, '127.0.0.1', () => console.log(`Garden at http://localhost:${port}`));
