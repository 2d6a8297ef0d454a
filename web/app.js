"use strict";
const SHOWN = 64 * 1024; // bytes of a file that are shown as text
const PREVIEW = 4 * 1024;
const LARGEST = 256 * 1024 * 1024; // the text and its UTF-8 must fit into the memory of a page
const REPLACEMENT = "\uFFFD";

const at = id => document.getElementById(id);
let library;
let bytes = null; // of the file, in the memory of the library: {place, size}
let file = null;
let converted = null;

function make(tag, properties = {}, ...children) {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children);
  return element;
}

function withText(text, use) {
  const size = library.lengthBytesUTF8(text) + 1;
  const place = library._malloc(size);
  library.stringToUTF8(text, place, size);
  try {
    return use(place);
  } finally {
    library._free(place);
  }
}

const answer = place => JSON.parse(library.UTF8ToString(place));

// {faults, told, utf8} of the whole file, or of its start; null for a page that cannot be read.
function convert(page, size = bytes.size) {
  const last = size >= bytes.size ? 1 : 0;
  const result = withText(page, name => answer(library._page_convert(name, bytes.place, Math.min(size, bytes.size), last)));
  if (result === null) return null;
  const place = library._page_text();
  return {...result, utf8: library.HEAPU8.slice(place, place + library._page_text_size())};
}

const decoded = (utf8, length) => new TextDecoder("utf-8", {ignoreBOM: true}).decode(utf8.subarray(0, length), {stream: true});

// The text, with what did not convert marked.
function shown(text) {
  return text.split(REPLACEMENT).flatMap((part, number) => number ? [make("mark", {textContent: REPLACEMENT}), part] : [part]);
}

const hexAt = (place, count) => [...library.HEAPU8.subarray(bytes.place + place, bytes.place + place + count)]
  .map(byte => byte.toString(16).toUpperCase().padStart(2, "0")).join(" ");

function choose(page) {
  for (const radio of document.querySelectorAll("#guesses input")) radio.checked = radio.value === page;
  at("page").value = page === "ascii" ? "utf-8" : page;
  converted = convert(page);
  const good = converted !== null;
  at("download").disabled = !good;
  at("faults").hidden = !good || converted.faults === 0;
  at("result").className = good && converted.faults === 0 ? "" : "fault";
  if (!good) {
    at("result").textContent = "There is no table of " + page + " here; choose another.";
    at("text").replaceChildren();
    return;
  }
  at("result").textContent = converted.faults === 0 ? "Every character was converted." :
    converted.faults + (converted.faults === 1 ? " place" : " places") + " could not be converted; " + REPLACEMENT + " stands for each.";
  at("places").replaceChildren(...converted.told.map(([place, line, count]) =>
    make("li", {textContent: "line " + line + ", byte " + place + ": " + hexAt(place, count)})),
    ...(converted.faults > converted.told.length ? [make("li", {textContent: "and " + (converted.faults - converted.told.length) + " more"})] : []));
  at("text").replaceChildren(...shown(decoded(converted.utf8, SHOWN)),
    ...(converted.utf8.length > SHOWN ? [make("small", {textContent: "… the download has all " + converted.utf8.length + " bytes."})] : []));
}

function guessBox(guess, number) {
  const preview = convert(guess.page, PREVIEW);
  const radio = make("input", {type: "radio", name: "guess", value: guess.page, id: "guess" + number});
  radio.addEventListener("change", () => guarded(() => choose(guess.page)));
  const told = [guess.about, guess.language, (guess.share / 10).toFixed(1) + " %"].filter(Boolean).join(", ");
  const box = make("div", {className: "guess"}, make("label", {}, radio, " ", make("b", {textContent: guess.page}), make("small", {textContent: told})));
  if (guess.broken) box.append(make("small", {textContent: guess.broken + " bytes are not UTF-8"}));
  if (guess.same.length) box.append(make("small", {textContent: "the same text in " + guess.same.join(", ")}));
  box.append(make("pre", {dir: "auto", tabIndex: 0}, ...(preview ? shown(decoded(preview.utf8)) : ["There is no table of this page here."])));
  return box;
}

async function open(chosen) {
  at("likely").hidden = at("chosen").hidden = true;
  converted = null;
  if (chosen.size > LARGEST) {
    at("status").textContent = chosen.name + " has more than 256 MiB, which is too much for a page; the tool kx converts it.";
    return;
  }
  at("status").textContent = "Reading " + chosen.name + " …";
  const content = new Uint8Array(await chosen.arrayBuffer());
  file = chosen;
  if (bytes) library._free(bytes.place);
  bytes = {place: library._malloc(content.length + 1), size: content.length};
  if (!bytes.place) {
    bytes = null;
    at("status").textContent = "There is not enough memory for " + chosen.name + ".";
    return;
  }
  library.HEAPU8.set(content, bytes.place);
  const guesses = answer(library._page_guess(bytes.place, bytes.size));
  at("status").textContent = chosen.name + ": " + content.length + " bytes";
  if (guesses.length === 0 || guesses[0].page === "binary") {
    at("status").textContent += guesses.length ? "; this is no text. Choose a page to read it all the same." : "; not enough memory to guess.";
  } else {
    at("guesses").replaceChildren(...guesses.map(guessBox));
    at("likely").hidden = false;
  }
  at("chosen").hidden = false;
  choose(guesses.length && guesses[0].page !== "binary" ? guesses[0].page : "utf-8");
}

function download() {
  const link = make("a", {href: URL.createObjectURL(new Blob([converted.utf8], {type: "text/plain;charset=utf-8"})),
    download: file.name.replace(/(\.[^.]*)?$/, ".utf8$1")});
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

// The library's memory may not suffice; a page that has run out of it has to be loaded again.
async function guarded(work) {
  try {
    await work();
  } catch (fault) {
    at("chosen").hidden = at("likely").hidden = true;
    at("status").textContent = "This went wrong: " + fault + ". Please load the page again.";
  }
}

function listen() {
  const take = files => { if (files.length) guarded(() => open(files[0])); };
  at("file").addEventListener("change", event => take(event.target.files));
  at("page").addEventListener("change", event => guarded(() => choose(event.target.value)));
  at("download").addEventListener("click", download);
  const over = on => event => {
    event.preventDefault();
    document.body.classList.toggle("over", on);
  };
  document.addEventListener("dragover", over(true));
  document.addEventListener("dragleave", over(false));
  document.addEventListener("drop", event => {
    over(false)(event);
    take(event.dataTransfer.files);
  });
}

async function start() {
  const wasmBinary = Uint8Array.from(atob(at("wasm").textContent), letter => letter.charCodeAt(0));
  library = await kxstrPage({wasmBinary});
  at("page").append(...answer(library._page_list()).map(([page, about]) => make("option", {value: page, textContent: page + ": " + about})));
  listen();
  at("file").disabled = false;
  at("status").textContent = "Ready.";
}

start().catch(fault => { at("status").textContent = "This browser cannot run the converter: " + fault; });
