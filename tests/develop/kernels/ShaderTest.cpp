// Every kernel text as a compute shader: the prelude, the text, and for each kernel a call with
// arguments from buffers, through glslc.
#include "develop/kernels/Kernels.h"
#include "places/Places.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <vector>

#include <unistd.h>

namespace kelvaro::test {
namespace {

const std::filesystem::path kSource = places::source() / "src";

std::string contents(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

struct Family {
    const char* file;
    std::vector<const Kernel*> kernels;
};

std::vector<Family> families() {
    using namespace kernel;
    return {
        {"Colour", {&twColour(), &twMono(), &twGamut(), &twOutputGamut(), &displayGamut()}},
        {"Domain", {&bitmapToScene(), &sceneToBitmap(), &bitmapRelit(), &rawColour()}},
        {"Finish", {&kelvaroTone(), &twVignette(), &kelvaroGrain()}},
        {"Guide",
         {&twLogLuma(), &twGuideAB(), &rawLogNorm(), &rawGuide(), &rawApplyAB(), &rawMidDetail()}},
        {"Haze", {&sceneHaze()}},
        {"Mask", {&twMaskLinear(), &twMaskRadial(), &twMaskCombine(), &twMaskFinish(), &twLocal()}},
        {"Overlay", {&twMaskOverlay(), &twClipping()}},
        {"Reduction", {&compressedLight(), &expandedLight()}},
        {"Rendering", {&rawRendering()}},
        {"SceneTone", {&rawGain(), &sceneTone(), &rawTone(), &bitmapTone()}}};
}

// One call per kernel, its arguments read off the text's own signature.
std::string callOf(const Kernel& kernel, const std::string& text) {
    std::smatch signature;
    const std::regex pattern("KERNEL Float3 " + std::string(kernel.name) + "\\(([^)]*)\\)");
    if (!std::regex_search(text, signature, pattern)) return "missing";
    std::istringstream parameters(signature[1].str());
    std::string call, parameter;
    int inputs = 0, uniforms = 0;
    while (std::getline(parameters, parameter, ',')) {
        std::string type;
        std::istringstream(parameter) >> type;
        call += call.empty() ? "" : ", ";
        if (type == "Float3") call += "image[" + std::to_string(inputs++) + "].xyz";
        if (type == "Float2") call += "image[" + std::to_string(inputs++) + "].xy";
        if (type == "Float") call += "image[" + std::to_string(inputs - 1) + "].w";
        if (type == "Pixel") call += "vec2(gl_GlobalInvocationID.xy) + 0.5";
        if (type == "Uniform") call += "uniforms[" + std::to_string(uniforms++) + "]";
    }
    EXPECT_EQ(inputs, kernel.inputs) << kernel.name;
    EXPECT_EQ(uniforms, kernel.uniforms) << kernel.name;
    return "    total += " + std::string(kernel.name) + "(" + call + ");\n";
}

} // namespace

TEST(Shaders, glslcAcceptsEveryText) {
    if (std::system("glslc --version > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "glslc is not installed (Debian package glslc)";
    const auto folder =
        std::filesystem::temp_directory_path() / ("kelvaro-shaders-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    for (const Family& family : families()) {
        const std::string text =
            contents(kSource / "develop/kernels" / (std::string(family.file) + ".kernel"));
        const auto shader = folder / (std::string(family.file) + ".comp");
        std::ofstream out(shader);
        out << "#version 450\n#extension GL_GOOGLE_include_directive : require\n"
            << "layout(local_size_x = 16, local_size_y = 4) in;\n"
            << "layout(binding = 0) buffer Pixels { vec4 image[4]; float uniforms[24]; vec4 "
               "result; };\n"
            << "#include \"platform/dialect/Prelude.glsl\"\n#include \"develop/kernels/"
            << family.file << ".kernel\"\nvoid main() {\n    vec3 total = vec3(0.0);\n";
        for (const Kernel* kernel : family.kernels)
            out << callOf(*kernel, text);
        out << "    result = vec4(total, 1.0);\n}\n";
        out.close();
        const auto log = folder / "log";
        const std::string command = "glslc -Werror --target-env=vulkan1.1 -I '" + kSource.string() +
                                    "' -o '" + (folder / "out.spv").string() + "' '" +
                                    shader.string() + "' > '" + log.string() + "' 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << contents(log);
    }
    std::filesystem::remove_all(folder);
}

} // namespace kelvaro::test
