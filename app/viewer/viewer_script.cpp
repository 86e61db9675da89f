#include "app/viewer/viewer_script.h"

namespace myo_app {

namespace {

std::string EscapedHtml(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += (static_cast<unsigned char>(c) < 0x20 ? ' ' : c);
    }
  }
  return out;
}

const char* const kStyle = R"CSS(
html, body { margin: 0; height: 100%; overflow: hidden; background: #2e3238; color: #e8e8e8;
  font: 13px/1.35 sans-serif; }
#view { position: absolute; left: 0; top: 0; width: 100%; height: 100%; display: block; touch-action: none; }
#bar { position: absolute; left: 0; right: 0; bottom: 0; display: flex; gap: 10px; align-items: center;
  padding: 8px 12px; background: rgba(20, 22, 26, 0.8); }
#slider { flex: 1; }
#frame { min-width: 7em; font-variant-numeric: tabular-nums; }
#panel { position: absolute; right: 8px; top: 8px; max-height: 70%; overflow: auto; padding: 8px 10px;
  background: rgba(20, 22, 26, 0.8); border-radius: 4px; }
#panel .row { display: flex; gap: 6px; align-items: center; margin: 3px 0; }
#panel .type { color: #9aa0a8; font-size: 11px; }
#title { font-weight: bold; margin-bottom: 4px; }
#legend { position: absolute; left: 8px; bottom: 48px; }
#legend .entry { background: rgba(20, 22, 26, 0.8); padding: 4px 8px; margin-top: 4px; border-radius: 4px; }
#legend .ramp { width: 180px; height: 10px; margin: 3px 0;
  background: linear-gradient(to right, #0d0887, #1f78d1, #2ec27e, #f6c22b, #d62020); }
#legend .ends { display: flex; justify-content: space-between; font-size: 11px; }
#help { position: absolute; left: 8px; top: 8px; color: #9aa0a8; font-size: 11px; }
#check { display: none; }
body.sheet #bar, body.sheet #panel, body.sheet #help, body.sheet #view { display: none; }
body.sheet #legend { bottom: 8px; }
.label { position: absolute; padding: 2px 6px; background: rgba(20, 22, 26, 0.7); font-size: 14px; }
)CSS";

// Errors are collected from the very start, before three.js loads, so that
// the self-check sees every one.
const char* const kErrorCapture = R"JS(
window.myoErrors = [];
window.addEventListener('error', function (e) { window.myoErrors.push(String(e.message || e)); });
(function () {
  var original = console.error;
  console.error = function () {
    window.myoErrors.push(Array.prototype.join.call(arguments, ' '));
    return original.apply(console, arguments);
  };
})();
)JS";

const char* const kBody = R"HTML(
<canvas id="view"></canvas>
<div id="help">drag: turn &middot; shift-drag or right-drag: move &middot; wheel: zoom &middot; space: play &middot; arrows: step</div>
<div id="panel"><div id="title"></div><div id="objects"></div></div>
<div id="legend"></div>
<div id="bar"><button id="play">Play</button><input id="slider" type="range" min="0" max="0" value="0">
<span id="frame"></span></div>
<pre id="check"></pre>
)HTML";

const char* const kScript = R"JS(
(function () {
'use strict';
function bytes(text) {
  var s = atob(text), out = new Uint8Array(s.length);
  for (var i = 0; i < s.length; ++i) out[i] = s.charCodeAt(i);
  return out.buffer;
}
function floats(text) { return new Float32Array(bytes(text)); }

var scene = JSON.parse(document.getElementById('myo-scene').textContent);
var frames = Array.prototype.map.call(document.querySelectorAll('script.myo-frame'),
                                      function (e) { return JSON.parse(e.textContent); });
var frameCount = Math.max(1, frames.length);
var background = 0x2e3238;
var ramp = [[0.05, 0.03, 0.53], [0.12, 0.47, 0.82], [0.18, 0.76, 0.49], [0.96, 0.76, 0.17], [0.84, 0.13, 0.13]];
var palette = {MyoMuscle: 0xc75b55, MyoRibbonMuscle: 0xc7705a, MyoSkin: 0xe8c4a8, MyoSimshape: 0x8fa8d8,
               mesh: 0xd9d4c4};

var canvas = document.getElementById('view');
var renderer = new THREE.WebGLRenderer({canvas: canvas, antialias: true, preserveDrawingBuffer: true});
renderer.setClearColor(background);
renderer.setPixelRatio(window.devicePixelRatio || 1);
var world = new THREE.Scene();
var camera = new THREE.PerspectiveCamera(40, 1, 0.01, 1000);
world.add(camera);
world.add(new THREE.HemisphereLight(0xffffff, 0x404048, 0.75));
var sun = new THREE.DirectionalLight(0xffffff, 0.65);
sun.position.set(0.4, 0.8, 1.0);
camera.add(sun);

function frameData(f) { return frames[Math.min(f, frames.length - 1)] || {m: {}, p: {}, c: {}, l: {}}; }

var objects = scene.objects.map(function (desc, index) {
  var rest = floats(desc.points);
  var geometry = new THREE.BufferGeometry();
  var position = new THREE.BufferAttribute(new Float32Array(rest), 3);
  var colors = new THREE.BufferAttribute(new Float32Array(rest.length).fill(1), 3);
  geometry.setAttribute('position', position);
  geometry.setAttribute('color', colors);
  var triangles = desc.wideIndex ? new Uint32Array(bytes(desc.triangles)) : new Uint16Array(bytes(desc.triangles));
  geometry.setIndex(new THREE.BufferAttribute(triangles, 1));
  geometry.computeVertexNormals();
  var translucent = desc.opacity < 1;
  var material = new THREE.MeshStandardMaterial({color: palette[desc.type] || 0xb0b0b0, roughness: 0.75,
      metalness: 0.0, side: THREE.DoubleSide, transparent: translucent, opacity: desc.opacity,
      depthWrite: !translucent});
  var mesh = new THREE.Mesh(geometry, material);
  mesh.matrixAutoUpdate = false;
  mesh.renderOrder = translucent ? 1 : 0;
  mesh.visible = desc.visible;
  world.add(mesh);
  var lines = new THREE.LineSegments(new THREE.BufferGeometry(), new THREE.LineBasicMaterial({color: 0xff0000}));
  lines.frustumCulled = false;
  lines.visible = false;
  world.add(lines);
  var channels = Object.keys(desc.maps);
  frames.forEach(function (data) {
    Object.keys((data.c || {})[index] || {}).forEach(function (name) {
      if (channels.indexOf(name) < 0) channels.push(name);
    });
  });
  var moves = frames.some(function (data) { return data.p[index] || data.m[index]; });
  if (moves) channels.push('speed');
  return {desc: desc, index: index, rest: rest, mesh: mesh, geometry: geometry, position: position, colors: colors,
          lines: lines, channels: channels, channel: '', ranges: {}, cache: {}, baseColor: material.color.getHex()};
});

// Object-space points of an object at a frame: the run's points, decoded
// from 16 bits within their box, or the mesh's own points.
function objectPoints(object, f) {
  var p = frameData(f).p[object.index];
  if (!p) return object.rest;
  if (object.cache[f]) return object.cache[f];
  var q = new Uint16Array(bytes(p[6])), out = new Float32Array(q.length);
  var scale = [(p[3] - p[0]) / 65535, (p[4] - p[1]) / 65535, (p[5] - p[2]) / 65535];
  for (var i = 0; i < q.length; i += 3) {
    out[i] = p[0] + q[i] * scale[0];
    out[i + 1] = p[1] + q[i + 1] * scale[1];
    out[i + 2] = p[2] + q[i + 2] * scale[2];
  }
  var keys = Object.keys(object.cache);
  if (keys.length > 4) delete object.cache[keys[0]];
  object.cache[f] = out;
  return out;
}

function objectMatrix(object, f) {
  var m = frameData(f).m[object.index];
  return m ? new THREE.Matrix4().fromArray(floats(m)) : new THREE.Matrix4();
}

// Point speeds in scene units per second, from the world positions of this
// frame and the one before it (the first frame takes those of the second).
function speeds(object, f) {
  var n = object.rest.length / 3, out = new Float32Array(n);
  if (frameCount < 2) return out;
  var a = f > 0 ? f - 1 : 0, b = f > 0 ? f : 1;
  var pa = objectPoints(object, a), pb = objectPoints(object, b);
  var ma = objectMatrix(object, a).elements, mb = objectMatrix(object, b).elements;
  for (var i = 0; i < n; ++i) {
    var d = 0;
    for (var k = 0; k < 3; ++k) {
      var wa = ma[k] * pa[3 * i] + ma[4 + k] * pa[3 * i + 1] + ma[8 + k] * pa[3 * i + 2] + ma[12 + k];
      var wb = mb[k] * pb[3 * i] + mb[4 + k] * pb[3 * i + 1] + mb[8 + k] * pb[3 * i + 2] + mb[12 + k];
      d += (wb - wa) * (wb - wa);
    }
    out[i] = Math.sqrt(d) * scene.fps;
  }
  return out;
}

function channelValues(object, name, f) {
  if (name === 'speed') return speeds(object, f);
  if (object.desc.maps[name]) {
    if (!object.cache['map:' + name]) object.cache['map:' + name] = floats(object.desc.maps[name]);
    return object.cache['map:' + name];
  }
  var c = (frameData(f).c || {})[object.index];
  return c && c[name] ? floats(c[name]) : null;
}

// The range of a channel over every frame, for a legend that holds still.
function channelRange(object, name) {
  if (object.ranges[name]) return object.ranges[name];
  var lo = Infinity, hi = -Infinity;
  var count = object.desc.maps[name] ? 1 : frameCount;
  for (var f = 0; f < count; ++f) {
    var v = channelValues(object, name, f);
    if (!v) continue;
    for (var i = 0; i < v.length; ++i) {
      if (!isFinite(v[i])) continue;
      if (v[i] < lo) lo = v[i];
      if (v[i] > hi) hi = v[i];
    }
  }
  if (!(lo <= hi)) { lo = 0; hi = 1; }
  if (hi - lo < 1e-6) hi = lo + 1;
  object.ranges[name] = [lo, hi];
  return object.ranges[name];
}

function rampColor(t, out, k) {
  t = Math.max(0, Math.min(1, isFinite(t) ? t : 0)) * (ramp.length - 1);
  var i = Math.min(ramp.length - 2, Math.floor(t)), u = t - i;
  for (var c = 0; c < 3; ++c) out[k + c] = ramp[i][c] + (ramp[i + 1][c] - ramp[i][c]) * u;
}

var current = 0;
function showFrame(f) {
  current = Math.max(0, Math.min(frameCount - 1, f));
  var data = frameData(current);
  objects.forEach(function (object) {
    object.mesh.matrix.copy(objectMatrix(object, current));
    object.mesh.matrixWorldNeedsUpdate = true;
    if (data.p[object.index]) {
      object.position.array.set(objectPoints(object, current));
      object.position.needsUpdate = true;
      object.geometry.computeVertexNormals();
      object.geometry.computeBoundingSphere();
    }
    var material = object.mesh.material;
    var values = object.channel ? channelValues(object, object.channel, current) : null;
    if (values) {
      var range = channelRange(object, object.channel), colors = object.colors.array;
      for (var i = 0; i < values.length; ++i) rampColor((values[i] - range[0]) / (range[1] - range[0]), colors, 3 * i);
      object.colors.needsUpdate = true;
    }
    var coloured = values !== null;
    if ((material.vertexColors === THREE.VertexColors) !== coloured) {
      material.vertexColors = coloured ? THREE.VertexColors : THREE.NoColors;
      material.color.setHex(coloured ? 0xffffff : object.baseColor);
      material.needsUpdate = true;
    }
    var l = data.l[object.index];
    object.lines.visible = object.mesh.visible && !!l;
    if (l) {
      object.lines.geometry.setAttribute('position', new THREE.BufferAttribute(floats(l.data), 3));
      object.lines.material.color.setRGB(l.color[0], l.color[1], l.color[2]);
    }
  });
  slider.value = String(current);
  var number = data.frame !== undefined ? data.frame : scene.start + current;
  document.getElementById('frame').textContent = 'frame ' + number + ' (' + (current + 1) + '/' + frameCount + ')';
  updateLegend();
  requestRender();
}

function updateLegend() {
  var legend = document.getElementById('legend');
  legend.innerHTML = '';
  objects.forEach(function (object) {
    if (!object.channel || !object.mesh.visible) return;
    var range = channelRange(object, object.channel);
    var entry = document.createElement('div');
    entry.className = 'entry';
    entry.innerHTML = '<div></div><div class="ramp"></div><div class="ends"><span></span><span></span></div>';
    entry.firstChild.textContent = object.desc.name + ': ' + object.channel + (object.channel === 'speed' ? ' (units/s)' : '');
    entry.querySelectorAll('.ends span')[0].textContent = range[0].toPrecision(3);
    entry.querySelectorAll('.ends span')[1].textContent = range[1].toPrecision(3);
    legend.appendChild(entry);
  });
}

// The panel: per object its visibility and the channel that colours it.
document.getElementById('title').textContent = scene.scene;
objects.forEach(function (object) {
  var row = document.createElement('div');
  row.className = 'row';
  var box = document.createElement('input');
  box.type = 'checkbox';
  box.checked = object.mesh.visible;
  box.addEventListener('change', function () { object.mesh.visible = box.checked; showFrame(current); });
  var label = document.createElement('span');
  label.innerHTML = '<span></span> <span class="type"></span>';
  label.firstChild.textContent = object.desc.name;
  label.lastChild.textContent = object.desc.type;
  row.appendChild(box);
  row.appendChild(label);
  if (object.channels.length) {
    var select = document.createElement('select');
    [''].concat(object.channels).forEach(function (name) {
      var option = document.createElement('option');
      option.value = name;
      option.textContent = name || 'plain';
      select.appendChild(option);
    });
    select.addEventListener('change', function () { object.channel = select.value; showFrame(current); });
    object.select = select;
    row.appendChild(select);
  }
  document.getElementById('objects').appendChild(row);
});

// The orbit camera: turns about a target, moves it, zooms.
var orbit = {target: new THREE.Vector3(), radius: 10, theta: 0.3, phi: 1.25};
function placeCamera() {
  var s = Math.sin(orbit.phi);
  camera.position.set(orbit.target.x + orbit.radius * s * Math.sin(orbit.theta),
                      orbit.target.y + orbit.radius * Math.cos(orbit.phi),
                      orbit.target.z + orbit.radius * s * Math.cos(orbit.theta));
  camera.near = orbit.radius / 1000;
  camera.far = orbit.radius * 100;
  camera.lookAt(orbit.target);
  camera.updateProjectionMatrix();
}
function frameEverything() {
  var box = new THREE.Box3(), local = new THREE.Box3(), samples = [0, frameCount >> 2, frameCount >> 1, frameCount - 1];
  objects.forEach(function (object) {
    if (!object.mesh.visible) return;
    samples.forEach(function (f) {
      var p = frameData(f).p[object.index];
      if (p) local.set(new THREE.Vector3(p[0], p[1], p[2]), new THREE.Vector3(p[3], p[4], p[5]));
      else local.setFromArray(object.rest);
      box.union(local.clone().applyMatrix4(objectMatrix(object, f)));
    });
  });
  if (box.isEmpty()) box.set(new THREE.Vector3(-1, -1, -1), new THREE.Vector3(1, 1, 1));
  box.getCenter(orbit.target);
  orbit.radius = Math.max(1e-3, box.getSize(new THREE.Vector3()).length()) * 0.95;
  placeCamera();
}
var drag = null;
canvas.addEventListener('contextmenu', function (e) { e.preventDefault(); });
canvas.addEventListener('pointerdown', function (e) {
  drag = {x: e.clientX, y: e.clientY, pan: e.button === 2 || e.shiftKey};
  canvas.setPointerCapture(e.pointerId);
});
canvas.addEventListener('pointerup', function () { drag = null; });
canvas.addEventListener('pointermove', function (e) {
  if (!drag) return;
  var dx = e.clientX - drag.x, dy = e.clientY - drag.y;
  drag.x = e.clientX;
  drag.y = e.clientY;
  if (drag.pan) {
    var right = new THREE.Vector3().setFromMatrixColumn(camera.matrix, 0);
    var up = new THREE.Vector3().setFromMatrixColumn(camera.matrix, 1);
    var step = orbit.radius * 0.0015;
    orbit.target.addScaledVector(right, -dx * step).addScaledVector(up, dy * step);
  } else {
    orbit.theta -= dx * 0.008;
    orbit.phi = Math.max(0.05, Math.min(Math.PI - 0.05, orbit.phi - dy * 0.008));
  }
  placeCamera();
  requestRender();
});
canvas.addEventListener('wheel', function (e) {
  e.preventDefault();
  orbit.radius *= Math.exp(Math.max(-1, Math.min(1, e.deltaY * 0.001)));
  placeCamera();
  requestRender();
}, {passive: false});

function resize() {
  var w = window.innerWidth || 800, h = window.innerHeight || 600;
  renderer.setSize(w, h, false);
  camera.aspect = w / h;
  camera.updateProjectionMatrix();
  requestRender();
}
function renderNow() { renderer.render(world, camera); }
var pending = false;
function requestRender() {
  if (pending) return;
  pending = true;
  requestAnimationFrame(function () { pending = false; renderNow(); });
}

// Time: the slider, the play button at the scene's frames per second.
var slider = document.getElementById('slider');
var playButton = document.getElementById('play');
slider.max = String(frameCount - 1);
slider.addEventListener('input', function () { showFrame(parseInt(slider.value, 10)); });
var playing = false, clock = 0, startFrame = 0;
function tick(time) {
  if (!playing) return;
  var f = (startFrame + Math.floor((time - clock) * scene.fps / 1000)) % frameCount;
  if (f !== current) showFrame(f);
  requestAnimationFrame(tick);
}
function setPlaying(on) {
  playing = on && frameCount > 1;
  playButton.textContent = playing ? 'Pause' : 'Play';
  if (playing) {
    startFrame = current;
    clock = performance.now();
    requestAnimationFrame(tick);
  }
}
playButton.addEventListener('click', function () { setPlaying(!playing); });
window.addEventListener('keydown', function (e) {
  if (e.target && e.target.tagName === 'SELECT') return;
  if (e.key === ' ') { e.preventDefault(); setPlaying(!playing); }
  if (e.key === 'ArrowRight') { setPlaying(false); showFrame(current + 1); }
  if (e.key === 'ArrowLeft') { setPlaying(false); showFrame(current - 1); }
});
window.addEventListener('resize', resize);

// "#name=value&..." of the address.
var options = {};
location.hash.replace(/^#/, '').split('&').forEach(function (part) {
  if (!part) return;
  var eq = part.indexOf('=');
  options[decodeURIComponent(eq < 0 ? part : part.slice(0, eq))] = eq < 0 ? '' : decodeURIComponent(part.slice(eq + 1));
});
(options.color || '').split(',').forEach(function (pair) {
  var colon = pair.indexOf(':');
  if (colon < 0) return;
  objects.forEach(function (object) {
    var name = pair.slice(colon + 1);
    if (object.desc.name !== pair.slice(0, colon) || object.channels.indexOf(name) < 0) return;
    object.channel = name;
    if (object.select) object.select.value = name;
  });
});

function pixels() {
  renderNow();
  var gl = renderer.getContext(), w = gl.drawingBufferWidth, h = gl.drawingBufferHeight;
  var out = new Uint8Array(w * h * 4);
  gl.readPixels(0, 0, w, h, gl.RGBA, gl.UNSIGNED_BYTE, out);
  return out;
}

function selfCheck() {
  var bg = new THREE.Color(background), ref = [bg.r * 255, bg.g * 255, bg.b * 255];
  showFrame(0);
  var a = pixels();
  var target = Math.floor(frameCount / 2);
  slider.value = String(target);
  slider.dispatchEvent(new Event('input'));
  var b = pixels();
  var drawn = 0, changed = 0, n = a.length / 4;
  for (var i = 0; i < a.length; i += 4) {
    if (Math.abs(a[i] - ref[0]) + Math.abs(a[i + 1] - ref[1]) + Math.abs(a[i + 2] - ref[2]) > 24) ++drawn;
    if (Math.abs(a[i] - b[i]) + Math.abs(a[i + 1] - b[i + 1]) + Math.abs(a[i + 2] - b[i + 2]) > 24) ++changed;
  }
  var problems = [];
  if (drawn < n * 0.01) problems.push('blank picture');
  if (frameCount > 1 && current !== target) problems.push('the slider did not move to frame ' + target);
  if (frameCount > 1 && changed < n * 0.001) problems.push('stepping the slider did not change the picture');
  window.myoErrors.forEach(function (e) { problems.push('error: ' + e); });
  var report = 'viewer-check: ' + (problems.length ? 'FAILED ' + problems.join('; ') : 'ok') +
               ' (frames ' + frameCount + ', drawn ' + (100 * drawn / n).toFixed(1) + '%, changed ' +
               (100 * changed / n).toFixed(1) + '%)';
  document.title = report;
  document.getElementById('check').textContent = report;
}

function contactSheet() {
  var wanted = options.sheet.split(',').map(Number).filter(isFinite);
  if (!wanted.length) wanted = [frameData(0).frame];
  var columns = Math.max(1, parseInt(options.columns, 10) || Math.ceil(Math.sqrt(wanted.length)));
  var w = parseInt(options.width, 10) || 480, h = parseInt(options.height, 10) || 360;
  var rows = Math.ceil(wanted.length / columns);
  renderer.setPixelRatio(1);
  renderer.setSize(w, h, false);
  camera.aspect = w / h;
  camera.updateProjectionMatrix();
  var sheet = document.createElement('canvas');
  sheet.width = columns * w;
  sheet.height = rows * h;
  sheet.style.position = 'absolute';
  sheet.style.left = sheet.style.top = '0';
  var context = sheet.getContext('2d');
  wanted.forEach(function (number, k) {
    var f = 0;
    frames.forEach(function (data, i) {
      if (Math.abs(data.frame - number) < Math.abs(frameData(f).frame - number)) f = i;
    });
    showFrame(f);
    renderNow();
    var x = (k % columns) * w, y = Math.floor(k / columns) * h;
    context.drawImage(canvas, x, y, w, h);
    var label = document.createElement('div');
    label.className = 'label';
    label.style.left = (x + 6) + 'px';
    label.style.top = (y + 6) + 'px';
    label.textContent = 'frame ' + frameData(f).frame;
    document.body.appendChild(label);
  });
  document.body.classList.add('sheet');
  document.body.insertBefore(sheet, document.body.firstChild);
  document.title = 'viewer-sheet: ' + wanted.length + ' frames';
}

resize();
frameEverything();
showFrame(0);
if (options.sheet !== undefined) contactSheet();
else if (options.check !== undefined) selfCheck();
})();
)JS";

}  // namespace

std::string ViewerPageHead(const std::string& scene_path) {
  return std::string("<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>MyoForge: ") +
         EscapedHtml(scene_path) + "</title>\n<style>" + kStyle + "</style>\n<script>" + kErrorCapture +
         "</script>\n</head>\n<body>" + kBody;
}

const char* ViewerScript() { return kScript; }

}  // namespace myo_app
