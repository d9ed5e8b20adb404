"""What tools/mutate.py changes: code only, at one place, the same for the same seed. Builds nothing."""

import os
import sys
import unittest

TOP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(TOP, "tools"))
import mutants  # noqa: E402
import mutate  # noqa: E402

LEFT_ALONE = '''
// a + b == 1
/* a + b
   == 2 */
#include "board/board.h"
#define SIZE (1 + 2)
static_assert(sizeof(int) == 4 && true);
[[nodiscard]] alignas(64) static u8 bytes[64];
template <int Count = 3>
std::array<u8, 8 + 1> row(const Board& board, u8* place, Row&& other);
const char* text = "a + 1 == b";
const char* raw = R"(a + 1
== b)";
void f() {
    assert(a + 1 == b && g(c - 2));
    char quote = '\\'', line = '\\n';
    for (auto& x : list) {
    }
}
'''

EVERY_KIND = '''
bool f(int a) {
    if (a + 1 < limit && !done(a)) {
        count = 0;
    }
    total += a << shift;
    ++total;
    while (a > 0x10) {
        break;
    }
    const char first = 'a';
    g(a,
      b);
    return std::min(a, -b) == first || true;
}
'''

TABLE = '''
constexpr int table[] = {
    1, 2, 3, 4,
    5, 6, 7, 8,  // the second row
    -1, -2, -3, -4,
};
'''


def changes(text):
    return {(mutant.before, mutant.after) for mutant in mutants.mutants_of("src/x/x.cpp", text)}


def sources():
    found = {}
    for folder, _, names in os.walk(os.path.join(TOP, "src", "search")):
        for name in names:
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                found["src/search/" + name] = file.read()
    return found


class Mutants(unittest.TestCase):
    def test_comments_texts_asserts_and_types_stay(self):
        self.assertEqual(changes(LEFT_ALONE), set())

    def test_operators_comparisons_constants_and_statements_change(self):
        found = changes(EVERY_KIND)
        for change in (("+", "-"), ("1", "2"), ("1", "0"), ("<", "<="), ("&&", "||"), ("!", ""), ("+=", "-="), ("<<", ">>"),
                       ("++", "--"), (">", ">="), ("0x10", "0x11"), ("0x10", "0xF"), ("'a'", "'b'"), ("min", "max"),
                       ("-", ""), ("==", "!="), ("||", "&&"), ("true", "false"), ("count = 0;", ";"),
                       ("total += a << shift;", ";"), ("++total;", ";"), ("break;", ";"), ("g(a,\n      b);", ";")):
            self.assertIn(change, found)

    def test_declarations_and_what_hands_on_a_value_are_no_statements_to_lose(self):
        gone = {before for before, after in changes(EVERY_KIND) if after == ";"}
        self.assertEqual(gone, {"count = 0;", "total += a << shift;", "++total;", "break;", "g(a,\n      b);"})

    def test_one_row_of_a_table_stands_for_all(self):
        self.assertEqual({before for before, _ in changes(TABLE)}, {"1", "2", "3", "4"})

    def test_each_mutant_differs_at_one_place_of_the_code(self):
        for name, text in sources().items():
            for mutant in mutants.mutants_of(name, text):
                changed = mutant.apply(text)
                self.assertNotEqual(changed, text)
                self.assertEqual(changed[:mutant.start], text[:mutant.start])
                self.assertEqual(changed[mutant.start + len(mutant.after):], text[mutant.end:])
                before, after = mutants.changed_lines(text, mutant)
                self.assertNotEqual(before, after)

    def test_a_seed_decides(self):
        texts = sources()
        self.assertEqual(mutants.drawn(texts, "1"), mutants.drawn(dict(reversed(texts.items())), "1"))
        self.assertNotEqual(mutants.drawn(texts, "1"), mutants.drawn(texts, "2"))

    def test_every_line_comes_once_before_one_comes_again(self):
        texts = {"src/a/a.cpp": EVERY_KIND, "src/b/b.cpp": EVERY_KIND}
        queues = mutants.drawn(texts, "1")
        self.assertEqual([{mutant.file for mutant in queue} for queue in queues], [{"src/a/a.cpp"}, {"src/b/b.cpp"}])
        for queue in queues:
            lines = [mutants.line_number(EVERY_KIND, mutant.start) for mutant in queue]
            self.assertEqual(len(set(lines)), len(set(lines[:len(set(lines))])))

    def test_a_line_that_repeats_is_told_by_the_one_above(self):
        text = "void f() {\n    g();\n    return;\n    h();\n    return;\n}\n"
        listed = "## `src/a/a.cpp`\n\n- `` return; `` becomes `` ; `` below `` h(); ``: a reason\n"
        known = mutate.known_equivalents(listed)
        found = [mutant for mutant in mutants.mutants_of("src/a/a.cpp", text) if mutant.before == "return;"]
        self.assertEqual([mutate.is_among(known, mutant, text) for mutant in found], [False, True])
        without_line = mutate.known_equivalents(listed.replace(" below `` h(); ``", ""))
        self.assertEqual([mutate.is_among(without_line, mutant, text) for mutant in found], [True, True])

    def test_every_listed_equivalent_is_a_mutant_of_the_source(self):
        listed = mutate.known_equivalents(mutate.EQUIVALENTS.read_text())
        self.assertTrue(listed)
        for entry in listed:
            with self.subTest(entry):
                text = mutate.sources([os.path.join(TOP, entry[0])])[entry[0]]
                self.assertTrue(any(mutate.is_among({entry}, mutant, text) for mutant in mutants.mutants_of(entry[0], text)))


if __name__ == "__main__":
    unittest.main()
