// A server of one page, on a port of the loopback that is free.

import { readFileSync } from 'node:fs';
import { createServer } from 'node:http';

// Resolves to the page's address and what ends the server.
export const serve = async (file) => {
  const server = createServer((request, response) => {
    const isPage = request.url === '/report.html';
    response.writeHead(isPage ? 200 : 404, { 'content-type': 'text/html' });
    response.end(isPage ? readFileSync(file) : '');
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  const close = () => new Promise((closed) => server.close(closed));
  return { address: `http://127.0.0.1:${server.address().port}/report.html`, close };
};
