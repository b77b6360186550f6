"""tools/check_layers accepts the project's tree and names each kind of offence in a tree made to offend."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
CHECK = ROOT / "tools" / "check_layers"


def check(root):
    result = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True, check=False)
    return result.returncode, result.stdout


def check_tree(files):
    """Runs the check on a tree of the given files, {path: text}."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            file = pathlib.Path(folder, name)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
        return check(folder)


MASK = "include/qel/algorithm/bit_mask.hpp"
LABELLER = "include/qel/algorithm/connected_components.hpp"
INTERNAL = "src/bit_mask/word_table.hpp"


class CheckLayers(unittest.TestCase):
    def test_the_projects_own_tree_holds(self):
        self.assertEqual(check(ROOT), (0, "the layers hold\n"))

    def test_a_higher_layer_may_use_a_lower_one_but_not_the_reverse(self):
        down = {MASK: "", "src/concom/a.cpp": '#include "qel/algorithm/bit_mask.hpp"\n'}
        self.assertEqual(check_tree(down)[0], 0)
        up = {LABELLER: "", "src/bit_mask/a.cpp": '\n#include "qel/algorithm/connected_components.hpp"\n'}
        self.assertEqual(check_tree(up), (1, "src/bit_mask/a.cpp:2: layer bit_mask must not include "
                                             "qel/algorithm/connected_components.hpp (layer concom)\n"))

    def test_internal_headers_stay_in_their_folder(self):
        for user in ("src/concom/a.cpp", "plugins/motion/a.cpp", "host/a.cpp"):
            with self.subTest(user):
                code, text = check_tree({INTERNAL: "", user: '#include "bit_mask/word_table.hpp"\n'})
                self.assertEqual(code, 1)
                self.assertIn(f"{user}:1: bit_mask/word_table.hpp is internal to src/bit_mask", text)
        self.assertEqual(check_tree({INTERNAL: "", "src/bit_mask/a.cpp": '#include "bit_mask/word_table.hpp"\n'})[0], 0)

    def test_a_platform_library_knows_only_its_own_lower_layers(self):
        tree = {"platform/media/include/qel/media/a.hpp": "",
                "platform/hash/a.cpp": "#include <qel/media/a.hpp>\n",
                "platform/inference/a.cpp": "#include <qel/media/a.hpp>\n"}
        self.assertEqual(check_tree(tree),
                         (1, "platform/hash/a.cpp:1: layer hash must not include qel/media/a.hpp (layer media)\n"))

    def test_nobody_includes_a_plugin(self):
        tree = {"plugins/motion/model.hpp": "", "plugins/motion/a.cpp": '#include "model.hpp"\n',
                "host/a.cpp": '#include "plugins/motion/model.hpp"\n'}
        self.assertEqual(check_tree(tree),
                         (1, "host/a.cpp:1: nobody includes plugins/motion/model.hpp (plugins are leaves)\n"))

    def test_plugins_share_their_common_folder_and_nothing_else(self):
        tree = {"plugins/common/a.hpp": "", "plugins/motion/model.hpp": "",
                "plugins/motion/a.cpp": '#include "common/a.hpp"\n',
                "plugins/mask/a.cpp": '#include "motion/model.hpp"\n',
                "plugins/common/b.hpp": '#include "motion/model.hpp"\n', "host/a.cpp": '#include "common/a.hpp"\n'}
        code, text = check_tree(tree)
        self.assertEqual(code, 1)
        self.assertEqual(text.splitlines(), [
            "plugins/common/b.hpp:1: nobody includes motion/model.hpp (plugins are leaves)",
            "plugins/mask/a.cpp:1: nobody includes motion/model.hpp (plugins are leaves)",
            "host/a.cpp:1: nobody includes common/a.hpp (plugins are leaves)"])

    def test_the_generated_export_header_belongs_to_its_library(self):
        tree = {"platform/hash/a.cpp": '#include "qel/type/export.hpp"\n',
                "src/bit_mask/a.cpp": '#include "qel/algorithm/export.hpp"\n'}
        self.assertEqual(check_tree(tree), (1, "platform/hash/a.cpp:1: layer hash must not include "
                                               "qel/type/export.hpp (layer type)\n"))

    def test_external_libraries_stay_where_they_are_wanted(self):
        tree = {"src/video/a.cpp": "#include <spdlog/spdlog.h>\n#include <gst/gst.h>\n#include <gtest/gtest.h>\n",
                "platform/logging/a.cpp": "#include <spdlog/spdlog.h>\n", "host/a.cpp": "#include <gst/gst.h>\n"}
        self.assertEqual(check_tree(tree), (1, "src/video/a.cpp:1: only platform/logging may include <spdlog/spdlog.h>\n"
                                               "src/video/a.cpp:2: only host, examples may include <gst/gst.h>\n"
                                               "src/video/a.cpp:3: only tests and benchmarks may include "
                                               "<gtest/gtest.h>\n"))

    def test_a_missing_header_and_an_unknown_layer_are_named(self):
        self.assertEqual(check_tree({"src/video/a.cpp": '#include "qel/type/none.hpp"\n', "src/other/a.cpp": ""}),
                         (1, "src/other/a.cpp: belongs to no known layer ('other'): add it to tools/check_layers\n"
                             "src/video/a.cpp:1: there is no header qel/type/none.hpp\n"))


if __name__ == "__main__":
    unittest.main()
