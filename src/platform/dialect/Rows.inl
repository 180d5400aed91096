// Runs a kernel along a row, in whole groups: up to the row's padding past `count`. Each group is
// read before it is written, so the output may be the first input. Included once per form with
// rows.

struct Group {
    const KernelRow& row;
    const Uniform* uniforms;
    std::size_t i;

    DIALECT_MEMBER Float3 get(Float3*, int n) const {
        const float* const* planes = row.inputs[n];
        return {load(planes[0] + i), load(planes[1] + i), load(planes[2] + i)};
    }
    DIALECT_MEMBER Float2 get(Float2*, int n) const {
        return {load(row.inputs[n][0] + i), load(row.inputs[n][1] + i)};
    }
    DIALECT_MEMBER Float get(Float*, int n) const {
        const float* alpha = row.inputs[n][3];
        return alpha ? load(alpha + i) : Float(1.0); // no plane: opaque
    }
    DIALECT_MEMBER Pixel get(Pixel*, int) const {
        return pixelsFrom(row.x + static_cast<double>(i), row.y);
    }
    DIALECT_MEMBER Uniform get(Uniform*, int n) const { return uniforms[n]; }
};

template<auto function>
void runRow(const KernelRow& given) {
    // Local copies, or every store would make the compiler read pointers and parameters again.
    const KernelRow row = given;
    Uniform uniforms[kMaximumKernelUniforms];
    for (int n = 0; n < decltype(signatureOf(function))::uniforms; n++)
        uniforms[n] = row.uniforms[n];
    // The scalar form stays one float at a time, or it would be no measure for the vectors.
#ifdef __clang__
#pragma clang loop vectorize(disable) interleave(disable)
#endif
    for (std::size_t i = 0; i < row.count; i += kGroup) {
        const Float3 result = evaluate<function>(Group{row, uniforms, i}, function);
        store(result.x, row.output[0] + i);
        store(result.y, row.output[1] + i);
        store(result.z, row.output[2] + i);
    }
}
