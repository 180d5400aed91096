// The dialect for glslc: put before a kernel text, it makes a compute shader's functions of it.
#define KERNEL
#define Float float
#define Float2 vec2
#define Float3 vec3
#define Mask bool
#define Uniform float
#define Pixel vec2
#define Single float
#define UNFUSED precise
#define single(x) (x)
#define widened(x) (x)
#define offsetFrom(position, origin) ((position) - (origin))
#define select(mask, yes, no) ((mask) ? (yes) : (no))
#define any(mask) (mask)
#define none(mask) (!(mask))
#define copySign(size, sign) uintBitsToFloat((floatBitsToUint(size) & 0x7fffffffu) | (floatBitsToUint(sign) & 0x80000000u))
float lesser(float x, float y) { return y < x ? y : x; }
float greater(float x, float y) { return x < y ? y : x; }
vec3 greater(vec3 p, vec3 q) { return vec3(greater(p.x, q.x), greater(p.y, q.y), greater(p.z, q.z)); }
#define min lesser
#define max greater
#define clamp(x, low, high) min(high, max(low, x))
float product(vec2 p, vec2 q) { return fma(p.y, q.y, p.x * q.x); }
float product(vec3 p, vec3 q) { return fma(p.z, q.z, fma(p.y, q.y, p.x * q.x)); }
#define dot product
float smallest(vec3 p) { return min(min(p.x, p.y), p.z); }
float largest(vec3 p) { return max(max(p.x, p.y), p.z); }
float stepped(float t) { return t * t * (3.0 - 2.0 * t); }
#define smoothstep(low, high, x) stepped(clamp(((x) - (low)) * (1.0 / ((high) - (low))), 0.0, 1.0))
float boundedLog2(float x) { return log2(max(1.1754944e-38, x)); }
#define log2 boundedLog2
float power(float x, float p) { return exp2(log2(x) * p); }
#define pow power
float cbrt(float x) { return copySign(exp2(log2(abs(x)) * (1.0 / 3.0)), x); }
#define atan2 atan
