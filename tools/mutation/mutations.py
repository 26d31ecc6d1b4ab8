"""The changes that mutation testing tries: what could stand in a C++ text instead of what stands there.

Works on the text. Comments and preprocessor lines are left alone. What would keep a change from compiling for no good
reason (an unused function, an unused variable) is avoided: removed statements stay, behind `while (false)`.
"""
import dataclasses
import decimal
import hashlib
import re

TOKEN = re.compile(
    r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^\s()\\"]*)\(.*?\)(?P=mark)")
  | (?P<string>(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*")
  | (?P<character>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|\.?\d(?:[eE][+-]|[\d'.eE])*)[uUlLfFzZ]*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark_>->\*?|\+\+|--|&&|\|\||<=>|<<=|>>=|[<>=!+\-*/%&|^]=|<<|>>|::|\S)
    """,
    re.MULTILINE | re.DOTALL | re.VERBOSE,
)
# Between blanks, as clang-format writes operators of two operands: not angle brackets, references and pointers.
OPERATORS = {
    "<": ["<=", ">"], "<=": ["<", ">="], ">": [">=", "<"], ">=": [">", "<="], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "&": ["|"], "|": ["&"],
    "<<": [">>"], ">>": ["<<"], "+=": ["-="], "-=": ["+="], "*=": ["/="], "|=": ["&="], "&=": ["|="],
}  # fmt: skip
STEPS = {"++": "--", "--": "++"}
SWAPPED = {"true": "false", "false": "true"}
CALLED = {"round": "floor", "floor": "ceil", "ceil": "floor", "trunc": "round", "min": "max", "max": "min",
          "all_of": "any_of", "any_of": "all_of"}  # fmt: skip
NEVER_FIRST = set(
    """return if for while do switch case default break continue using namespace class struct enum template const constexpr
    static auto throw delete goto try catch typedef friend public private protected else static_assert co_return explicit
    virtual inline operator extern union""".split()
)
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "|=", "&=", "^=", "<<=", ">>="}
ALREADY_EMPTY = {"{}", "nullptr", "0", "false", "true", "std::nullopt", "*this", ""}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclasses.dataclass(frozen=True)
class Mutation:
    """One change of one text. The line's text and what it becomes name it, so that it keeps its name when lines move."""

    path: str
    number: int  # of its first line, from 1
    line: str
    becomes: str
    start: int
    end: int
    replacement: str

    @property
    def key(self):
        return (self.path, self.line, self.becomes)

    def applied_to(self, text):
        return text[: self.start] + self.replacement + text[self.end :]

    def __str__(self):
        return f"{self.path}:{self.number}: {self.line}\n    became: {self.becomes}"


def tokens_of(text):
    tokens = (Token(found.lastgroup, found.group(), found.start()) for found in TOKEN.finditer(text))
    return [token for token in tokens if token.kind not in ("comment", "directive")]


def number_changes(text):
    body = re.match(r"0[xX][0-9a-fA-F']+|[\d'.]+(?:[eE][+-]?\d+)?", text).group()
    suffix, digits = text[len(body) :], body.replace("'", "")
    if digits[:2] in ("0x", "0X"):
        value = int(digits, 16)
        return [f"0x{value + step:X}{suffix}" for step in (1, -1) if value + step >= 0]
    if re.search("[.eE]", digits):
        value = decimal.Decimal(digits)
        whole = value == value.to_integral_value()
        step = decimal.Decimal(1) if whole else decimal.Decimal(1).scaleb(value.as_tuple().exponent)
        return [f"{value + each}{suffix}" for each in (step, -step)]
    if digits.startswith("0") and len(digits) > 1:  # octal
        return [f"{digits[:-1]}{(int(digits[-1]) + 1) % 8}{suffix}"]
    return [f"{int(digits) + step}{suffix}" for step in (1, -1) if int(digits) + step >= 0]


def string_changes(text):
    """Another text of the same length: the first letter, else the first mark, that no format or escape needs is another."""
    opening = text.index('"') + 1
    plain = re.finditer(r"%[-+ #0-9.]*(?:[hl]*[A-Za-z@%])?|\\.|(?P<letter>[A-Za-z])|(?P<mark>.)", text[opening:-1])
    found = sorted((found for found in plain if found.lastgroup), key=lambda found: found.lastgroup)
    if not found:
        return [text[:opening] + "~" + text[opening:]]
    old = found[0].group()
    new = chr(ord(old) + (1 if old not in "zZ" else -1)) if found[0]["letter"] else "~" if old != "~" else "^"
    return [text[: opening + found[0].start()] + new + text[opening + found[0].end() :]]


def character_changes(text):
    inside = text[text.index("'") + 1 : -1]
    return [text[:-2] + chr(ord(inside) + 1) + "'"] if len(inside) == 1 and inside not in "&[" else []


def token_changes(text, tokens, at):
    token = tokens[at]
    if token.kind == "number":
        return number_changes(token.text)
    if token.kind == "string":
        return string_changes(token.text)
    if token.kind == "character":
        return character_changes(token.text)
    if token.text in SWAPPED:
        return [SWAPPED[token.text]]
    if token.text in STEPS:
        return [STEPS[token.text]]
    if token.text in CALLED and text[token.end : token.end + 1] in ("(", "<"):
        return [CALLED[token.text]]
    if token.text == "!" and text[token.end : token.end + 1] not in ("", "="):
        return [""]
    apart = text[token.start - 1 : token.start].isspace() and text[token.end : token.end + 1].isspace()
    beside_text = any(tokens[i].kind in ("string", "raw") for i in (at - 1, at + 1) if 0 <= i < len(tokens))
    if token.text in OPERATORS and apart and not (token.text == "+" and beside_text):
        return OPERATORS[token.text]
    return []


def closing(tokens, at):
    """The place of the bracket that closes the one at this place."""
    depth = 0
    for i in range(at, len(tokens)):
        depth += (tokens[i].text in "([{") - (tokens[i].text in ")]}") if len(tokens[i].text) == 1 else 0
        if depth == 0:
            return i
    return len(tokens) - 1


def condition_changes(text, tokens):
    """if (a) -> if (!(a)); conditions that declare something are left alone."""
    for i, token in enumerate(tokens[:-1]):
        if token.text in ("if", "while") and tokens[i + 1].text == "(":
            first, last = tokens[i + 1].end, tokens[closing(tokens, i + 1)].start
            inside = text[first:last]
            if ";" not in inside and not re.match(r"[\w:<>*& ]+ [*&]?\w+ = ", inside) and inside != "false":
                yield first, last, f"!({inside})", None


def is_start(tokens, at, headed):
    return at == 0 or tokens[at - 1].text in (";", "{", "}", "else", "do") or at in headed


def starts_of_statements(tokens):
    headed = {
        closing(tokens, i + 1) + 1
        for i, token in enumerate(tokens[:-1])
        if token.text in ("if", "for", "while", "switch") and tokens[i + 1].text == "("
    }
    return [i for i in range(len(tokens)) if is_start(tokens, i, headed)]


def outline(tokens, at):
    """A statement's tokens outside all brackets, each pair of brackets as one, and the place of its semicolon."""
    words = []
    while at < len(tokens) and tokens[at].text != ";":
        if tokens[at].text in (")", "]", "}"):
            return words, None
        if tokens[at].text in ("(", "[", "{"):
            words.append(tokens[at].text)
            at = closing(tokens, at)
        else:
            words.append(tokens[at].text)
        at += 1
    return words, at if at < len(tokens) else None


def is_expression(words):
    """No declaration: no two names beside each other, and none after a type's end."""
    name = re.compile(r"[A-Za-z_]\w*$")
    return all(
        name.match(word) or word in (".", "->", "::", "(", "[", "<", ">", "*", "++", "--") for word in words
    ) and not any(name.match(b) and (name.match(a) or a in (">", "&", "*")) for a, b in zip(words, words[1:]))


def statement_changes(text, tokens):
    """Calls and assignments that are not made, and results that are empty."""
    for at in starts_of_statements(tokens):
        words, end = outline(tokens, at)
        if end is None or not words:
            continue
        start, after = tokens[at].start, tokens[end].end
        whole = text[start:after]
        if words[0] == "return":
            if re.sub(r"\s+", "", whole[len("return") : -1]) not in ALREADY_EMPTY:
                yield start, after, "{ while (false) %s return {}; }" % whole, "return {};"
        elif words[0] not in NEVER_FIRST and words[-1] not in ("delete", "default") and words[-2:] != ["(", "("]:
            assigned = next((i for i, word in enumerate(words) if word in ASSIGNMENTS), None)
            called = words[-1] == "(" and len(words) > 1 and is_expression(words)
            if called or (assigned and is_expression(words[:assigned])) or (words[0] in STEPS and is_expression(words)):
                yield start, after, f"while (false) {whole}", "(removed)"


def mutations_of(path, text):
    """All changes of one file, in the order of its text."""
    tokens = tokens_of(text)
    changes = [
        (token.start, token.end, changed, None)
        for i, token in enumerate(tokens)
        for changed in token_changes(text, tokens, i)
    ]
    changes += [*condition_changes(text, tokens), *statement_changes(text, tokens)]
    for start, end, replacement, shown in sorted(changes, key=lambda change: change[:3]):
        first, last = text.rfind("\n", 0, start) + 1, text.find("\n", end)
        last = len(text) if last < 0 else last
        line = " ".join(text[first:last].split())
        became = shown if shown is not None else replacement
        becomes = " ".join((text[first:start] + became + text[end:last]).split())
        yield Mutation(path, text.count("\n", 0, start) + 1, line, becomes, start, end, replacement)


def spread(mutations, seed):
    """At most one change a line, in an order of which every beginning is spread over files as their lines are.

    The order depends on the seed, and on the text of each line alone: edits elsewhere do not reshuffle it.
    """

    def lot(*parts):
        return hashlib.sha256("\0".join([str(seed), *parts]).encode()).hexdigest()

    files = {}
    for mutation in mutations:
        files.setdefault(mutation.path, {}).setdefault(mutation.number, []).append(mutation)
    ranked = []
    for lines in files.values():
        chosen = [min(each, key=lambda mutation: lot(*mutation.key)) for each in lines.values()]
        chosen.sort(key=lambda mutation: (lot(mutation.path, mutation.line), mutation.number))
        ranked += [((i + 0.5) / len(chosen), lot(*mutation.key), mutation) for i, mutation in enumerate(chosen)]
    return [mutation for _, _, mutation in sorted(ranked, key=lambda each: each[:2])]
