#!/usr/bin/env python3
"""Tests of the source checks: small made-up trees, each with one fault, must fail for that fault.

usage: test_checks.py SOURCE_FOLDER
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(sys.argv.pop(1)).resolve()
TOOLS = SOURCE / "tools"

SOUND = {
    "src/base/Result.h": "#pragma once\n#include <variant>\n",
    "src/platform/Files.h": '#pragma once\n#include "base/Result.h"\n',
    "src/platform/codecs/Jpeg.cpp": '#include "platform/Files.h"\n#include <jpeglib.h>\n',
    "src/platform/imaging/kernels/Sum.cpp": '#include "platform/dialect/Dialect.h"\n',
    "src/platform/dialect/Dialect.h": "#pragma once\n#include <hwy/highway.h>\n",
    "src/platform/system/Trash.cpp": "#include <QFile>\n",
    "src/recipe/Adjustments.h": '#pragma once\n#include "base/Result.h"\n',
    "src/develop/Pipeline.cpp": '#include "recipe/Adjustments.h"\n'
                                '#include "develop/kernels/Kernels.h"\n',
    "src/develop/kernels/Kernels.h": '#pragma once\n#include "platform/Files.h"\n',
    "src/develop/kernels/Tone.cpp": '#include "platform/dialect/Dialect.h"\n',
    "src/develop/Pipeline.h": "#pragma once\n",
    "src/cli/main.cpp": '#include "develop/Pipeline.h"\n#include "platform/Files.h"\n',
    "tests/platform/codecs/test_Jpeg.cpp": '#include <jpeglib.h>\n'
                                           '#include "platform/dialect/Dialect.h"\n',
}

# name: (files that replace or join the sound tree, what the message must say)
FAULTS = {
    "up": ({"src/recipe/Stored.h": '#include "develop/kernels/Kernels.h"\n'},
           "src/recipe/Stored.h:1: recipe may not include develop/kernels"),
    "base sees platform": ({"src/base/Clock.h": '#pragma once\n#include "platform/Files.h"\n'},
                           "base may not include platform"),
    "develop names a sub-folder": (
        {"src/develop/Pipeline.cpp": '#include "platform/dialect/Dialect.h"\n'},
        "develop may not include platform/dialect"),
    "sub-folders of the platform see each other": (
        {"src/platform/raw/Raw.cpp": '\n\n#include "platform/codecs/Jpeg.h"\n',
         "src/platform/codecs/Jpeg.h": "#pragma once\n"},
        "src/platform/raw/Raw.cpp:3: platform/raw may not include platform/codecs"),
    "an interface sees what fulfils it": (
        {"src/platform/Files.cpp": '#include "platform/dialect/Dialect.h"\n'},
        "platform may not include platform/dialect"),
    "relative path": ({"src/recipe/Stored.cpp": '#include "../develop/kernels/Kernels.h"\n'},
                      "recipe may not include develop/kernels"),
    "spaced directive": ({"src/recipe/Stored.cpp": '  #  include "develop/kernels/Kernels.h"\n'},
                         "recipe may not include develop/kernels"),
    "source sees a test": ({"src/recipe/Stored.cpp": '#include "../../tests/Fake.h"\n',
                            "tests/Fake.h": "#pragma once\n"},
                           "src/ may not include tests/Fake.h"),
    "unknown folder": ({"src/misc/Helpers.h": "#pragma once\n"}, "the rules do not know"),
    "unknown sub-folder": ({"src/platform/extra/Helpers.h": "#pragma once\n"},
                           "the rules do not know"),
    "missing file": ({"src/recipe/Stored.cpp": '#include "base/Gone.h"\n'},
                     "there is no base/Gone.h"),
    "cycle": ({"src/base/Result.h": '#pragma once\n#include "base/Failure.h"\n',
               "src/base/Failure.h": '#pragma once\n#include "base/Other.h"\n',
               "src/base/Other.h": '#pragma once\n#include "base/Result.h"\n'},
              "include cycle: src/base/Failure.h"),
    "self": ({"src/base/Result.h": '#include "base/Result.h"\n'}, "include cycle"),
}
LIBRARY_FAULTS = {  # header: (a file that may not see it)
    "jpeglib.h": "src/platform/raw/A.cpp", "png.h": "src/cli/A.cpp",
    "tiffio.h": "src/platform/metadata/A.cpp", "libheif/heif.h": "src/develop/A.cpp",
    "lcms2.h": "src/platform/system/A.cpp", "libraw/libraw.h": "src/platform/codecs/A.cpp",
    "exiv2/exiv2.hpp": "src/platform/codecs/A.cpp", "QString": "src/platform/system/A.h",
    "QtCore/QFile": "src/cli/A.cpp", "sqlite3.h": "src/platform/system/A.cpp",
    "tbb/parallel_for.h": "src/develop/A.cpp", "oneapi/tbb/task_group.h": "src/recipe/A.cpp",
    "hwy/highway.h": "src/develop/A.cpp",
}
# line of links.txt: what the message must say, None where it is sound
LINKS = {
    "src/develop kelvaro_develop : kelvaro_recipe fmt::fmt": None,
    "src/platform/codecs kelvaro_codecs : kelvaro_platform JPEG::JPEG": None,
    "src/platform/imaging kelvaro_imaging : kelvaro_dialect PkgConfig::HWY TBB::tbb": None,
    "src/develop kelvaro_pipeline : kelvaro_dialect": None,
    "tests/recipe test_recipe : kelvaro_develop LibRaw::raw_r": None,
    "src/recipe kelvaro_recipe : kelvaro_develop": "recipe may not link kelvaro_develop of develop",
    "src/develop kelvaro_develop : kelvaro_codecs":
        "develop may not link kelvaro_codecs of platform/codecs",
    "src/platform kelvaro_platform : kelvaro_dialect":
        "platform may not link kelvaro_dialect of platform/dialect",
    "src/cli kelvaro-cli : Qt6::Core": "Qt6::Core may be linked only in",
    "src/platform/codecs kelvaro_codecs : LibRaw::raw_r": "may be linked only in platform/raw",
    "src/misc kelvaro_misc : kelvaro_base": "the rules do not know",
}


def write(root, files):
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def run(tool, *arguments):
    done = subprocess.run([str(TOOLS / tool), *map(str, arguments)], text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    return done.returncode, done.stdout


class Checks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kelvaro checks ")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()

    def check_includes(self, files, links=None):
        write(self.root, {**SOUND, **files})
        arguments = ["--rules", TOOLS / "include_rules.txt"]
        if links is not None:
            write(self.root, {"links.txt": links})
            arguments += ["--links", self.root / "links.txt"]
        return run("check_includes", *arguments, self.root)

    def assert_fault(self, outcome, message):
        code, output = outcome
        self.assertEqual(code, 1, output)
        self.assertIn(message, output)
        self.assertIn(", 1 faults", output)

    def test_sound_tree(self):
        self.assertEqual(self.check_includes({}), (0, f"{len(SOUND)} files, 0 faults\n"))

    def test_comments_do_not_count(self):
        code, output = self.check_includes(
            {"src/recipe/A.h": '// #include "develop/kernels/Kernels.h"\n'
                               '/*\n#include <libraw/libraw.h>\n*/\n'})
        self.assertEqual(code, 0, output)

    def test_faults(self):
        for name, (files, message) in FAULTS.items():
            with self.subTest(name):
                self.setUp()
                self.assert_fault(self.check_includes(files), message)

    def test_library_headers(self):
        for header, place in LIBRARY_FAULTS.items():
            with self.subTest(header):
                self.setUp()
                self.assert_fault(self.check_includes({place: f"#include <{header}>\n"}),
                                  f"{place}:1: {header} may be included only in")

    def test_links(self):
        known = "".join(f"src/{folder} kelvaro_{folder.split('/')[-1]} : \n"
                        for folder in ("base", "platform", "recipe", "develop", "platform/codecs",
                                        "platform/dialect", "platform/imaging"))
        for line, message in LINKS.items():
            with self.subTest(line):
                self.setUp()
                name = line.split()[1]
                others = "".join(k + "\n" for k in known.splitlines() if k.split()[1] != name)
                outcome = self.check_includes({}, others + line + "\n")
                if message is None:
                    self.assertEqual(outcome[0], 0, outcome[1])
                else:
                    self.assert_fault(outcome, message)

    def test_empty_tree_is_a_fault(self):
        code, output = run("check_includes", "--rules", TOOLS / "include_rules.txt", self.root)
        self.assertEqual(code, 1, output)

    def test_format(self):
        style = (SOURCE / ".clang-format").read_text()
        for text, expected in (("int a = 1;\n", 0), ("int  a=1;\n", 1)):
            write(self.root, {".clang-format": style, "src/base/A.cpp": text})
            code, output = run("check_format", self.root)
            self.assertEqual(code != 0, expected != 0, output)

    def test_headers(self):
        compile_command = {"directory": str(self.root), "file": str(self.root / "src/base/A.cpp"),
                           "command": "clang++-14 -std=c++20 -Wall -Werror -o A.o -c A.cpp"}
        for text, expected in (("#include <string>\nstd::string name();\n", 0),
                               ("std::string name();\n", 1)):
            write(self.root, {"src/base/A.h": "#pragma once\n" + text,
                              "compile_commands.json": f"[{compile_command}]".replace("'", '"')})
            code, output = run("check_headers", self.root, self.root)
            self.assertEqual(code, expected, output)


if __name__ == "__main__":
    unittest.main()
