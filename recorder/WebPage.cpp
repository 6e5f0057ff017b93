#include "WebPage.h"

namespace recorder {

// Whatever came from the wire is put on the page as text nodes and attribute values, never
// as markup.
const char* webPage() {
    return R"PAGE(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Recorded calls</title>
<style nonce="{{nonce}}">
body { font-family: sans-serif; margin: 1em 2em; color: #222; }
table { border-collapse: collapse; margin: 0.5em 0; }
th, td { border-bottom: 1px solid #ddd; padding: 0.25em 0.6em; text-align: left; font-size: 0.9em; }
th { background: #f3f3f3; }
#calls td:first-child { white-space: nowrap; }
form { display: flex; flex-wrap: wrap; gap: 0.5em; align-items: end; }
label { display: flex; flex-direction: column; font-size: 0.8em; }
.low { color: #b00; font-weight: bold; }
#ladder text { font-size: 11px; font-family: monospace; }
#ladder .node { font-weight: bold; }
.error { color: #b00; }
</style>
</head>
<body>
<h1><a href="/" id="home">Recorded calls</a></h1>
<p id="status"></p>
<section id="list" hidden>
<form id="search" method="get" action="/">
<label>Number or alias <input name="q"></label>
<label>Call-ID <input name="call_id"></label>
<label>From (UTC) <input name="from" type="datetime-local"></label>
<label>To (UTC) <input name="to" type="datetime-local"></label>
<label>Signalling <select name="signalling"><option value="">any</option><option>sip</option><option>h323</option></select></label>
<label>MOS below <input name="mos_below" type="number" min="0" max="5" step="0.1"></label>
<input type="hidden" name="token">
<button type="submit">Search</button>
</form>
<table id="calls"><thead><tr><th>Start</th><th>Caller</th><th>Callee</th><th>Call-ID</th><th>Signalling</th>
<th>Duration</th><th>End</th><th>Lowest MOS</th></tr></thead><tbody></tbody></table>
<p><a id="previous" hidden>Newer</a> <span id="pages"></span> <a id="next" hidden>Older</a></p>
</section>
<section id="call" hidden>
<table id="summary"><tbody></tbody></table>
<h2>Signalling</h2>
<svg id="ladder" xmlns="http://www.w3.org/2000/svg"></svg>
<h2>Audio</h2>
<div id="audio"></div>
<p><a id="pcap">Download call.pcap</a></p>
<h2>Streams</h2>
<table id="streams"><thead><tr><th>From</th><th>To</th><th>Speaker</th><th>Codec</th><th>Packets</th><th>Bytes</th>
<th>Lost</th><th>Out of order</th><th>Jitter ms</th><th>MOS</th></tr></thead><tbody></tbody></table>
</section>
<script nonce="{{nonce}}">
"use strict";
const params = new URLSearchParams(location.search);
const token = params.get("token") || "";
const svgNs = "http://www.w3.org/2000/svg";

// A link or source on this server, with the token when the page was opened with one.
function local(path, query) {
  const q = new URLSearchParams(query || {});
  if (token) q.set("token", token);
  const text = q.toString();
  return path + (text ? "?" + text : "");
}

async function api(path) {
  const response = await fetch(path, { headers: token ? { Authorization: "Bearer " + token } : {} });
  if (!response.ok) throw new Error(path + ": " + response.status);
  return response.json();
}

// A party as a SIP header would show it: the display name, then the address.
function party(name, address) {
  return name ? name + " <" + address + ">" : address;
}

function cell(row, text) {
  const td = document.createElement("td");
  td.textContent = text === null || text === undefined ? "" : String(text);
  row.appendChild(td);
  return td;
}

function showError(error) {
  const status = document.getElementById("status");
  status.className = "error";
  status.textContent = String(error.message || error);
}

async function showList() {
  document.getElementById("list").hidden = false;
  const form = document.getElementById("search");
  for (const element of form.elements)
    if (element.name && params.has(element.name)) element.value = params.get(element.name);
  const query = {};
  for (const name of ["q", "call_id", "signalling", "mos_below", "page"])
    if (params.get(name)) query[name] = params.get(name);
  for (const name of ["from", "to"])
    if (params.get(name)) query[name] = params.get(name);
  const result = await api("/api/calls?" + new URLSearchParams(query).toString());
  const body = document.querySelector("#calls tbody");
  for (const call of result.calls) {
    const row = document.createElement("tr");
    row.className = "call";
    const link = document.createElement("a");
    link.href = local("/calls/" + call.id);
    link.textContent = call.start;
    cell(row, "").appendChild(link);
    cell(row, party(call.caller_name, call.caller));
    cell(row, party(call.callee_name, call.callee));
    cell(row, call.call_id);
    cell(row, call.signalling);
    cell(row, Number(call.duration).toFixed(1) + " s");
    cell(row, call.end_reason);
    const mos = cell(row, call.lowest_mos === null ? "" : Number(call.lowest_mos).toFixed(2));
    if (call.lowest_mos !== null && call.lowest_mos < 3.6) mos.className = "low";
    body.appendChild(row);
  }
  const pages = Math.max(1, Math.ceil(result.total / result.per_page));
  document.getElementById("pages").textContent =
    result.total + " calls, page " + result.page + " of " + pages;
  const pageLink = (id, page) => {
    const link = document.getElementById(id);
    const next = new URLSearchParams(params);
    next.set("page", page);
    link.href = "/?" + next.toString();
    link.hidden = false;
  };
  if (result.page > 1) pageLink("previous", result.page - 1);
  if (result.page < pages) pageLink("next", result.page + 1);
}

function addRow(table, label, value) {
  const row = document.createElement("tr");
  const th = document.createElement("th");
  th.textContent = label;
  row.appendChild(th);
  cell(row, value);
  table.appendChild(row);
}

function svg(name, attributes, text) {
  const element = document.createElementNS(svgNs, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, String(value));
  if (text !== undefined) element.textContent = text;
  return element;
}

// One column per address, one arrow per message, top to bottom in arrival order.
function drawLadder(messages) {
  const ladder = document.getElementById("ladder");
  const nodes = [];
  for (const m of messages)
    for (const address of [m.source, m.destination])
      if (!nodes.includes(address)) nodes.push(address);
  const gap = 320, top = 40, step = 34, left = 110;
  const height = top + step * (messages.length + 1);
  ladder.setAttribute("width", left + gap * Math.max(1, nodes.length - 1) + 140);
  ladder.setAttribute("height", height);
  nodes.forEach((address, i) => {
    const x = left + gap * i;
    ladder.appendChild(svg("text", { x: x, y: 16, "text-anchor": "middle", class: "node" }, address));
    ladder.appendChild(svg("line", { x1: x, y1: 24, x2: x, y2: height, stroke: "#999" }));
  });
  messages.forEach((m, i) => {
    const y = top + step * (i + 1);
    const from = left + gap * nodes.indexOf(m.source), to = left + gap * nodes.indexOf(m.destination);
    const group = svg("g", { class: "message" });
    group.appendChild(svg("title", {}, m.line));
    group.appendChild(svg("line", { x1: from, y1: y, x2: to, y2: y, stroke: "#246", "stroke-width": 1.5 }));
    const head = to >= from ? -8 : 8;
    group.appendChild(svg("polyline", { points: [to + head, y - 4, to, y, to + head, y + 4].join(" "),
                                        fill: "none", stroke: "#246" }));
    const label = m.line.split("\n")[0];
    group.appendChild(svg("text", { x: (from + to) / 2, y: y - 5, "text-anchor": "middle" },
                          label.length > 48 ? label.slice(0, 47) + "…" : label));
    group.appendChild(svg("text", { x: 4, y: y + 4 }, m.time.slice(11, 23)));
    ladder.appendChild(group);
  });
}

async function showCall(id) {
  document.getElementById("call").hidden = false;
  const call = await api("/api/calls/" + id);
  document.title = "Call " + call.call_id;
  const summary = document.querySelector("#summary tbody");
  addRow(summary, "Caller", party(call.caller_name, call.caller));
  addRow(summary, "Callee", party(call.callee_name, call.callee));
  addRow(summary, "Call-ID", call.call_id);
  addRow(summary, "Signalling", call.signalling);
  addRow(summary, "Start", call.start);
  addRow(summary, "End", call.end);
  addRow(summary, "Duration", Number(call.duration).toFixed(3) + " s");
  addRow(summary, "End reason", call.end_reason);
  drawLadder(call.messages);
  if (call.wav) {
    const audio = document.createElement("audio");
    audio.controls = true;
    audio.preload = "none";
    audio.src = local("/files/" + id + "/call.wav");
    document.getElementById("audio").appendChild(audio);
  } else {
    document.getElementById("audio").textContent = "No decoded audio.";
  }
  document.getElementById("pcap").href = local("/files/" + id + "/call.pcap");
  const body = document.querySelector("#streams tbody");
  for (const s of call.streams) {
    const row = document.createElement("tr");
    for (const value of [s.source, s.destination, s.speaker, s.codec, s.packets, s.bytes, s.lost,
                         s.out_of_order, s.jitter_ms, s.mos === null ? null : Number(s.mos).toFixed(2)])
      cell(row, value);
    body.appendChild(row);
  }
}

document.getElementById("home").href = local("/");
const callPath = location.pathname.match(/^\/calls\/(\d+)$/);
(callPath ? showCall(callPath[1]) : showList()).catch(showError);
</script>
</body>
</html>
)PAGE";
}

}  // namespace recorder
