// The kernels of the development pipeline, by name. Each comment gives the image inputs, then the
// uniforms in their order. Domains, ranges and sources stand with the kernel texts (*.kernel).
#pragma once

#include "platform/Kernel.h"

namespace kelvaro::kernel {

// Domain.kernel: between display-linear and scene-linear light
const Kernel& bitmapToScene(); // s
const Kernel& sceneToBitmap(); // s
const Kernel& bitmapRelit();   // s ; gain, r0.xyz, r1.xyz, r2.xyz
const Kernel& rawColour();     // s, reference

// Guide.kernel: edge-preserving guides on log luminance
const Kernel& twLogLuma();    // s → (y, y², 0)
const Kernel& twGuideAB();    // means (m, m²) ; eps → (a, b, 0)
const Kernel& rawLogNorm();   // s → (y, y², 0)
const Kernel& rawGuide();     // means ; eps → (a, b, 0)
const Kernel& rawApplyAB();   // ab, y → (f, f², 0)
const Kernel& rawMidDetail(); // ab, y1 → (a, b, y1 − base)

// SceneTone.kernel
const Kernel& rawGain();    // s, guide ; sh, hi, shift
const Kernel& sceneTone();  // s ; contrast, whites, blacks, e.x, e.y, e.z, e.w
const Kernel& rawTone();    // s, guide ; the parameters of rawGain, those of sceneTone
const Kernel& bitmapTone(); // s, guide ; the parameters of rawGain, those of sceneTone

// Colour.kernel
const Kernel& twColour();      // s ; angle, sat, vib
const Kernel& twMono();        // s
const Kernel& twGamut();       // s
const Kernel& twOutputGamut(); // s ; r0.xyz, r1.xyz, r2.xyz
const Kernel& displayGamut();  // s ; r0.xyz, r1.xyz, r2.xyz

// Haze.kernel
const Kernel& sceneHaze(); // s, model ; amount, air.r, air.g, air.b

// Finish.kernel
const Kernel& kelvaroTone();  // src, original, guide ; brightness, clarity, guide present, 0
const Kernel& twVignette();   // s ; centre.xy, crop.xyzw, turn.xy, amount
const Kernel& kelvaroGrain(); // s ; g.x amount, g.y size, g.z scale, m.x, m.y, m.z

// Mask.kernel: the shapes have no image input
const Kernel& twMaskLinear();  // ; line.xyzw, invert
const Kernel& twMaskRadial();  // ; e.xyzw, r.xyzw
const Kernel& twMaskCombine(); // a, b ; mode
const Kernel& twMaskFinish();  // a ; invert, amount
const Kernel& twLocal();       // s, m, guide, original ; p.xyzw, q.xyzw

// Overlay.kernel
const Kernel& twMaskOverlay(); // s, m
const Kernel& twClipping();    // s

// Reduction.kernel: scene light while it is averaged
const Kernel& compressedLight(); // s
const Kernel& expandedLight();   // s

// Rendering.kernel: the RAW engine's curve from scene to display
const Kernel& rawRendering(); // s

} // namespace kelvaro::kernel
