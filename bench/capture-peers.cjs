// Runs a child once under a peer's own interface and prints the milliseconds until its last line was in, and the peak
// memory in KiB of the process that took the output. The peer's own start is not counted.
//
//   node capture-peers.cjs concurrently|pm2 COUNT PROGRAM
'use strict';

const fs = require('node:fs');
const path = require('node:path');
const { Writable } = require('node:stream');

const modules = path.dirname(process.env.ORV_BENCH_PEERS);
const [peer, count, program] = process.argv.slice(2);
const expectedBytes = Number(count) * 95;

function check(what, bytes) {
  if (bytes < expectedBytes) {
    throw new Error(`${what} took ${bytes} of ${expectedBytes} bytes`);
  }
}

async function runConcurrently() {
  const concurrently = require(path.join(modules, 'concurrently'));
  let bytes = 0;
  const sink = new Writable({
    write(chunk, encoding, done) {
      bytes += chunk.length;
      done();
    },
  });
  const start = performance.now();
  await concurrently([`${program} ${count}`], { outputStream: sink }).result;
  const taken = performance.now() - start;
  check('concurrently', bytes);
  return [taken, process.resourceUsage().maxRSS];
}

function call(object, name, ...words) {
  return new Promise((resolve, reject) => {
    object[name](...words, (error, value) => (error ? reject(error) : resolve(value)));
  });
}

// Its daemon writes the output to a log file: the last line is in once the file has all of it. The child waits to be
// killed, because pm2 drops what it has not written yet when a child ends.
async function runPm2() {
  const pm2 = require(path.join(modules, 'pm2'));
  const log = path.join(process.env.PM2_HOME, 'bench.log');
  fs.rmSync(log, { force: true });
  await call(pm2, 'connect');
  const start = performance.now();
  await call(pm2, 'start', {
    name: 'bench', script: program, args: [count, '--linger'], interpreter: 'none', autorestart: false,
    kill_timeout: 1000, output: log, error: log,
  });
  const size = () => (fs.existsSync(log) ? fs.statSync(log).size : 0);
  const deadline = start + 60_000;
  while (size() < expectedBytes && performance.now() < deadline) {
    await new Promise((resolve) => { setTimeout(resolve, 1); });
  }
  const taken = performance.now() - start;
  check('pm2', size());
  const daemon = fs.readFileSync(path.join(process.env.PM2_HOME, 'pm2.pid'), 'utf8').trim();
  const status = fs.readFileSync(`/proc/${daemon}/status`, 'utf8');
  await call(pm2, 'delete', 'bench');
  pm2.disconnect();
  fs.rmSync(log);
  return [taken, Number(/VmHWM:\s*(\d+)/.exec(status)[1])];
}

(peer === 'pm2' ? runPm2() : runConcurrently()).then(
  ([taken, peak]) => { process.stdout.write(`result ${taken.toFixed(3)} ${peak}\n`); },
  (error) => {
    console.error(error);
    process.exit(1);
  },
);
