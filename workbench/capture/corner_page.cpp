#include "workbench/capture/corner_page.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace imgtune::workbench {

namespace {

constexpr const char* kHead = R"html(<!doctype html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Corners of the chart</title>
<style>
body { font: 16px/1.4 system-ui, sans-serif; margin: 1rem auto; max-width: 62rem; padding: 0 1rem; }
canvas { max-width: 100%; cursor: crosshair; display: block; }
textarea { width: 100%; font: 14px/1.4 monospace; box-sizing: border-box; }
h2 { font-size: 1rem; margin: 1.5rem 0 .3rem; }
button { font: inherit; }
</style>
<h1>Corners of the chart</h1>
<p>On each picture click the outer corners of the patches <b>1, dark skin</b>; <b>6, bluish green</b>;
<b>24, black</b>; <b>19, white</b>, in this order. A further click moves the nearest corner. Pictures
are shown as they are stored, each colour stretched to its own bright end.</p>
<div id="shots"></div>
<h2>Table for --corners</h2>
<textarea id="table" rows="6" readonly aria-label="table of corners"></textarea>
<p><button id="save">Save as corners.csv</button></p>
<script>
"use strict";
const shots = )html";

constexpr const char* kScript = R"html(;
const names = ["1", "6", "24", "19"];
const table = document.getElementById("table");
const pixel = (shot, point) => [shot.left + point[0] * shot.scale, shot.top + point[1] * shot.scale];
function write() {
  const lines = shots.filter((shot) => shot.points.length === 4).map((shot) =>
    [shot.name, ...shot.points.flatMap((point) => pixel(shot, point).map((v) => v.toFixed(1)))].join(","));
  table.value = ["file,x1,y1,x2,y2,x3,y3,x4,y4", ...lines].join("\n") + "\n";
}
function draw(shot) {
  const to = shot.canvas.getContext("2d");
  to.putImageData(shot.image, 0, 0);
  to.strokeStyle = "#fff";
  to.fillStyle = "#fff";
  to.shadowColor = "#000";
  to.shadowBlur = 3;
  to.font = "bold 15px sans-serif";
  to.lineWidth = 2;
  to.beginPath();
  shot.points.forEach(([x, y], i) => (i ? to.lineTo(x + 0.5, y + 0.5) : to.moveTo(x + 0.5, y + 0.5)));
  if (shot.points.length === 4) to.closePath();
  to.stroke();
  shot.points.forEach(([x, y], i) => {
    to.beginPath();
    to.arc(x + 0.5, y + 0.5, 4, 0, 7);
    to.stroke();
    to.fillText(names[i], x + 8, y - 6);
  });
  shot.canvas.setAttribute("aria-label", `${shot.name}: ${shot.points.length} of 4 corners`);
}
for (const shot of shots) {
  shot.points = [];
  const title = document.createElement("h2");
  title.textContent = shot.name;
  shot.canvas = document.createElement("canvas");
  shot.canvas.width = shot.width;
  shot.canvas.height = shot.height;
  shot.canvas.style.width = Math.min(1000, shot.width * Math.max(1, Math.floor(700 / shot.width))) + "px";
  const bytes = atob(shot.rgb);
  shot.image = new ImageData(shot.width, shot.height);
  for (let i = 0; i < shot.width * shot.height; ++i) {
    for (let k = 0; k < 3; ++k) shot.image.data[4 * i + k] = bytes.charCodeAt(3 * i + k);
    shot.image.data[4 * i + 3] = 255;
  }
  shot.canvas.addEventListener("click", (event) => {
    const box = shot.canvas.getBoundingClientRect();
    const at = [(event.clientX - box.left) / box.width * shot.width - 0.5,
                (event.clientY - box.top) / box.height * shot.height - 0.5];
    if (shot.points.length < 4) {
      shot.points.push(at);
    } else {
      const far = (point) => Math.hypot(point[0] - at[0], point[1] - at[1]);
      const nearest = shot.points.reduce((best, point, i) => far(point) < far(shot.points[best]) ? i : best, 0);
      shot.points[nearest] = at;
    }
    draw(shot);
    write();
  });
  document.getElementById("shots").append(title, shot.canvas);
  draw(shot);
}
document.getElementById("save").addEventListener("click", () => {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([table.value], {type: "text/csv"}));
  link.download = "corners.csv";
  link.click();
});
write();
</script>
</html>
)html";

std::string base64(const std::vector<std::uint8_t>& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8U | (i + k < bytes.size() ? bytes[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            const bool beyond = i + k > bytes.size();
            text += beyond ? '=' : kDigits[bits >> (18 - 6 * k) & 63U];
        }
    }
    return text;
}

}  // namespace

std::string corner_page(const std::vector<ShownPicture>& pictures) {
    nlohmann::ordered_json shots = nlohmann::ordered_json::array();
    for (const ShownPicture& shown : pictures) {
        const Thumbnail& picture = shown.picture;
        shots.push_back({{"name", shown.name},
                         {"width", picture.width},
                         {"height", picture.height},
                         {"left", picture.left},
                         {"top", picture.top},
                         {"scale", picture.scale},
                         {"rgb", base64(picture.rgb)}});
    }
    std::string text = shots.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    // A name must not end the script.
    for (std::size_t at = 0; (at = text.find('<', at)) != text.npos;)
        text.replace(at, 1, "\\u003c");
    return kHead + text + kScript;
}

}  // namespace imgtune::workbench
