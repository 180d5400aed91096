// Turns one kernel text into records. A family's source file names the text and its kernels and
// includes this file, which includes itself once per instruction set:
//
//     #define KELVARO_KERNEL_TEXT "develop/kernels/Domain.kernel"
//     #define KELVARO_KERNELS(each) each(bitmapToScene) each(sceneToBitmap)
//     #include "develop/kernels/Kernels.h"
//     #include "platform/dialect/Family.inl"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/dialect/Family.inl"
#include <hwy/foreach_target.h> // must come before highway.h

#include "platform/dialect/Plain.h"
#include "platform/dialect/Vector.h"

#define UNFUSED // products and sums are never contracted in C++ (-ffp-contract=off)
#define DIALECT_ROW(name) &runRow<&name>,

#if HWY_ONCE
namespace kelvaro::kernel::scalar {
using namespace dialect::scalar;
#define KERNEL [[gnu::always_inline]] static inline
#include KELVARO_KERNEL_TEXT
#undef KERNEL
using RowFunction = void (*)(const KernelRow&);
static constexpr RowFunction kRows[] = {KELVARO_KERNELS(DIALECT_ROW)};
} // namespace kelvaro::kernel::scalar

namespace kelvaro::kernel::reference {
using namespace dialect::reference;
#define KERNEL [[gnu::always_inline]] static inline
#include KELVARO_KERNEL_TEXT
#undef KERNEL
} // namespace kelvaro::kernel::reference
#endif

HWY_BEFORE_NAMESPACE();
namespace kelvaro::kernel::HWY_NAMESPACE {
using RowFunction = void (*)(const KernelRow&);
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
// A machine without vectors: one float at a time.
static const RowFunction* rows() {
    return scalar::kRows;
}
#else
using namespace dialect::HWY_NAMESPACE;
#define KERNEL static HWY_INLINE
#include KELVARO_KERNEL_TEXT
#undef KERNEL
static const RowFunction* rows() {
    static constexpr RowFunction table[] = {KELVARO_KERNELS(DIALECT_ROW)};
    return table;
}
#endif
} // namespace kelvaro::kernel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#undef DIALECT_ROW
#undef UNFUSED

#if HWY_ONCE
namespace kelvaro::kernel {

HWY_EXPORT(rows);

#define DIALECT_INDEX(name) name##Index,
enum Index : int { KELVARO_KERNELS(DIALECT_INDEX) };

// Chooses the instruction set row by row, which costs nothing beside the row itself.
template<int index>
static void runBest(const KernelRow& row) {
    HWY_DYNAMIC_DISPATCH(rows)()[index](row);
}

#define DIALECT_RECORD(name)                                                                       \
    const Kernel& name() {                                                                         \
        using Facts = decltype(scalar::signatureOf(&scalar::name));                                \
        static_assert(Facts::inputs <= kMaximumKernelInputs);                                      \
        static_assert(Facts::uniforms <= kMaximumKernelUniforms);                                  \
        static const Kernel record{#name,                                                          \
                                   Facts::inputs,                                                  \
                                   Facts::uniforms,                                                \
                                   &runBest<name##Index>,                                          \
                                   scalar::kRows[name##Index],                                     \
                                   &reference::runPixel<&reference::name>,                         \
                                   {Facts::planesOf(0), Facts::planesOf(1), Facts::planesOf(2),    \
                                    Facts::planesOf(3)}};                                          \
        return record;                                                                             \
    }
KELVARO_KERNELS(DIALECT_RECORD)

} // namespace kelvaro::kernel
#endif
