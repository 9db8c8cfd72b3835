// SPDX-License-Identifier: GPL-3.0-or-later
// A bare listener of the live feed: says when each song's frame was there, by the clock that every process shares.
//
//     node listener.js HOST AUTHORITY STATION
'use strict';

const fs = require('fs');
const { Client } = require('faye-websocket');

const [host, authority, station] = process.argv.slice(2);
const join = JSON.stringify({ action: 'join', id: 1, sub: { station, entity: 'plays', action: 'play' }, backlog: 1 });
const feed = new Client(`wss://${host}/api/100/0123456789abcdef0123456789abcdef/websocket`, [],
  { tls: { ca: fs.readFileSync(authority) } });

feed.on('open', () => feed.send(JSON.stringify([join])));
feed.on('message', ({ data }) => {
  const at = Number(process.hrtime.bigint()) / 1e9;
  if (data[0] === 'a') console.log(at);
});
feed.on('close', () => process.exit(1));
