// How every compiled instruction set walks a row: lengths, alignment, padding, aliasing, and that a
// pixel's result depends on nothing but the pixel.
#include "platform/Kernel.h"
#include "platform/Raster.h"

namespace kelvaro::kernel {
const Kernel& rowPlace();
const Kernel& rowOrder();
const Kernel& rowGrouped();
} // namespace kelvaro::kernel

#define KELVARO_KERNEL_TEXT "platform/dialect/Rows.kernel"
#define KELVARO_KERNELS(each) each(rowPlace) each(rowOrder) each(rowGrouped)

#include "platform/dialect/Family.inl"

#if HWY_ONCE
#include <gtest/gtest.h>
#include <hwy/aligned_allocator.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace kelvaro {
namespace {

constexpr std::size_t kLongest = 4 * kRowGroup;
constexpr float kSentinel = -12345.5f;

struct Rows {
    hwy::AlignedFreeUniquePtr<float[]> values = hwy::AllocateAligned<float>(11 * kLongest);

    float* plane(std::size_t n) { return values.get() + n * kLongest; }
    KernelRow row(std::size_t offset, std::size_t count) { // offset: whole padding groups
        KernelRow r;
        for (std::size_t n = 0; n < kMaximumKernelInputs; n++)
            for (std::size_t c = 0; c < 4; c++)
                r.inputs[n][c] = n < 2 ? plane(4 * n + c) + offset : nullptr;
        for (std::size_t c = 0; c < 3; c++)
            r.output[c] = plane(8 + c) + offset;
        r.count = count;
        r.y = 7.5;
        return r;
    }
};

// Runs `body` once per instruction set, and once with one float at a time.
template<class Body>
void forEachForm(const Kernel& kernel, Body body) {
    std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
    ASSERT_FALSE(targets.empty());
    for (const std::int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        body(kernel.vector);
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    SCOPED_TRACE("scalar");
    body(kernel.scalar);
}

} // namespace

TEST(KernelRows, everyLengthIsFilledAndNothingPastThePaddingIsTouched) {
    const std::vector<double> uniforms = {3};
    forEachForm(kernel::rowPlace(), [&](void (*form)(const KernelRow&)) {
        for (std::size_t offset : {std::size_t(0), std::size_t(kRowGroup)})
            for (std::size_t count = 0; count <= 2 * kRowGroup; count++) {
                Rows rows;
                std::fill_n(rows.values.get(), 11 * kLongest, kSentinel);
                KernelRow row = rows.row(offset, count);
                row.x = 99990.5;
                row.uniforms = uniforms.data();
                form(row);
                const std::size_t end = (count + kRowGroup - 1) / kRowGroup * kRowGroup;
                for (std::size_t c = 0; c < 3; c++) {
                    const float* plane = rows.plane(8 + c);
                    for (std::size_t i = 0; i < kLongest; i++)
                        if (i < offset || i >= offset + end) {
                            ASSERT_EQ(plane[i], kSentinel) << count << " at " << i;
                        }
                }
                for (std::size_t i = 0; i < count; i++) {
                    const double x = 99990.5 + static_cast<double>(i);
                    ASSERT_EQ(row.output[0][i], static_cast<float>(3 * x));
                    ASSERT_EQ(row.output[1][i], 22.5f);
                    ASSERT_NEAR(row.output[2][i], x - 99999.7, 1e-5);
                }
            }
    });
}

TEST(KernelRows, argumentsArriveInOrderAndAMissingAlphaIsOne) {
    EXPECT_EQ(kernel::rowOrder().inputs, 2);
    EXPECT_EQ(kernel::rowOrder().uniforms, 2);
    const std::vector<double> uniforms = {10, 100};
    forEachForm(kernel::rowOrder(), [&](void (*form)(const KernelRow&)) {
        for (const bool opaque : {false, true}) {
            Rows rows;
            for (std::size_t n = 0; n < 8; n++)
                for (std::size_t i = 0; i < kLongest; i++)
                    rows.plane(n)[i] = static_cast<float>(n + 1) + static_cast<float>(i) / 256;
            KernelRow row = rows.row(0, 100);
            if (opaque) row.inputs[0][3] = nullptr;
            for (std::size_t c = 0; c < 3; c++)
                row.output[c] = rows.plane(c); // over the first input
            row.uniforms = uniforms.data();
            form(row);
            for (std::size_t i = 0; i < 100; i++) {
                const float step = static_cast<float>(i) / 256;
                ASSERT_EQ(row.output[0][i], 10 * (1 + step));
                ASSERT_EQ(row.output[1][i], opaque ? 100 : 100 * (4 + step));
                ASSERT_EQ(row.output[2][i], 5.0f); // 7 - 2
            }
        }
    });
}

// Shuffling the pixels shuffles the results, bit for bit, though groups then skip other parts.
TEST(KernelRows, aPixelDoesNotDependOnItsNeighbours) {
    forEachForm(kernel::rowGrouped(), [](void (*form)(const KernelRow&)) {
        std::mt19937 random(99);
        std::uniform_real_distribution<float> value(-0.2f, 1.0f);
        constexpr std::size_t count = 3 * kRowGroup;
        std::vector<std::array<float, 3>> pixels(count);
        for (auto& p : pixels)
            p = {value(random), value(random) - 0.45f, value(random)};
        const auto run = [&](const std::vector<std::size_t>& order) {
            Rows rows;
            for (std::size_t i = 0; i < count; i++)
                for (std::size_t c = 0; c < 3; c++)
                    rows.plane(c)[i] = pixels[order[i]][c];
            const KernelRow row = rows.row(0, count);
            form(row);
            std::vector<std::array<float, 3>> result(count);
            for (std::size_t i = 0; i < count; i++)
                result[order[i]] = {row.output[0][i], row.output[1][i], row.output[2][i]};
            return result;
        };
        std::vector<std::size_t> order(count);
        for (std::size_t i = 0; i < count; i++)
            order[i] = i;
        std::sort(order.begin(), order.end(),
                  [&](std::size_t i, std::size_t k) { return pixels[i] < pixels[k]; });
        const auto sorted = run(order);
        for (int round = 0; round < 20; round++) {
            std::shuffle(order.begin(), order.end(), random);
            const auto shuffled = run(order);
            for (std::size_t i = 0; i < count; i++)
                ASSERT_EQ(std::memcmp(&sorted[i], &shuffled[i], 12), 0) << round << ' ' << i;
        }
    });
}

} // namespace kelvaro
#endif
