
"use strict";
(() => {
  const byId = (id) => document.getElementById(id);
  const filters = byId("filters");
  const search = byId("search");
  const selects = {
    folder: byId("filter-folder"),
    profile: byId("filter-profile"),
    share: byId("filter-share"),
    mark: byId("filter-mark"),
  };
  const folders = [...document.querySelectorAll(".folder")].map((element) => ({
    element,
    count: element.querySelector(".folder-count"),
    countText: element.querySelector(".folder-count").textContent,
    items: [...element.querySelectorAll(".item")].map((item) => ({
      element: item,
      data: { ...item.dataset },
      marks: item.dataset.marks === "" ? [] : item.dataset.marks.split(" "),
      text: null,
    })),
  }));
  const total = folders.reduce((sum, folder) => sum + folder.items.length, 0);

  // Thumbnails: the page holds them as texts behind everything else, and an image gets its own
  // when it comes near the window.
  let complete = document.readyState !== "loading";
  const waiting = new Set();

  function mark(item, name, label) {
    let list = item.querySelector(".marks");
    if (list === null) {
      list = document.createElement("ul");
      list.className = "marks";
      item.querySelector("details").before(list);
    }
    const badge = document.createElement("li");
    badge.className = `mark mark-${name}`;
    badge.textContent = label;
    list.append(badge);
  }

  function checkDecoded(image) {
    const { width, height } = image.dataset;
    if (width === "0" && height === "0") return;
    if (Number(width) === image.naturalWidth && Number(height) === image.naturalHeight) return;
    mark(image.closest(".item"), "dimensions", `thumbnail is ${image.naturalWidth} × ${image.naturalHeight}, recorded ${width} × ${height}`);
  }

  function showBroken(image) {
    const text = document.createElement("p");
    text.className = "broken";
    text.textContent = "These bytes are not a picture";
    image.replaceWith(text);
  }

  function typeOf(base64) {
    return base64.startsWith("iVBORw") ? "image/png" : "image/jpeg";
  }

  function load(image) {
    if (image.dataset.source !== undefined) {
      image.src = image.dataset.source;
      return;
    }
    const holder = byId(`thumbnail-${image.dataset.thumbnail}`);
    if (holder === null) {
      if (complete) showBroken(image);
      else waiting.add(image);
      return;
    }
    const base64 = holder.textContent;
    holder.remove();
    image.src = `data:${typeOf(base64)};base64,${base64}`;
  }

  const images = [...document.querySelectorAll(".thumbnail")];
  for (const image of images) {
    image.addEventListener("load", () => checkDecoded(image));
    image.addEventListener("error", () => showBroken(image));
  }
  const hidden = images.filter((image) => !image.hasAttribute("src"));
  const observer = new IntersectionObserver((entries) => {
    for (const entry of entries) {
      if (!entry.isIntersecting) continue;
      observer.unobserve(entry.target);
      load(entry.target.querySelector(".thumbnail"));
    }
  }, { rootMargin: "600px" });
  for (const image of hidden) observer.observe(image.closest(".item"));
  document.addEventListener("DOMContentLoaded", () => {
    complete = true;
    for (const image of waiting) load(image);
    waiting.clear();
  });
  window.addEventListener("beforeprint", () => {
    for (const image of hidden) if (!image.hasAttribute("src") && image.isConnected) load(image);
  });

  // Details: noscript keeps them as text until they are looked at.
  function openDetails(details) {
    const kept = details.querySelector("noscript");
    if (kept === null) return;
    const parsed = new DOMParser().parseFromString(kept.textContent, "text/html");
    kept.replaceWith(document.importNode(parsed.querySelector("dl"), true));
  }
  document.addEventListener("toggle", (event) => {
    if (event.target.localName === "details" && event.target.open) openDetails(event.target);
  }, true);

  // Search and filters.
  const entities = { "&lt;": "<", "&gt;": ">", "&quot;": '"', "&#39;": "'", "&amp;": "&" };
  function plain(markup) {
    return markup.replace(/<dt>[^<]*<\/dt>|<[^>]*>/g, " ").replace(/&(?:lt|gt|quot|amp|#39);/g, (name) => entities[name]);
  }
  function textOf(item) {
    if (item.text === null) {
      const kept = item.element.querySelector("details noscript");
      const details = kept !== null ? plain(kept.textContent) : [...item.element.querySelectorAll("dd")].map((value) => value.textContent).join(" ");
      const caption = [...item.element.querySelectorAll(".number span, h3, .facts span, .duration")].map((part) => part.textContent).join(" ");
      item.text = `${caption} ${details}`.toLowerCase();
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
    const { data } = item;
    return (want.kind === "" || data.kind === want.kind)
      && (want.folder === "" || data.folder === want.folder)
      && (want.profile === "" || `=${data.profile}` === want.profile)
      && (want.share === "" || data.share === want.share)
      && (want.mark === "" || item.marks.includes(want.mark))
      && want.words.every((word) => textOf(item).includes(word));
  }
  const number = (value) => value.toLocaleString("en");
  const items = (count) => `${number(count)} ${count === 1 ? "item" : "items"}`;

  function apply() {
    const want = chosen();
    const all = want.words.length === 0 && [want.kind, want.folder, want.profile, want.share, want.mark].every((value) => value === "");
    let shown = 0;
    for (const folder of folders) {
      let inFolder = 0;
      for (const item of folder.items) {
        const match = all || matches(item, want);
        if (item.element.hidden === match) item.element.hidden = !match;
        if (match) inFolder += 1;
      }
      folder.element.hidden = !all && inFolder === 0;
      folder.count.textContent = inFolder === folder.items.length ? folder.countText : `${number(inFolder)} of ${items(folder.items.length)}`;
      shown += inFolder;
    }
    byId("shown").textContent = shown === total ? items(total) : `${number(shown)} of ${items(total)}`;
    byId("nothing").hidden = shown > 0 || total === 0;
    byId("reset").disabled = all;
  }

  let timer = 0;
  function applySoon() {
    clearTimeout(timer);
    timer = setTimeout(apply, 120);
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
  function neighbour(summary, key) {
    const visible = [...document.querySelectorAll(".item:not([hidden]) summary")].filter((other) => other.closest(".folder").hidden === false);
    const at = visible.indexOf(summary);
    const top = (element) => Math.round(element.closest(".item").getBoundingClientRect().top);
    let columns = 1;
    const row = top(summary);
    const list = [...summary.closest(".items").querySelectorAll(".item:not([hidden]) summary")];
    const inRow = list.filter((other) => top(other) === row).length;
    if (inRow > 1) columns = inRow;
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
      neighbour(target, event.key).focus();
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
