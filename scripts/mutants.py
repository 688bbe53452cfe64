"""Faults of one token that can be drawn in C++ sources, and the lists that they are stored in.

A tokenizer and the brackets are enough: faults are drawn in functions and initialisers, and if one doesn't compile, the
caller draws another. The sources are formatted by clang-format, so a binary operator has blanks around it, which
distinguishes it from a template's bracket, a pointer's star and a sign.
"""

import re
from typing import NamedTuple

TOKEN = re.compile(
    r"""(?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<skipped>[ \t\r]+|\n|//[^\n]*|/\*.*?\*/)
      | (?P<string>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
      | (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
      | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<operator><=>|<<=|>>=|->\*|\.\.\.|->|::|\+\+|--|&&|\|\||[-+*/%&|^<>=!]=|<<|>>|.)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

# The replacements of a binary operator; if there are two, one is drawn.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"], "|": ["&"], "&": ["|"],
    "<<": [">>"], ">>": ["<<"], "+=": ["-="], "-=": ["+="], "|=": ["&="], "&=": ["|="],
}
ANYWHERE = {"++": "--", "--": "++", "true": "false", "false": "true"}

# Words that begin a declaration, and words that don't begin a call.
DECLARING = {"static_assert", "using", "friend", "typedef", "extern", "template"}
NO_CALL = DECLARING | {
    "return", "if", "else", "for", "while", "do", "switch", "case", "default", "break", "continue", "goto", "throw",
    "new", "delete", "const", "constexpr", "static", "auto", "static_cast", "reinterpret_cast", "const_cast",
}
CLOSERS = {"(": ")", "[": "]", "{": "}"}


class Token(NamedTuple):
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


class Fault(NamedTuple):
    """A fault by the text of its line, so that it outlives edits elsewhere: the line without the blanks around it,
    which of the file's equal lines it is (from 0), the column in that text. A line break in `before` is a blank."""

    file: str
    occurrence: int
    column: int
    before: str
    after: str
    line: str

    def place(self, text):
        """The range of `before` in a file's text, or None if the line isn't there any more."""
        lines = [match for match in re.finditer(r"[^\n]+", text) if match.group().strip() == self.line]
        if self.occurrence >= len(lines):
            return None
        line = lines[self.occurrence]
        start = line.start() + len(line.group()) - len(line.group().lstrip()) + self.column
        found = re.compile(r"\s+".join(map(re.escape, self.before.split(" ")))).match(text, start)
        return found and found.span()


def tokens_of(text):
    return [Token(match.lastgroup, match.group(), match.start()) for match in TOKEN.finditer(text)
            if match.lastgroup not in ("directive", "skipped")]


def closing(tokens, opening):
    """The index of the bracket that closes the one at `opening`."""
    depth = 0
    for i in range(opening, len(tokens)):
        depth += (tokens[i].text in CLOSERS) - (tokens[i].text in CLOSERS.values())
        if depth == 0:
            return i
    return len(tokens) - 1


def holds_code(header):
    """Whether the block after these words is a function's or an initialiser's, not a namespace's or a class's."""
    while header[:1] == ["template"]:
        depth = 0
        for i, word in enumerate(header):
            depth += word.count("<") - word.count(">")
            if depth == 0 and i > 0:
                break
        header = header[i + 1:]
    if "namespace" in header or header[:1] == ["extern"] and "(" not in header:
        return False
    return "(" in header or "enum" in header or not {"class", "struct", "union"} & set(header)


def drawable(tokens):
    """The indexes of the tokens in functions and in initialisers."""
    blocks, header = [], []
    for i, token in enumerate(tokens):
        in_code = bool(blocks) and blocks[-1]
        if token.text == "{":
            blocks.append(in_code or holds_code(header))
        elif token.text == "}" and blocks:
            blocks.pop()
        if token.text in ("{", "}", ";") or token.text == ":" and header[-1:] in (["public"], ["protected"], ["private"]):
            header = []
            continue
        header.append(token.text)
        if (in_code or "=" in header) and header[0] not in DECLARING:
            yield i


def constants(tokens, i):
    """The neighbours of an integer or of a character, but not of the length of an array that is declared."""
    text, before = tokens[i].text, [token.text for token in tokens[max(0, i - 3):i]]
    if tokens[i].kind == "character":
        near = [chr(ord(text[1]) + step) for step in (1, -1)] if len(text) == 3 else []
        return [f"'{other}'" for other in near if other.isprintable() and other not in "'\\"]
    integer = re.fullmatch(r"(0[xX][\da-fA-F']+|[1-9][\d']*|0)([uUlL]*)", text)
    declared = before[-1:] == ["["] and len(before) == 3 and before[0] not in NO_CALL and \
        re.fullmatch(r"[\w>*&]+", before[0]) and re.fullmatch(r"\w+", before[1])
    if not integer or declared:
        return []
    value, form = int(integer[1].replace("'", ""), 0), "0x{:X}" if "x" in text.lower() else "{}"
    return [form.format(other) + integer[2] for other in (value + 1, value - 1) if other >= 0]


def dropped_call(tokens, i):
    """The index of the semicolon if a statement that is only a call begins at a word."""
    if tokens[i].text in NO_CALL or tokens[i - 1].text not in ("{", "}", ";", ")", "else"):
        return None
    operand = False
    while i < len(tokens) and tokens[i].text != ";":
        text = tokens[i].text
        if text in ("(", "["):
            i = closing(tokens, i)
        elif (tokens[i].kind == "word") == operand or tokens[i].kind != "word" and text not in ("::", ".", "->"):
            return None
        operand = tokens[i].kind == "word" or text in ("(", "[")
        i += 1
    return i if i < len(tokens) and tokens[i - 1].text == ")" else None


def negated(text, tokens, i):
    """A condition in brackets, negated, which swaps the branches; but not where one token does the same."""
    end = closing(tokens, i)
    words = {token.text for token in tokens[i:end]}
    if words & {"==", "!=", "!"} and not words & {"&&", "||"}:
        return []
    start, end = tokens[i].start, tokens[end].end
    return [(start, end, f"(!{text[start:end]})")]


def branches(tokens, i):
    """The indexes of the colon that belongs to a question mark, and of the token after the second branch."""
    colon, open_questions = None, 0
    j = i + 1
    while j < len(tokens) and tokens[j].text not in (";", ",", ")", "]", "}"):
        if tokens[j].text in CLOSERS:
            j = closing(tokens, j)
        elif tokens[j].text == "?":
            open_questions += 1
        elif tokens[j].text == ":" and open_questions > 0:
            open_questions -= 1
        elif tokens[j].text == ":" and colon is None:
            colon = j
        elif tokens[j].text == ":":
            break
        j += 1
    return colon, j


def replacements(text, tokens, i):
    """The faults that can be drawn at a token, as (start, end, replacement)."""
    token = tokens[i]
    following = tokens[i + 1].text if i + 1 < len(tokens) else ""
    spaced = text[token.start - 1:token.start].isspace() and text[token.end:token.end + 1].isspace()
    if token.text in BINARY and spaced:
        return [(token.start, token.end, other) for other in BINARY[token.text]]
    if token.text in ANYWHERE:
        return [(token.start, token.end, ANYWHERE[token.text])]
    if token.text == "!":
        return [(token.start, token.end, "")]
    if token.kind in ("number", "character") and following != ">":
        return [(token.start, token.end, other) for other in constants(tokens, i)]
    if token.text in ("if", "while") and following == "(":
        return negated(text, tokens, i + 1)
    if token.text == "?":
        colon, end = branches(tokens, i)
        if colon is not None:
            first = text[tokens[i + 1].start:tokens[colon - 1].end]
            second = text[tokens[colon + 1].start:tokens[end - 1].end]
            return [(tokens[i + 1].start, tokens[end - 1].end, f"{second} : {first}")]
    if token.kind == "word" and (end := dropped_call(tokens, i)):
        return [(token.start, tokens[end].end, "{}")]
    return []


def faults_of(file, text, generator):
    """A fault for each token of a file at which one can be drawn. Prefetches are left out: no test can notice them."""
    tokens = tokens_of(text)
    for i in drawable(tokens):
        choices = replacements(text, tokens, i)
        if not choices:
            continue
        start, end, after = generator.choice(choices)
        line_start = text.rfind("\n", 0, start) + 1
        line = text[line_start:].split("\n", 1)[0]
        if "//" in text[start:end] or "prefetch" in line.lower():
            continue
        occurrence = [other.strip() for other in text[:line_start].split("\n")].count(line.strip())
        column = start - line_start - (len(line) - len(line.lstrip()))
        before, after = (re.sub(r"\s*\n\s*", " ", part) for part in (text[start:end], after))
        yield Fault(file, occurrence, column, before, after, line.strip())


HEADING = "# file, which of its equal lines, column, before, after, line; between tabs\n"


def stored(fault):
    return "\t".join(map(str, fault)) + "\n"


def read_list(path):
    with open(path, encoding="utf-8") as lines:
        rows = [line.rstrip("\n").split("\t") for line in lines if line.strip() and not line.startswith("#")]
    return [Fault(row[0], int(row[1]), int(row[2]), *row[3:]) for row in rows]
