// Vantorel. MIT licence, see LICENSE.
// The playground's behaviour. The open socket is always window.ws, because that is where the shell looks for it.
'use strict';

(() => {
  const kHotkeys = [
    ['voice', 'Space'], ['screenshot_active', 'S'], ['screenshot_browser', 'B'], ['sql', 'Q'], ['algo', 'M'],
    ['design', 'D'], ['voice_design', 'F'], ['review', 'R'], ['quiz', 'U'], ['stop', 'Z'], ['clear', 'W'],
    ['help', 'H'], ['status', 'I'],
  ];
  const kFirstDelayMs = 250;
  const kLongestDelayMs = 8000;
  const kKeptMessages = 200;
  const kShownCharacters = 2000;
  const kFlashMs = 400;

  const element = (id) => document.getElementById(id);
  const counts = { sent: 0, received: 0, attempts: 0 };
  const address = `ws://${location.host}/ws`;
  let delayMs = kFirstDelayMs;
  let retryTimer = 0;
  let wanted = true;

  // --- Messages ---------------------------------------------------------------------------------------------------

  function describe(data) {
    if (typeof data === 'string') {
      return data.length > kShownCharacters ? `${data.slice(0, kShownCharacters)}… (${data.length} characters)` : data;
    }
    return `(binary, ${data.byteLength ?? data.size ?? '?'} bytes)`;
  }

  function span(className, text) {
    const node = document.createElement('span');
    node.className = className;
    node.textContent = text;
    return node;
  }

  function showMessage(kind, data) {
    counts[kind] += 1;
    element(`${kind}-count`).textContent = String(counts[kind]);
    const list = element('message-list');
    const follows = list.scrollHeight - list.scrollTop - list.clientHeight < 40;
    const item = document.createElement('li');
    item.className = kind;
    const arrow = span('message-kind', kind === 'sent' ? '↑' : '↓');
    arrow.setAttribute('role', 'img');
    arrow.setAttribute('aria-label', kind);
    item.append(arrow, span('message-time', new Date().toTimeString().slice(0, 8)),
                span('message-text', describe(data)));
    list.append(item);
    while (list.children.length > kKeptMessages) list.firstElementChild.remove();
    if (follows) list.scrollTop = list.scrollHeight;
    showHotkeyOf(data);
  }

  // --- Hotkeys ----------------------------------------------------------------------------------------------------

  function buildHotkeys() {
    for (const [name, key] of kHotkeys) {
      const item = document.createElement('li');
      item.id = `hotkey-${name}`;
      const cap = document.createElement('kbd');
      cap.textContent = key;
      item.append(cap, span('hotkey-name', name), span('hotkey-count', '0'));
      element('hotkey-list').append(item);
    }
  }

  function hotkeyName(data) {
    if (typeof data !== 'string' || !data.includes('trigger_hotkey')) return null;
    try {
      const message = JSON.parse(data);
      return message !== null && message.type === 'trigger_hotkey' ? message.hotkey : null;
    } catch {
      return null;
    }
  }

  function showHotkeyOf(data) {
    const name = hotkeyName(data);
    if (typeof name !== 'string') return;
    element('hotkey-last').textContent = name;
    const item = kHotkeys.some(([known]) => known === name) ? element(`hotkey-${name}`) : null;
    if (item === null) return;
    const count = item.querySelector('.hotkey-count');
    count.textContent = String(Number(count.textContent) + 1);
    item.classList.add('fresh');
    setTimeout(() => item.classList.remove('fresh'), kFlashMs);
  }

  // --- Connection -------------------------------------------------------------------------------------------------

  function showState(state, text, detail) {
    element('connection-pill').dataset.state = state;
    // The same words again would be read out again.
    if (element('connection-state').textContent !== text) element('connection-state').textContent = text;
    element('connection-detail').textContent = detail;
    element('connection-attempts').textContent = String(counts.attempts);
    element('send-button').disabled = state !== 'open';
    element('disconnect-button').disabled = !wanted;
    element('connect-button').disabled = state === 'open' || state === 'connecting';
  }

  // Whoever sends over window.ws, the shell's hotkey script included, is seen.
  function watchSending(socket) {
    const send = socket.send.bind(socket);
    socket.send = (data) => {
      send(data);
      showMessage('sent', data);
    };
  }

  function connect() {
    clearTimeout(retryTimer);
    counts.attempts += 1;
    const socket = new WebSocket(address);
    socket.binaryType = 'arraybuffer';
    window.ws = socket;
    watchSending(socket);
    showState('connecting', 'Connecting…', 'Opening the socket.');
    socket.addEventListener('open', () => {
      delayMs = kFirstDelayMs;
      showState('open', 'Connected', 'The socket is open, as window.ws.');
    });
    socket.addEventListener('message', (event) => showMessage('received', event.data));
    socket.addEventListener('close', (event) => {
      if (window.ws === socket) closed(event.code);
    });
  }

  function closed(code) {
    if (!wanted) {
      showState('off', 'Disconnected', 'Closed by the button; hotkeys pressed now are lost.');
      return;
    }
    const seconds = (delayMs / 1000).toLocaleString('en', { maximumFractionDigits: 1 });
    showState('waiting', 'Waiting to reconnect', `The socket closed (code ${code}). Next attempt in ${seconds} s.`);
    retryTimer = setTimeout(connect, delayMs);
    delayMs = Math.min(delayMs * 2, kLongestDelayMs);
  }

  function connectNow() {
    wanted = true;
    delayMs = kFirstDelayMs;
    connect();
  }

  function disconnect() {
    wanted = false;
    clearTimeout(retryTimer);
    if (window.ws.readyState === WebSocket.CLOSED) closed(1000);
    else window.ws.close(1000);
  }

  // Without an answer to the question the socket is tried all the same.
  async function isSwitchedOff() {
    try {
      const answer = await fetch('/config.json', { cache: 'no-store' });
      return answer.ok && (await answer.json()).websocket === false;
    } catch {
      return false;
    }
  }

  async function startConnection() {
    element('connection-address').textContent = address;
    if (!await isSwitchedOff()) {
      connect();
      return;
    }
    wanted = false;
    showState('off', 'Switched off', 'The server was started with WEBSOCKET_ENABLED=false.');
    element('connect-button').disabled = true;
  }

  // --- Zoom -------------------------------------------------------------------------------------------------------

  // The engine's pixel ratio leaves page zoom out, so zoom shows as a window that holds fewer of the page's pixels.
  function showZoom() {
    const zoom = window.innerWidth > 0 && window.outerWidth > 0 ? window.outerWidth / window.innerWidth : 1;
    element('zoom-value').textContent = `${Math.round(zoom * 20) * 5}%`;
    element('device-pixel-ratio').textContent = String(Math.round(window.devicePixelRatio * 100) / 100);
  }

  // --- Everything that is clicked ---------------------------------------------------------------------------------

  function onClick(id, action) {
    element(id).addEventListener('click', action);
  }

  function wireControls() {
    for (const level of ['log', 'warn', 'error']) {
      onClick(`console-${level}`, () => console[level](element('console-text').value));
    }
    const answer = (text) => { element('panel-answer').textContent = text; };
    onClick('alert-button', () => { window.alert('An alert from the page.'); answer('alert: closed'); });
    onClick('confirm-button', () => answer(`confirm: ${window.confirm('Do you agree with the page?')}`));
    onClick('prompt-button', () => answer(`prompt: ${window.prompt('What shall the page call you?', 'Ada')}`));
    onClick('popup-button', () => {
      const opened = window.open('/popup.html?from=script', 'vantor-popup', 'width=480,height=320');
      element('popup-result').textContent = `window.open: ${opened === null ? 'null' : 'a window'}`;
    });
    onClick('connect-button', connectNow);
    onClick('disconnect-button', disconnect);
    onClick('clear-messages', () => {
      element('message-list').replaceChildren();
      for (const kind of ['sent', 'received']) {
        counts[kind] = 0;
        element(`${kind}-count`).textContent = '0';
      }
    });
    element('send-form').addEventListener('submit', (event) => {
      event.preventDefault();
      if (window.ws && window.ws.readyState === WebSocket.OPEN) window.ws.send(element('send-text').value);
    });
    window.addEventListener('resize', showZoom);
  }

  buildHotkeys();
  wireControls();
  showZoom();
  startConnection();
})();
