"""Where a C++ source can be changed by one token or one statement, for tools/mutate.py.

A mutant changes an operator, a comparison, a constant or a statement. Comments, includes, asserts, attributes, texts,
numbers in types and the sizes of declared arrays stay as they are; of rows of numbers that follow one another (tables)
only the first can change. The layout of .clang-format tells apart what C++ spells alike: a binary operator stands
between blanks, a reference, a pointer and the bracket of a template do not.
"""
import collections
import random
import re

TOKEN = re.compile(r"""
    (?P<comment>   //[^\n]* | /\*.*?\*/)
  | (?P<directive> (?<![^\n])[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>      \bR"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)" | "(?:\\.|[^"\\\n])*")
  | (?P<character> '(?:\\.|[^'\\\n])+')
  | (?P<number>    \b(?:0[xX][0-9a-fA-F']+|0[bB][01']+|\d[\d']*(?:\.\d*)?(?:[eE][-+]?\d+)?)[uUlLfF]*)
  | (?P<word>      [A-Za-z_]\w*)
  | (?P<operator>  <=> | <<= | >>= | \.\.\. | -> | :: | \+\+ | -- | << | >> | <= | >= | == | != | && | \|\| | [-+*/%&|^]=
                 | [^\s])
""", re.VERBOSE | re.DOTALL)

BINARY = {
    "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"], "%": ["/"], "<<": [">>"], ">>": ["<<"],
    "&": ["|"], "|": ["&"], "^": ["|", "&"], "&&": ["||"], "||": ["&&"],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "%=": ["/="],
    "&=": ["|="], "|=": ["&="], "^=": ["|="], "<<=": [">>="], ">>=": ["<<="],
}
UNARY = {"!": [""], "~": [""], "-": [""]}
STEP = {"++": ["--"], "--": ["++"]}
WORDS = {"true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"]}
# What no statement begins with whose loss would show a fault of the tests: declarations, control flow with a head.
NOT_A_STATEMENT = frozenset("""
    return if else for while do switch case default using namespace template struct class enum union static const
    constexpr constinit consteval extern inline auto goto typedef public private throw try catch friend operator void
""".split())
JUMPS = ("break", "continue", "return")
NOT_AN_OPERAND = frozenset("return case else throw".split())
LEFT_ALONE = ("assert", "static_assert", "alignas")
PAIRS = {"(": ")", "[": "]", "{": "}", "<": ">"}
# A row of a table: numbers, named or not, with signs and braces between them.
ROW = re.compile(r"[\s{]*-?\w+(\s*[,{}]+\s*-?\w+){3,}[\s,}]*$")

Token = collections.namedtuple("Token", "kind text start end")


class Mutant(collections.namedtuple("Mutant", "file start end before after")):
    """`before` at [start, end) of the file's text becomes `after`."""

    def apply(self, text):
        return text[:self.start] + self.after + text[self.end:]


def tokens(text):
    """All tokens but comments and directives."""
    found = (Token(match.lastgroup, match.group(), match.start(), match.end()) for match in TOKEN.finditer(text))
    return [token for token in found if token.kind not in ("comment", "directive")]


def closing(all_tokens, opening):
    """The place of the bracket that closes the one at `opening`, or None."""
    depth, left = 0, all_tokens[opening].text
    for place in range(opening, len(all_tokens)):
        text = all_tokens[place].text
        if text == left:
            depth += 1
        elif text == PAIRS[left]:
            depth -= 1
        elif left == "<" and text == ">>":
            depth -= 2
        elif left == "<" and text in (";", "{", "&&", "||"):
            return None
        if depth <= 0:
            return place
    return None


def regions_left_alone(text, all_tokens):
    """Places of tokens within asserts, attributes, array sizes of declarations; and those within angle brackets."""
    whole, types = set(), set()
    for place, token in enumerate(all_tokens[:-1]):
        following = all_tokens[place + 1]
        end, into = None, whole
        if token.text in LEFT_ALONE and following.text == "(":
            end = closing(all_tokens, place + 1)
        elif token.text == "[" and following.text == "[":
            end = closing(all_tokens, place)
        elif token.kind == "word" and following.text == "<" and following.start == token.end:
            end, into = closing(all_tokens, place + 1), types
        elif token.text == "template" and following.text == "<":
            end, into = closing(all_tokens, place + 1), types
        elif token.kind == "word" and following.text == "[" and place > 0 and following.start == token.end:
            previous = all_tokens[place - 1]
            declared = previous.kind == "word" and previous.text not in NOT_AN_OPERAND or (
                previous.text in (">", "*", "&") and text[previous.end - 2:previous.end - 1] != " ")
            if declared:
                end = closing(all_tokens, place + 1)
        if end is not None:
            into.update(range(place, end + 1))
    return whole, types


def other_numbers(number):
    """The neighbours of an integer, spelt alike; nothing for other numbers."""
    match = re.fullmatch(r"(0[xX]|0[bB]|)([0-9a-fA-F']+?)([uUlL]*)", number)
    if not match:
        return []
    prefix, digits, suffix = match.groups()
    base = {"": 10, "0x": 16, "0b": 2}[prefix.lower()]
    try:
        value = int(digits.replace("'", ""), base)
    except ValueError:
        return []
    form = {10: "d", 16: "X", 2: "b"}[base]
    return [f"{prefix}{other:{form}}{suffix}" for other in (value + 1, value - 1) if other >= 0]


def names_type(text, token):
    """Whether a word behind this token is what a declaration declares."""
    closes_type = token.text in (">", "*", "&") and not text[token.start - 1].isspace()
    return token.kind == "word" or closes_type and text[token.end:token.end + 1] == " "


def statement_end(text, all_tokens, start):
    """The place of the semicolon that ends the statement at `start`, or None where none begins that can go."""
    first, second = all_tokens[start], all_tokens[start + 1]
    if first.text in JUMPS:
        return start + 1 if second.text == ";" else None
    if first.text in NOT_A_STATEMENT or first.text in LEFT_ALONE:
        return None
    if first.kind == "word":
        if second.kind != "operator" or second.text in (";", ":", "{", "&", "*", "<", ">", "&&"):
            return None
    elif first.text not in ("++", "--") and not (first.text == "*" and all_tokens[start - 1].text in (";", "{", "}")):
        return None
    depth = 0
    for place in range(start, len(all_tokens)):
        token = all_tokens[place]
        if token.text in ("(", "[", "{"):
            depth += 1
        elif token.text in (")", "]", "}"):
            depth -= 1
        if depth < 0:
            return None
        if depth == 0 and token.text == ";":
            return place
        if depth == 0 and place > start and token.kind == "word" and names_type(text, all_tokens[place - 1]):
            return None
    return None


def token_changes(text, all_tokens, place):
    """What the token can become."""
    token = all_tokens[place]
    before = text[token.start - 1:token.start]
    behind = text[token.end:token.end + 1]
    if token.kind == "number":
        return other_numbers(token.text)
    if token.kind == "character" and len(token.text) == 3 and token.text[1].isalnum():
        return ["'" + chr(ord(token.text[1]) + (-1 if token.text[1] in "zZ9" else 1)) + "'"]
    if token.kind == "word" and token.text in ("min", "max"):
        return WORDS[token.text] if all_tokens[place - 1].text == "::" else []
    if token.kind == "word":
        return WORDS.get(token.text, [])
    if token.text in STEP:
        return STEP[token.text]
    if token.text in BINARY and before.isspace() and behind.isspace():
        return BINARY[token.text]
    if token.text in UNARY and not behind.isspace() and (before.isspace() or before in "([{!~-"):
        return UNARY[token.text]
    return []


def mutants_of(file, text):
    """All mutants of a source, in the order of their places."""
    all_tokens = tokens(text)
    whole, types = regions_left_alone(text, all_tokens)
    found = []
    parentheses = 0
    for place, token in enumerate(all_tokens[:-1]):
        parentheses += (token.text == "(") - (token.text == ")")
        if place in whole or place == 0:
            continue
        if place not in types or token.text in ("true", "false"):
            found += [Mutant(file, token.start, token.end, token.text, after)
                      for after in token_changes(text, all_tokens, place)]
        previous = all_tokens[place - 1].text
        if parentheses == 0 and previous in (";", "{", "}", ")", ":", "else") and token.text != "(":
            end = statement_end(text, all_tokens, place)
            if end is not None:
                stop = all_tokens[end].end
                found.append(Mutant(file, token.start, stop, text[token.start:stop], ";"))
    rows = table_rows(text)
    return [mutant for mutant in found if line_number(text, mutant.start) not in rows]


def table_rows(text):
    """Numbers of the lines that hold a row of a table and follow another such row."""
    rows = set()
    previous_is_row = False
    for number, line in enumerate(text.split("\n"), start=1):
        is_row = bool(ROW.match(line.split("//")[0].rstrip()))
        if is_row and previous_is_row:
            rows.add(number)
        previous_is_row = is_row
    return rows


def line_number(text, offset):
    return text.count("\n", 0, offset) + 1


def changed_lines(text, mutant):
    """The lines that the mutant touches, before and after, each in one line and with single blanks."""
    first = text.rfind("\n", 0, mutant.start) + 1
    last = text.find("\n", mutant.end)
    last = len(text) if last < 0 else last
    before = text[first:last]
    after = text[first:mutant.start] + mutant.after + text[mutant.end:last]
    return " ".join(before.split()), " ".join(after.split())


def line_above(text, mutant):
    """The line before those that the mutant touches, with single blanks."""
    above = text[:text.rfind("\n", 0, mutant.start) + 1].splitlines()
    return " ".join(above[-1].split()) if above else ""


def drawn(sources, seed):
    """All mutants of the sources {file: text} in the order in which they are tried.

    Folder by folder in turn; within one, lines at random, each of which comes again only after all others.
    """
    by_folder = {}
    for file in sorted(sources):
        by_folder.setdefault(file.rpartition("/")[0], []).append(file)
    queues = []
    for folder in sorted(by_folder):
        chance = random.Random(f"{seed} {folder}")
        lines = {}
        for file in by_folder[folder]:
            for mutant in mutants_of(file, sources[file]):
                lines.setdefault((file, line_number(sources[file], mutant.start)), []).append(mutant)
        turns = []
        for mutants in lines.values():
            chance.shuffle(mutants)
            turns += [(turn, chance.random(), mutant) for turn, mutant in enumerate(mutants)]
        queues.append(collections.deque(mutant for _, _, mutant in sorted(turns)))
    return queues
