
"use strict";
(() => {
  const byId = (id) => document.getElementById(id);
  const filters = byId("filters");
  const search = byId("search");
  const main = byId("items");
  const selects = {
    folder: byId("filter-folder"),
    profile: byId("filter-profile"),
    share: byId("filter-share"),
    mark: byId("filter-mark"),
  };
  const number = new Intl.NumberFormat("en").format;
  const items = (count) => `${number(count)} ${count === 1 ? "item" : "items"}`;

  // What is shown comes as data.  Every item gets a place with its title at once, and the rest of its
  // card when it comes near the window: a page of ten thousand cards would take seconds to open.
  const data = JSON.parse(byId("data").textContent);
  byId("data").remove();
  const kinds = ["folder", "picture", "sound", "film", "item"];
  const shareLabels = { hidden: "not shared", shared: "shared" };

  function itemOf(row, folder) {
    const [id, kind, title, file, sortNumber, dimensions, bytes, size, date, profile, mime, share, duration, marks, thumbnail, details] = row;
    return {
      id,
      kind: kinds[kind],
      title,
      path: Array.isArray(file) ? file[0] : `${folder.path}/${file}`,
      sortNumber,
      dimensions,
      bytes,
      size,
      date,
      profile: data.names[profile],
      mime: data.names[mime],
      share,
      duration,
      marks: marks === "" ? [] : marks.split(" "),
      thumbnail,
      details,
      folder,
      built: false,
      text: null,
    };
  }

  // "100-0001" for 1000001, as cameras count their pictures.
  const frameNumber = (item) => item.sortNumber.replace(/^(\d{3})(\d{4})$/, "$1-$2");
  const fileType = (item) => (/\.([^./]{0,5})$/.exec(item.path) || ["", ""])[1];
  function detailsOf(item) {
    const pairs = [["Path", item.path]];
    if (item.bytes >= 0) pairs.push(["Size", `${number(item.bytes)} ${item.bytes === 1 ? "byte" : "bytes"}`]);
    if (item.sortNumber !== "") pairs.push(["Sort number", item.sortNumber]);
    for (let i = 0; i < item.details.length; i += 2) pairs.push([data.names[item.details[i]], item.details[i + 1]]);
    pairs.push(["Id", String(item.id)]);
    return pairs;
  }

  const everything = [];
  const outline = make("li", "", make("h3", "", make("bdi", "")));
  function placeFor(item) {
    everything.push(item);
    const place = outline.cloneNode(true);
    place.id = `item-${everything.length}`;
    place.className = item.marks.includes("removed") ? `item kind-${item.kind} removed` : `item kind-${item.kind}`;
    place.dataset.id = item.id;
    place.dataset.folder = item.folder.value;
    place.firstChild.firstChild.textContent = item.title;
    item.element = place;
    item.number = everything.length;
  }
  // Lists the entries that are to be seen, in a list that is put into the page as a whole: that takes
  // browsers less time than hiding thousands of single entries.
  function fill(folder) {
    if (folder.list !== undefined) folder.list.remove();
    folder.list = make("ol", "items");
    for (const item of folder.matching) folder.list.append(item.element);
    folder.element.append(folder.list);
    folder.listed = folder.matching;
  }

  const folders = data.folders.map((content, i) => {
    const element = byId(`folder-${i + 1}`);
    const count = element.querySelector(".folder-count");
    const folder = { value: String(i + 1), path: content.path, element, count, countText: count.textContent };
    folder.items = content.items.map((row) => itemOf(row, folder));
    folder.matching = folder.items;
    if (folder.items.length > 0) {
      folder.items.forEach(placeFor);
      fill(folder);
    }
    return folder;
  });
  data.folders = null;
  let visible = everything;

  // Cards.
  function make(name, className, ...content) {
    const element = document.createElement(name);
    if (className !== "") element.className = className;
    element.append(...content);
    return element;
  }
  function drawing(item) {
    const svg = byId("placeholder").content.firstElementChild.cloneNode(true);
    svg.setAttribute("aria-label", `${item.kind}, no thumbnail`);
    svg.firstElementChild.setAttribute("href", `#draw-${item.kind}`);
    return svg;
  }
  function texts(...pairs) {
    return pairs.filter(([, text]) => text !== "").map(([name, text]) => make("span", name, text));
  }
  function badge(item, name, label) {
    const list = item.element.querySelector(".marks") || item.element.insertBefore(make("ul", "marks"), item.element.querySelector("details"));
    list.append(make("li", `mark mark-${name}`, label));
  }

  function build(item) {
    if (item.built) return;
    item.built = true;
    const frame = make("div", "frame", item.thumbnail === 0 ? drawing(item) : thumbnailOf(item));
    if (item.duration !== "") frame.append(make("span", "duration", make("span", "quiet", "Duration "), item.duration));
    item.element.prepend(frame, make("p", "number", ...[frameNumber(item), fileType(item)].map((text) => make("span", "", text))));
    const lines = [
      texts(["dimensions", item.dimensions], ["size", item.size], ["date", item.date]),
      texts(["profile", item.profile], ["mime", item.mime]),
    ];
    for (const line of lines) if (line.length > 0) item.element.append(make("p", "facts", ...line));
    if (item.share !== "none") item.element.append(make("p", `share share-${item.share}`, shareLabels[item.share]));
    const details = make("details", "", make("summary", "", "Details", make("span", "quiet", ` of ${item.title}`)));
    details.addEventListener("toggle", () => {
      if (!details.open || details.lastChild.localName === "dl") return;
      details.append(make("dl", "", ...detailsOf(item).flatMap(([label, value]) => [make("dt", "", label), make("dd", "", make("bdi", "", value))])));
    });
    item.element.append(details);
    for (const name of item.marks) badge(item, name, data.marks[name]);
    item.element.classList.add("built");
  }

  // In folders near the window every sixth item is watched; when one comes near, those before and
  // behind it are built as well.
  const GROUP = 6;
  const FIRST = 24;  // built at once, so that no page begins with empty cards
  const NEAR = { rootMargin: "1200px" };
  const watched = new Map();
  const nearItems = new IntersectionObserver((entries) => {
    for (const entry of entries) {
      if (!entry.isIntersecting || !watched.has(entry.target)) continue;
      const [folder, at] = watched.get(entry.target);
      unwatch(entry.target);
      folder.matching.slice(Math.max(at - GROUP, 0), at + GROUP + 1).forEach(build);
    }
  }, NEAR);
  function unwatch(element) {
    nearItems.unobserve(element);
    watched.delete(element);
  }
  const nearFolders = new IntersectionObserver((entries) => {
    for (const entry of entries) {
      const folder = folders[Number(entry.target.id.slice(7)) - 1];
      for (const element of [...watched.keys()].filter((key) => watched.get(key)[0] === folder)) unwatch(element);
      if (!entry.isIntersecting) continue;
      for (let at = 0; at < folder.matching.length + GROUP - 1; at += GROUP) {
        const last = Math.min(at, folder.matching.length - 1);
        watched.set(folder.matching[last].element, [folder, last]);
        nearItems.observe(folder.matching[last].element);
      }
    }
  }, NEAR);
  function watch() {
    nearItems.disconnect();
    nearFolders.disconnect();
    watched.clear();
    for (const folder of folders) if (folder.matching.length > 0) nearFolders.observe(folder.element);
  }

  // A folder far from the window is not laid out: what its height will be, so that scrolling is even.
  function estimateHeights() {
    const style = getComputedStyle(main);
    const [column, gap, card] = ["--column", "--gap", "--card-height"].map((name) => parseFloat(style.getPropertyValue(name)));
    const columns = Math.max(Math.floor((main.clientWidth + gap) / (column + gap)), 1);
    for (const { element, matching } of folders) {
      element.style.containIntrinsicBlockSize = `${60 + Math.ceil(matching.length / columns) * (card + gap)}px`;
    }
  }
  main.classList.add("estimated");
  new ResizeObserver(estimateHeights).observe(main);

  // Thumbnails beside the page are fetched; those in it are texts behind this script, which may still
  // be on their way.
  let complete = false;
  const waiting = new Map();

  function thumbnailOf(item) {
    const image = make("img", "thumbnail");
    image.alt = `Thumbnail of ${item.title}`;
    image.decoding = "async";
    image.addEventListener("load", () => checkDecoded(item, image));
    image.addEventListener("error", () => showBroken(image));
    load(item, image);
    return image;
  }
  function checkDecoded(item, image) {
    const [width, height] = item.thumbnail;
    if ((width === 0 && height === 0) || (width === image.naturalWidth && height === image.naturalHeight)) return;
    badge(item, "dimensions", `thumbnail is ${image.naturalWidth} × ${image.naturalHeight}, recorded ${width} × ${height}`);
  }
  function showBroken(image) {
    image.replaceWith(make("p", "broken", "These bytes are not a picture"));
  }
  function load(item, image) {
    if (item.thumbnail.length > 2) {
      image.src = `${data.beside}/${item.thumbnail[2]}`;
      return;
    }
    const holder = byId(`thumbnail-${item.number}`);
    if (holder === null) {
      if (complete) showBroken(image);
      else waiting.set(item, image);
      return;
    }
    waiting.delete(item);
    const base64 = holder.textContent;
    holder.remove();
    image.src = `data:image/jpeg;base64,${base64}`;
  }
  function loadWaiting() {
    for (const [item, image] of [...waiting]) load(item, image);
  }
  const arriving = new MutationObserver(loadWaiting);
  arriving.observe(byId("thumbnails"), { childList: true });
  document.addEventListener("DOMContentLoaded", () => {
    arriving.disconnect();
    complete = true;
    loadWaiting();
  });
  window.addEventListener("beforeprint", () => visible.forEach(build));

  // Search and filters.
  function textOf(item) {
    if (item.text === null) {
      const parts = [item.title, frameNumber(item), fileType(item), item.dimensions, item.size, item.date, item.profile, item.mime, item.duration];
      for (const [, value] of detailsOf(item)) parts.push(value);
      item.text = parts.join(" ").toLowerCase();
    }
    return item.text;
  }

  function chosen() {
    return {
      words: search.value.toLowerCase().split(/\s+/).filter((word) => word !== ""),
      kind: filters.elements.kind.value,
      folder: selects.folder.value,
      profile: selects.profile.value,
      share: selects.share.value,
      mark: selects.mark.value,
    };
  }
  function matches(item, want) {
    return (want.kind === "" || item.kind === want.kind)
      && (want.folder === "" || item.folder.value === want.folder)
      && (want.profile === "" || `=${item.profile}` === want.profile)
      && (want.share === "" || item.share === want.share)
      && (want.mark === "" || item.marks.includes(want.mark))
      && want.words.every((word) => textOf(item).includes(word));
  }

  function show(folder, matching, all) {
    folder.matching = matching;
    folder.element.hidden = !all && matching.length === 0;
    folder.count.textContent = matching.length === folder.items.length ? folder.countText : `${number(matching.length)} of ${items(folder.items.length)}`;
    if (folder.element.hidden) return;  // and its items with it, as they are
    const same = (items) => items.length === matching.length && items.every((item, i) => item === matching[i]);
    if (folder.items.length > 0 && !same(folder.listed)) fill(folder);
  }
  function apply() {
    const want = chosen();
    const all = want.words.length === 0 && [want.kind, want.folder, want.profile, want.share, want.mark].every((value) => value === "");
    visible = [];
    for (const folder of folders) {
      const matching = all ? folder.items : folder.items.filter((item) => matches(item, want));
      show(folder, matching, all);
      for (const item of matching) visible.push(item);
    }
    const [shown, total] = [visible.length, everything.length];
    byId("shown").textContent = shown === total ? items(total) : `${number(shown)} of ${items(total)}`;
    byId("nothing").hidden = shown > 0 || total === 0;
    byId("reset").disabled = all;
    visible.slice(0, FIRST).forEach(build);
    estimateHeights();
    watch();
  }

  let timer = 0;
  function applySoon() {
    clearTimeout(timer);
    timer = setTimeout(apply, 50);
  }
  function reset() {
    HTMLFormElement.prototype.reset.call(filters);  // the button is called reset, too
    apply();
    search.focus();
  }
  search.addEventListener("input", applySoon);
  filters.addEventListener("change", apply);
  filters.addEventListener("submit", (event) => {
    event.preventDefault();
    apply();
  });
  byId("reset").addEventListener("click", reset);

  // Keys: / goes to the search, arrows go from item to item.
  function neighbour(place, key) {
    const at = visible.findIndex((item) => item.element === place);
    const columns = getComputedStyle(place.parentNode).gridTemplateColumns.split(" ").length;
    const step = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -columns, ArrowDown: columns }[key];
    return visible[Math.min(Math.max(at + step, 0), visible.length - 1)];
  }
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const target = event.target;
    if (event.key === "/" && !/^(?:input|select|textarea)$/.test(target.localName)) {
      event.preventDefault();
      search.focus();
      search.select();
    } else if (event.key === "Escape" && target === search) {
      search.value = "";
      apply();
    } else if (event.key.startsWith("Arrow") && target.localName === "summary") {
      event.preventDefault();
      const item = neighbour(target.closest(".item"), event.key);
      build(item);
      item.element.querySelector("summary").focus();
    }
  });

  // Colours: as the system has them, or light, or dark.
  const themes = [["", "Auto", "as the system"], ["light", "Light", "light"], ["dark", "Dark", "dark"]];
  let theme = 0;
  byId("theme").addEventListener("click", () => {
    theme = (theme + 1) % themes.length;
    const [value, label, words] = themes[theme];
    if (value === "") delete document.documentElement.dataset.theme;
    else document.documentElement.dataset.theme = value;
    byId("theme").textContent = label;
    byId("theme").setAttribute("aria-label", `Colours: ${words}`);
  });

  for (const select of Object.values(selects)) select.closest(".field").hidden = select.options.length < 3;
  selects.mark.closest(".field").hidden = selects.mark.options.length < 2;
  filters.hidden = false;
  apply();  // a browser may have kept what was chosen before
})();
