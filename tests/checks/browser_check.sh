#!/usr/bin/env bash
# Opens reports in a browser and checks what it makes of them: every formula and picture has its
# place, brackets are as tall as their matrices, nothing is wider than a telephone, both themes have
# colours of their own, and nothing is fetched.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-full.txt
build release worksheet matrix
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Run in the page once it stands; what it finds wrong becomes the page's title.
cat >probe.js <<'EOF'
(function () {
  const wrong = [];
  const expect = (good, what) => { if (!good) wrong.push(what); };
  const all = (selector) => Array.from(document.querySelectorAll(selector));
  const height = (e) => e.getBoundingClientRect().height;
  const colour = () => getComputedStyle(document.body).backgroundColor;
  const ink = () => getComputedStyle(document.querySelector("svg path[stroke*='--c1']")).stroke;

  expect(all("math").length === WANTED_MATH, all("math").length + " formulas");
  expect(all("figure svg").length === WANTED_PICTURES, all("figure svg").length + " pictures");
  expect(all(".failed").length === WANTED_ERRORS, all(".failed").length + " errors");
  all("math, figure svg, mark").forEach((e) => expect(height(e) > 5, "flat: " + e.outerHTML.slice(0, 80)));
  all("mtable").forEach((table) => {
    const bracket = table.previousElementSibling;
    expect(height(bracket) > 0.85 * height(table), "a bracket is too short");
    const ends = Array.from(table.children).map((row) => {
      const cell = row.lastElementChild;
      return cell.lastElementChild.getBoundingClientRect().right;
    });
    expect(Math.max(...ends) - Math.min(...ends) < 12, "a column is ragged");
  });
  expect(document.documentElement.scrollWidth <= window.innerWidth, "wider than the window");
  all(".failed").forEach((e) => expect(e.querySelector(".message"), "an error without its message"));
  all("header a").forEach((a) => expect(document.querySelector(a.getAttribute("href")), "a link to nowhere"));

  const button = document.getElementById("theme");
  expect(!button.hidden && /theme/.test(button.textContent), "no button for the theme");
  const before = [colour(), ink(), button.textContent];
  button.click();
  const after = [colour(), ink(), button.textContent];
  before.forEach((value, k) => expect(value !== after[k], "the theme does not change " + value));
  expect(performance.getEntriesByType("resource").length === 0, "something is fetched");
  document.title = "probe: " + (wrong.length ? wrong.join("; ") : "all well");
})();
EOF

# open_report REPORT SIZE MATH PICTURES ERRORS
open_report() {
  local report=$1 size=$2 probe found
  probe=$(sed -e "s/WANTED_MATH/$3/; s/WANTED_PICTURES/$4/; s/WANTED_ERRORS/$5/" probe.js)
  { sed '/<\/body>/,$d' "$report"; printf '<script>//<![CDATA[\n%s\n//]]></script>\n</body>\n</html>\n' "$probe"; } >probed.html
  # A new directory each time: no settings of another run.
  found=$(timeout 60 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --user-data-dir="$(mktemp -d -p "$work")" --window-size="$size" --dump-dom \
    "file://$work/probed.html" 2>/dev/null | grep -o '<title>probe: [^<]*' || true)
  [[ $found == '<title>probe: all well' ]] ||
    { echo "$report at $size: ${found:-the browser shows no page}" >&2; return 1; }
}

"$root/build/release/worksheet" --html modes.html "$root/examples/mode_shapes.ws" >modes.txt
cat >errors.ws <<'EOF'
a = [1, -2i; 3 - 4i, [1, 2]]
length([1, 2; 3, 4])
P, L, U = lu([4, 1; 2, 3])
1 +
plot([1, 2], [3, 4], "</text><script>", [1, 2], [2, 3])
EOF
"$root/build/release/worksheet" --html errors.html errors.ws >errors.txt || [[ $? == 1 ]]
for size in 1200,900 500,800; do
  open_report modes.html "$size" 20 5 0
  open_report errors.html "$size" 4 1 2
done
echo "The reports are well in the browser"
