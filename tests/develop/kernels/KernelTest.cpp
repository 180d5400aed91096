#include "KernelTest.h"

#include "platform/Raster.h"

#include <hwy/aligned_allocator.h>
#include <hwy/highway.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

namespace kelvaro::test {
namespace {

constexpr std::size_t kRowLength = 1000; // not a multiple of any group

// Planes of one row of samples, as a renderer would hold them.
class Planes {
public:
    Planes(const Kernel& kernel, const Sample* samples, std::size_t count) : count_(count) {
        stride_ = (count + kRowGroup - 1) / kRowGroup * kRowGroup;
        values_ = hwy::AllocateAligned<float>(stride_ * (4 * kMaximumKernelInputs + 3));
        std::fill_n(values_.get(), stride_ * (4 * kMaximumKernelInputs + 3), 0.5f);
        for (int n = 0; n < kernel.inputs; n++)
            for (int channel = 0; channel < 4; channel++)
                for (std::size_t i = 0; i < count; i++)
                    plane(n * 4 + channel)[i] = static_cast<float>(samples[i].inputs[n][channel]);
    }

    void run(void (*form)(const KernelRow&), const Sample& first,
             const std::vector<double>& uniforms) {
        KernelRow row;
        for (int n = 0; n < kMaximumKernelInputs; n++)
            for (int channel = 0; channel < 4; channel++)
                row.inputs[n][channel] = plane(n * 4 + channel);
        for (int channel = 0; channel < 3; channel++)
            row.output[channel] = output(channel);
        row.count = count_;
        row.x = first.x;
        row.y = first.y;
        row.uniforms = uniforms.data();
        form(row);
    }
    Rgb result(std::size_t i) { return {output(0)[i], output(1)[i], output(2)[i]}; }

private:
    float* plane(int n) { return values_.get() + stride_ * static_cast<std::size_t>(n); }
    float* output(int channel) { return plane(4 * kMaximumKernelInputs + channel); }

    std::size_t count_, stride_;
    hwy::AlignedFreeUniquePtr<float[]> values_;
};

bool hasInfinity(const Sample& sample, int inputs) {
    for (int n = 0; n < inputs; n++)
        for (const double v : sample.inputs[n])
            if (std::isinf(v)) return true;
    return false;
}

// How far a form's pixel is from the expected one, in tolerances. What is beyond float is infinite
// there.
// Infinite inputs give infinity in one order of the steps and NaN in another: there either is
// right.
double distance(const Rgb& actual, const Rgb& expected, bool infinite, const Comparison& how) {
    const double limit = std::numeric_limits<float>::max();
    double scale = 1, worst = 0;
    if (how.mixesChannels)
        for (const double e : expected)
            scale = std::max(scale, std::min(std::abs(e), limit));
    for (int c = 0; c < 3; c++) {
        const bool beyond = !(std::abs(expected[c]) <= limit) && !(std::abs(actual[c]) <= limit);
        if (infinite && beyond) continue;
        if (std::isnan(expected[c]) != std::isnan(actual[c])) return INFINITY;
        if (std::isnan(expected[c])) continue;
        const double e = std::clamp(expected[c], -limit, limit);
        const double error = std::abs(std::clamp(actual[c], -limit, limit) - e);
        worst = std::max(worst, error / (how.tolerance * std::max(scale, std::abs(e))));
    }
    return worst;
}

// Bit for bit, but for what NaNs carry.
bool same(const Rgb& a, const Rgb& b) {
    for (int c = 0; c < 3; c++)
        if (std::bit_cast<std::uint64_t>(a[c]) != std::bit_cast<std::uint64_t>(b[c]) &&
            !(std::isnan(a[c]) && std::isnan(b[c])))
            return false;
    return true;
}

struct Tally {
    std::size_t count = 0, missed = 0;
    double worst = 0;
    std::string story;

    void add(const Sample& sample, const Rgb& actual, const Rgb& expected, const Comparison& how,
             int inputs, const std::vector<double>& uniforms) {
        count++;
        const bool infinite = hasInfinity(sample, inputs);
        const double d = distance(actual, expected, infinite, how);
        if (d <= 1) return;
        for (const Transcription& neighbour : how.neighbours)
            if (distance(actual, neighbour(sample, uniforms), infinite, how) <= 1) return;
        missed++;
        if (d <= worst) return;
        worst = d;
        std::ostringstream text;
        text.precision(9);
        text << "at (" << sample.x << ", " << sample.y << ")";
        for (int n = 0; n < inputs; n++) {
            text << " input " << n << " (";
            for (const double v : sample.inputs[n])
                text << v << ' ';
            text << ')';
        }
        text << " expected " << expected[0] << ' ' << expected[1] << ' ' << expected[2] << " got "
             << actual[0] << ' ' << actual[1] << ' ' << actual[2];
        story = text.str();
    }
    void report(const std::string& form, const Comparison& how) const {
        EXPECT_LE(static_cast<double>(missed), how.exceptions * static_cast<double>(count))
            << form << ": " << missed << " of " << count << ", worst " << worst << " tolerances "
            << story;
    }
};

// The samples' places follow one another along a row; rows are far apart.
void place(std::vector<Sample>& samples) {
    for (std::size_t i = 0; i < samples.size(); i++) {
        const auto row = static_cast<double>(i / kRowLength);
        samples[i].x = 37.5 + 40000 * std::fmod(row, 3) + static_cast<double>(i % kRowLength);
        samples[i].y = 20.5 + 977 * row;
    }
}

} // namespace

// gcc 12 drops this rounding where it vectorises pairs of doubles, unless it has to store the
// float.
double exact(double value) {
    volatile const auto rounded = static_cast<float>(value);
    return rounded;
}

std::vector<Sample> samplesFor(const Kernel& kernel, const Comparison& how) {
    std::vector<Sample> samples;
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> unit(0, 1);
    const auto other = [&](int n) {
        Rgba c{0, 0, 0, exact(unit(random))};
        const bool guide = how.guides && n > 0;
        for (int k = 0; k < 3; k++)
            c[k] =
                exact(guide ? 2 * unit(random) - 1 : how.low + unit(random) * (how.high - how.low));
        return c;
    };
    const auto add = [&](const Rgb& first) {
        Sample s;
        for (int n = 0; n < kMaximumKernelInputs; n++)
            s.inputs[n] = other(n);
        for (int k = 0; k < 3; k++)
            s.inputs[0][k] = exact(first[k]);
        samples.push_back(s);
    };
    for (int i = 0; i <= 1040; i++) {
        const double v = how.low + i * (how.high - how.low) / 1040;
        add({v, v, v});
    }
    for (int i = 0; i < 3000; i++) // colours of a picture
        add({unit(random), unit(random), unit(random)});
    for (int i = 0; i < 3000; i++) {
        Rgb c;
        for (double& v : c)
            v = how.low + unit(random) * (how.high - how.low);
        add(c);
    }
    for (int i = 0; i < 3000; i++) { // from the deepest shadows up, some channels a little negative
        Rgb c;
        for (double& v : c) {
            v = std::exp2(-20 + unit(random) * (20 + std::log2(how.high)));
            if (unit(random) < 0.1) v = std::max(-v * 0.2, how.low);
        }
        add(c);
    }
    if (how.specials && kernel.inputs > 0) {
        std::vector<double> values = {0.0, -0.0, 0.3, -0.4, 1.0, 1e-40, -1e-40, 1e-38, NAN};
        if (how.infinities) values.insert(values.end(), {INFINITY, -INFINITY});
        for (const double r : values)
            for (const double g : values)
                for (const double b : values)
                    add({r, g, b});
        for (int n = 1; n < kernel.inputs; n++)
            for (const double v : values) {
                add({0.3, 0.2, 0.1});
                samples.back().inputs[n] = {v, v, v, 1};
            }
    }
    place(samples);
    return samples;
}

void compareAllForms(const Kernel& kernel, const std::vector<std::vector<double>>& uniformSets,
                     const Transcription& expected, const Comparison& how) {
    // All samples run, so that a pixel which is no number cannot spread; those are judged for which
    // the comparison holds.
    Comparison any = how, ordinary = how;
    any.specials = any.infinities = true;
    ordinary.specials = false;
    const std::vector<Sample> samples = samplesFor(kernel, any);
    const std::size_t firstSpecial = samplesFor(kernel, ordinary).size();
    const auto isJudged = [&](std::size_t i) {
        if (i < firstSpecial) return true;
        return how.specials && (how.infinities || !hasInfinity(samples[i], kernel.inputs));
    };
    for (const std::vector<double>& uniforms : uniformSets) {
        ASSERT_EQ(static_cast<int>(uniforms.size()), kernel.uniforms);
        std::ostringstream title;
        title << kernel.name;
        for (const double u : uniforms)
            title << ' ' << u;
        SCOPED_TRACE(title.str());

        std::vector<Rgb> wanted;
        for (const Sample& s : samples)
            wanted.push_back(expected(s, uniforms));

        const auto checkRows = [&](const std::string& form, void (*run)(const KernelRow&)) {
            Tally tally;
            std::size_t moved = 0; // results that changed with the neighbours
            for (std::size_t i = 0; i < samples.size(); i += kRowLength) {
                const std::size_t count = std::min(kRowLength, samples.size() - i);
                Planes planes(kernel, &samples[i], count);
                planes.run(run, samples[i], uniforms);
                Planes regrouped(kernel, &samples[i + 5], count - 5);
                regrouped.run(run, samples[i + 5], uniforms);
                for (std::size_t k = 0; k < count; k++) {
                    if (isJudged(i + k))
                        tally.add(samples[i + k], planes.result(k), wanted[i + k], how,
                                  kernel.inputs, uniforms);
                    moved += k >= 5 && !same(planes.result(k), regrouped.result(k - 5));
                }
            }
            EXPECT_EQ(moved, 0) << form;
            tally.report(form, how);
        };
        for (const std::int64_t target : instructionSets()) {
            chooseInstructionSet(target);
            checkRows(hwy::TargetName(target), kernel.vector);
        }
        chooseInstructionSet(0);
        checkRows("scalar", kernel.scalar);

        Tally tally;
        for (std::size_t i = 0; i < samples.size(); i++) {
            if (!isJudged(i)) continue;
            KernelPixel pixel{};
            for (int n = 0; n < kernel.inputs; n++)
                std::copy(samples[i].inputs[n].begin(), samples[i].inputs[n].end(),
                          pixel.inputs[n]);
            pixel.x = samples[i].x;
            pixel.y = samples[i].y;
            pixel.uniforms = uniforms.data();
            kernel.reference(pixel);
            tally.add(samples[i], {pixel.output[0], pixel.output[1], pixel.output[2]}, wanted[i],
                      how, kernel.inputs, uniforms);
        }
        tally.report("reference", how);
    }
}

Rgb vectorPixel(const Kernel& kernel, const Sample& sample, const std::vector<double>& uniforms) {
    Planes planes(kernel, &sample, 1);
    planes.run(kernel.vector, sample, uniforms);
    return planes.result(0);
}

std::vector<std::int64_t> instructionSets() {
    return hwy::SupportedAndGeneratedTargets();
}

void chooseInstructionSet(std::int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

double clamped(double x, double low, double high) {
    return !(x > low) ? low : x < high ? x : high;
}

double smoothstep(double low, double high, double x) {
    const double t = (x - low) / (high - low);
    if (!(t > 0)) return 0;
    return t < 1 ? t * t * (3 - 2 * t) : 1;
}

double boundedLog2(double x) {
    return x > 0x1p-126 ? std::min(std::log2(x), 128.0) : -126.0;
}

} // namespace kelvaro::test
