// Prints where a scene's nearest object meets the ground straight ahead, in a PNG frame of a level view: the rows
// from the frame's middle (the eye's level) down to the first sharp edge met when scanning the centre column up from
// the bottom. Approaching the object, that count grows as 1 / depth. Usage: node ground_edge.js frame.png
'use strict';
const fs = require('fs');
const zlib = require('zlib');

function readPng(path) {
  const file = fs.readFileSync(path);
  let offset = 8, width = 0, height = 0, channels = 0;
  const data = [];
  while (offset < file.length) {
    const length = file.readUInt32BE(offset);
    const type = file.toString('ascii', offset + 4, offset + 8);
    const body = file.subarray(offset + 8, offset + 8 + length);
    if (type === 'IHDR') {
      width = body.readUInt32BE(0);
      height = body.readUInt32BE(4);
      if (body[8] !== 8 || body[12] !== 0) throw new Error(`${path}: only 8-bit, non-interlaced frames are read`);
      channels = {2: 3, 6: 4}[body[9]];
      if (!channels) throw new Error(`${path}: colour type ${body[9]} is not RGB or RGBA`);
    } else if (type === 'IDAT') {
      data.push(body);
    }
    offset += 12 + length;
  }
  const raw = zlib.inflateSync(Buffer.concat(data));
  const stride = width * channels;
  const pixels = Buffer.alloc(stride * height);
  for (let y = 0; y < height; ++y) {
    const filter = raw[y * (stride + 1)];
    for (let x = 0; x < stride; ++x) {
      const value = raw[y * (stride + 1) + 1 + x];
      const a = x >= channels ? pixels[y * stride + x - channels] : 0;
      const b = y > 0 ? pixels[(y - 1) * stride + x] : 0;
      const c = x >= channels && y > 0 ? pixels[(y - 1) * stride + x - channels] : 0;
      const p = a + b - c;
      const paeth = Math.abs(p - a) <= Math.abs(p - b) && Math.abs(p - a) <= Math.abs(p - c) ? a
        : Math.abs(p - b) <= Math.abs(p - c) ? b : c;
      pixels[y * stride + x] = (value + [0, a, b, (a + b) >> 1, paeth][filter]) & 0xff;
    }
  }
  return {width, height, at: (x, y) => [0, 1, 2].map(i => pixels[y * stride + x * channels + i])};
}

const frame = readPng(process.argv[2]);
const column = frame.width >> 1;
const distance = (p, q) => Math.max(...p.map((v, i) => Math.abs(v - q[i])));
const middle = frame.height >> 1;
let edge = frame.height - 1;
while (edge > middle && distance(frame.at(column, edge - 1), frame.at(column, edge)) < 20) --edge;
console.log(edge - middle);
