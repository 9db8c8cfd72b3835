// SPDX-License-Identifier: GPL-3.0-or-later
// The live feed: Debian's SockJS server behind TLS, told what to do by lines of JSON on standard input.
//
// Everything a healthy client sees comes from the SockJS library itself. Faults reach around it, to the web socket
// or to the connection below.
'use strict';

const https = require('https');
const fs = require('fs');
const readline = require('readline');
const sockjs = require('sockjs');
const FayeWebsocket = require(require.resolve('faye-websocket', { paths: [require.resolve('sockjs')] }));

const config = JSON.parse(process.argv[2]);
const now = () => Number(process.hrtime.bigint()) / 1e9; // the clock that every process of the machine shares

const healthy = () => ({ style: 'h', seconds: 25, mute: false, withholdOpen: false, glue: false, backlog: true });
let behaviour = healthy();
let sessions = [];
let upgrades = new Map();
let current = {};
let serial = 1;

// Muting swallows what the library sends, so that a client meets a peer that is there and says nothing.
const send = FayeWebsocket.prototype.send;
FayeWebsocket.prototype.send = function (data) {
  if (behaviour.mute || (behaviour.withholdOpen && data === 'o')) return true;
  return send.call(this, data);
};

const feed = sockjs.createServer({ prefix: '/api', heartbeat_delay: 25000, log: () => {} });

feed.on('connection', (connection) => {
  const receiver = connection._session.recv;
  if (!receiver) return; // gone already
  const session = {
    connection, receiver, ws: receiver.ws, socket: receiver.connection, stations: new Map(),
    record: {
      opened: now(), url: connection.url, headers: upgrades.get(connection.url) || [], received: [], sent: 0,
      closed: null, code: null,
    },
  };
  upgrades.delete(connection.url);
  sessions.push(session);
  applyHeartbeat(session);
  session.ws.addEventListener('message', (event) => {
    session.record.received.push({ at: now(), text: String(event.data) });
  });
  session.ws.addEventListener('close', (event) => {
    session.record.closed = now();
    session.record.code = event.code;
  });
  connection.on('data', (text) => join(session, text));
});

function applyHeartbeat(session) {
  const inner = session.connection._session;
  inner.heartbeat_delay = behaviour.seconds * 1000;
  if (behaviour.style === 'ping') {
    delete session.receiver.heartbeat; // the library's own way
  } else {
    session.receiver.heartbeat = function () {
      if (behaviour.style === 'h') this.doSendFrame('h');
    };
  }
  inner.tryFlush(); // the running timer still has the old delay
}

function join(session, text) {
  let message;
  try {
    message = JSON.parse(text);
  } catch (error) {
    return;
  }
  if (!message || message.action !== 'join' || !message.sub || message.sub.entity !== 'plays') return;
  session.stations.set(message.sub.station, message.id);
  if (message.backlog > 0 && behaviour.backlog && current[message.sub.station]) {
    deliver(session, message.sub.station, current[message.sub.station]);
  }
}

function payload(session, station, event) {
  return JSON.stringify({
    action: 'data', ids: [session.stations.get(station) || 0], key: String(serial++),
    data: JSON.stringify({ station, entity: 'plays', action: 'play', data: event }),
  });
}

function deliver(session, station, event) {
  if (session.connection.write(payload(session, station, event))) session.record.sent += 1;
}

const open = (station) => sessions.filter(
  (session) => session.record.closed === null && (!station || session.stations.has(station)));

const commands = {
  // A new song: remembered for those who join later, sent to those who have joined. Answers when it was sent.
  song({ station, event, remember = true }) {
    if (remember) current[station] = event;
    const at = now();
    const listeners = open(station);
    listeners.forEach((session) => deliver(session, station, event));
    return { at, sent: listeners.length };
  },
  // Several songs in one array frame, each for the station it names.
  songs({ events }) {
    const at = now();
    const listeners = open();
    listeners.forEach((session) => {
      const texts = events.map(([station, event]) => payload(session, station, event));
      session.receiver.doSendFrame('a' + JSON.stringify(texts));
    });
    return { at, sent: listeners.length };
  },
  // This text (or these bytes) as one web-socket message.
  raw({ text, base64, station }) {
    const at = now();
    const listeners = open(station);
    listeners.forEach((session) => send.call(session.ws, base64 ? Buffer.from(base64, 'base64') : text));
    return { at, sent: listeners.length };
  },
  // These bytes below the web socket, frame header and all.
  bytes({ base64, times = 1 }) {
    open().forEach((session) => {
      for (let i = 0; i < times; i += 1) session.socket.write(Buffer.from(base64, 'base64'));
    });
    return { at: now(), sent: open().length };
  },
  // The server's goodbye: a `c` frame, then the web socket's own close.
  goodbye({ code = 3000, reason = 'Go away!' }) {
    const listeners = open();
    listeners.forEach((session) => session.connection.close(code, reason));
    return { at: now(), sent: listeners.length };
  },
  // The web socket closes without a `c` frame.
  close({ code = 1000, reason = '' }) {
    const listeners = open();
    listeners.forEach((session) => session.ws.close(code, reason));
    return { at: now(), sent: listeners.length };
  },
  // The connection breaks.
  destroy() {
    const listeners = open();
    listeners.forEach((session) => session.socket.destroy());
    return { at: now(), sent: listeners.length };
  },
  behave(changes) {
    Object.assign(behaviour, changes);
    if ('style' in changes || 'seconds' in changes) open().forEach(applyHeartbeat);
  },
  certificate({ certificate, key }) {
    server.setSecureContext({ cert: fs.readFileSync(certificate), key: fs.readFileSync(key) });
  },
  sessions() {
    return sessions.map((session) => ({ ...session.record, stations: [...session.stations.keys()] }));
  },
  reset({ songs }) {
    behaviour = healthy();
    current = songs;
    sessions.forEach((session) => session.socket && session.socket.destroy());
    sessions = [];
    upgrades = new Map();
  },
};

const server = https.createServer({
  cert: fs.readFileSync(config.certificate), key: fs.readFileSync(config.key),
});
feed.installHandlers(server);
// Before the library's own listener: what the client asked for, letter by letter.
server.prependListener('upgrade', (request, socket) => {
  const headers = [];
  for (let i = 0; i < request.rawHeaders.length; i += 2) {
    headers.push([request.rawHeaders[i], request.rawHeaders[i + 1]]);
  }
  upgrades.set(request.url, headers);
  if (behaviour.glue) { // the open frame then comes in the same bytes as the answer to the upgrade
    socket.cork();
    setTimeout(() => socket.uncork(), 30);
  }
});

readline.createInterface({ input: process.stdin }).on('line', (line) => {
  let answer;
  try {
    const { do: name, ...args } = JSON.parse(line);
    answer = { ok: true, result: commands[name](args) };
  } catch (error) {
    answer = { ok: false, error: String(error && error.stack || error) };
  }
  process.stdout.write(JSON.stringify(answer) + '\n');
}).on('close', () => process.exit(0));

server.listen(config.port, '127.0.0.1', () => process.stdout.write('{"ok":true,"result":"listening"}\n'));
