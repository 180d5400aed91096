// The single-precision functions, one text for vectors and for one float, on the parts that each of
// them provides. Polynomials are minimax fits (Remez exchange) of the relative error. Errors are
// the largest ones over all floats of the range; the tests walk them.

// log2 over 2^-126 … 2^128: 3 units in the last place, or 2^-24 near 1 where the result vanishes.
// NaN, 0, negative and denormal values count as 2^-126, infinity as 2^128: the result is finite.
DIALECT_INLINE Float log2(Float x) {
    const Float bounded = max(Float(0x1p-126), x);
    const Float e = exponentAboutOne(bounded);
    const Float t = mantissaAboutOne(bounded) - Float(1.0);
    const Float t2 = t * t;
    const Float low = fma(fma(t, -0.36023963972093137, 0.48092324230533073), t2,
                          fma(t, -0.7213527880629919, 1.4426949619872056));
    const Float high = fma(fma(t, -0.1458116883063669, 0.23404237038934034), t2,
                           fma(t, -0.24887686474441537, 0.28709869955000517));
    return fma(fma(high, t2 * t2, low), t, e);
}

// 2^x: 2 units in the last place over -126 … 127.5. Below -126.5 it is 0, above 127.5 infinity, and
// it is exactly 1 at 0. NaN stays NaN.
DIALECT_INLINE Float exp2(Float x) {
    const Float bounded = max(min(x, Float(128.0)), Float(-127.0));
    const Float shifted = bounded + Float(12582912.0); // 1.5 × 2^23: the low bits are the integer
    const Float f = bounded - (shifted - Float(12582912.0));
    const Float f2 = f * f;
    const Float low =
        fma(fma(f, 0.05550310550995927, 0.24022652782876044), f2, fma(f, 0.6931472149680394, 1.0));
    const Float high = fma(fma(f, 0.0001559467754900736, 0.001340664390501221), f2,
                           f * Float(0.009617692974894307));
    return fma(high, f2 * f, low) * powerOfTwo(shifted);
}

// Cube root of any sign: 2 units in the last place for normal values, 0 at 0, NaN stays NaN,
// infinity stays infinity. A seed for the inverse root r from the exponent, within 0.034; then x r²
// is the root but for (1 - e)^(-2/3), e = 1 - x r³, for which a polynomial does without a division.
DIALECT_INLINE Float cbrt(Float x) {
    const Float size = abs(x);
    const Float r = inverseCubeRootSeed(size);
    const Float root = size * r * r;
    const Float e = fma(-root, r, 1.0); // within 0.102
    const Float e2 = e * e;
    const Float low = fma(e, 0.5555351308925027, 0.6666667371128567);
    const Float high =
        fma(fma(e, 0.43053030704793027, 0.45875326516062076), e, 0.4937786555227459);
    const Float found = copySign(fma(root * e, fma(high, e2, low), root), x);
    return select(size <= 3.4028234663852886e38, found, x); // infinity has no such e
}

// The angle of (x, y) in -π … π: 7e-7 absolute. (0, 0) gives 0 or ±π by the sign of x; NaN stays
// NaN.
DIALECT_INLINE Float atan2(Float y, Float x) {
    const Float ax = abs(x);
    const Float ay = abs(y);
    const Mask steep = ay > ax;
    const Float larger = select(steep, ay, ax);
    const Float q = select(steep, ax, ay) / max(larger, Float(0x1p-126));
    const Float u = q * q;
    const Float u2 = u * u;
    const Float low = fma(fma(u, -0.14041297797821004, 0.1997421409570988), u2,
                          fma(u, -0.33332391596403427, 1.0));
    const Float high = fma(fma(u, -0.004822534835654523, 0.024734065160770754), u2,
                           fma(u, -0.060203132329811664, 0.09968473221429971));
    Float angle = fma(high, u2 * u2, low) * q;
    angle = select(steep, Float(1.5707963267948966) - angle, angle);
    angle = select(copySign(Float(1.0), x) < Float(0.0), Float(3.141592653589793) - angle, angle);
    return copySign(angle, y);
}

// e^x through exp2: relative error 2e-7 (1 + |x|).
DIALECT_INLINE Float exp(Float x) {
    return exp2(x * Float(1.4426950408889634));
}

// x^p for x of at least 0: relative error 2e-7 (1 + |p log2 x|). Negative and NaN x count as 0, and
// 0^p is 2^(-126 p), as good as 0 for the exponents in use.
DIALECT_INLINE Float pow(Float x, Uniform p) {
    return exp2(log2(x) * Float(p));
}

// tanh in its exponential form: 2e-7 absolute. NaN stays NaN.
DIALECT_INLINE Float tanh(Float x) {
    return Float(1.0) - Float(2.0) / (exp2(x * Float(2.8853900817779268)) + Float(1.0));
}
