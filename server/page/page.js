"use strict";
(() => {
  const byId = (id) => document.getElementById(id);
  const [form, main, viewer, stage] = ["filters", "items", "viewer", "viewer-stage"].map(byId);
  const number = new Intl.NumberFormat("en").format;
  const counted = (count) => `${number(count)} ${count === 1 ? "item" : "items"}`;
  const signs = { 1: "▣", 2: "♪", 3: "▶" };
  const kinds = { 1: "picture", 2: "sound", 3: "film" };
  const BLOCK = 240;  // items that are put into the page at once

  let items = [];      // of the catalogue, in the camera's order
  let shown = [];      // those that match, as they are to be seen
  let drawn = 0;       // how many of these are in the page
  let known = null;    // ids of the catalogue before, to mark what is new
  let update = null;
  let open = -1;       // place of the item in the viewer

  function make(name, className, ...content) {
    const element = document.createElement(name);
    if (className !== "") element.className = className;
    element.append(...content);
    return element;
  }

  function size(bytes) {
    if (bytes < 1000) return `${bytes} bytes`;
    const units = ["kB", "MB", "GB", "TB"];
    let unit = -1;
    for (; bytes >= 1000 && unit < 3; ++unit) bytes /= 1000;
    return `${bytes.toFixed(bytes < 10 ? 1 : 0)} ${units[unit]}`;
  }
  function clock(milliseconds) {
    const seconds = Math.floor(milliseconds / 1000);
    const two = (value) => String(value).padStart(2, "0");
    const start = seconds >= 3600 ? `${Math.floor(seconds / 3600)}:${two(Math.floor(seconds / 60) % 60)}` : String(Math.floor(seconds / 60));
    return `${start}:${two(seconds % 60)}`;
  }
  function factsOf(item) {
    const facts = [item.date, item.width > 0 ? `${item.width} × ${item.height}` : "", item.artist, item.album];
    return facts.filter((fact) => fact !== "");
  }

  function itemOf(row, folders, type) {
    const [id, kind, title, folder, date, bytes, width, height, duration, pieces, extension, artist, album, description] = row;
    const item = { id, kind, title, folder: folders[folder], date, bytes, width, height, duration, pieces, artist, album, description };
    item.original = `/o/${id}.${extension}`;
    item.jpeg = type[extension] === "image/jpeg";
    item.thumbnail = pieces & 1 ? `/t/${id}.jpg` : pieces & 4 ? `/a/${id}.jpg` : pieces & 2 ? `/s/${id}.jpg` : item.jpeg && bytes < 300000 ? item.original : "";
    item.text = [title, item.folder, date, artist, album, description].join("\n").toLowerCase();
    return item;
  }

  // Cards.
  function pictureOf(item) {
    const image = make("img", "");
    image.loading = "lazy";
    image.decoding = "async";
    image.alt = "";
    image.src = item.thumbnail;
    image.addEventListener("error", () => image.remove());
    return image;
  }
  function cardOf(item, place) {
    const frame = make("span", "frame", make("span", "sign", signs[item.kind]));
    if (item.thumbnail !== "") frame.append(pictureOf(item));
    if (item.duration > 0) frame.append(make("span", "duration", clock(item.duration)));
    const words = make("span", "words", make("b", "", item.title), make("small", "", factsOf(item).join(" · ")));
    const card = make("button", `item kind-${item.kind}`, frame, words);
    card.type = "button";
    card.dataset.id = item.id;
    card.setAttribute("aria-label", `${item.title}, ${kinds[item.kind]}`);
    if (known !== null && !known.has(item.id)) card.classList.add("new");
    card.addEventListener("click", () => view(place));
    return make("li", "", card);
  }
  function gridFor(item) {
    const title = byId("order").value === "newest" ? item.date || "Undated" : item.folder;
    const last = main.lastElementChild;
    if (last !== null && last.dataset.title === title) return last.lastElementChild;
    const section = make("section", "", make("h2", "", title), make("ul", "grid"));
    section.dataset.title = title;
    main.append(section);
    return section.lastElementChild;
  }
  function drawMore() {
    const end = Math.min(drawn + BLOCK, shown.length);
    for (; drawn < end; ++drawn) gridFor(shown[drawn]).append(cardOf(shown[drawn], drawn));
    if (drawn < shown.length) {
      main.append(sentinel);
      nearEnd.observe(sentinel);
    }
  }
  const sentinel = make("div", "more");
  const nearEnd = new IntersectionObserver((entries) => {
    if (!entries.some((entry) => entry.isIntersecting)) return;
    nearEnd.unobserve(sentinel);
    sentinel.remove();
    drawMore();
  }, { rootMargin: "1600px" });

  function apply() {
    const words = byId("search").value.toLowerCase().split(/\s+/).filter((word) => word !== "");
    const kind = Number(form.elements.kind.value);
    const folder = byId("folder").value;
    shown = items.filter((item) => (kind === 0 || item.kind === kind)
      && (folder === "" || item.folder === folder)
      && words.every((word) => item.text.includes(word)));
    if (byId("order").value === "newest") {
      shown.sort((a, b) => (a.date < b.date ? 1 : a.date > b.date ? -1 : 0));
    }
    main.replaceChildren();
    drawn = 0;
    drawMore();
    if (shown.length === 0) main.append(make("p", "nothing", items.length === 0 ? "Nothing is here yet." : "No item matches."));
    byId("shown").textContent = shown.length === items.length ? counted(items.length) : `${number(shown.length)} of ${counted(items.length)}`;
  }

  // The viewer.
  function mediumOf(item) {
    if (item.kind === 1) {
      const source = item.jpeg ? item.original : item.pieces & 2 ? `/s/${item.id}.jpg` : item.thumbnail;
      if (source === "") return make("p", "", "No browser shows this kind of picture; the original is one click away.");
      const image = make("img", "");
      image.alt = item.title;
      image.src = source;
      return image;
    }
    const player = make(item.kind === 2 ? "audio" : "video", "");
    player.controls = true;
    player.autoplay = true;
    player.src = item.original;
    player.addEventListener("error", () => stage.replaceChildren(make("p", "", "This browser cannot play it; the original is one click away.")));
    return player;
  }
  function view(place) {
    const item = shown[place];
    open = place;
    byId("viewer-title").textContent = item.title;
    byId("viewer-original").href = item.original;
    byId("viewer-facts").textContent = [...factsOf(item), size(item.bytes), item.description].filter((fact) => fact !== "").join(" · ");
    byId("viewer-back").disabled = place === 0;
    byId("viewer-next").disabled = place === shown.length - 1;
    stage.replaceChildren(mediumOf(item));
    if (!viewer.open) viewer.showModal();
  }
  function step(by) {
    const place = open + by;
    if (place >= 0 && place < shown.length) view(place);
  }
  viewer.addEventListener("close", () => {
    stage.replaceChildren();
    const card = open < 0 || shown[open] === undefined ? null : main.querySelector(`[data-id="${shown[open].id}"]`);
    open = -1;
    if (card !== null) card.focus();
  });
  viewer.addEventListener("click", (event) => {
    if (event.target === viewer) viewer.close();
  });
  byId("viewer-close").addEventListener("click", () => viewer.close());
  byId("viewer-back").addEventListener("click", () => step(-1));
  byId("viewer-next").addEventListener("click", () => step(1));
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (viewer.open) {
      if (/^(?:video|audio)$/.test(event.target.localName)) return;
      if (event.key === "ArrowLeft") step(-1);
      if (event.key === "ArrowRight") step(1);
    } else if (event.key === "/" && !/^(?:input|select)$/.test(event.target.localName)) {
      event.preventDefault();
      byId("search").focus();
    }
  });

  // The catalogue, now and whenever it changes.
  function summary(catalogue) {
    const count = (kind) => items.filter((item) => item.kind === kind).length;
    const parts = [[1, "picture", "pictures"], [3, "film", "films"], [2, "sound", "sounds"]]
      .map(([kind, one, many]) => [count(kind), one, many])
      .filter(([found]) => found > 0)
      .map(([found, one, many]) => `${number(found)} ${found === 1 ? one : many}`);
    byId("summary").textContent = parts.length === 0 ? catalogue.empty : parts.join(", ");
  }
  function fillFolders() {
    const select = byId("folder");
    const chosen = select.value;
    const names = [...new Set(items.map((item) => item.folder))];
    select.replaceChildren(new Option("All folders", ""), ...names.map((name) => new Option(name, name)));
    select.value = names.includes(chosen) ? chosen : "";
    select.closest("label").hidden = names.length < 2;
  }
  async function load() {
    const catalogue = await (await fetch("/items.json")).json();
    if (catalogue.update === update) return;
    known = update === null ? null : new Set(items.map((item) => item.id));
    update = catalogue.update;
    items = catalogue.items.map((row) => itemOf(row, catalogue.folders, catalogue.types));
    const viewed = open >= 0 ? shown[open].id : 0;
    fillFolders();
    summary(catalogue);
    apply();
    form.hidden = false;
    if (viewed !== 0) open = shown.findIndex((item) => item.id === viewed);
  }
  function live(on) {
    const words = on ? "Following changes" : "Not following changes";
    byId("live").classList.toggle("on", on);
    byId("live").setAttribute("aria-label", words);
    byId("live").title = words;
  }
  const events = new EventSource("/events");
  events.addEventListener("open", () => {
    live(true);
    load();  // what may have been missed
  });
  events.addEventListener("error", () => live(false));
  events.addEventListener("changed", load);

  let timer = 0;
  byId("search").addEventListener("input", () => {
    clearTimeout(timer);
    timer = setTimeout(apply, 80);
  });
  form.addEventListener("change", apply);
  form.addEventListener("submit", (event) => event.preventDefault());
  load();
})();
