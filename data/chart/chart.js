"use strict";
// The data: {title, codes ("KX" or "native"), language, ideograph, pages: [[name, what it is]...], charts}. A chart:
// {title, first, cells}; its cells are codes from `first` on, each an array of these. -1: none.
const CODE = 0, KX = 1, UNICODE = 2, NAME = 3, PARTNER = 4, BASE = 5, MARK = 6, VALUES = 7, BYTES = 8;

const data = JSON.parse(document.getElementById("data").textContent);
const at = id => document.getElementById(id);
const hex = (number, digits = 4) => number.toString(16).toUpperCase().padStart(digits, "0");
const all = data.charts.flatMap(chart => chart.cells);
const byKx = new Map(all.map((cell, place) => [cell[KX], place]));
const tds = [];
const NO_VALUE = 255;
const MOST_RESULTS = 100;
const isNative = data.codes === "native";

function make(tag, properties = {}, ...children) {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children);
  return element;
}

const nameOf = cell => cell[NAME] === 0 ? data.ideograph + hex(cell[UNICODE]) : cell[NAME];
const codeOf = cell => hex(cell[CODE], isNative && cell[CODE] < 0x100 ? 2 : 4);
const isPrivate = unicode => unicode >= 0xE000 && unicode <= 0xF8FF;

// What can be drawn of a character; "" for spaces, controls and what no font has.
function glyphOf(cell) {
  if (cell[UNICODE] < 0 || isPrivate(cell[UNICODE])) return "";
  const character = String.fromCharCode(cell[UNICODE]);
  if (/[\p{Z}\p{C}]/u.test(character)) return "";
  return /\p{M}/u.test(character) ? "\u25CC" + character : character; // a mark needs something to stand on
}

function drawn(cell) {
  const glyph = glyphOf(cell);
  return glyph ? make("span", {className: "glyph", textContent: glyph, dir: "auto"})
               : make("span", {className: "word", textContent: nameOf(cell) || "?"});
}

// "0128 É" of a KX character, wherever it is.
function told(kx) {
  const cell = all[byKx.get(kx)];
  const glyph = cell ? glyphOf(cell) : kx < 0x7F ? String.fromCharCode(kx) : "";
  return (hex(kx) + " " + glyph).trim();
}

function bytesOf(cell) {
  if (!cell[BYTES]) return [];
  return cell[BYTES].split(";").map(part => {
    const [code, pages] = part.split(":");
    return [code, pages.split(",").map(page => data.pages[page])];
  });
}

// [what, text] for all that there is to say.
function facts(cell) {
  const list = [];
  if (isNative) list.push(["Native code", codeOf(cell)]);
  if (cell[KX] >= 0) list.push(["KX character", hex(cell[KX]) + " (set " + (cell[KX] >> 8) + ", index " + hex(cell[KX] & 255, 2) + ")"]);
  list.push(["Unicode", cell[UNICODE] < 0 ? "none" : "U+" + hex(cell[UNICODE]) + (isPrivate(cell[UNICODE]) ? " (private use: Unicode has no such character)" : "")]);
  if (cell[PARTNER] >= 0) list.push(["Other case", told(cell[PARTNER])]);
  if (cell[BASE] >= 0) list.push(["Base and diacritic", told(cell[BASE]) + " + " + told(cell[MARK])]);
  const [first, second, third, column] = cell[VALUES];
  if (cell[KX] >= 0) {
    list.push(["Collation, " + data.language, (first === "" ? "first level ignored" : first === "FF" ? "no first value" : "first " + first) +
      ", second " + hex(second, 2) + ", third " + third + "; coltbl " + (column === NO_VALUE ? "none" : hex(column, 2))]);
  }
  const bytes = bytesOf(cell).map(([code, pages]) => code + " in " + pages.map(page => page[0]).join(", "));
  if (bytes.length) list.push(["Bytes in code pages", bytes.join("; ")]);
  return list;
}

// Below the header, which stays in its place.
function bring(element, block) {
  document.documentElement.style.scrollPaddingTop = document.querySelector("header").offsetHeight + "px";
  element.scrollIntoView({block, inline: "nearest"});
}

let chosen = -1;
function choose(place, move = true) {
  if (chosen >= 0) {
    tds[chosen].setAttribute("aria-selected", "false");
    tds[chosen].tabIndex = tds[chosen].dataset.first ? 0 : -1;
  }
  chosen = place;
  const td = tds[place], cell = all[place];
  td.setAttribute("aria-selected", "true");
  td.tabIndex = 0;
  if (move) {
    bring(td, "center");
    td.focus({preventScroll: true});
  }
  const list = make("dl");
  for (const [what, text] of facts(cell)) list.append(make("dt", {textContent: what}), make("dd", {textContent: text}));
  const close = make("button", {type: "button", textContent: "Close"});
  close.addEventListener("click", () => { at("about").hidden = true; });
  at("about").replaceChildren(make("span", {className: "big", textContent: glyphOf(cell)}), close,
    make("h2", {textContent: nameOf(cell) || "without a name"}), list);
  at("about").hidden = false;
}

// The list of a chart, with everything, is made when somebody opens it.
function names(cells) {
  const list = make("ol", {className: "names"});
  for (const cell of cells) {
    const text = make("span", {textContent: nameOf(cell)});
    for (const [what, value] of facts(cell)) text.append(make("small", {textContent: what + ": " + value}));
    list.append(make("li", {}, make("code", {textContent: codeOf(cell)}), make("b", {textContent: glyphOf(cell), dir: "auto"}), text));
  }
  return list;
}

// As printed charts have it: a column for each high digit, a row for each low one.
function table(chart, place) {
  const cells = new Map(chart.cells.map((cell, number) => [cell[CODE] - chart.first, [cell, place + number]]));
  const columns = [];
  for (let column = 0; column < 16; ++column)
    if ([...Array(16).keys()].some(row => cells.has(column * 16 + row))) columns.push(column);
  const digits = chart.first > 0 || !isNative ? 3 : 1;
  const head = make("tr", {}, make("td", {className: "corner"}));
  for (const column of columns) {
    const th = make("th", {textContent: hex((chart.first >> 4) + column, digits)});
    th.scope = "col";
    head.append(th);
  }
  const body = make("tbody");
  for (let row = 0; row < 16; ++row) {
    const line = make("tr", {}, make("th", {textContent: hex(row, 1), scope: "row"}));
    for (const column of columns) {
      const found = cells.get(column * 16 + row);
      const td = make("td", {className: found ? "" : "none"});
      if (found) {
        const [cell, number] = found;
        td.dataset.at = number;
        td.tabIndex = number === place ? 0 : -1;
        if (number === place) td.dataset.first = "1";
        td.title = nameOf(cell);
        td.setAttribute("aria-selected", "false");
        td.append(drawn(cell), make("span", {className: "code", textContent: codeOf(cell)}));
        tds[number] = td;
      }
      line.append(td);
    }
    body.append(line);
  }
  const grid = make("table", {}, make("thead", {}, head), body);
  grid.setAttribute("role", "grid");
  grid.setAttribute("aria-label", chart.title);
  return grid;
}

function draw() {
  const single = data.charts.length === 1;
  document.title = at("title").textContent = single ? data.charts[0].title : data.title;
  at("jump").hidden = document.querySelector("label[for=jump]").hidden = single;
  let place = 0;
  for (const [number, chart] of data.charts.entries()) {
    const section = make("section", {id: "chart" + number}, ...(single ? [] : [make("h2", {textContent: chart.title})]), table(chart, place));
    const more = make("details", {}, make("summary", {textContent: "List of the " + chart.cells.length + " characters"}));
    more.addEventListener("toggle", () => { if (more.open && more.children.length === 1) more.append(names(chart.cells)); });
    section.append(more);
    at("charts").append(section);
    at("jump").append(make("option", {value: "chart" + number, textContent: chart.title}));
    place += chart.cells.length;
  }
}

// The places of what a query means: a character itself, a code (KX, Unicode, native), the words of a name.
function find(query) {
  const text = query.trim().normalize("NFC");
  if (text === "") return [];
  const found = new Set();
  const take = test => all.forEach((cell, place) => { if (test(cell)) found.add(place); });
  if ([...text].length === 1) take(cell => cell[UNICODE] === text.codePointAt(0));
  const [, prefix, digits] = /^(u\+|0x)?([0-9a-f]{2,4})$/i.exec(text) || [];
  if (digits) {
    const number = parseInt(digits, 16), code = digits.toUpperCase();
    if (!/^u/i.test(prefix || "")) take(cell => cell[CODE] === number || cell[KX] === number);
    take(cell => cell[UNICODE] === number);
    if (!prefix) take(cell => (";" + cell[BYTES]).includes(";" + code + ":"));
  }
  const words = text.toUpperCase().split(/\s+/);
  if (text.length > 1) take(cell => { const name = nameOf(cell).toUpperCase(); return words.every(word => name.includes(word)); });
  return [...found];
}

function show(query) {
  const found = find(query);
  at("count").textContent = query.trim() === "" ? "" : found.length === 0 ? "Nothing found." :
    found.length + (found.length === 1 ? " character" : " characters") + (found.length > MOST_RESULTS ? "; the first " + MOST_RESULTS + ":" : ":");
  at("results").replaceChildren(...found.slice(0, MOST_RESULTS).map(place => {
    const cell = all[place];
    const button = make("button", {type: "button", textContent: (glyphOf(cell) + " " + codeOf(cell) + " " + nameOf(cell)).trim()});
    button.addEventListener("click", () => choose(place));
    return make("li", {}, button);
  }));
  return found;
}

at("query").addEventListener("input", event => show(event.target.value));
at("finder").addEventListener("submit", event => {
  event.preventDefault();
  const found = show(at("query").value);
  if (found.length) choose(found[0]);
});
at("jump").addEventListener("change", event => bring(at(event.target.value), "start"));
at("charts").addEventListener("click", event => {
  const td = event.target.closest("td[data-at]");
  if (td) choose(Number(td.dataset.at), false);
});
at("charts").addEventListener("keydown", event => {
  const td = event.target.closest("td[data-at]");
  if (!td) return;
  if (event.key === "Enter" || event.key === " ") {
    event.preventDefault();
    choose(Number(td.dataset.at), false);
    return;
  }
  const [down, right] = {ArrowDown: [1, 0], ArrowUp: [-1, 0], ArrowRight: [0, 1], ArrowLeft: [0, -1]}[event.key] || [0, 0];
  if (!down && !right) return;
  event.preventDefault();
  let row = td.parentElement, column = td.cellIndex, next;
  do { // over the empty cells
    column += right;
    row = down > 0 ? row.nextElementSibling : down < 0 ? row.previousElementSibling : row;
    next = row && row.cells[column];
  } while (next && next.tagName === "TD" && !next.dataset.at);
  if (next && next.dataset.at) next.focus();
});
document.addEventListener("keydown", event => { if (event.key === "Escape") at("about").hidden = true; });
draw();
