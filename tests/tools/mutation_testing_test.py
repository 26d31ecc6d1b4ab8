#!/usr/bin/env python3
"""Mutation testing finds what no test notices, in a small tree of its own, and leaves that tree as it was."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))
sys.dont_write_bytecode = True
from mutation import mutations, trials  # noqa: E402

TOY = {
    "CMakePresets.json": """{"version": 6, "configurePresets": [{"name": "release", "generator": "Ninja",
        "binaryDir": "${sourceDir}/build/release"}]}""",
    "CMakeLists.txt": """cmake_minimum_required(VERSION 3.25)
        project(Toy LANGUAGES CXX)
        set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
        add_executable(test_toy toy/Steps.cpp TestToy.cpp)""",
    "toy/Steps.cpp": """bool isFew(int n) {
  return n < 3;
}
int stepsTo(int end) {
  int steps = 0;
  for (int at = 0; at != end; ++at) steps += 1;
  return steps;
}
""",
    # Three is not asked for, nor whether anything above one hundred is few.
    "TestToy.cpp": """bool isFew(int n);
        int stepsTo(int end);
        int main() { return isFew(1) && !isFew(100) && stepsTo(2) == 2 && stepsTo(0) == 0 ? 0 : 1; }""",
}


def shown(text):
    return [(each.line, each.becomes) for each in mutations.mutations_of("a.cpp", text)]


def becomes(text):
    return [after for _, after in shown(text)]


class Mutations(unittest.TestCase):
    def test_comparisons_numbers_and_returned_values_change(self):
        self.assertEqual(
            becomes("return n < 3;"),
            ["return {};", "return n <= 3;", "return n > 3;", "return n < 2;", "return n < 4;"],
        )

    def test_what_is_called_or_set_is_left_out(self):
        self.assertIn("(removed)", becomes("{\n  list.clear();\n}"))
        self.assertIn("(removed)", becomes("{\n  ++count_;\n}"))
        self.assertIn("if (ready) (removed)", becomes("{\n  if (ready) box->value = other;\n}"))

    def test_declarations_stay(self):
        for text in ("QLabel label(name);", "std::vector<int> list(all);", "int value = other;", "T& at(i);", "A(A) = delete;"):
            self.assertEqual(becomes("{\n  %s\n}" % text), [], text)

    def test_conditions_are_negated_unless_they_declare(self):
        self.assertIn("if (!(a.empty())) b();", becomes("{\n  if (a.empty()) b();\n}"))
        self.assertNotIn("!(", "".join(becomes("{\n  if (const auto* a = b()) return;\n}")))

    def test_comments_directives_templates_and_references_are_left_alone(self):
        for text in ("// n < 3", "/* true */", "#if A < 3\n", "template <int> struct A;", "void f(A&& a, B* b);", 'R"(1 < 2)"'):
            self.assertEqual(becomes(text), [], text)

    def test_texts_change_where_they_are_read(self):
        for before, after in {'"Open"': '"Ppen"', '"%i"': '"~%i"', '"%i of"': '"%i pf"', r'"\n"': r'"~\n"', '""': '"~"',
                              '"&File"': '"&Gile"', '"%1: z"': '"%1: y"', '":"': '"~"'}.items():  # fmt: skip
            self.assertEqual(becomes(before), [after])

    def test_numbers_change_by_one_in_their_last_place(self):
        for before, after in {"1": ["0", "2"], "0U": ["1U"], "0x1F": ["0x1E", "0x20"], "254.0F": ["253.0F", "255.0F"],
                              "0.95": ["0.94", "0.96"], "1'000": ["1001", "999"]}.items():  # fmt: skip
            self.assertEqual(becomes(before), after)

    def test_functions_that_round_become_others(self):
        self.assertIn("return std::floor(a);", becomes("return std::round(a);"))
        self.assertIn("return std::max(a, b);", becomes("return std::min(a, b);"))

    def test_a_change_touches_nothing_else(self):
        text = "a = 1;\nb = 2;\n"
        changed = {each.applied_to(text) for each in mutations.mutations_of("a.cpp", text) if each.line == "b = 2;"}
        self.assertEqual(changed, {"a = 1;\nb = 1;\n", "a = 1;\nb = 3;\n", "a = 1;\nwhile (false) b = 2;\n"})

    def test_every_beginning_of_the_choice_is_spread_over_files(self):
        files = {"a.cpp": "a = 1;\n" * 10, "b.cpp": "b = 2;\n" * 10}
        chosen = mutations.spread([each for path, text in files.items() for each in mutations.mutations_of(path, text)], 7)
        self.assertEqual(len(chosen), 20)  # one a line
        for count in (2, 8, 20):
            self.assertEqual(sum(each.path == "a.cpp" for each in chosen[:count]), count / 2)

    def test_a_seed_always_chooses_the_same(self):
        lines = [f"a{i} = {i};" for i in range(20)]

        def choice(seed, text):
            return [each.becomes for each in mutations.spread(list(mutations.mutations_of("a.cpp", text)), seed)]

        self.assertEqual(choice(1, "\n".join(lines)), choice(1, "\n".join(["// moved", *lines])))
        self.assertNotEqual(choice(1, "\n".join(lines)), choice(2, "\n".join(lines)))


class Output(unittest.TestCase):
    def test_what_failed_first_is_found_and_what_crashed(self):
        ran = "[ RUN      ] A.B\n[       OK ] A.B (0 ms)\n[ RUN      ] A.C\nwhat is said\n"
        skipped = "[ RUN      ] A.D\n[  SKIPPED ] A.D (0 ms)\n"
        self.assertEqual(trials.failed_test(ran), "A.C")
        self.assertEqual(trials.failed_test(ran + "[  FAILED  ] A.C (0 ms)\n" + skipped), "A.C")
        self.assertIsNone(trials.failed_test(ran + "[       OK ] A.C (0 ms)\n" + skipped))


class Toy(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chmod(folder.name, 0o755)
        self.root = pathlib.Path(folder.name)
        for path, text in TOY.items():
            self.write(path, text)

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text, encoding="utf-8")

    def command(self, *more):
        return [sys.executable, TOOLS / "mutation_testing.py", "--root", self.root, "--tests", "test_toy", "--limit", "60",
                "toy", *more]  # fmt: skip

    def run_on(self, *more):
        done = subprocess.run(self.command(*more), capture_output=True, text=True, check=False)
        return done.returncode, done.stdout, done.stderr

    def test_survivors_are_printed_and_counted(self):
        status, said, log = self.run_on("--at-most", "20")
        self.assertEqual(status, 1, said + log)
        self.assertIn("toy/Steps.cpp:2: return n < 3;\n", said)
        self.assertRegex(said, r"\n4 changes: \d killed, [12] survived \(\d+\.\d %\); besides, 0 equivalent, 0 did not compile\n$")
        for path, text in TOY.items():
            self.assertEqual((self.root / path).read_text(encoding="utf-8"), text, path)

        # What was killed is believed; a better test kills the survivor.
        self.write("TestToy.cpp", TOY["TestToy.cpp"].replace("isFew(1)", "!isFew(3) && isFew(2) && !isFew(4)"))
        status, said, log = self.run_on("--again")
        self.assertEqual((status, said.count("survived:")), (0, 0), said + log)

    def test_a_hang_is_noticed(self):
        self.write("toy/Steps.cpp", "bool isFew(int n) { return n == 1; }\nint stepsTo(int end) {\n  int at = 0;\n"
                   "  while (at < end)\n    ++at;\n  return at;\n}\n")  # fmt: skip
        status, said, log = self.run_on("--count", "20", "--limit", "5", "--at-most", "100")
        self.assertEqual(status, 0, said + log)
        self.assertIn("killed by test_toy (hangs): toy/Steps.cpp:5", log)

    def test_equivalents_are_not_tried(self):
        tried = mutations.spread(list(mutations.mutations_of("toy/Steps.cpp", TOY["toy/Steps.cpp"])), 1)
        entries = [{"file": file, "line": line, "becomes": becomes, "reason": "nobody asks"}
                   for file, line, becomes in (each.key for each in tried)]  # fmt: skip
        self.write("tools/mutation/equivalent.json", json.dumps(entries))
        status, said, log = self.run_on()
        self.assertEqual(status, 2, said + log)
        self.assertIn("0 changes: 0 killed, 0 survived (0.0 %); besides, 4 equivalent", said)

    def test_the_list_is_what_would_be_tried(self):
        status, said, log = self.run_on("--list", "--count", "2")
        self.assertEqual((status, said.count("became:")), (0, 2), said + log)
        self.assertFalse((self.root / "build").exists())

    def test_tests_that_fail_anyway_measure_nothing(self):
        self.write("TestToy.cpp", TOY["TestToy.cpp"].replace("isFew(1)", "isFew(9)"))
        status, said, log = self.run_on("--jobs", "1")
        self.assertEqual(status, 2, said + log)
        self.assertIn("test_toy fails without any change", log)

    def test_interrupted_it_leaves_nothing_changed_behind(self):
        self.write("toy/Steps.cpp", TOY["toy/Steps.cpp"].replace("at != end", "at < end"))
        before = (self.root / "toy/Steps.cpp").read_text(encoding="utf-8")
        with subprocess.Popen(self.command("--jobs", "1"), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as run:
            run.stderr.readline()  # the first verdict: others follow
            time.sleep(0.2)
            run.terminate()
            said, _ = run.communicate(timeout=300)
        self.assertEqual(run.returncode, 130)
        self.assertIn("changes:", said)
        self.assertEqual((self.root / "toy/Steps.cpp").read_text(encoding="utf-8"), before)
        self.assertEqual((self.root / "build/mutation/0/tree/toy/Steps.cpp").read_text(encoding="utf-8"), before)


    def test_interrupted_before_the_first_trial_it_ends(self):
        self.write("TestToy.cpp", "int main() { for (;;) {} }")
        with subprocess.Popen(self.command("--jobs", "1"), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as run:
            binary = self.root / "build/mutation/0/tree/build/release/bin/test_toy"
            while not binary.exists():
                time.sleep(0.1)
            time.sleep(0.3)
            run.terminate()
            run.communicate(timeout=300)
        self.assertEqual(run.returncode, 130)


if __name__ == "__main__":
    unittest.main()
