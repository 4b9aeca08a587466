// The frame of a report: its style sheet, and the button that changes its theme.
#include "fmt/format.h"
#include "host/worksheet/report/markup.hpp"
#include "host/worksheet/report/report.hpp"

namespace worksheet {

namespace {

constexpr const char* kLightColours =
    "--paper:#fff;--ink:#1f2933;--dim:#5b6672;--rule:#e3e7ec;--code:#3b4754;--accent:#24568f;"
    "--bad:#a3262b;--bad-paper:#fdf1f1;--mark:#f8d9d9;--grid:#d9dee4;--c1:#3567a8;--c2:#c8632c;"
    "--c3:#3b8650;--c4:#a83f52;--c5:#7159a6;--c6:#8a6d1f;--c7:#2c8c99;--c8:#6b7280";
constexpr const char* kDarkColours =
    "--paper:#15191e;--ink:#dde3ea;--dim:#98a4b1;--rule:#2b323a;--code:#b9c4cf;--accent:#8ab8ec;"
    "--bad:#f19a9a;--bad-paper:#2a1c1f;--mark:#5c2a2f;--grid:#333b45;--c1:#79a9e6;--c2:#ec9a68;"
    "--c3:#79c48d;--c4:#e58696;--c5:#b39be6;--c6:#cfb35f;--c7:#66c3cf;--c8:#a3acb8";

// No "<" and no "&" in style sheet and script: in XML they would be markup.
constexpr const char* kStyle = R"(
*{box-sizing:border-box}
html{-webkit-text-size-adjust:100%;text-size-adjust:100%}
body{margin:0 auto;padding:2.5rem 1.5rem 4rem;max-width:56rem;background:var(--paper);color:var(--ink);
font:1rem/1.55 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans","Liberation Sans","DejaVu Sans",sans-serif}
header{position:relative;padding-bottom:1rem;margin-bottom:1.5rem;border-bottom:2px solid var(--ink)}
header p{margin:.15rem 0;color:var(--dim);font-size:.875rem}
h1{margin:0 6rem .35rem 0;font-size:1.7rem;line-height:1.25;overflow-wrap:anywhere}
h2{margin:2.2rem 0 .6rem;font-size:1.3rem;line-height:1.3}
h3{margin:1.6rem 0 .4rem;font-size:1.05rem}
main p,main ul{max-width:42rem;margin:1.1rem 0 .6rem}
main ul{padding-left:1.3rem}
a{color:var(--accent)}
code,pre{font-family:ui-monospace,SFMono-Regular,Menlo,Consolas,"Liberation Mono","DejaVu Sans Mono",monospace;
font-size:.8125rem;line-height:1.5}
pre{margin:0;white-space:pre-wrap;overflow-wrap:anywhere}
.drawing{white-space:pre;overflow-x:auto;margin:.8rem 0;line-height:1.25}
#theme{position:absolute;top:.25rem;right:0;padding:.25rem .7rem;border:1px solid var(--rule);border-radius:4px;
background:none;color:var(--dim);font:inherit;font-size:.8125rem;cursor:pointer}
#theme:hover{color:var(--ink);border-color:var(--dim)}
.statement{display:flex;flex-wrap:wrap;align-items:baseline;gap:.15rem 1.5rem;padding:.4rem 0;
border-bottom:1px solid var(--rule)}
.source{flex:1 1 0;min-width:min(20rem,100%);color:var(--code)}
.comment{color:var(--dim);font-style:italic}
.result{flex:0 0 auto;min-width:calc(50% - .75rem);max-width:100%}
math{font-size:1.05rem;font-family:"STIX Two Math","Cambria Math","Latin Modern Math","Libertinus Math","DejaVu Math TeX Gyre",math,serif}
.scroll,.result{overflow-x:auto;overflow-y:hidden;scrollbar-width:thin}
.formula{display:flex;align-items:center}
.formula .scroll{flex:0 1 auto;min-width:0}
.formula .scroll+math{flex:none;padding-left:.25rem}
table.matrix{border-spacing:0;margin:.2rem 0 .3rem;border-left:1.5px solid;border-right:1.5px solid}
table.matrix caption{text-align:left;padding-bottom:.3rem}
table.matrix td{text-align:right;padding:.1rem .5rem}
math[display=block]{display:block math;width:max-content;text-align:left;margin:.2rem 0 .3rem}
mtable{font-variant-numeric:tabular-nums}
mtd{text-align:right;text-align:-webkit-right;padding:.2em .55em}
munder mtext{color:var(--dim);font-size:.8rem}
figure{flex:1 1 100%;margin:.8rem 0 .6rem}
figure svg{display:block;width:100%;max-width:36rem;height:auto;margin:0 auto}
figure svg text{font-family:system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans","Liberation Sans","DejaVu Sans",sans-serif}
figure svg image{image-rendering:pixelated}
figcaption{text-align:center;color:var(--dim);font-size:.8125rem}
.failed{background:var(--bad-paper);border-left:3px solid var(--bad);padding:.5rem .75rem}
.failed .result{flex-basis:100%}
.message{margin:.1rem 0;color:var(--bad)}
.where{margin:.3rem 0 .1rem;color:var(--dim);font-size:.875rem}
.trust{float:right;clear:right;width:14rem;margin:.2rem 0 .2rem 1rem;padding-left:.6rem;border-left:2px solid var(--dim);color:var(--dim);font-size:.875rem}
.trust-count{margin-top:1.5rem;color:var(--dim);font-size:.875rem}
.failure{color:var(--bad)}
mark{background:var(--mark);color:inherit;border-bottom:2px solid var(--bad)}
mark.caret{border:0;background:none;color:var(--bad);font-weight:bold}
@media (max-width:40rem){body{padding:1.25rem 1rem 3rem}h1{font-size:1.35rem}.result{padding-left:.5rem}}
@media print{html{font-size:10pt}body{max-width:none;padding:0}#theme{display:none}a{color:inherit}
.statement:not(:has(table)),figure,.drawing,tr{break-inside:avoid}h2,h3,caption,.source{break-after:avoid}
.statement:has(table){display:block}.result,.scroll{overflow:visible}
.failed{background:none}figure svg{max-width:14cm}}
)";

constexpr const char* kScript = R"--(
(function(){
var root=document.documentElement,button=document.getElementById("theme");
var system=window.matchMedia("(prefers-color-scheme: dark)");
function isDark(){var set=root.getAttribute("data-theme");return set?set==="dark":system.matches;}
function show(){button.textContent=isDark()?"Light theme":"Dark theme";}
try{var kept=localStorage.getItem("worksheet-theme");if(kept)root.setAttribute("data-theme",kept);}catch(e){}
button.addEventListener("click",function(){
var theme=isDark()?"light":"dark";
root.setAttribute("data-theme",theme);
try{localStorage.setItem("worksheet-theme",theme);}catch(e){}
show();});
system.addEventListener("change",show);
button.hidden=false;
show();
})();
)--";

// Light unless the reader or the system wants the dark theme; always light on paper.
std::string style_markup() {
  return fmt::format(
      ":root{{color-scheme:light;{0}}}\n"
      "@media screen{{:root[data-theme=dark]{{color-scheme:dark;{1}}}}}\n"
      "@media screen and (prefers-color-scheme:dark){{:root:not([data-theme=light]){{"
      "color-scheme:dark;{1}}}}}{2}",
      kLightColours, kDarkColours, kStyle);
}

}  // namespace

std::string page_markup(const std::string& title, std::span<const std::string> notes,
                        const std::string& body) {
  std::string below;
  for (const std::string& note : notes) below += fmt::format("<p>{}</p>\n", note);
  return fmt::format(
      "<!DOCTYPE html>\n"
      "<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
      "<meta charset=\"utf-8\"/>\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
      "<meta name=\"generator\" content=\"worksheet\"/>\n"
      "<title>{0}</title>\n<style>\n{1}</style>\n</head>\n<body>\n"
      "<header>\n<h1>{0}</h1>\n{2}"
      "<button id=\"theme\" type=\"button\" hidden=\"hidden\">Theme</button>\n</header>\n"
      "<main>\n{3}</main>\n<script>{4}</script>\n</body>\n</html>\n",
      escaped(title), style_markup(), below, body, kScript);
}

}  // namespace worksheet
