#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which wrong changes are made of a piece of source, and that they are made the same way every time."""
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import changes  # noqa: E402
import mutate  # noqa: E402

VOCABULARY = changes.Vocabulary(["Kind::one Kind::two", "kMaskCommandLeft kMaskCommandRight", "- (void)showWindow; - (void)hideWindow;"])


def titles(body, name="a.cpp"):
    return [c.title for c in changes.Source(name, body, VOCABULARY).changes()]


class Changes(unittest.TestCase):
    def expect(self, body, *wanted, name="a.cpp"):
        made = titles(body, name)
        for title in wanted:
            self.assertIn(title, made)

    def test_of_statements(self):
        self.expect("void f() { call(a); x.y = 1; }", "statement: call(a); -> ;", "statement: x.y = 1; -> ;")
        self.assertNotIn("statement: Type name(a); -> ;", titles("void f() { Type name(a); }"))

    def test_of_conditions(self):
        self.expect("void f() { if (a && !b) g(); }", "condition: a && !b -> !(a && !b)", "condition: a && !b -> false",
                    "condition: && -> ||", "condition: ! -> (nothing)", "condition: && !b -> (nothing)", "condition: a && -> (nothing)")
        self.expect("int f() { return a ? b : c; }", "condition: b : c -> c : b")

    def test_of_values(self):
        self.expect("void f() { g(0x100, \"t\", true); }", "constant: 0x100 -> 0x200", "constant: \"t\" -> \"tX\"", "constant: true -> false")
        self.expect("int f() { return a < b; }", "comparison: < -> <=", "return: a < b -> !(a < b)", "return: a < b -> {}")
        self.assertEqual([], titles("std::vector<std::pair<int, char>> x;"))

    def test_of_names(self):
        self.expect("void f() { g(Kind::one); }", "similar: one -> two")
        self.expect("void f() { g(kMaskCommandLeft); }", "similar: kMaskCommandLeft -> kMaskCommandRight")
        self.expect("int f() { return x.front() + y[0]; }", "item: front -> back", "item: 0 -> 1", "arithmetic: + -> -")
        self.expect("void f() { g(a, b); }", "arguments: a, b -> b, a")

    def test_of_objective_c(self):
        self.expect("- (void)f:(id)x {\n  [x add:a forMode:b];\n}\n@property(weak) id t;", "statement: [x add:a forMode:b]; -> ;", "arguments: a -> nil",
                    "arguments: a forMode:b -> b forMode:a", "ownership: weak -> strong", name="a.mm")
        self.expect("void f() { auto a = CFRef::adopt(b); @autoreleasepool { c(); } }", "ownership: adopt -> share",
                    "ownership: @autoreleasepool -> (nothing)", name="a.mm")

    def test_that_comments_and_texts_are_no_code(self):
        self.assertEqual([], titles("// if (a) b();\n/* 1 + 2 */\n#define X 1 + 2\n"))

    def test_of_lines_that_are_alike(self):
        made = changes.Source("a.cpp", "void f() {\n  first();\n  stop();\n}\nvoid g() {\n  second();\n  stop();\n}\n", VOCABULARY).changes()
        self.assertEqual({"first();", "second();", "first();\nstop();", "second();\nstop();"}, {c.key for c in made})

    def test_that_a_seed_gives_one_order_that_other_changes_leave_alone(self):
        made = changes.Source("a.cpp", "void f() {\n  one();\n  two();\n  three();\n}\n", VOCABULARY).changes()
        order = [c.title for c in mutate.mixed(made, "1")]
        self.assertEqual(order, [c.title for c in mutate.mixed(list(reversed(made)), "1")])
        self.assertEqual([t for t in order if "two" not in t], [c.title for c in mutate.mixed([c for c in made if "two" not in c.title], "1")])


if __name__ == "__main__":
    unittest.main()
